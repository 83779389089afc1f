// An instance with its editor, and a user in front of it, without a window system.
#pragma once

#include "COffscreenUser.h"
#include "CTextView.h"
#include "CUserInterface.h"
#include "InstanceFixture.h"
#include "SystemEvents.h"

namespace qel::test {

// The interface as it is delivered. Several at once are several instances in one process.
class EditorRig
{
public:
    EditorRig()
    {
        EXPECT_OK(
            interface_.create({{CAudioInterfaceClientConnectorVST::kRootVar,
                                CAudioInterfaceClientConnectorVST::rootVarOf(*host.getRoot()).toString()}}));
        EXPECT_OK(interface_.load("UserInterface.xml"));
        user_.emplace(at<CWindow>(CUserInterface::kMainWindowPath));
        EXPECT_OK(interface_.open());
        wait();
    }

    template <class T>
    T& at(const std::string& path)
    {
        T* const object = dynamic_cast<T*>(interface_.getRoot()->findObject(CString(path)));
        if (!object) {
            throw std::runtime_error("no object " + path);
        }
        return *object;
    }
    COffscreenUser& user() { return *user_; }
    // Longer than whatever moves.
    void wait(double sec = 1.0) { user_->advance(sec); }
    void click(const std::string& path)
    {
        user_->click(at<CView>(path));
        wait();
    }
    // A button of the main window.
    void clickMain(const std::string& path) { click("ui.main-window.c." + path); }
    // Upwards, pixels.
    void drag(const std::string& path, double up)
    {
        user_->moveTo(at<CView>(path));
        user_->press();
        for (int i = 0; i < 4; ++i) {
            user_->moveBy(0.0, -up / 4.0);
            wait(0.05);
        }
        user_->release();
        wait();
    }
    void type(const std::u32string& text)
    {
        user_->type(text);
        user_->key(platform::key::kEnter);
        wait();
    }
    // Points to an item of a list that shows all of its items, as far as it is filled with them.
    void pointAt(const std::string& list, int index)
    {
        CTextView& view = at<CTextView>(list);
        const double rowPx = 19.0;
        user_->moveTo(view);
        const CRect whole = view.getViewArea().getRect();
        user_->moveBy(0.0, rowPx * (index + 0.5) - whole.height / 2.0);
        wait(0.05);
    }
    void clickItem(const std::string& list, int index)
    {
        pointAt(list, index);
        user_->press();
        user_->release();
        wait();
    }
    // The path of the window that was opened last.
    std::string topWindow()
    {
        CView* const root =
            at<CWindow>(CUserInterface::kMainWindowPath).getSystem().getWindows().back()->getRootView();
        return root->getFullName().toUtf8();
    }
    std::string attr(const std::string& path, const char* name)
    {
        return at<CObject>(path).getAttrString(name).toUtf8();
    }

    ListeningHost host;

private:
    CUserInterface interface_;
    std::optional<COffscreenUser> user_;
};

} // namespace qel::test
