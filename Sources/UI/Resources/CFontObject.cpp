// A font of the tree, with its styles.
#include "CFontObject.h"

#include <algorithm>

namespace qel {

namespace {

constexpr std::array<const char*, CFontObject::kStyleCount> kStyleNames = {"regular", "bold", "italic",
                                                                           "bold-italic", "superscript"};

} // namespace

void CFontObject::buildClassInfo(CClassInfo& info)
{
    CObject::buildClassInfo(info);
}

CError CFontObject::initChilds()
{
    QEL_TRY(CObject::initChilds(), getFullName());
    for (std::size_t i = 0; i < getChildCount(); ++i) {
        const CObject& child = *getChild(i);
        if (!child.getAttrBool("is-font-style")) {
            continue;
        }
        const CString name = child.getAttrString("name");
        const auto found =
            std::ranges::find_if(kStyleNames, [&](const char* styleName) { return name == styleName; });
        if (found == kStyleNames.end()) {
            QEL_FAIL(child.getFullName(),
                     "@qelstr_CFontObject_initChilds_UnknownStyle Unknown font style '%1'.", name);
        }
        styles_[static_cast<std::size_t>(found - kStyleNames.begin())].file = child.getAttrString("file");
    }
    return {};
}

CError CFontObject::getFont(CFontStyle style, double interfaceScale, std::shared_ptr<const CFont>& out)
{
    out = nullptr;
    Style& wanted = styles_[static_cast<std::size_t>(style)];
    Style& chosen = wanted.file.isEmpty() ? styles_[0] : wanted;
    if (!chosen.file.isEmpty()) {
        QEL_TRY(chosen.font.get(chosen.file, interfaceScale, out), getFullName());
    }
    return {};
}

} // namespace qel
