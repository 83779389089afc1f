// Filter generators by number.
#include "CAudioFilterGenArray.h"

namespace qel {

namespace {

// Far above any list that a user could choose from.
constexpr std::int32_t kMaxIndex = 1023;

} // namespace

CError CAudioFilterGenArray::initChilds()
{
    QEL_TRY(CObject::initChilds(), getFullName());
    for (std::size_t i = 0; i < getChildCount(); ++i) {
        if (auto* item = dynamic_cast<CAudioFilterGenArrayItem*>(getChild(i))) {
            QEL_TRY(item->enterInto(*this), getFullName());
        }
    }
    return {};
}

bool CAudioFilterGenArray::place(std::int32_t index, const CAudioFilterGen& generator)
{
    if (index < 0 || index > kMaxIndex || getGen(index)) {
        return false;
    }
    const auto position = static_cast<std::size_t>(index);
    if (position >= generators_.size()) {
        generators_.resize(position + 1, nullptr);
    }
    generators_[position] = &generator;
    return true;
}

void CAudioFilterGenArrayItem::buildClassInfo(CClassInfo& info)
{
    using Self = CAudioFilterGenArrayItem;
    CObject::buildClassInfo(info);
    info.bind<&Self::fltgen_>("fltgen", "");
    info.bind<&Self::index_>("index", -1);
}

CError CAudioFilterGenArrayItem::init()
{
    QEL_TRY(CObject::init(), getFullName());
    if (!dynamic_cast<CAudioFilterGenArray*>(getParent())) {
        QEL_FAIL(getFullName(), "@qelstr_CAudioFilterGenArrayItem_init_InvalidParent "
                                "CAudioFilterGenArray class parent expected.");
    }
    return {};
}

CError CAudioFilterGenArrayItem::enterInto(CAudioFilterGenArray& array)
{
    const CAudioFilterGen* generator = CAudioFilterGen::findFrom(*this, fltgen_);
    if (!generator) {
        QEL_FAIL(getFullName(),
                 "@qelstr_CAudioFilterGenArrayItem_initChilds_GenNotFound "
                 "Audio filter generator with the name '%1' not found.",
                 fltgen_);
    }
    if (!array.place(index_, *generator)) {
        QEL_FAIL(getFullName(),
                 "@qelstr_CAudioFilterGenArrayItem_initChilds_InvalidIndex "
                 "Invalid audio filter index '%1' specified ",
                 getAttrString("index"));
    }
    return {};
}

} // namespace qel
