// A font of the tree, with its styles.
#pragma once

#include "CFont.h"
#include "CObject.h"
#include "CSharedDataSet.h"

#include <array>

namespace qel {

enum class CFontStyle : std::uint8_t
{
    kRegular,
    kBold,
    kItalic,
    kBoldItalic,
    kSuperscript
};

// Tag `font`. Groups the styles of a font: each child with "is-font-style" true is one, called by its name
// "regular", "bold", "italic", "bold-italic" or "superscript", with the resource named by its "file". Files
// are loaded when a view first asks for them.
class CFontObject : public CObject
{
public:
    static constexpr std::size_t kStyleCount = 5;

    static void buildClassInfo(CClassInfo& info);

    // Collects the styles. Fails on a child with an unknown style name.
    CError initChilds() override;

    // The font of a style for an interface scale, the regular one for a style that has no child. Share the
    // pointer as long as text is drawn with it. On error, or without a regular style, `out` is null.
    CError getFont(CFontStyle style, double interfaceScale, std::shared_ptr<const CFont>& out);

private:
    struct Style
    {
        CString file;
        CSharedDataSet<CFont> font;
    };

    std::array<Style, kStyleCount> styles_;
};

} // namespace qel
