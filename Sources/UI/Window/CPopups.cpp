// The pop-ups of a window.
#include "CPopups.h"

#include "CInterfaceScale.h"
#include "CWindow.h"
#include "Trace.h"

#include <algorithm>
#include <deque>
#include <optional>

namespace qel {

namespace {

using platform::PixelRect;

constexpr const char* kPopupState = "popup";
constexpr const char* kSource = "source";
constexpr const char* kResult = "popup-result";
constexpr const char* kResultTarget = "popup-result-target";
constexpr const char* kBlocker = ".window-blocker";

// "ui:win-settings" makes "win-settings".
CString nameOf(const CString& tag)
{
    const std::size_t colon = tag.findLast(u':');
    return colon == CString::kNone ? tag : tag.substring(colon + 1);
}

} // namespace

// --- opening

CError CPopups::toggle(CView& opener, const CAttrMap& parameters)
{
    const CObject::CHold hold(opener);
    const CObject::CHold windowHold(window_);
    CPopupSettings settings;
    QEL_TRY(settings.gather(opener, parameters), opener.getFullName());
    const bool isAlwaysOpened = settings.getFlag("is-popup-toggle-always-create");
    const bool isClosedByPress = std::erase(closedByPress_, &opener) > 0;
    const Child* const open = childOf(opener);
    if (open) {
        QEL_TRY(closeChild(*open->window), opener.getFullName());
    }
    if ((open || isClosedByPress) && !isAlwaysOpened) {
        return {};
    }
    return opener.isReleased() ? CError() : openChild(opener, settings);
}

CError CPopups::openChild(CView& opener, const CPopupSettings& settings)
{
    CWindow* window = nullptr;
    QEL_TRY(createTree(opener, settings, window), opener.getFullName());
    const CObject::CHold hold(*window);
    window->getPopups().parent_ = &window_;
    window->getPopups().placement_ = makePlacement(opener, settings);
    children_.push_back({&opener, window});
    CError error = window->open();
    if (!window->isOpen()) {
        // It failed, there is one of its unique name already, or its own handlers have closed it.
        Child child;
        if (takeChild(*window, child)) {
            CObject::releaseObject(window->getRootView());
        }
        return error;
    }
    userWatch_.start(window_.getPointer().isButtonHeld());
    watch();
    collectError(error, opener.isReleased() ? CError() : opener.setState(kPopupState));
    collectError(error, opener.isReleased() ? CError() : sendEvent(opener, "popup-changed", {}));
    return error;
}

CError CPopups::createTree(CView& opener, const CPopupSettings& settings, CWindow*& out)
{
    const CAttrMap attributes = settings.makeRootAttributes(opener);
    // The user may have chosen another one since, for windows to come.
    const CInterfaceScale::CScope scale(opener.getInterfaceScale());
    const CString tag = settings.getText("tag");
    CView* root = nullptr;
    QEL_TRY(window_.getRoot()->createChild(root, tag, nameOf(tag), true, nullptr, &attributes),
            opener.getFullName());
    out = dynamic_cast<CWindow*>(root->getWindow());
    if (!out) {
        CObject::releaseObject(root);
        QEL_FAIL(opener.getFullName(), "@qelstr_CPopups_toggle_NoWindow The pop-up '%1' has no window.", tag);
    }
    return {};
}

// --- where

CWindowPlacement CPopups::makePlacement(const CView& opener, const CPopupSettings& settings) const
{
    return settings.makePlacement(opener, window_.getScreenPlace(), window_.getPointer().getPoint());
}

CError CPopups::findPlace(int width, int height, PixelRect& out) const
{
    CWindowPlacement placement = placement_;
    if (!parent_) {
        placement.windowX = window_.getAttrInt("window-x");
        placement.windowY = window_.getAttrInt("window-y");
        placement.lowestY = window_.getAttrInt("constrain-y", -1);
        if (const auto* opener = dynamic_cast<CView*>(window_.findObject(window_.getAttrString("opener")))) {
            if (auto* other = dynamic_cast<CWindow*>(opener->getWindow())) {
                const CPopupSettings settings(window_.getAttributes());
                placement = other->getPopups().makePlacement(*opener, settings);
            }
        }
    }
    CWindowPlacement::Alignment alignment;
    QEL_TRY(
        CWindowPlacement::parse(window_.getFullName(), window_.getAttrString("window-alignment"), alignment),
        window_.getFullName());
    const bool isAtPointer = alignment == CWindowPlacement::Alignment::kCursor;
    const PixelRect pointer{placement.pointerX, placement.pointerY, 1, 1};
    const PixelRect given{placement.windowX, placement.windowY, width, height};
    const PixelRect near = placement.opener.isEmpty() ? given : placement.opener;
    placement.workArea = window_.getSystem().getWorkArea(isAtPointer ? pointer : near);
    out = placement.place(alignment, width, height);
    return {};
}

// --- closing

CPopups::Child* CPopups::childOf(const CView& opener)
{
    const auto found = std::ranges::find(children_, &opener, &Child::opener);
    return found == children_.end() ? nullptr : &*found;
}

CPopups::Child* CPopups::childOf(const CWindow& window)
{
    const auto found = std::ranges::find(children_, &window, &Child::window);
    return found == children_.end() ? nullptr : &*found;
}

CView* CPopups::findOpen(const CView& opener)
{
    const Child* const open = childOf(opener);
    return open ? open->window->getRootView() : nullptr;
}

bool CPopups::takeChild(const CWindow& window, Child& out)
{
    const Child* const found = childOf(window);
    if (!found) {
        return false;
    }
    out = *found;
    std::erase_if(children_, [&](const Child& each) { return each.window == &window; });
    out.window->getPopups().parent_ = nullptr;
    watch();
    return true;
}

CError CPopups::closeChild(CWindow& window)
{
    Child child;
    if (!takeChild(window, child)) {
        return {};
    }
    const CObject::CHold windowHold(window_);
    std::optional<CObject::CHold> hold;
    if (child.opener) {
        hold.emplace(*child.opener);
    }
    CObject::releaseObject(window.getRootView());
    return tellClosed(child.opener);
}

CError CPopups::tellClosed(CView* opener)
{
    CError first;
    const auto isThere = [&] {
        return opener && !opener->isReleased() && !window_.isReleased() && !window_.getRoot()->isReleased();
    };
    collectError(first, isThere() ? opener->unsetState(kPopupState) : CError());
    collectError(first, isThere() ? sendEvent(*opener, "popup-closed", {}) : CError());
    collectError(first, isThere() ? sendEvent(*opener, "popup-changed", {}) : CError());
    return first;
}

CError CPopups::close(CView& view)
{
    if (const Child* const open = childOf(view)) {
        return closeChild(*open->window);
    }
    return parent_ ? closeOwn() : CError();
}

CError CPopups::closeOwn()
{
    if (parent_) {
        return parent_->getPopups().closeChild(window_);
    }
    CObject::releaseObject(window_.getRootView());
    return {};
}

void CPopups::forgetView(CView& view)
{
    std::erase(closedByPress_, &view);
    for (Child* open = childOf(view); open; open = childOf(view)) {
        open->opener = nullptr;
        releaseError(closeChild(*open->window));
    }
}

CError CPopups::setShown(bool isShown)
{
    CError error = isShown ? CError() : closeDropDowns({});
    for (const Child& child : children_) {
        child.window->setShown(isShown);
        collectError(error, child.window->getPopups().setShown(isShown));
    }
    return error;
}

void CPopups::closeAll()
{
    while (!children_.empty()) {
        Child child;
        takeChild(*children_.back().window, child);
        CObject::releaseObject(child.window->getRootView());
    }
}

void CPopups::release()
{
    closeAll();
    if (!parent_) {
        return;
    }
    CPopups& parent = parent_->getPopups();
    Child own;
    if (parent.takeChild(window_, own)) {
        if (CError error = parent.tellClosed(own.opener)) {
            traceError(error);
        }
    }
}

// --- results

CError CPopups::passResult(CView& view, const CAttrMap& parameters)
{
    if (std::ranges::find(passing_, &view) != passing_.end()) {
        trace("Infinite loop caused by popup-result-target", view.getFullName());
        return {};
    }
    const CObject::CHold hold(view);
    const CObject::CHold windowHold(window_);
    passing_.push_back(&view);
    CError error =
        parameters.contains(kSource) ? forwardResult(view, parameters) : sendResult(view, parameters);
    std::erase(passing_, &view);
    return error;
}

CError CPopups::sendResult(CView& view, CAttrMap parameters)
{
    const Child* const own = parent_ ? parent_->getPopups().childOf(window_) : nullptr;
    if (!own || !own->opener) {
        return {};
    }
    parameters[kSource] = CAttrValue(view.getFullName());
    CError first = sendEvent(*own->opener, kResult, parameters);
    collectError(first, closeAfterResult());
    return first;
}

CError CPopups::forwardResult(CView& view, const CAttrMap& parameters)
{
    const CString source = parameters.at(kSource).toString();
    CView* const sender = dynamic_cast<CView*>(view.findObject(source));
    CWindow* const from = sender && sender != &view ? dynamic_cast<CWindow*>(sender->getWindow()) : nullptr;
    std::optional<CObject::CHold> hold;
    if (from) {
        hold.emplace(*from);
    }
    CError first;
    if (const CString path = view.getAttrString(kResultTarget); !path.isEmpty()) {
        CObject* const target = view.findObject(path);
        if (!target) {
            QEL_FAIL(view.getFullName(),
                     "@qelstr_CPopups_passResult_NoTarget Unable to locate pop-up result target '%1'.", path);
        }
        if (target == sender) {
            trace("Infinite loop caused by popup-result-target", view.getFullName());
        } else {
            first = sendEvent(*target, kResult, parameters);
        }
    }
    // What a view sent on its own way, past sendResult(), ends here.
    if (from && from != &window_ && !from->isReleased() && from->getPopups().passing_.empty()) {
        collectError(first, from->getPopups().closeAfterResult());
    }
    return first;
}

CError CPopups::closeAfterResult()
{
    CPopups* outermost = nullptr;
    for (CPopups* popups = this; popups->isDropDown(); popups = &popups->parent_->getPopups()) {
        outermost = popups;
    }
    return outermost ? outermost->closeOwn() : CError();
}

// --- the user is elsewhere

bool CPopups::isDropDown() const
{
    return parent_ && window_.isDropDown();
}

CPopups& CPopups::top()
{
    return parent_ ? parent_->getPopups().top() : *this;
}

CError CPopups::onPress(const platform::PointerEvent&)
{
    closedByPress_.clear();
    Windows kept;
    for (CWindow* window = &window_; window; window = window->getPopups().parent_) {
        kept.push_back(window);
    }
    CError first = top().closeDropDowns(kept);
    CView* const root = window_.getRootView();
    if (root && root->findObject(kBlocker)) {
        raiseDialogs();
    }
    return first;
}

CError CPopups::closeDropDowns(const Windows& kept)
{
    const std::vector<Child> children = children_;
    std::deque<CObject::CHold> holds;
    for (const Child& child : children) {
        holds.emplace_back(*child.window);
    }
    CError first;
    for (const Child& child : children) {
        if (child.window->isReleased()) {
            continue;
        }
        CPopups& popups = child.window->getPopups();
        if (!popups.isDropDown() || std::ranges::find(kept, child.window) != kept.end()) {
            collectError(first, popups.closeDropDowns(kept));
            continue;
        }
        if (kept.empty()) {
            collectError(first, sendEvent(*child.window->getRootView(), "popup-deactivated", {}));
        } else if (kept.front() == &window_) {
            closedByPress_.push_back(child.opener);
        }
        collectError(first, closeChild(*child.window));
    }
    return first;
}

// Messages and other windows that this one waits for must not hide behind it.
void CPopups::raiseDialogs()
{
    for (const Child& child : children_) {
        if (!child.window->getPopups().isDropDown()) {
            child.window->raise();
            child.window->getPopups().raiseDialogs();
        }
    }
}

CError CPopups::onDeactivateTick()
{
    return userWatch_.hasLeft(window_.getSystem()) ? top().closeDropDowns({}) : CError();
}

// Nobody is asked for the pointer while there is nothing to close.
void CPopups::watch()
{
    window_.setDeactivateTimer(std::ranges::any_of(
        children_, [](const Child& child) { return child.window->getPopups().isDropDown(); }));
}

} // namespace qel
