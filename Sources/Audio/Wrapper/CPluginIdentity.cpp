// What the plug-in is, by its project.
#include "CPluginIdentity.h"

#include "CObject.h"
#include "NumberSyntax.h"

namespace qel {

namespace {

constexpr std::int32_t kMaxChannelCount = 32;
constexpr std::int32_t kMaxGroupCount = 8;

} // namespace

CError CPluginIdentity::read(const CObject& project)
{
    name = project.getAttrString("app-name");
    if (name.isEmpty()) {
        QEL_FAIL({}, "@qelstr_CAudioWrapper_init_PluginNameEmpty Plug-in name is empty.");
    }
    vendor = project.getAttrString("app-vendor");
    if (vendor.isEmpty()) {
        QEL_FAIL({}, "@qelstr_CAudioWrapper_init_VendorNameEmpty Vendor name is empty.");
    }
    usesHostBpm = project.getAttrBool("use-host-bpm");
    channelCount = project.getAttrInt("plugin-intchannel-count");
    if (channelCount < 1 || channelCount > kMaxChannelCount) {
        QEL_FAIL({}, "@qelstr_CAudioWrapper_init_InvalidIntChannelCount "
                     "Invalid 'plugin-intchannel-count' attribute value.");
    }
    groupCount = project.getAttrInt("plugin-group-count");
    if (groupCount < 1 || groupCount > kMaxGroupCount) {
        QEL_FAIL(
            {}, "@qelstr_CAudioWrapper_init_InvalidGroupCount Invalid 'plugin-group-count' attribute value.");
    }
    QEL_TRY(readCode(project.getAttrString("plugin-code")), {});
    QEL_TRY(readVersion(project.getAttrString("app-version")), {});
    return {};
}

CError CPluginIdentity::readCode(const CString& text)
{
    if (text.length() != 4) {
        QEL_FAIL(
            {},
            "@qelstr_CAudioWrapper_acquirePluginCode_PluginCodeError Invalid plug-in code in string '%1'.",
            text);
    }
    std::uint32_t bits = 0;
    for (std::size_t i = 0; i < 4; ++i) {
        bits = bits << 8 | (text[i] & 0xFFu);
    }
    code = static_cast<std::int32_t>(bits);
    return {};
}

CError CPluginIdentity::readVersion(const CString& text)
{
    const std::vector<CString> parts = text.split(u'.');
    std::int32_t* const numbers[] = {&major, &minor, &patch};
    bool isValid = parts.size() == 2 || parts.size() == 3;
    for (std::size_t i = 0; isValid && i < parts.size(); ++i) {
        const auto number = parseInteger(parts[i]);
        isValid = number.has_value();
        *numbers[i] = number.value_or(0);
    }
    if (!isValid) {
        QEL_FAIL(
            {},
            "@qelstr_CAudioWrapper_parseVersion_InvalidVersion Invalid version specification in string '%1'.",
            text);
    }
    return {};
}

} // namespace qel
