// Definition of a link between two processes of a compound.
#include "Definitions/CAudioProcessLinkDef.h"

#include "Definitions/CAudioProcessDef.h"
#include "NumberSyntax.h"

namespace qel {

namespace {

struct End
{
    const char* attribute;
    const char* portError;
    const char* nameError;
};

constexpr End kSrc = {"src",
                      "@qelstr_CAudioProcessLinkDef_init_SrcPortError "
                      "Invalid port in the 'src' attribute value '%1' specified.",
                      "@qelstr_CAudioProcessLinkDef_init_SrcNameError "
                      "Invalid process in the 'src' attribute value '%1' specified."};
constexpr End kDst = {"dst",
                      "@qelstr_CAudioProcessLinkDef_init_DstPortError "
                      "Invalid port in the 'dst' attribute value '%1' specified.",
                      "@qelstr_CAudioProcessLinkDef_init_DstNameError "
                      "Invalid process in the 'dst' attribute value '%1' specified."};

CError readEnd(const CObject& link, const End& end, CAudioPortRef& out)
{
    const CString text = link.getAttrString(end.attribute);
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

CError checkName(const CObject& link, const End& end, const CAudioPortRef& ref,
                 const CAudioProcessDef& compound)
{
    if (!ref.isSelf && !compound.findProcessDef(ref.name)) {
        QEL_FAIL(link.getFullName(), end.nameError, link.getAttrString(end.attribute));
    }
    return {};
}

} // namespace

CError CAudioProcessLinkDef::init()
{
    QEL_TRY(CObject::init(), getFullName());
    if (!findAttr(kSrc.attribute)) {
        QEL_FAIL(getFullName(), "@qelstr_CAudioProcessLinkDef_init_NoSrc No 'src' attribute defined.");
    }
    if (!findAttr(kDst.attribute)) {
        QEL_FAIL(getFullName(), "@qelstr_CAudioProcessLinkDef_init_NoDst No 'dst' attribute defined.");
    }
    QEL_TRY(readEnd(*this, kSrc, source_), getFullName());
    QEL_TRY(readEnd(*this, kDst, destination_), getFullName());
    return readState();
}

CError CAudioProcessLinkDef::readState()
{
    // The second name is the full one and wins where both stand.
    for (const char* attribute : {"state-id", "bypass-state-id"}) {
        bypassStateId_ = getAttrInt(attribute, bypassStateId_);
        if (bypassStateId_ < -1) {
            QEL_FAIL(getFullName(),
                     "@qelstr_CAudioProcessLinkDef_init_StateError "
                     "Invalid state identifier '%1' specified.",
                     bypassStateId_);
        }
    }
    return {};
}

CError CAudioProcessLinkDef::checkNames(const CAudioProcessDef& compound) const
{
    QEL_TRY(checkName(*this, kSrc, source_, compound), getFullName());
    QEL_TRY(checkName(*this, kDst, destination_, compound), getFullName());
    return {};
}

} // namespace qel
