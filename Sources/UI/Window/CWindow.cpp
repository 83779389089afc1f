// The bridge between a tree of views and a window.
#include "CWindow.h"

#include "CDrawLoad.h"
#include "CGlobalSettings.h"
#include "CUIEventBridge.h"

#include <algorithm>
#include <charconv>

namespace qel {

namespace {

constexpr const char* kGlobalSettingsPath = "ui.global-settings";
constexpr const char* kParentWindow = "ParentWindow";

constexpr int kMaxSidePx = 8192;
constexpr double kDefaultFps = 40.0;
constexpr double kDefaultGradientFps = 20.0;
constexpr double kDefaultCursorFps = 3.0;
constexpr double kDefaultWatchFps = 30.0;

// Those that templates and openers may give the root view instead.
constexpr const char* kRootAttributes[] = {
    "auto-click-timeout",
    "is-main-window",
    "is-popup-window",
    "is-helper-window",
    "is-taskbar",
    "window-x",
    "window-y",
    "window-alignment",
    "constrain-y",
    "unique-name",
    "opener",
    "title",
    "is-drop-down-behavior-disabled",
};

// A native handle as the editor writes it: hexadecimal digits.
platform::NativeWindow parseHandle(const CString& text)
{
    const std::string digits = text.toUtf8();
    platform::NativeWindow handle = 0;
    std::from_chars(digits.data(), digits.data() + digits.size(), handle, 16);
    return handle;
}

} // namespace

void CWindow::buildClassInfo(CClassInfo& info)
{
    using Self = CWindow;
    CObject::buildClassInfo(info);
    info.bind<&Self::fps_>("fps", kDefaultFps);
    info.bind<&Self::gradientFps_>("gradient-fps", kDefaultGradientFps);
    info.bind<&Self::cursorFps_>("cursor-fps", kDefaultCursorFps);
    info.bind<&Self::deactivateFps_>("deactivate-fps", kDefaultWatchFps);
    info.bind<&Self::autoClickTimeoutSec_, &Self::attrAutoClickTimeout>("auto-click-timeout", -1.0);
    info.bind<&Self::autoClickFps_>("auto-click-fps", kDefaultWatchFps);
    info.bind<&Self::isMainWindow_>("is-main-window", false);
    info.bind<&Self::isPluginVst_>("is-plugin-vst", false);
    info.bind<&Self::isPopupWindow_>("is-popup-window", false);
    info.bind<&Self::isHelperWindow_>("is-helper-window", false);
    info.bind<&Self::isTaskbar_>("is-taskbar", false);
    info.bind<&Self::isExportDrawLoad_, &Self::attrIsExportDrawLoad>("is-export-draw-load", false);
    info.bind<&Self::isDropDownDisabled_>("is-drop-down-behavior-disabled", false);
    info.bind<&Self::uniqueName_>("unique-name", "");
    info.bind<&Self::title_, &Self::attrTitle>("title", "Untitled");
    info.handleEvent<&Self::eventKeyFocus>("key-focus");
    info.handleEvent<&Self::eventCloseWindow>("close-window");
    info.handleEvent<&Self::eventMouseButtonReset>("mouse-button-reset");
    info.handleEvent<&Self::eventResetAutoClick>("reset-auto-click");
    info.handleEvent<&Self::onRenderTick>("render-tick");
    info.handleEvent<&Self::onGradientTick>("gradient-tick");
    info.handleEvent<&Self::onCursorTick>("cursor-tick");
    info.handleEvent<&Self::onDeactivateTick>("deactivate-tick");
    info.handleEvent<&Self::onAutoClickTick>("auto-click-tick");
}

template <class Action>
void CWindow::handle(Action&& action)
{
    if (!isOpen_) {
        return;
    }
    const CHold hold(*this);
    drawing::setFrameTime(system_->getTimeSec());
    if (const CError error = action()) {
        traceError(error);
    }
    if (isOpen_) {
        if (const CError error = hintLine_.show(*this, *rootView_, pointer_.getTop())) {
            traceError(error);
        }
        showCursor();
    }
}

void CWindow::showCursor()
{
    const CView* const view = pointer_.getTop();
    const bool isText = view && !view->actsDisabled() && view->getAttrString("cursor") == "text";
    shell_.setCursor(isText ? platform::CursorShape::kText : platform::CursorShape::kArrow);
}

CWindow::CWindow() = default;

CWindow::~CWindow() = default;

// --- life

CError CWindow::init()
{
    QEL_TRY(CObject::init(), getFullName());
    QEL_TRY(findParts(), getFullName());
    system_ = sharedData_->getWindowSystem();
    if (!system_) {
        system_ = std::make_shared<CWindowSystem>();
        sharedData_->setWindowSystem(system_);
    }
    QEL_TRY(readRootAttributes(), getFullName());
    pointer_.setRoot(rootView_);
    context_->setWindow(this);
    return {};
}

CError CWindow::findParts()
{
    CUIEventBridge* bridge = nullptr;
    QEL_TRY(require(bridge, CUIEventBridge::kPath,
                    "@qelstr_CWindow_init_NoEventBridge Unable to locate a suitable event bridge."),
            getFullName());
    QEL_TRY(require(sharedData_, CWindowSharedData::kPath,
                    "@qelstr_CWindow_init_NoSharedData Unable to find window shared data object."),
            getFullName());
    auto* const parent = dynamic_cast<CViewBaseState*>(getParent());
    if (!parent) {
        QEL_FAIL(getFullName(), "@qelstr_CWindow_init_NoSectorMap Unable to find sector map.");
    }
    rootView_ = dynamic_cast<CView*>(parent);
    if (!rootView_ || !rootView_->isRootView()) {
        rootView_ = nullptr;
        QEL_FAIL(getFullName(), "@qelstr_CWindow_init_NoRootView Unable to find root view.");
    }
    context_ = rootView_->getViewContext().shared_from_this();
    QEL_TRY(require(settings_, kGlobalSettingsPath,
                    "@qelstr_CWindow_init_NoGlobalSettings Unable to locate global settings object."),
            getFullName());
    pointer_.setSettings(*settings_);
    return {};
}

CError CWindow::readRootAttributes()
{
    for (const char* const name : kRootAttributes) {
        const CAttrValue* const value = findAttr(name) ? nullptr : rootView_->findAttr(name);
        if (value) {
            QEL_TRY(setAttribute(name, CAttrValue(*value), true), getFullName());
        }
    }
    return {};
}

CError CWindow::open()
{
    if (isOpen_ || !rootView_) {
        return {};
    }
    const CHold hold(*this);
    if (CWindow* const other = system_->findUnique(uniqueName_)) {
        other->raise();
        return {};
    }
    drawing::setFrameTime(system_->getTimeSec());
    Size size;
    QEL_TRY(solveRootSize(size), getFullName());
    QEL_TRY(openShell(size), getFullName());
    QEL_TRY(applySize(size), getFullName());
    QEL_TRY(timers_.start(CWindowTimers::kRender, fps_, "render-tick"), getFullName());
    QEL_TRY(timers_.start(CWindowTimers::kGradient, gradientFps_, "gradient-tick"), getFullName());
    QEL_TRY(timers_.start(CWindowTimers::kCursor, cursorFps_, "cursor-tick"), getFullName());
    isOpen_ = true;
    system_->addWindow(*this);
    QEL_TRY(attrAutoClickTimeout(), getFullName());
    handle([&] { return rootView_->fireEvent("window-create", {}); });
    handle([&] { return rootView_->announceContentReady(); });
    handle([&] { return adoptRootSize(); });
    // What the content has become decides where it lies, too.
    if (isOpen_ && size_ != size) {
        handle([&] { return placeAgain(); });
    }
    renderFrame();
    if (isOpen_) {
        shell_.show();
    }
    return {};
}

CError CWindow::connect()
{
    const CAttrValue* const parent = isMainWindow_ ? getRoot()->findAttr(kParentWindow) : nullptr;
    return parent ? system_->connect(parseHandle(parent->toString()), title_) : CError();
}

CError CWindow::openShell(const Size& size)
{
    using platform::WindowKind;
    QEL_TRY(connect(), getFullName());
    platform::WindowDescription description;
    const bool isList = isHelperWindow_ || isDropDown();
    description.kind = isMainWindow_ ? WindowKind::kChild : isList ? WindowKind::kPopup : WindowKind::kDialog;
    description.title = title_.toUtf8();
    description.isOnTaskbar = isTaskbar_;
    description.isHelper = isHelperWindow_;
    if (!isMainWindow_) {
        QEL_TRY(popups_.findPlace(size.width, size.height, description.place), getFullName());
    } else if (!system_->getDisplay()) {
        description.place = CWindowSystem::kMainPlace;
    }
    description.place.width = size.width;
    description.place.height = size.height;
    QEL_TRY(shell_.open(*system_, description, *this, getFullName()), getFullName());
    focus_.setSystemWindow(shell_.getWindow());
    context_->setSurface(&shell_.getSurface());
    return {};
}

void CWindow::raise()
{
    system_->raiseWindow(*this);
    shell_.raise();
}

void CWindow::setShown(bool isShown)
{
    isShown ? shell_.show() : shell_.hide();
}

void CWindow::release()
{
    end();
    CObject::release();
}

// Also when the root view goes, before anything in it does: nothing may be painted or heard any more.
void CWindow::end()
{
    if (isOpen_) {
        isOpen_ = false;
        popups_.release();
        system_->removeWindow(*this);
    }
    pointer_.setRoot(nullptr);
    focus_.setSystemWindow(nullptr);
    shell_.close();
    if (context_ && context_->getWindow() == this) {
        context_->setWindow(nullptr);
    }
    timers_.stopAll();
}

// --- timers

CError CWindow::onRenderTick(const CAttrMap&)
{
    renderFrame();
    return {};
}

CError CWindow::onGradientTick(const CAttrMap&)
{
    drawing::setFrameTime(system_->getTimeSec());
    context_->tickGradientTimer();
    return {};
}

CError CWindow::onCursorTick(const CAttrMap&)
{
    drawing::setFrameTime(system_->getTimeSec());
    context_->tickCursorTimer();
    return {};
}

CError CWindow::onDeactivateTick(const CAttrMap&)
{
    handle([&] { return popups_.onDeactivateTick(); });
    return {};
}

CError CWindow::onAutoClickTick(const CAttrMap&)
{
    CView* const view = pointer_.getTop();
    if (view && !view->actsDisabled() && !pointer_.isButtonHeld() &&
        autoClick_.take(system_->getTimeSec(), autoClickTimeoutSec_)) {
        handle([&] { return view->receiveEvent("auto-click", {}); });
    }
    return {};
}

void CWindow::setDeactivateTimer(bool isRunning)
{
    if (!isRunning) {
        timers_.stop(CWindowTimers::kDeactivate);
    } else if (isOpen_) {
        traceError(timers_.start(CWindowTimers::kDeactivate, deactivateFps_, "deactivate-tick"));
    }
}

// --- frames

void CWindow::renderFrame()
{
    if (!isOpen_) {
        return;
    }
    const CHold hold(*this);
    const auto context = context_;
    const double nowSec = system_->getTimeSec();
    drawing::setFrameTime(nowSec);
    context->tickTimer();
    CSectorMap& map = context->getSectorMap();
    if (!isOpen_) {
        return;
    }
    sharedData_->setFrame(nowSec, size_.width, size_.height);
    if (map.isFrozen()) {
        return;
    }
    if (isExportDrawLoad_) {
        exportDrawLoad(nowSec);
    }
    if (rootView_->getLayoutContext().hasWork()) {
        handle([&] { return rootView_->solveLayout(); });
        // What has come to lie under the pointer is entered without a move.
        handle([&] { return pointer_.refresh(); });
    }
    drawing::resetDrawCounter();
    map.paintDirty();
    if (pendingSize_ != size_) {
        handle([&] { return applySize(pendingSize_); });
    }
    if (isOpen_) {
        map.present();
    }
    if (isOpen_ && settings_->isBuiltinRefresh()) {
        shell_.getSurface().invalidate({0, 0, size_.width, size_.height});
    }
}

void CWindow::exportDrawLoad(double nowSec)
{
    drawLoad_.addFrame();
    const double staticSec = context_->getSectorMap().getLastStaticUpdate();
    traceError(setAttribute("draw-load", drawLoad_.getText(), true));
    traceError(setAttribute("static-view-update",
                            CAttrValue(drawLoad_.getStaticViewUpdate(nowSec, staticSec)), true));
}

// --- size

CError CWindow::solveRootSize(Size& out)
{
    // As its attributes say, whatever size it was given.
    QEL_TRY(rootView_->attrWidth(), getFullName());
    QEL_TRY(rootView_->attrHeight(), getFullName());
    QEL_TRY(rootView_->solveLayout(), getFullName());
    const CRect rect = rootView_ ? rootView_->getViewArea().getRect() : CRect();
    out = {std::clamp(roundToPixel(rect.width), 1, kMaxSidePx),
           std::clamp(roundToPixel(rect.height), 1, kMaxSidePx)};
    return {};
}

CError CWindow::applySize(const Size& size)
{
    size_ = pendingSize_ = size;
    shell_.noteSize(size.width, size.height);
    QEL_TRY(setAttribute("width", CAttrValue(std::int32_t{size.width}), true), getFullName());
    QEL_TRY(setAttribute("height", CAttrValue(std::int32_t{size.height}), true), getFullName());
    QEL_TRY(rootView_->setRootSize(size.width, size.height), getFullName());
    QEL_TRY(rootView_->solveLayout(), getFullName());
    return context_->getSectorMap().resize(size.width, size.height);
}

CError CWindow::adoptRootSize()
{
    if (!isOpen_) {
        return {};
    }
    const CHold hold(*this);
    Size size;
    QEL_TRY(solveRootSize(size), getFullName());
    if (!isOpen_) {
        return {};
    }
    if (size == size_) {
        QEL_TRY(rootView_->setRootSize(size.width, size.height), getFullName());
        return rootView_->solveLayout();
    }
    shell_.setSize(size.width, size.height);
    return applySize(size);
}

// --- place

CError CWindow::placeAgain()
{
    platform::PixelRect place;
    if (!isMainWindow_) {
        QEL_TRY(popups_.findPlace(size_.width, size_.height, place), getFullName());
        moveTo(place.x, place.y);
    }
    return {};
}

void CWindow::moveTo(int screenX, int screenY)
{
    if (isMainWindow_) {
        return;
    }
    shell_.moveTo(screenX, screenY);
    onMove(screenX, screenY);
}

void CWindow::onMove(int screenX, int screenY)
{
    if (!isMainWindow_) {
        shell_.noteCorner(screenX, screenY);
    }
    handle([&]() -> CError {
        QEL_TRY(setAttribute("window-x", CAttrValue(std::int32_t{screenX}), true), getFullName());
        return setAttribute("window-y", CAttrValue(std::int32_t{screenY}), true);
    });
}

// --- what views ask for

CError CWindow::togglePopup(CView& opener, const CAttrMap& parameters)
{
    return isOpen_ ? popups_.toggle(opener, parameters) : CError();
}

CError CWindow::passPopupResult(CView& view, const CAttrMap& parameters)
{
    return isOpen_ ? popups_.passResult(view, parameters) : CError();
}

CError CWindow::closePopup(CView& view)
{
    return isOpen_ ? popups_.close(view) : CError();
}

CError CWindow::closeWindow()
{
    if (!isOpen_) {
        return {};
    }
    // What is in a host's window is the host's to close.
    return isMainWindow_ ? rootView_->fireEvent("close-app", {}) : popups_.closeOwn();
}

CError CWindow::exitPointer()
{
    return pointer_.leave();
}

void CWindow::forgetView(CView& view)
{
    pointer_.forgetView(view);
    focus_.forgetView(view);
    popups_.forgetView(view);
    if (&view == rootView_) {
        rootView_ = nullptr;
        end();
    }
}

CError CWindow::onHintChanged(CView& view)
{
    return rootView_ && &view == pointer_.getTop() ? hintLine_.show(*this, *rootView_, &view) : CError();
}

CError CWindow::setKeyFocus(CView* view, bool isTab)
{
    const CHold hold(*this);
    return focus_.set(view, isTab);
}

// --- attributes and events of its own

CError CWindow::attrTitle()
{
    shell_.setTitle(title_);
    return {};
}

CError CWindow::attrAutoClickTimeout()
{
    if (isOpen_ && autoClickTimeoutSec_ >= 0.0) {
        return timers_.start(CWindowTimers::kAutoClick, autoClickFps_, "auto-click-tick");
    }
    timers_.stop(CWindowTimers::kAutoClick);
    return {};
}

CError CWindow::attrIsExportDrawLoad()
{
    if (context_) {
        context_->getSectorMap().setExportingDrawLoad(isExportDrawLoad_);
    }
    return {};
}

CError CWindow::eventKeyFocus(const CAttrMap& parameters)
{
    const auto path = parameters.find("key-focus-view");
    const auto isTab = parameters.find("is-tab");
    auto* const view = path == parameters.end() || !rootView_
                           ? nullptr
                           : dynamic_cast<CView*>(rootView_->findObject(path->second.toString()));
    return setKeyFocus(view, isTab != parameters.end() && isTab->second.toBool().value_or(false));
}

CError CWindow::eventCloseWindow(const CAttrMap&)
{
    return closeWindow();
}

CError CWindow::eventMouseButtonReset(const CAttrMap&)
{
    pointer_.resetButtons();
    return {};
}

CError CWindow::eventResetAutoClick(const CAttrMap&)
{
    autoClick_.restart(system_->getTimeSec());
    return {};
}

// --- what the system tells

void CWindow::onPaint(const platform::PixelRect& update)
{
    shell_.getSurface().present(update);
}

// With the next frame, since a host that drags a corner tells of many sizes at once.
void CWindow::onResize(int width, int height)
{
    pendingSize_ = {std::clamp(width, 1, kMaxSidePx), std::clamp(height, 1, kMaxSidePx)};
}

void CWindow::onPointerMove(const platform::PointerEvent& event)
{
    autoClick_.restart(system_->getTimeSec());
    handle([&] { return pointer_.move(event); });
}

void CWindow::onPointerLeave()
{
    handle([&] { return pointer_.leave(); });
}

void CWindow::onButtonPress(const platform::ButtonEvent& event)
{
    handle([&] { return popups_.onPress(event); });
    handle([&] { return dropFocusBeside({static_cast<double>(event.x), static_cast<double>(event.y)}); });
    handle([&] { return pointer_.press(event); });
}

CError CWindow::dropFocusBeside(const CPoint& point)
{
    const CViewBasePlacement* const focus = focus_.get();
    if (!focus || !rootView_) {
        return {};
    }
    const CViewBasePlacement* pressed = pointer_.viewAt(point);
    while (pressed && pressed != focus) {
        pressed = pressed->getParentView();
    }
    return pressed ? CError() : setKeyFocus(nullptr, false);
}

void CWindow::onButtonRelease(const platform::ButtonEvent& event)
{
    handle([&] { return pointer_.release(event); });
}

void CWindow::onCaptureLost()
{
    handle([&] { return pointer_.cancelPresses(); });
}

void CWindow::onWheel(const platform::WheelEvent& event)
{
    handle([&] { return pointer_.wheel(event); });
}

bool CWindow::wheelBy(double notches)
{
    const CPoint& point = pointer_.getPoint();
    platform::WheelEvent event;
    event.x = roundToPixel(point.x);
    event.y = roundToPixel(point.y);
    event.delta = notches;
    onWheel(event);
    return isOpen_;
}

void CWindow::onKeyPress(const platform::KeyEvent& event)
{
    handle([&] { return focus_.press(event); });
}

void CWindow::onKeyRelease(const platform::KeyEvent& event)
{
    handle([&] { return focus_.release(event); });
}

void CWindow::onFocus(bool isFocused)
{
    if (!isFocused) {
        handle([&] { return focus_.lose(); });
    }
}

void CWindow::onActivation(bool isActive)
{
    handle([&] { return rootView_->fireEvent(isActive ? "activate-window" : "deactivate-window", {}); });
}

void CWindow::onHostShown(bool isShown)
{
    handle([&] { return popups_.setShown(isShown); });
}

void CWindow::onCloseRequest()
{
    handle([&] { return rootView_->receiveEvent("close-window", {}); });
}

// The host's window has gone with the main window in it, or the window system has: nothing is shown any more,
// and the tree waits for the host to close the editor.
void CWindow::onDestroyed()
{
    shell_.detach();
    if (isMainWindow_) {
        timers_.stopAll();
        const CHold hold(*this);
        popups_.closeAll();
    } else {
        handle([&] { return closeWindow(); });
    }
}

} // namespace qel
