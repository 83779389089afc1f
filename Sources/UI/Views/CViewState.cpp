// One state of a view.
#include "CViewState.h"

#include "CViewBaseState.h"

namespace qel {

namespace {

constexpr const char* kStateName = "state-name";

// Stands for "{}" in stored values, since braces would be expanded. The control character "substitute" has no
// place in any text.
constexpr char16_t kPlaceholder = 0x1A;

} // namespace

void CViewState::buildClassInfo(CClassInfo& info)
{
    CObject::buildClassInfo(info);
    info.bind<&CViewState::stateName_>(kStateName, "");
}

CError CViewState::init()
{
    QEL_TRY(CObject::init(), getFullName());
    if (!dynamic_cast<CViewBaseState*>(getParent())) {
        QEL_FAIL(getFullName(), "@qelstr_CViewState_init_NoView Parent object is not a view.");
    }
    return {};
}

CError CViewState::applyAttrs()
{
    QEL_TRY(CObject::applyAttrs(), getFullName());
    if (!view_) {
        view_ = static_cast<CViewBaseState*>(getParent());
        QEL_TRY(view_->addState(*this), getFullName());
    }
    return {};
}

void CViewState::release()
{
    if (view_) {
        if (CError error = view_->removeState(*this)) {
            traceError(error);
        }
        view_ = nullptr;
    }
    CObject::release();
}

CError CViewState::onAttrChanged(CObject& sender, const CString& key, const CAttrValue& value)
{
    QEL_TRY(CObject::onAttrChanged(sender, key, value), getFullName());
    return view_ ? view_->onStateChanged(*this) : CError();
}

CString CViewState::getPresentValue(const CString&) const
{
    CString placeholder;
    placeholder.append(kPlaceholder);
    return placeholder;
}

bool CViewState::isOwnAttribute(const CString& key)
{
    return key == "name" || key == "full-name" || key == kStateName;
}

CString CViewState::fillPlaceholder(const CString& text, const CString& value)
{
    if (text.find(kPlaceholder) == CString::kNone) {
        return text;
    }
    const std::vector<CString> parts = text.split(kPlaceholder);
    CString filled = parts[0];
    for (std::size_t i = 1; i < parts.size(); ++i) {
        filled += value + parts[i];
    }
    return filled;
}

} // namespace qel
