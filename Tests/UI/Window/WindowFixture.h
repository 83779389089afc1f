// Small trees with windows, and a user in front of them, without a window system.
#pragma once

#include "../Views/ViewFixture.h"
#include "CGlobalSettings.h"
#include "CNotifyServer.h"
#include "COffscreenUser.h"
#include "CStdEventBridge.h"
#include "CTimer.h"
#include "CWinDrag.h"

#include <optional>

namespace qel::test {

// Outlives the tree, as in the product.
struct ServerHolder
{
    CNotifyServer server;
};

// A tree as ViewFixture makes it, with a main window "ui.main-window" of 200 x 100 pixels in place of "w".
class WindowFixture : private ServerHolder, public ViewFixture
{
protected:
    WindowFixture()
    {
        releaseError(registerCreators(kWindowRows));
        root_->setNotifyServer(&server);
    }
    ~WindowFixture() override
    {
        while (root_->getChildCount() > 0) {
            CObject::releaseObject(root_->getChild(root_->getChildCount() - 1));
        }
    }

    // The tree, its window not yet open. `others` come before the window.
    CError build(const std::vector<TreeNode>& views, Attrs rootAttrs = {}, Attrs rendererAttrs = {},
                 const std::vector<TreeNode>& others = {}, const std::vector<TreeNode>& ui = defaultUi())
    {
        rootAttrs.insert(rootAttrs.begin(),
                         {{"palette", "{*/ui palette-name}"}, {"width", "200"}, {"height", "100"}});
        rendererAttrs.insert(rendererAttrs.end(), {{"is-main-window", "true"}, {"gradient-fps", "20"}});
        std::vector<TreeNode> content{node("ui:window-renderer", "window-renderer", rendererAttrs)};
        content.insert(content.end(), views.begin(), views.end());
        std::vector<TreeNode> parts = ui;
        parts.push_back(node("ui:window-drag", "main-window", rootAttrs, content));
        TreeNode tree = node("", "", {},
                             {node("palette", "pal", {}, {node("palette", "Test", {{"file", "views.pal"}})}),
                              node("test:log", "log")});
        for (const TreeNode& other : others) {
            tree.child(other);
        }
        tree.child(node("core:object", "ui", {{"palette-name", "Test"}}, parts));
        return root_.load(tree);
    }
    void open(const std::vector<TreeNode>& views, const Attrs& rootAttrs = {},
              const Attrs& rendererAttrs = {}, const std::vector<TreeNode>& others = {})
    {
        ASSERT_OK(build(views, rootAttrs, rendererAttrs, others));
        user_.emplace(window());
        ASSERT_OK(window().open());
    }
    static std::vector<TreeNode> defaultUi()
    {
        return {node("ui:ui-event-bridge", "event-bridge"),
                node("ui:window-shared-data", "window-shared-data"),
                node("core:global-settings", "global-settings")};
    }

    CWindow& window(const char* path = "ui.main-window.window-renderer")
    {
        return *dynamic_cast<CWindow*>(root_->findObject(path));
    }
    COffscreenUser& user() { return *user_; }
    // A view of the main window.
    CView& in(const std::string& path) { return at(("ui.main-window." + path).c_str()); }
    // A command that notes the event, as the view's name and the event's.
    static TreeNode noting(const std::string& event, const std::string& text)
    {
        return command(event, {{"run-event", "note"}, {"run-event-target", "log"}, {"run-event-params", "p"}},
                       {node("core:object", "p", {{"", text}})});
    }

private:
    static constexpr CCreatorRow kWindowRows[] = {
        creatorRow<CGlobalSettings>("core:global-settings"), creatorRow<CTimer>("core:timer"),
        creatorRow<CStdEventBridge>("ui:ui-event-bridge"),   creatorRow<CWinDrag>("ui:window-drag"),
        creatorRow<CWindow>("ui:window-renderer"),           {nullptr, nullptr, nullptr},
    };

    std::optional<COffscreenUser> user_;
};

} // namespace qel::test
