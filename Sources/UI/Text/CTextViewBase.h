// A view that shows a text.
#pragma once

#include "CImageSetObject.h"
#include "CTextWrapper.h"
#include "CView.h"

#include <limits>

namespace qel {

// The bottom of the text views: the text, its font and colours, how large it is and where its lines lie. The
// text is parsed when it changes and broken into lines when the text, the font or the width does; a text of
// another content and the same size marks what has changed and leaves the layout alone.
//
//     title                  the text, with markup (TextMarkup.h)
//     separator-char         ends paragraphs in "title", besides line feeds
//     font-name              path of the font
//     text-color, text-color1, text-color2
//                            colours of the palette, "Text" by default; the others are for "C1" and "C2"
//     text-alignment         "left" (default), "center", "right", "justify"
//     text-alignment-v       in a view that is higher than its text: "top", "center" (default), "bottom"
//     is-text-wrapped        lines break at the width of the view
//     paragraph-spacing      pixels between paragraphs
//     line-spacing           pixels between the lines of one; negative to draw them closer
//     max-text-height        the most that the text asks for: pixels, "height" (as high as the view is by
//                            other means), or "compact" (default): as high as the text is
//
// The width that the text asks for is that of its widest paragraph without wrapping, the height that of the
// lines in the width that the view got. A line that does not wrap and is longer than the view ends in dots.
class CTextViewBase : public CView
{
public:
    CTextViewBase();

    static void buildClassInfo(CClassInfo& info);

    // Fails without a font.
    CError init() override;
    CError applyAttrs() override;

    // --- handlers of attributes

    virtual CError attrFontName();
    virtual CError attrIsTextWrapped();
    virtual CError attrLineSpacing();
    virtual CError attrMaxTextHeight();
    virtual CError attrParagraphSpacing();
    virtual CError attrSeparatorChar();
    virtual CError attrTextAlignment();
    virtual CError attrTextColor() { return readColor(0); }
    virtual CError attrTextColor1() { return readColor(1); }
    virtual CError attrTextColor2() { return readColor(2); }
    virtual CError attrTitle();
    CError attrCompactWidth() override;
    CError attrCompactHeight() override;
    CError attrInnerBorder() override;
    CError attrOffsetX() override;
    CError attrOffsetY() override;

    // As the attribute does.
    CError setTitle(const CString& text) { return setAttribute("title", text, true); }
    const CString& getTitle() const { return title_; }

    void draw(CDrawContext& context) override;

protected:
    // Slots of the view's colours that texts use; those of the view's own images begin at 0.
    enum Slot : std::size_t
    {
        kTextSlot = 4,                                         // and one each for "C1" and "C2"
        kHoverSlot = kTextSlot + CTextColorSource::kOwnColors, // the strips of lists
        kSelectSlot,
        kSelectTextSlot,
        kMarkSlot,
        kImageSlots // of images in the text
    };
    static constexpr std::size_t kMaxImageColors = 16;

    void updateClips() override;

    // --- the text

    // Sets what is shown, by default the title.
    virtual void fillText(CTextWrapper& text);
    // What fillText() gives has changed. Before applyAttrs() has run, this does nothing.
    CError refreshText();
    // An image of the sets that texts name; null if there is none. Good as long as the view.
    const CImage* findTextImage(const CTextImageName& name);
    const CTextWrapper& getText() const { return text_; }
    bool isTextWrapped() const { return isTextWrapped_; }
    char16_t getSeparator() const { return separator_; }

    // What the view needs beside its text, pixels.
    virtual double getExtraWidth() const { return 0.0; }
    // The highest that the text may ask for, pixels.
    virtual double getMaxCompactHeight() const;
    // False where the user reaches what is beyond the view.
    virtual bool isShortening() const { return true; }
    // The least height of a paragraph, pixels.
    virtual std::int32_t getParagraphHeight() const { return 0; }
    // How far the text is moved, pixels; for scrolling.
    virtual double getTextShiftX() const { return 0.0; }
    virtual double getTextShiftY() const;
    // The text has been broken into lines anew, or the view has another size. May be called while the layout
    // is being solved, so attributes may be set, but no view may be made or released.
    virtual void onTextLaidOut() {}

    // --- places, relative to the view

    // What is within the inner border and beside scroll bars.
    const CRect& getTextBox() const { return textBox_; }
    // The top of the text, and the left end of a line.
    double getTextTop() const;
    double getLineX(const CTextLine& line) const;
    // The whole width of the view at a paragraph.
    CRect getParagraphRect(std::size_t paragraph) const;
    // A part of the view, relative to it, looks different.
    void markPart(const CRect& part);

    // --- drawing

    static constexpr std::size_t kTextClip = 2;
    // Before the lines.
    virtual void drawBehindText(CDrawContext&) {}
    // False for a paragraph that something else is shown in place of.
    virtual bool isParagraphShown(std::size_t) const { return true; }
    // What a paragraph is written in.
    virtual const CPaletteColor& getParagraphColor(std::size_t paragraph);
    const CPaletteColor& getTextSlotColor(std::size_t slot);

private:
    class CColors;

    static constexpr double kNoLimit = std::numeric_limits<double>::infinity();

    bool isReady() const { return isReady_ && !isReleased(); }
    CError loadFont();
    CError readColor(std::size_t color);
    void layoutText();
    bool placeTextBox();
    void tellCompactSize();
    void tellCompactSize(CAxis axis, double size, const char* attribute);
    void updateImageColors();

    CTextWrapper text_;
    CStringMap<std::shared_ptr<const CImageSet>> imageSets_; // of images in texts
    std::vector<CString> imageColors_;
    CRect textBox_;
    bool isReady_ = false;
    CAlignment alignmentH_ = CAlignment::kStart;
    CAlignment alignmentV_ = CAlignment::kCenter;
    char16_t separator_ = 0;
    bool isHeightKept_ = false; // the text asks for no more than the view has
    double maxHeight_ = kNoLimit;

    // Bound attributes.
    CString title_;
    bool isTextWrapped_ = false;
};

} // namespace qel
