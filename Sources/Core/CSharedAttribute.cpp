// Joins an attribute to a stored setting.
#include "CSharedAttribute.h"

#include "CApplication.h"

namespace qel {

namespace {

// The parent's attribute under the name it is followed by here; no name a tree would use.
constexpr const char* kFollowed = "*attribute";
constexpr const char* kUpdate = "update";

} // namespace

// Attributes count as they are at init; none changes anything afterwards.
void CSharedAttribute::buildClassInfo(CClassInfo& info)
{
    using Self = CSharedAttribute;
    CObject::buildClassInfo(info);
    info.bind<&Self::attribute_>("attribute", "");
    info.bind<&Self::dataName_>("data-name", "");
    info.bind<&Self::default_>("def-value", "");
    info.bind<&Self::isGlobal_>("is-global", false);
    info.handleEvent<&CSharedAttribute::onUpdate>(kUpdate);
}

CError CSharedAttribute::init()
{
    QEL_TRY(CObject::init(), getFullName());
    if (attribute_.isEmpty() || !getParent()) {
        QEL_FAIL(getFullName(),
                 "@qelstr_CSharedAttribute_init_NoAttribute No attached attribute name specified.");
    }
    if (CApplication* application = CApplication::get()) {
        store_ = isGlobal_ ? static_cast<CApplicationData*>(&application->getGlobalData())
                           : &application->getLocalData();
        bridge_.attachSetting(*store_, dataName_);
    }
    value_ = readStore();
    QEL_TRY(getParent()->setAttribute(attribute_, value_, true), getFullName());
    listenAttribute(*getParent(), attribute_, kFollowed);
    return {};
}

void CSharedAttribute::release()
{
    bridge_.detach();
    CObject::release();
}

CString CSharedAttribute::readStore() const
{
    return store_ ? store_->loadString(dataName_, default_) : default_;
}

CError CSharedAttribute::onAttrChanged(CObject& sender, const CString& key, const CAttrValue& value)
{
    if (!(key == kFollowed)) {
        return CObject::onAttrChanged(sender, key, value);
    }
    const CString text = value.toString();
    if (!(text == value_)) {
        value_ = text;
        if (CError error = store_ ? store_->saveString(dataName_, text, &bridge_) : CError()) {
            traceError(reportError(std::move(error), __FILE__, __LINE__, getFullName()));
        }
    }
    return {};
}

CError CSharedAttribute::reset()
{
    return getParent() ? getParent()->setAttribute(attribute_, default_, true) : CError();
}

// May come in any thread.
void CSharedAttribute::onStoreChanged(CBridge*, std::uintptr_t)
{
    CError error = getNotifyServer() ? notifyTo(".", kUpdate, {}, false) : onUpdate({});
    if (error) {
        traceError(error);
    }
}

CError CSharedAttribute::onUpdate(const CAttrMap&)
{
    const CString text = readStore();
    if (!(text == value_)) {
        value_ = text;
        QEL_TRY(getParent()->setAttribute(attribute_, text, true), getFullName());
    }
    return {};
}

} // namespace qel
