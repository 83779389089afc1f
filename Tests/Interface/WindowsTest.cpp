// The windows as delivered: that each can be made, fits what is in it, and tells what its controls do.
#include "CButton.h"
#include "CGroupLabel.h"
#include "CImageSetObject.h"
#include "CKnob.h"
#include "CReadOut.h"
#include "CTextView.h"
#include "Trace.h"
#include "Views/CInterfaceHost.h"
#include "Views/PrintViews.h"

#include <gtest/gtest.h>

#include <functional>
#include <vector>

namespace qel {
namespace {

using tools::CInterfaceHost;

// All windows that can be opened by themselves; the empty one is the main window.
constexpr const char* kWindows[] = {"",
                                    "ui:win-settings",
                                    "ui:win-global-settings",
                                    "ui:win-preset-manager",
                                    "ui:win-preset-manager-routing",
                                    "ui:win-presets",
                                    "ui:win-channel-routing",
                                    "ui:win-channel-label-setup",
                                    "ui:win-group-name-setup",
                                    "ui:win-dcfilter-editor",
                                    "ui:win-message",
                                    "ui:win-confirmation",
                                    "ui:win-file-path",
                                    "ui:virtual-keyboard-alphadigit",
                                    "ui:virtual-keyboard-digit",
                                    "ui:label-copy-paste"};

void forEachView(CObject& object, const std::function<void(CView&)>& call)
{
    if (auto* const view = dynamic_cast<CView*>(&object)) {
        call(*view);
    }
    for (std::size_t i = 0; i < object.getChildCount(); ++i) {
        forEachView(*object.getChild(i), call);
    }
}

bool isLaidOut(const CView& view)
{
    const CString placement = view.getAttrString("placement");
    return placement != "overlay" && placement != "window-overlay" && placement != "match";
}

// Places are whole pixels, sizes are not: less than a pixel is rounding.
bool isApart(const CRect& a, const CRect& b)
{
    constexpr double kSlackPx = 1.0;
    return a.isEmpty() || b.isEmpty() || a.right() <= b.x + kSlackPx || b.right() <= a.x + kSlackPx ||
           a.bottom() <= b.y + kSlackPx || b.bottom() <= a.y + kSlackPx;
}

std::string nameOf(const CView& view)
{
    return view.getFullName().toUtf8();
}

// Views that stand beside each other do not touch, and the window has room for all.
void expectRoom(CView& view, const CRect& window)
{
    std::vector<CView*> beside;
    for (std::size_t i = 0; i < view.getChildCount(); ++i) {
        auto* const child = dynamic_cast<CView*>(view.getChild(i));
        if (!child || !isLaidOut(*child) || child->getViewArea().getRect().isEmpty()) {
            continue;
        }
        const CRect rect = child->getViewArea().getRect();
        EXPECT_TRUE(rect.x > -0.51 && rect.y > -0.51 && rect.right() < window.right() + 0.51 &&
                    rect.bottom() < window.bottom() + 0.51)
            << nameOf(*child) << " reaches beyond the window";
        for (const CView* other : beside) {
            EXPECT_TRUE(isApart(rect, other->getViewArea().getRect()))
                << nameOf(*child) << " lies over " << nameOf(*other);
        }
        beside.push_back(child);
    }
}

// How wide a text is in one line, pixels.
int widthOf(const CView& view, const CString& text)
{
    CObject& shared = *CObject::sharedObject();
    CTextWrapper line;
    std::shared_ptr<const CImageSet> images; // of the last image
    line.setImageFinder([&](const CTextImageName& name) {
        auto* const set = dynamic_cast<CImageSetObject*>(shared.findObject(name.set));
        EXPECT_TRUE(set && !set->getImageSet(view.getInterfaceScale(), images));
        return images ? images->getImage(images->findRange(name.range.toUtf8()).first) : nullptr;
    });
    CObject* const font = shared.findObject(view.getAttrString("font-name"));
    EXPECT_FALSE(line.setFontObject(dynamic_cast<CFontObject*>(font), view.getInterfaceScale()));
    line.parse(text);
    line.wrap(std::nullopt);
    return line.getWidth();
}

// Labels are not cut. What users name may be longer than its place.
void expectReadable(const CView& view)
{
    const auto* const label = dynamic_cast<const CTextView*>(&view);
    const CRect rect = view.getViewArea().getRect();
    if (!label || rect.isEmpty() || view.getAttrBool("is-text-wrapped") ||
        dynamic_cast<const CReadOut*>(label) || dynamic_cast<const CGroupLabel*>(label)) {
        return;
    }
    EXPECT_LE(widthOf(view, label->getTitle()), rect.width + 0.51)
        << nameOf(view) << ": \"" << label->getTitle().toUtf8() << "\" is cut";
}

bool isControl(const CView& view)
{
    return dynamic_cast<const CButton*>(&view) || dynamic_cast<const CKnob*>(&view) ||
           dynamic_cast<const CReadOut*>(&view);
}

// One line about the sound, which fits the window's line of hints. Keys of a keyboard speak for themselves.
void expectHint(const CView& view, const CView* line)
{
    if (!isControl(view) || !line || nameOf(view).find("keyboard") != std::string::npos) {
        return;
    }
    EXPECT_FALSE(view.getHint().isEmpty()) << nameOf(view);
    EXPECT_LE(widthOf(*line, view.getHint()), line->getViewArea().getRect().width)
        << nameOf(view) << ": " << view.getHint().toUtf8();
}

class Windows : public ::testing::TestWithParam<double>
{
protected:
    Windows() : host_({GetParam(), "Default"}) {}

    CView& open(const std::string& tag)
    {
        CWindow& window = tag.empty() ? host_.mainWindow() : host_.openWindow(tag);
        return *window.getRootView();
    }

    CInterfaceHost host_;
};

// Nothing stops where a colour or a range of images is missing: it is only traced.
TEST_P(Windows, FitTheirContentTellWhatTheyDoAndFindWhatTheyAreDrawnWith)
{
    std::vector<std::string> missing;
    const auto before = setTraceHook([&](const CString& line) {
        if (line.toUtf8().find("not found") != std::string::npos) {
            missing.push_back(line.toUtf8());
        }
    });
    for (const char* const tag : kWindows) {
        SCOPED_TRACE(tag);
        CView& root = open(tag);
        const CRect window = root.getViewArea().getRect();
        const auto* const hints = dynamic_cast<CView*>(root.findObject("$window-status-path"));
        forEachView(root, [&](CView& view) {
            expectRoom(view, window);
            expectReadable(view);
            expectHint(view, hints);
        });
        EXPECT_EQ(missing, std::vector<std::string>());
        missing.clear();
    }
    setTraceHook(before);
}

INSTANTIATE_TEST_SUITE_P(Scales, Windows, ::testing::Values(0.8, 1.0, 1.25));

TEST(WindowTree, HasEveryTemplateThatCodeAndTreesName)
{
    CInterfaceHost host({});
    for (const char* const tag : {"ui:ui-param",
                                  "core:timer",
                                  "ui:view-command",
                                  "ui:run-event-params",
                                  "ui:value-list-manual",
                                  "ui:ui-param-controller",
                                  "ui:label",
                                  "ui:button",
                                  "ui:editbox-popup",
                                  "ui:control-array-buttons-item",
                                  "ui:control-array-titled-buttons-item",
                                  "ui:window-app-popup-list",
                                  "ui:selector-palette-button",
                                  "ui:control-surface-hairlines",
                                  "ui:control-surface-point-num",
                                  "ui:ruler-label",
                                  "ui:window-blocker",
                                  "ui:win-channel-label-item",
                                  "ui:win-group-name-item",
                                  "ui:button-groupsel"}) {
        EXPECT_TRUE(host.root().hasTemplate(tag)) << tag;
    }
    for (const char* const tag : kWindows) {
        EXPECT_TRUE(*tag == '\0' || host.root().hasTemplate(tag)) << tag;
    }
}

} // namespace
} // namespace qel
