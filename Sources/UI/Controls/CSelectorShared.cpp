// Chooses the value of a setting.
#include "CSelectorShared.h"

#include "NumberSyntax.h"

namespace qel {

namespace {

// The setting under the name it is followed by here; no name a tree would use.
constexpr const char* kSetting = "*setting";

// "1", "1.0" and "1.0000" are the same setting.
bool isSameValue(const CString& a, const CString& b)
{
    const auto numberA = parseReal(a);
    return numberA ? numberA == parseReal(b) : a == b;
}

} // namespace

void CSelectorShared::buildClassInfo(CClassInfo& info)
{
    CSelector::buildClassInfo(info);
    info.bind<&CSelectorShared::sharedAttribute_>("shared-attribute", "");
}

CError CSelectorShared::initChilds()
{
    shared_ = findSharedTarget(*this, sharedAttribute_, {});
    if (shared_.object && shared_.attribute.isEmpty()) {
        shared_.attribute = getAttributeName();
    }
    QEL_TRY(CSelector::initChilds(), getFullName());
    if (!shared_.object) {
        QEL_FAIL(getFullName(),
                 "@qelstr_CSelectorShared_initChilds_NoSharedAttribute Invalid selector shared attribute "
                 "'%1'.",
                 sharedAttribute_);
    }
    listenAttribute(*shared_.object, shared_.attribute, kSetting);
    return {};
}

CError CSelectorShared::onAttrChanged(CObject& sender, const CString& key, const CAttrValue& value)
{
    return key == kSetting && isUp() ? updateActive() : CSelector::onAttrChanged(sender, key, value);
}

CError CSelectorShared::onButton(std::int32_t index, bool)
{
    return shared_.write(getButtonValue(index));
}

CError CSelectorShared::updateActive()
{
    if (!shared_.isThere()) {
        return {};
    }
    const CString value = shared_.read();
    for (std::int32_t i = 0; i < getButtonCount(); ++i) {
        if (isSameValue(value, getButtonValue(i))) {
            return setActiveButton(i);
        }
    }
    return setActiveButton(-1);
}

} // namespace qel
