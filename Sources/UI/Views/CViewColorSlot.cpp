// A further colour of a view.
#include "CViewColorSlot.h"

#include "CViewBase.h"

namespace qel {

void CViewColorSlot::buildClassInfo(CClassInfo& info)
{
    using Self = CViewColorSlot;
    CObject::buildClassInfo(info);
    info.bind<&Self::slotIndex_>("slot-index", 0);
    info.bind<&Self::color_, &Self::attrColor>("color", "");
}

CError CViewColorSlot::init()
{
    QEL_TRY(CObject::init(), getFullName());
    view_ = dynamic_cast<CViewBase*>(getParent());
    if (!view_) {
        QEL_FAIL(getFullName(), "@qelstr_CViewColorSlot_init_NoView Parent object is not a view.");
    }
    return attrColor();
}

CError CViewColorSlot::attrColor()
{
    if (view_ && slotIndex_ >= 0) {
        view_->setSlotColor(static_cast<std::size_t>(slotIndex_), color_);
    }
    return {};
}

} // namespace qel
