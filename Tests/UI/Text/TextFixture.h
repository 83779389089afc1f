// Views with texts, in a font that is easily calculated with.
#pragma once

#include "../Views/ViewFixture.h"

#include "CFontObject.h"
#include "CImageSetObject.h"
#include "CMemoryClipboard.h"
#include "CNotifyServer.h"
#include "CTextViewAutoScroll.h"
#include "CValueList.h"

namespace qel::test {

// "One", "Two" with the sub-list "more", and "Three", which is disabled. The sub-list has "Four" and "Five".
class TestList : public CObject, public CDynamicList
{
public:
    CError getItems(const CString& listId, std::vector<CDynamicListItem>& out) override
    {
        if (listId == "more") {
            out = {{"Four", "", true, 4}, {"Five", "", true, 5}};
        } else {
            out = {{"One", "", true, 1}, {"Two", "more", true, 2}, {"Three", "", false, 3}};
        }
        return {};
    }
};

// Outlives the tree, as in the product.
struct TextServerHolder
{
    CNotifyServer server;
};

// Keeps the focus, the clipboard and what was asked for last.
class TextWindow : public TestWindow
{
public:
    CError togglePopup(CView& opener, const CAttrMap& parameters) override
    {
        asked = parameters;
        return TestWindow::togglePopup(opener, parameters);
    }
    CError passPopupResult(CView& view, const CAttrMap& parameters) override
    {
        asked = parameters;
        return TestWindow::passPopupResult(view, parameters);
    }
    CError closeWindow() override { return note("close"); }
    CError setKeyFocus(CView* view, bool isTab) override
    {
        CView* const old = std::exchange(focus, view);
        const CAttrMap parameters = {{"is-tab", CAttrValue(isTab)}};
        CError error = old && old != view ? old->receiveEvent("blur", parameters) : CError();
        return focus && focus != old ? focus->receiveEvent("focus", parameters) : std::move(error);
    }
    CView* getKeyFocus() const override { return focus; }
    void forgetView(CView& view) override { focus = focus == &view ? nullptr : focus; }
    platform::CSystemClipboard* getClipboard() override { return slow ? slow : &clipboard; }

    std::string text(const char* name)
    {
        const auto found = asked.find(name);
        return found == asked.end() ? "-" : found->second.toString().toUtf8();
    }
    CAttrMap asked;
    CView* focus = nullptr;
    CMemoryClipboard clipboard;
    platform::CSystemClipboard* slow = nullptr; // in place of the other
};

// The font "test": characters from "!" to "~", of "Ω" and "é" are boxes of 5 x 8 pixels on the baseline with
// an advance of 6, those of "bold" 7; a blank advances 4. A line has 10 pixels with a gap of 2 above and 1
// below, so it is 13 high and its baseline 11 below its top. The image set "icon" has an image of 8 x 20.
class TextFixture : private TextServerHolder, public ViewFixture
{
protected:
    static constexpr double kAdvance = 6.0;
    static constexpr double kBoldAdvance = 7.0;
    static constexpr double kBlank = 4.0;
    static constexpr std::int32_t kLine = 13;

    TextFixture()
    {
        releaseError(registerCreators(kTextRows));
        root_->setNotifyServer(&server);
        registerResource("test.fnt", regular_);
        registerResource("test_b.fnt", bold_);
        registerResource("icon.is", icon_);
    }

    ~TextFixture() override
    {
        while (root_->getChildCount() > 0) {
            CObject::releaseObject(root_->getChild(root_->getChildCount() - 1));
        }
    }

    // The views get the font by a reference to their window.
    void loadTexts(const std::vector<TreeNode>& views, const std::vector<TreeNode>& others = {})
    {
        std::vector<TreeNode> all = {
            node("font", "font", {},
                 {node("core:object", "regular", {{"is-font-style", "true"}, {"file", "test.fnt"}}),
                  node("core:object", "bold", {{"is-font-style", "true"}, {"file", "test_b.fnt"}})}),
            node("imageset", "icon", {{"file", "icon.is"}})};
        all.insert(all.end(), others.begin(), others.end());
        load(views, {}, all);
        context().setWindow(&textWindow_);
    }
    static TreeNode text(const std::string& name, Attrs attrs, const std::vector<TreeNode>& children = {})
    {
        attrs.insert(attrs.begin(), {"font-name", "font"});
        attrs.insert(attrs.begin(), {"text-color", "Knob"});
        return node("ui:textview", name, attrs, children);
    }
    CFontObject* font() { return dynamic_cast<CFontObject*>(root_->findObject("font")); }
    // The size of a view of the window "w", as "width x height".
    std::string size(const char* path)
    {
        const CRect& area = at(path).getArea();
        return CString::number(static_cast<int>(area.width)).toUtf8() + "x" +
               CString::number(static_cast<int>(area.height)).toUtf8();
    }
    // The columns of the window that show a colour in this row, from the first to the last.
    std::string columnsOf(std::uint32_t color, std::int32_t y)
    {
        std::int32_t first = -1;
        std::int32_t last = -1;
        for (std::int32_t x = 0; x < 200; ++x) {
            if (pixelAt(x, y) == color) {
                first = first < 0 ? x : first;
                last = x;
            }
        }
        return CString::number(first).toUtf8() + "-" + CString::number(last).toUtf8();
    }
    std::uint32_t pixelAt(std::int32_t x, std::int32_t y)
    {
        return map().getSector(static_cast<std::size_t>(x / kSectorPx)).image.getRow(y)[x % kSectorPx] &
               0xFFFFFFU;
    }

    // What a user does; points of the window.
    static CAttrMap pointer(double x, double y, bool isDoubleClick = false)
    {
        return {{"x", CAttrValue(x)},
                {"y", CAttrValue(y)},
                {"is-double-click", CAttrValue(isDoubleClick)},
                {"is-button-l", CAttrValue(true)}};
    }
    void move(double x, double y)
    {
        CView* const view = at("w").findViewAt({x, y});
        ASSERT_NE(view, nullptr);
        ASSERT_OK(view->onMouseMove(pointer(x, y)));
    }
    void click(double x, double y, bool isDoubleClick = false)
    {
        CView* const view = at("w").findViewAt({x, y});
        ASSERT_NE(view, nullptr);
        const CObject::CHold hold(*view);
        ASSERT_OK(view->onMousePress(pointer(x, y, isDoubleClick)));
        if (!view->isReleased()) {
            ASSERT_OK(view->onMouseRelease(pointer(x, y)));
        }
    }
    // To the view with the focus; keys that are no characters by their number.
    void key(std::uint32_t code, bool isCharacter, const char* held = "")
    {
        ASSERT_NE(textWindow_.focus, nullptr);
        CAttrMap parameters = {{"keycode", CAttrValue(static_cast<std::int32_t>(code))},
                               {"is-character", CAttrValue(isCharacter)}};
        parameters[held] = CAttrValue(true);
        ASSERT_OK(textWindow_.focus->receiveEvent("key-press", parameters));
    }
    void type(const char* utf8)
    {
        const CString text = CString::fromUtf8(utf8);
        for (std::size_t i = 0; i < text.length(); ++i) {
            key(text[i], true);
        }
    }

    TextWindow textWindow_;

    static constexpr std::uint32_t kRed = 0xC80000;
    static constexpr std::uint32_t kPanel = 0x010203;

private:
    static std::vector<std::uint8_t> boxes(double advance)
    {
        std::vector<ImageBytes> glyphs;
        const auto add = [&](std::uint32_t character, std::int32_t width, double step) {
            LayerBytes layer{0, 1, Picture(width, 8), 0, -8, step};
            for (std::size_t i = 3; i < layer.picture.pixels.size(); i += 4) {
                layer.picture.pixels[i] = 255;
            }
            glyphs.push_back({character, {layer}});
        };
        add(' ', 0, kBlank);
        for (std::uint32_t character = '!'; character <= '~'; ++character) {
            add(character, 5, advance);
        }
        add(0xE9, 5, advance);
        add(0x3A9, 5, advance);
        return fontBytes(glyphs, 10, 2, 1).bytes();
    }
    static std::vector<std::uint8_t> icon()
    {
        LayerBytes layer{0, 2, Picture(8, 20)};
        std::fill(layer.picture.pixels.begin(), layer.picture.pixels.end(), std::uint8_t{255});
        return imageSetBytes({{"Arrow", 4, 4}}, {{4, {layer}}}).bytes();
    }

    static constexpr CCreatorRow kTextRows[] = {
        creatorRow<CFontObject>("font"),
        creatorRow<CImageSetObject>("imageset"),
        creatorRow<TestList>("test:list"),
        creatorRow<CTextView>("ui:textview"),
        creatorRow<CTextViewAutoScroll>("ui:textview-auto-scroll"),
        creatorRow<CValueList>("ui:value-list-manual"),
        {nullptr, nullptr, nullptr},
    };

    std::vector<std::uint8_t> regular_ = boxes(kAdvance);
    std::vector<std::uint8_t> bold_ = boxes(kBoldAdvance);
    std::vector<std::uint8_t> icon_ = icon();
};

} // namespace qel::test
