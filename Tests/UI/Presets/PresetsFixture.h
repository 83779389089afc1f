// Views of presets on a running instance.
#pragma once

#include "../Views/ViewFixture.h"
#include "CDynamicList.h"
#include "InstanceFixture.h"

namespace qel::test {

// Keeps what views want to open.
class PopupLog : public TestWindow
{
public:
    CError togglePopup(CView&, const CAttrMap& parameters) override
    {
        popups.push_back(parameters);
        return {};
    }
    // One of the parameters of what was opened last, or "-".
    std::string last(const char* name) const
    {
        if (popups.empty() || popups.back().count(name) == 0) {
            return "-";
        }
        return popups.back().at(name).toString().toUtf8();
    }

    std::vector<CAttrMap> popups;
};

// An interface with these views, and the window that they believe to be in. The first child of the tree's
// root of the name "w" is the root view.
class PresetTree : public EditorTree
{
public:
    PresetTree(CAudioWrapper& host, const std::string& views) : EditorTree(host, views)
    {
        at<CView>("w").getViewContext().setWindow(&window);
        EXPECT_OK(at<CView>("w").announceContentReady());
        settle();
    }
    // Views tell their window when they go.
    ~PresetTree() { CObject::releaseObject(&at<CObject>("w")); }

    void click(const char* path)
    {
        CView& view = at<CView>(path);
        if (!view.actsDisabled()) {
            EXPECT_OK(view.onMousePress({}));
            EXPECT_OK(view.onMouseRelease({}));
        }
        settle();
    }
    void send(const char* path, const char* event, const CAttrMap& parameters = {})
    {
        EXPECT_OK(sendEvent(at<CObject>(path), event, parameters));
        settle();
    }
    // As a list tells it that was clicked.
    void select(const char* list, int index)
    {
        EXPECT_OK(at<CObject>(list).setAttribute("selected-paragraph", CAttrValue(index), true));
        EXPECT_OK(at<CView>(list).fireEvent("selected-paragraph-changed", {{"index", CAttrValue(index)}}));
        settle();
    }
    std::string attr(const char* path, const char* name)
    {
        return at<CObject>(path).getAttrString(name).toUtf8();
    }
    bool isEnabled(const char* path) { return !at<CView>(path).actsDisabled(); }
    static std::string joined(const std::vector<CDynamicListItem>& items)
    {
        std::string all;
        for (const CDynamicListItem& item : items) {
            all += (all.empty() ? "" : "|") + item.text.toUtf8();
        }
        return all;
    }
    std::string items(const char* list, const char* id = "")
    {
        std::vector<CDynamicListItem> all;
        EXPECT_OK(at<CDynamicList>(list).getItems(id, all));
        return joined(all);
    }

    PopupLog window;
};

} // namespace qel::test
