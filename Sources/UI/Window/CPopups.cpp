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

constexpr const char* kPrefix = "popup-";
constexpr const char* kPopupState = "popup";
constexpr const char* kSource = "source";
constexpr const char* kResult = "popup-result";
constexpr const char* kResultTarget = "popup-result-target";
constexpr const char* kParametersName = "run-event-params";
constexpr const char* kAlignment = "window-alignment";
constexpr const char* kBlocker = ".window-blocker";

// A setting by its own name or, as openers have it among their attributes, with the prefix.
const CAttrValue* findSetting(const CAttrMap& settings, const char* name)
{
    auto found = settings.find(name);
    if (found == settings.end()) {
        found = settings.find(CString(kPrefix) + name);
    }
    return found == settings.end() ? nullptr : &found->second;
}

bool flagOf(const CAttrMap& settings, const char* name)
{
    const CAttrValue* const value = findSetting(settings, name);
    return value && value->toBool().value_or(false);
}

double numberOf(const CAttrMap& settings, const char* name, double fallback)
{
    const CAttrValue* const value = findSetting(settings, name);
    return value ? value->toReal().value_or(fallback) : fallback;
}

CString textOf(const CAttrMap& settings, const char* name)
{
    const CAttrValue* const value = findSetting(settings, name);
    return value ? value->toString() : CString();
}

// The later ones win: attributes of the opener, those of an object that it names, the event's own.
CError gatherSettings(CView& opener, const CAttrMap& parameters, CAttrMap& out)
{
    for (const auto& [key, value] : opener.getAttributes()) {
        if (key.startsWith(kPrefix)) {
            out[key] = value;
        }
    }
    const auto named = parameters.find(kParametersName);
    const CString path =
        named == parameters.end() ? opener.getAttrString(kParametersName) : named->second.toString();
    if (!path.isEmpty()) {
        const CObject* object = opener.findChild(path);
        object = object ? object : opener.findObject(path);
        if (!object) {
            QEL_FAIL(opener.getFullName(),
                     "@qelstr_CPopups_toggle_NoParams Unable to locate event parameters '%1'.", path);
        }
        for (const auto& [key, value] : object->getAttributes()) {
            if (!(key == "name") && !(key == "full-name")) {
                out[key] = value;
            }
        }
    }
    for (const auto& [key, value] : parameters) {
        out[key] = value;
    }
    return {};
}

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
    CAttrMap settings;
    QEL_TRY(gatherSettings(opener, parameters, settings), opener.getFullName());
    const bool isAlwaysOpened = flagOf(settings, "is-popup-toggle-always-create");
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

CError CPopups::openChild(CView& opener, const CAttrMap& settings)
{
    CWindow* window = nullptr;
    QEL_TRY(createTree(opener, settings, window), opener.getFullName());
    const CObject::CHold hold(*window);
    window->getPopups().parent_ = &window_;
    window->getPopups().placement_ = placeAt(opener, settings);
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
    wasButtonDown_ = window_.getPointer().isButtonHeld();
    wasActive_ = false;
    watch();
    collectError(error, opener.isReleased() ? CError() : opener.setState(kPopupState));
    collectError(error, opener.isReleased() ? CError() : sendEvent(opener, "popup-changed", {}));
    return error;
}

CError CPopups::createTree(CView& opener, const CAttrMap& settings, CWindow*& out)
{
    CAttrMap attributes;
    for (const auto& [key, value] : settings) {
        if (key.startsWith(kPrefix)) {
            attributes[key.substring(std::char_traits<char>::length(kPrefix))] = value;
        }
    }
    for (const char* const name : {kAlignment, "constrain-y"}) {
        if (const CAttrValue* const value = findSetting(settings, name)) {
            attributes[name] = *value;
        }
    }
    if (flagOf(settings, "is-same-width")) {
        const double width = opener.getArea().width / opener.getInterfaceScale();
        attributes["width"] = CAttrValue(width + numberOf(settings, "width-modif", 0.0));
        // What would be cut off is worse than a list that is wider than its button.
        attributes.try_emplace("min-width", "compact");
    }
    attributes["is-popup-window"] = CAttrValue(true);
    attributes["opener"] = CAttrValue(opener.getFullName());

    // The user may have chosen another one since, for windows to come.
    const CInterfaceScale::CScope scale(opener.getInterfaceScale());
    const CString tag = textOf(settings, "tag");
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

CWindowPlacement CPopups::placeAt(const CView& opener, const CAttrMap& settings) const
{
    CWindowPlacement placement;
    placement.openerWindow = window_.getScreenPlace();
    const CPixelRect view = roundToPixels(opener.getArea());
    const int originX = placement.openerWindow.x;
    const int originY = placement.openerWindow.y;
    placement.opener = {originX + view.x, originY + view.y, view.width, view.height};

    const CPoint& pointer = window_.getPointer().getPoint();
    placement.pointerX = roundToPixel(numberOf(settings, "actual-x", originX + pointer.x));
    placement.pointerY = roundToPixel(numberOf(settings, "actual-y", originY + pointer.y));

    placement.windowX = placement.opener.x;
    placement.windowY = placement.opener.y;
    if (flagOf(settings, "is-manual-coords")) {
        placement.windowX = roundToPixel(numberOf(settings, "window-x", placement.windowX));
        placement.windowY = roundToPixel(numberOf(settings, "window-y", placement.windowY));
    }
    const double scale = opener.getInterfaceScale();
    placement.shiftX = roundToPixel(numberOf(settings, "shift-x", 0.0) * scale);
    placement.shiftY = roundToPixel(numberOf(settings, "shift-y", 0.0) * scale);
    placement.lowestY = roundToPixel(numberOf(settings, "constrain-y", -1.0));
    return placement;
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
                placement = other->getPopups().placeAt(*opener, window_.getAttributes());
            }
        }
    }
    CWindowPlacement::Alignment alignment;
    QEL_TRY(CWindowPlacement::parse(window_.getFullName(), window_.getAttrString(kAlignment), alignment),
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
    return isUserElsewhere() ? top().closeDropDowns({}) : CError();
}

bool CPopups::isUserElsewhere()
{
    CWindowSystem& system = window_.getSystem();
    const platform::CSystemDisplay* const display = system.getDisplay();
    const bool isActive = !display || display->isActive();
    const bool hasLeft = wasActive_ && !isActive;
    wasActive_ = isActive;

    platform::PointerState pointer;
    if (!system.queryPointer(pointer)) {
        return hasLeft;
    }
    const bool isDown = pointer.isLeftDown || pointer.isRightDown || pointer.isMiddleDown;
    const bool isPressed = isDown && !wasButtonDown_;
    wasButtonDown_ = isDown;
    // Presses in windows of ours come by themselves, and what is dragged out of one may go anywhere.
    const bool isOurs = system.findWindowAt(pointer.screenX, pointer.screenY) ||
                        std::ranges::any_of(system.getWindows(),
                                            [](CWindow* each) { return each->getPointer().isButtonHeld(); });
    return hasLeft || (isPressed && !isOurs);
}

// Nobody is asked for the pointer while there is nothing to close.
void CPopups::watch()
{
    window_.setDeactivateTimer(std::ranges::any_of(
        children_, [](const Child& child) { return child.window->getPopups().isDropDown(); }));
}

} // namespace qel
