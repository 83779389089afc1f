// The window of one plug-in instance, as a VST host opens it.
#include "CAudioWrapperVSTEditor.h"

#include "CAudioWrapperVST.h"
#include "CInterfaceScale.h"
#include "CWindow.h"
#include "FailureReport.h"

#include <cmath>

namespace qel {

namespace {

constexpr const char* kTree = "UserInterface.xml";
constexpr double kDefaultSidePx = 100.0; // of a project that names none

} // namespace

CAudioWrapperVSTEditor::CAudioWrapperVSTEditor(CAudioWrapperVST& wrapper)
    : AEffEditor(&wrapper), wrapper_(wrapper), rect_()
{
    updateRect();
}

CAudioWrapperVSTEditor::~CAudioWrapperVSTEditor() = default;

void CAudioWrapperVSTEditor::updateRect()
{
    CInterfaceScale::readSetting();
    const CObject* const project = wrapper_.getRoot()->findObject("shared::project");
    const auto side = [&](const char* name) {
        const double px = project ? project->getAttrReal(name, kDefaultSidePx) : kDefaultSidePx;
        return static_cast<std::int16_t>(std::round(px * CInterfaceScale::get()));
    };
    rect_.right = side("window-width");
    rect_.bottom = side("window-height");
}

bool CAudioWrapperVSTEditor::getRect(ERect** rect)
{
    if (!interface_.getRoot()) {
        updateRect();
    }
    *rect = &rect_;
    return true;
}

CError CAudioWrapperVSTEditor::buildTree(void* parent)
{
    QEL_TRY(interface_.create({{"PluginRootPtrVar", pointerText(wrapper_.getRoot())},
                               {"ParentWindow", pointerText(parent)},
                               {"plugin-tech", "VST PlugIn Technology by Steinberg"}}),
            {});
    return interface_.load(kTree);
}

bool CAudioWrapperVSTEditor::open(void* parent)
{
    close();
    updateRect();
    if (const CError error = buildTree(parent)) {
        showFailureWindow(error);
        interface_.release();
        return false;
    }
    if (const CError error = interface_.open()) {
        traceError(error);
        interface_.release();
        return false;
    }
    AEffEditor::open(parent);
    return true;
}

void CAudioWrapperVSTEditor::close()
{
    AEffEditor::close();
    interface_.release();
}

void CAudioWrapperVSTEditor::idle()
{
    interface_.idle();
}

bool CAudioWrapperVSTEditor::onWheel(float distance)
{
    CWindow* const window = interface_.getMainWindow();
    return window && window->wheelBy(distance < 0.0f ? -1.0 : 1.0);
}

} // namespace qel
