// Definition of a link between two processes of a compound.
#include "Definitions/CAudioProcessLinkDef.h"

#include "Definitions/CAudioProcessDef.h"
#include "NumberSyntax.h"

namespace qel {

namespace {

struct End
{
    const char* portError;
    const char* nameError;
};

constexpr End kSrc = {"@qelstr_CAudioProcessLinkDef_init_SrcPortError "
                      "Invalid port in the 'src' attribute value '%1' specified.",
                      "@qelstr_CAudioProcessLinkDef_init_SrcNameError "
                      "Invalid process in the 'src' attribute value '%1' specified."};
constexpr End kDst = {"@qelstr_CAudioProcessLinkDef_init_DstPortError "
                      "Invalid port in the 'dst' attribute value '%1' specified.",
                      "@qelstr_CAudioProcessLinkDef_init_DstNameError "
                      "Invalid process in the 'dst' attribute value '%1' specified."};

CError readEnd(const CObject& link, const CString& text, const End& end, CAudioPortRef& out)
{
    const std::size_t slash = text.find(u'/');
    if (slash != CString::kNone) {
        out.port = parseInteger(text.substring(slash + 1)).value_or(-1);
        if (out.port < 0) {
            QEL_FAIL(link.getFullName(), end.portError, text);
        }
    }
    out.name = text.substring(0, slash);
    out.isSelf = out.name == "*";
    if (out.name.startsWith(".")) {
        out.name = out.name.substring(1);
    }
    if (out.name.isEmpty()) {
        QEL_FAIL(link.getFullName(), end.nameError, text);
    }
    return {};
}

CError checkName(const CObject& link, const CString& text, const End& end, const CAudioPortRef& ref,
                 const CAudioProcessDef& compound)
{
    if (!ref.isSelf && !compound.findProcessDef(ref.name)) {
        QEL_FAIL(link.getFullName(), end.nameError, text);
    }
    return {};
}

} // namespace

void CAudioProcessLinkDef::buildClassInfo(CClassInfo& info)
{
    using Self = CAudioProcessLinkDef;
    CObject::buildClassInfo(info);
    info.bind<&Self::src_>("src", std::nullopt);
    info.bind<&Self::dst_>("dst", std::nullopt);
    info.bind<&Self::stateId_>("state-id", kNotGiven);
    info.bind<&Self::fullStateId_>("bypass-state-id", kNotGiven);
}

CError CAudioProcessLinkDef::init()
{
    QEL_TRY(CObject::init(), getFullName());
    if (!src_) {
        QEL_FAIL(getFullName(), "@qelstr_CAudioProcessLinkDef_init_NoSrc No 'src' attribute defined.");
    }
    if (!dst_) {
        QEL_FAIL(getFullName(), "@qelstr_CAudioProcessLinkDef_init_NoDst No 'dst' attribute defined.");
    }
    QEL_TRY(readEnd(*this, *src_, kSrc, source_), getFullName());
    QEL_TRY(readEnd(*this, *dst_, kDst, destination_), getFullName());
    return readState();
}

CError CAudioProcessLinkDef::readState()
{
    // The second name is the full one and wins where both stand.
    for (const std::int32_t given : {stateId_, fullStateId_}) {
        if (given == kNotGiven) {
            continue;
        }
        bypassStateId_ = given;
        if (given < -1) {
            QEL_FAIL(getFullName(),
                     "@qelstr_CAudioProcessLinkDef_init_StateError "
                     "Invalid state identifier '%1' specified.",
                     given);
        }
    }
    return {};
}

CError CAudioProcessLinkDef::checkNames(const CAudioProcessDef& compound) const
{
    QEL_TRY(checkName(*this, *src_, kSrc, source_, compound), getFullName());
    QEL_TRY(checkName(*this, *dst_, kDst, destination_, compound), getFullName());
    return {};
}

} // namespace qel
