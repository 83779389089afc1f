// Small trees of views without a window system.
#pragma once

#include "CDrawLoad.h"
#include "CPaletteObject.h"
#include "CSharedAttribute.h"
#include "CView.h"
#include "CViewColorSlot.h"
#include "CViewCommand.h"
#include "CViewState.h"
#include "CViewStateSwitch.h"
#include "CViewStateSwitchObject.h"
#include "CViewWindow.h"
#include "CreatorRegistry.h"
#include "GraphicsBytes.h"
#include "Streams/ResourceMap.h"
#include "TreeFixture.h"

namespace qel::test {

// Fills its area with the colour of slot 0.
class FilledView : public CView
{
public:
    void draw(CDrawContext& context) override { drawFilledRect(context, 0, {0, 0, 1000, 1000}, 1, 1.0); }
};

// Event "note": keeps the parameter "text".
class EventLog : public CObject
{
public:
    static void buildClassInfo(CClassInfo& info)
    {
        CObject::buildClassInfo(info);
        info.handleEvent<&EventLog::note>("note");
    }
    CError note(const CAttrMap& parameters)
    {
        for (const auto& [key, value] : parameters) {
            lines.push_back(key.toUtf8() + "=" + value.toString().toUtf8());
        }
        return {};
    }
    std::vector<std::string> lines;
};

// Writes down what views ask of their window; to close it ends its views at once.
class TestWindow : public CViewWindow
{
public:
    CError togglePopup(CView&, const CAttrMap&) override { return note("toggle"); }
    CError passPopupResult(CView&, const CAttrMap&) override { return note("result"); }
    CError closePopup(CView&) override { return note("close popup"); }
    CError closeWindow() override
    {
        CObject::releaseObject(root);
        root = nullptr;
        return note("close");
    }
    CError adoptRootSize() override { return note("size"); }
    CError exitPointer() override { return note("exit"); }
    void forgetView(CView&) override { ++forgotten; }
    CError onHintChanged(CView& view) override { return note("hint " + view.getHint().toUtf8()); }
    CError setKeyFocus(CView*, bool) override { return note("focus"); }
    CView* getKeyFocus() const override { return nullptr; }
    platform::CSystemClipboard* getClipboard() override { return nullptr; }

    CError note(const std::string& text)
    {
        calls.push_back(text);
        return {};
    }
    std::vector<std::string> calls;
    int forgotten = 0;
    CView* root = nullptr;
};

using Attrs = std::vector<std::pair<std::string, std::string>>;

inline TreeNode node(const std::string& tag, const std::string& name, const Attrs& attrs = {},
                     const std::vector<TreeNode>& children = {})
{
    TreeNode made(tag, name);
    for (const auto& [key, value] : attrs) {
        made.attr(key, value);
    }
    for (const TreeNode& child : children) {
        made.child(child);
    }
    return made;
}
inline TreeNode view(const std::string& name, const Attrs& attrs = {},
                     const std::vector<TreeNode>& children = {})
{
    return node("ui:view", name, attrs, children);
}
inline TreeNode state(const std::string& name, Attrs attrs)
{
    attrs.emplace_back("state-name", name);
    return node("ui:view-state", "state", attrs);
}
inline TreeNode command(const std::string& event, Attrs attrs, const std::vector<TreeNode>& children = {})
{
    attrs.emplace_back("on-event", event);
    return node("ui:view-command", "command", attrs, children);
}

template <class Class>
constexpr CCreatorRow creatorRow(const char* tag)
{
    return {tag, &newObject<Class>, &Class::buildClassInfo};
}

// A tree with what every interface has ("ui", "pal", "log"), and one window of 200 x 100 pixels, "w".
class ViewFixture : public TreeFixture
{
protected:
    ViewFixture()
    {
        clearCreators();
        releaseError(registerCreators(kRows));
        registerResource("views.pal", palette_);
        registerResource("blue.pal", bluePalette_);
        setTime(0.0);
    }
    ~ViewFixture() override
    {
        CObject::releaseObject(root_->findObject("w"));
        clearCreators();
    }

    void load(const std::vector<TreeNode>& views, Attrs rootAttrs = {},
              const std::vector<TreeNode>& others = {})
    {
        rootAttrs.insert(rootAttrs.end(), {{"is-root-view", "true"},
                                           {"palette", "{*/ui palette-name}"},
                                           {"width", "200"},
                                           {"height", "100"}});
        TreeNode tree = node("", "", {},
                             {node("core:object", "ui", {{"palette-name", "Test"}},
                                   {node("ui:window-shared-data", "window-shared-data")}),
                              node("palette", "pal", {},
                                   {node("palette", "Test", {{"file", "views.pal"}}),
                                    node("palette", "Blue", {{"file", "blue.pal"}})}),
                              node("test:log", "log")});
        for (const TreeNode& other : others) {
            tree.child(other);
        }
        tree.child(view("w", rootAttrs, views));
        ASSERT_OK(root_.load(tree));
        window_.root = &at("w");
        at("w").getViewContext().setWindow(&window_);
        ASSERT_OK(at("w").announceContentReady());
        ASSERT_OK(map().resize(200, 100));
        frame(0.0);
    }

    CView& at(const char* path) { return *dynamic_cast<CView*>(root_->findObject(path)); }
    CViewContext& context() { return at("w").getViewContext(); }
    CSectorMap& map() { return context().getSectorMap(); }
    std::string attr(const char* path, const char* name)
    {
        const CAttrValue* value = root_->findObject(path)->findAttr(name);
        return value ? value->toString().toUtf8() : "-";
    }
    void set(const char* path, const char* name, const char* value)
    {
        ASSERT_OK(root_->findObject(path)->setAttribute(name, value, true));
    }
    static void setTime(double sec) { drawing::setFrameTime(sec); }
    void frame(double sec)
    {
        setTime(sec);
        context().tickTimer();
        context().tickGradientTimer();
        ASSERT_OK(at("w").solveLayout());
        map().paintDirty();
        map().present();
    }
    // What is shown at a point, as 0xRRGGBB.
    std::uint32_t pixel(std::int32_t x, std::int32_t y)
    {
        return map().getSector(static_cast<std::size_t>(x / kSectorPx)).image.getRow(y)[x % kSectorPx] &
               0xFFFFFFU;
    }
    std::vector<std::string>& log() { return dynamic_cast<EventLog&>(*root_->findObject("log")).lines; }

    TestWindow window_;

private:
    static constexpr CCreatorRow kRows[] = {
        creatorRow<CObject>("core:object"),
        creatorRow<CSharedAttribute>("core:shared-attribute"),
        creatorRow<CPaletteObject>("palette"),
        creatorRow<EventLog>("test:log"),
        creatorRow<FilledView>("ui:view"),
        creatorRow<CViewColorSlot>("ui:view-color-slot"),
        creatorRow<CViewCommand>("ui:view-command"),
        creatorRow<CViewState>("ui:view-state"),
        creatorRow<CViewStateSwitch>("ui:view-state-switch"),
        creatorRow<CViewStateSwitchObject>("view-state-switch-object"),
        creatorRow<FilledView>("ui:window-blocker"),
        creatorRow<CWindowSharedData>("ui:window-shared-data"),
        {nullptr, nullptr, nullptr},
    };

    std::vector<std::uint8_t> palette_ = paletteBytes({{"Default", 1.0, 9, 9, 9},
                                                       {"Knob", 1.0, 200, 0, 0},
                                                       {"Knob_Hover", 1.0, 0, 200, 0},
                                                       {"Panel", 1.0, 1, 2, 3},
                                                       {"Black", 1.0, 0, 0, 0},
                                                       {"White", 1.0, 255, 255, 255},
                                                       {"Alarm|0", 1.0, 10, 0, 0},
                                                       {"Alarm|1", 1.0, 20, 0, 0},
                                                       {"Alarm|2", 1.0, 30, 0, 0},
                                                       {"Disabled", 1.0, 50, 50, 50},
                                                       {"DisabledText", 1.0, 60, 60, 60}},
                                                      {{"Alarm", 3}})
                                             .bytes();
    std::vector<std::uint8_t> bluePalette_ =
        paletteBytes({{"Knob", 1.0, 0, 0, 255}, {"Panel", 1.0, 0, 0, 9}}, {}).bytes();
};

} // namespace qel::test
