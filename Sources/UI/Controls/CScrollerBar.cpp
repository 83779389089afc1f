// A scroll bar.
#include "CScrollerBar.h"

#include "DrawTiled.h"
#include "PointerEvents.h"

namespace qel {

namespace {

// A ratio or offset of the view, under the name it is followed by here; no name a tree would use.
constexpr const char* kRange = "*range";

// A held button waits a moment, so that a click is one step.
constexpr double kRepeatDelaySec = 0.3;
// Parts of what is shown.
constexpr double kButtonStep = 0.05;
constexpr double kWheelStep = 0.15;
constexpr double kLeastRealBarPx = 3.0;

// The pieces of a bar: end, stretch, grip, stretch, end.
constexpr std::uint32_t kPieces = 5;
constexpr std::uint32_t kGrip = 2;

constexpr std::size_t kTrackClip = 2;
constexpr std::size_t kFirstBarClip = 3;
constexpr std::size_t kClips = kFirstBarClip + kPieces - 1;

} // namespace

void CScrollerBar::buildClassInfo(CClassInfo& info)
{
    using Self = CScrollerBar;
    CView::buildClassInfo(info);
    info.bind<&Self::scrolledPath_>("scrolled-view", "");
    info.bind<&Self::isVertical_>("is-vertical", false);
    info.bind<&Self::isPan_>("is-pan", false);
    info.bind<&Self::scrollFps_>("scroll-fps", 20.0);
    info.bind<&Self::isResizeable_>("is-resizeable", false);
    info.bind<&Self::isSnapshotsEnabled_>("is-snapshots-enabled", false);
    info.bind<&Self::isShowRealRange_>("is-show-real-range", false);
    info.handleEvent<&Self::onContentReady>("content-ready");
    info.handleEvent<&Self::onContentReady>("window-create");
    info.handleEvent<&Self::eventUpdateScroller>("update-scroller");
    info.handleEvent<&Self::eventScrollStart>("scroll-start");
    info.handleEvent<&Self::eventScrollStop>("scroll-stop");
    info.handleEvent<&Self::eventScrollWheel>("scroll-wheel");
}

CScrollerBar::CScrollerBar() : scrollTick_(*this, [this] { onScrollTick(); })
{
    allocateClips(kClips);
}

CError CScrollerBar::init()
{
    QEL_TRY(CView::init(), getFullName());
    if (!scrolled_.find()) {
        QEL_FAIL(getFullName(), "@qelstr_CScrollerBar_init_NoView Unable to locate scrolled view '%1'.",
                 scrolledPath_);
    }
    return {};
}

CError CScrollerBar::onContentReady(const CAttrMap&)
{
    scrolled_.listen(kRange);
    QEL_TRY(listenWheel(), getFullName());
    return eventUpdateScroller({});
}

CError CScrollerBar::onAttrChanged(CObject& sender, const CString& key, const CAttrValue& value)
{
    return key == kRange ? eventUpdateScroller({}) : CView::onAttrChanged(sender, key, value);
}

// A view that knows the wheel by itself is left alone.
CError CScrollerBar::listenWheel()
{
    CView* const scrolled = scrolled_.find();
    if (!scrolled || isPan_ || scrolled->getClassInfo().eventHandler("mouse-wheel")) {
        return {};
    }
    CAttrMap attributes;
    attributes["on-event"] = CAttrValue("mouse-wheel");
    attributes["run-event"] = CAttrValue("scroll-wheel");
    attributes["run-event-target"] = CAttrValue(getFullName());
    attributes["run-event-forward-params"] = CAttrValue(true);
    CObject* command = nullptr;
    QEL_TRY(scrolled->createChild(command, "ui:view-command", "scroll-wheel", false, nullptr, &attributes),
            getFullName());
    return {};
}

// --- what it shows

CError CScrollerBar::eventUpdateScroller(const CAttrMap&)
{
    const bool wasShown = isShown_;
    update();
    if (isShown_ == wasShown && isShown_ == isStateActive("shown")) {
        return {};
    }
    // A bar that resizes is needed where all is seen, too.
    return scrolled_.isAllSeen(axis()) ? unsetState("shown") : setState("shown");
}

void CScrollerBar::update()
{
    const double ratio = scrolled_.getRatio(axis());
    const double offset = scrolled_.getOffset(axis());
    const bool isBothSeen = scrolled_.isAllSeen(CAxis::kX) && scrolled_.isAllSeen(CAxis::kY);
    const bool isShown = isPan_ ? !isBothSeen : isResizeable_ || !scrolled_.isAllSeen(axis());
    if (ratio != ratio_ || offset != offset_ || isShown != isShown_) {
        ratio_ = ratio;
        offset_ = offset;
        isShown_ = isShown;
        layOut();
        markLook();
    }
}

void CScrollerBar::onLookChanged()
{
    CView::onLookChanged();
    if (const CImageSet* const set = getImageSet()) {
        const auto first = [&](const char* vertical, const char* horizontal) {
            return set->findRange(isVertical_ ? vertical : horizontal).first;
        };
        images_.base = first("VBase", "HBase");
        images_.bar = first("VBar", "HBar");
        images_.buttons[0] = first("VButtonPrev", "HButtonPrev");
        images_.buttons[1] = first("VButtonPrevPushed", "HButtonPrevPushed");
        images_.buttons[2] = first("VButtonNext", "HButtonNext");
        images_.buttons[3] = first("VButtonNextPushed", "HButtonNextPushed");
        images_.pan[0] = first("Pan", "Pan");
        images_.pan[1] = first("PanPushed", "PanPushed");
    }
    layOut();
}

void CScrollerBar::updateClips()
{
    CView::updateClips();
    layOut();
}

double CScrollerBar::imageLength(std::uint32_t id) const
{
    const CImage* const image = findImage(id, false);
    return !image ? 0.0 : isVertical_ ? image->getHeight() : image->getWidth();
}

void CScrollerBar::layOut()
{
    double pieces[kPieces];
    for (std::uint32_t i = 0; i < kPieces; ++i) {
        pieces[i] = imageLength(images_.bar + i);
    }
    const double ends = pieces[0] + pieces[kPieces - 1];
    const double minBar = isShowRealRange_ ? kLeastRealBarPx : ends + pieces[kGrip];
    const CRect& area = getArea();
    parts_ = layoutScroller(lengthOf(area), imageLength(images_.buttons[0]), minBar, ratio_, offset_);

    const auto setAlong = [&](std::size_t clip, double start, double length) {
        setClip(clip, isVertical_ ? CRect{area.x, area.y + start, area.width, length}
                                  : CRect{area.x + start, area.y, length, area.height});
    };
    setAlong(kTrackClip, parts_.trackStart(), parts_.trackLength());
    // The grip goes where there is no room for it, and the ends meet in the middle.
    const double barStart = std::round(parts_.barStart);
    const double length = std::round(parts_.barLength);
    const double start = std::min(pieces[0], length * 0.5);
    const double end = std::min(pieces[kPieces - 1], length * 0.5);
    const double grip = length >= ends + pieces[kGrip] ? pieces[kGrip] : 0.0;
    const double stretch = std::floor((length - start - end - grip) * 0.5);
    const double cuts[] = {0.0, start, start + stretch, start + stretch + grip, length - end, length};
    for (std::uint32_t i = 0; i < kPieces; ++i) {
        setAlong(kFirstBarClip + i, barStart + cuts[i], cuts[i + 1] - cuts[i]);
    }
}

// --- pointer

CScrollerBar::Part CScrollerBar::partAt(const CPoint& point) const
{
    const CRect& area = getArea();
    const double across = isVertical_ ? point.x : point.y;
    const double place = placeOf(point);
    if (across < 0.0 || across >= (isVertical_ ? area.width : area.height) || place < 0.0 ||
        place >= parts_.length) {
        return Part::kNone;
    }
    if (isPan_) {
        return Part::kPan;
    }
    if (place < parts_.button) {
        return Part::kPrev;
    }
    if (place >= parts_.length - parts_.button) {
        return Part::kNext;
    }
    if (place < parts_.barStart || place >= parts_.barEnd()) {
        return Part::kTrack;
    }
    if (isResizeable_ && place < parts_.barStart + imageLength(images_.bar)) {
        return Part::kStartEdge;
    }
    if (isResizeable_ && place >= parts_.barEnd() - imageLength(images_.bar + kPieces - 1)) {
        return Part::kEndEdge;
    }
    return Part::kBar;
}

CError CScrollerBar::onMousePress(const CAttrMap& parameters)
{
    const CHold keep(*this);
    QEL_TRY(CView::onMousePress(parameters), getFullName());
    if (!isActive() || held_ != Part::kNone) {
        return {};
    }
    const CPoint point = pointerIn(*this, parameters);
    const Part part = partAt(point);
    const bool isOnBar = part == Part::kBar || part == Part::kStartEdge || part == Part::kEndEdge;
    if (isOnBar && isResizeable_ && isSnapshotsEnabled_ && eventFlag(parameters, "is-double-click")) {
        return toggleSnapshot();
    }
    return hold(part, point);
}

CError CScrollerBar::onMousePressR(const CAttrMap& parameters)
{
    const CHold keep(*this);
    QEL_TRY(CView::onMousePressR(parameters), getFullName());
    return isActive() && held_ == Part::kNone ? hold(Part::kPan, pointerIn(*this, parameters)) : CError();
}

CError CScrollerBar::hold(Part part, const CPoint& point)
{
    if (part == Part::kNone || !scrolled_.find()) {
        return {};
    }
    held_ = part;
    isOverHeld_ = true;
    pressPoint_ = point;
    pressRatio_ = ratio_;
    pressParts_ = parts_;
    for (const CAxis each : kAxes) {
        pressOffset_[indexOf(each)] = scrolled_.getOffset(each);
    }
    markLook();
    QEL_TRY(markParts(part), getFullName());
    if (isReleased()) {
        return {};
    }
    if (part == Part::kPrev || part == Part::kNext) {
        CAttrMap step;
        step["delta"] = CAttrValue((part == Part::kPrev ? -kButtonStep : kButtonStep) * ratio_);
        return receiveEvent("scroll-start", step);
    }
    if (part == Part::kTrack) {
        return scrollBy(placeOf(point) < parts_.barStart ? -ratio_ : ratio_);
    }
    return {};
}

CError CScrollerBar::onMouseMove(const CAttrMap& parameters)
{
    const CHold keep(*this);
    QEL_TRY(CView::onMouseMove(parameters), getFullName());
    if (!isActive()) {
        return {};
    }
    const CPoint point = pointerIn(*this, parameters);
    if (held_ == Part::kNone) {
        return markParts(partAt(point));
    }
    if (held_ == Part::kPrev || held_ == Part::kNext) {
        const bool isOver = partAt(point) == held_;
        if (isOver != isOverHeld_) {
            isOverHeld_ = isOver;
            markLook();
        }
        return {};
    }
    return drag(point);
}

CError CScrollerBar::onMouseExit(const CAttrMap& parameters)
{
    const CHold keep(*this);
    QEL_TRY(CView::onMouseExit(parameters), getFullName());
    return isReleased() || held_ != Part::kNone ? CError() : markParts(Part::kNone);
}

CError CScrollerBar::onMouseRelease(const CAttrMap& parameters)
{
    const CHold keep(*this);
    QEL_TRY(letGo(), getFullName());
    return isReleased() ? CError() : CView::onMouseRelease(parameters);
}

CError CScrollerBar::onMouseReleaseR(const CAttrMap& parameters)
{
    const CHold keep(*this);
    QEL_TRY(letGo(), getFullName());
    return isReleased() ? CError() : CView::onMouseReleaseR(parameters);
}

CError CScrollerBar::onMouseCancel(const CAttrMap& parameters)
{
    const CHold keep(*this);
    QEL_TRY(letGo(), getFullName());
    return isReleased() ? CError() : CView::onMouseCancel(parameters);
}

CError CScrollerBar::onMouseCancelR(const CAttrMap& parameters)
{
    const CHold keep(*this);
    QEL_TRY(letGo(), getFullName());
    return isReleased() ? CError() : CView::onMouseCancelR(parameters);
}

CError CScrollerBar::letGo()
{
    const bool wasScrolling = held_ == Part::kPrev || held_ == Part::kNext;
    held_ = Part::kNone;
    markLook();
    QEL_TRY(markParts(Part::kNone), getFullName());
    return wasScrolling && !isReleased() ? receiveEvent("scroll-stop", {}) : CError();
}

// The states of the bar, by what the pointer is on or holds.
CError CScrollerBar::markParts(Part under)
{
    const bool isEdge = under == Part::kStartEdge || under == Part::kEndEdge;
    const bool isBar = isEdge || under == Part::kBar;
    const std::pair<const char*, bool> states[] = {
        {"Hover", isBar}, {"Edge", isEdge}, {"Hilite", isBar && held_ != Part::kNone}};
    for (const auto& [name, isOn] : states) {
        if (!isReleased()) {
            QEL_TRY(isOn ? setState(name) : unsetState(name), getFullName());
        }
    }
    return {};
}

// --- drags

CError CScrollerBar::drag(const CPoint& point)
{
    const double distancePx = placeOf(point) - placeOf(pressPoint_);
    switch (held_) {
    case Part::kBar:
        return scrolled_.setOffset(axis(),
                                   scrollerOffsetAt(pressParts_, pressParts_.barStart + distancePx, ratio_));
    case Part::kStartEdge:
    case Part::kEndEdge:
        return dragEdge(distancePx);
    case Part::kPan:
        return dragBoth(point);
    default:
        return {};
    }
}

// The other end stays.
CError CScrollerBar::dragEdge(double distancePx)
{
    if (pressParts_.trackLength() <= 0.0) {
        return {};
    }
    const double change = distancePx / pressParts_.trackLength();
    const double least = scrolled_.getMinRatio(axis());
    const double start = pressOffset_[indexOf(axis())];
    const double end = start + pressRatio_;
    if (held_ == Part::kStartEdge) {
        const double offset = std::clamp(start + change, 0.0, std::max(0.0, end - least));
        return scrolled_.setRange(axis(), end - offset, offset);
    }
    return scrolled_.setRange(axis(), std::clamp(end + change, std::min(1.0, start + least), 1.0) - start,
                              start);
}

// The content follows the bars' direction, each axis as far as its own bar would take it.
CError CScrollerBar::dragBoth(const CPoint& point)
{
    const CView* const scrolled = scrolled_.find();
    if (!scrolled) {
        return {};
    }
    const CRect& view = scrolled->getArea();
    const double changes[] = {(point.x - pressPoint_.x) / std::max(view.width, 1.0),
                              (point.y - pressPoint_.y) / std::max(view.height, 1.0)};
    for (const CAxis each : kAxes) {
        QEL_TRY(scrolled_.setOffset(each, pressOffset_[indexOf(each)] + changes[indexOf(each)]),
                getFullName());
    }
    return {};
}

CError CScrollerBar::toggleSnapshot()
{
    if (scrolled_.isAllSeen(axis())) {
        return scrolled_.setRange(axis(), snapshotRatio_, snapshotOffset_);
    }
    snapshotRatio_ = ratio_;
    snapshotOffset_ = offset_;
    return scrolled_.setRange(axis(), 1.0, 0.0);
}

// --- scrolling

CError CScrollerBar::scrollBy(double delta)
{
    return scrolled_.setOffset(axis(), offset_ + delta);
}

CError CScrollerBar::eventScrollStart(const CAttrMap& parameters)
{
    scrollDelta_ = eventNumber(parameters, "delta");
    nextScrollSec_ = CViewContext::getTimeSec() + kRepeatDelaySec;
    isOverHeld_ = true;
    scrollTick_.start(getViewContext().getTimer());
    return scrollBy(scrollDelta_);
}

CError CScrollerBar::eventScrollStop(const CAttrMap&)
{
    scrollTick_.stop();
    return {};
}

void CScrollerBar::onScrollTick()
{
    const double nowSec = CViewContext::getTimeSec();
    const double stepSec = 1.0 / std::clamp(scrollFps_, 1.0, 1000.0);
    if (nowSec < nextScrollSec_) {
        return;
    }
    const double steps = 1.0 + std::floor((nowSec - nextScrollSec_) / stepSec);
    nextScrollSec_ += steps * stepSec;
    if (CError error = isOverHeld_ ? scrollBy(scrollDelta_ * steps) : CError()) {
        traceError(error);
    }
}

// The wheel goes down a page; with Shift, or where there is no way down, along it.
CError CScrollerBar::eventScrollWheel(const CAttrMap& parameters)
{
    const bool isAlongX = eventFlag(parameters, "is-shift") || scrolled_.isAllSeen(CAxis::kY);
    return isAlongX == isVertical_ || !isShown_
               ? CError()
               : scrollBy(-eventNumber(parameters, "delta") * kWheelStep * ratio_);
}

// --- drawing

const CPaletteColor* CScrollerBar::plainColor(const CString& name)
{
    const auto& palette = getPalette();
    return actsDisabled() || !palette ? getColor(0) : palette->findColor(name);
}

// The parts of a bar differ in their colours.
void CScrollerBar::drawPart(CDrawContext& context, std::uint32_t id, const CPoint& point, std::size_t clip,
                            const CPaletteColor* const (&colors)[2], bool isTiling) const
{
    drawTiled(
        context, findImage(id, false), point, getArea(), getClip(clip).getRect(), clip,
        [&](std::uint32_t slot) { return colors[std::min(slot, 1U)]; }, isTiling && !isVertical_,
        isTiling && isVertical_);
}

void CScrollerBar::drawBar(CDrawContext& context)
{
    const CPaletteColor* const colors[] = {getColor(0), getColor(1)};
    const CRect& area = getArea();
    for (std::uint32_t i = 0; i < kPieces; ++i) {
        const CRect& clip = getClip(kFirstBarClip + i).getRect();
        // The far end is measured from there, so that a short bar cuts its inner part.
        const double clipStart = isVertical_ ? clip.y - area.y : clip.x - area.x;
        const double start =
            i + 1 < kPieces ? clipStart : clipStart + lengthOf(clip) - imageLength(images_.bar + i);
        drawPart(context, images_.bar + i, isVertical_ ? CPoint{0.0, start} : CPoint{start, 0.0},
                 kFirstBarClip + i, colors, i % 2 == 1);
    }
}

void CScrollerBar::draw(CDrawContext& context)
{
    static const CString kButton = "ScrollerButton";
    static const CString kArrow = "ButtonText";
    static const CString kTrack = "Background";
    if (!isShown_ || !getImageSet()) {
        return;
    }
    const CPaletteColor* const buttonColors[] = {plainColor(kButton), plainColor(kArrow)};
    if (isPan_) {
        drawPart(context, images_.pan[held_ == Part::kPan ? 1 : 0], {}, 1, buttonColors, false);
        return;
    }
    const auto along = [&](double start) { return isVertical_ ? CPoint{0.0, start} : CPoint{start, 0.0}; };
    const CPaletteColor* const trackColors[] = {plainColor(kTrack), plainColor(kTrack)};
    drawPart(context, images_.base, along(parts_.trackStart()), kTrackClip, trackColors, true);
    if (parts_.button > 0.0) {
        const auto isPushed = [&](Part part) { return held_ == part && isOverHeld_ ? 1U : 0U; };
        drawPart(context, images_.buttons[isPushed(Part::kPrev)], {}, 1, buttonColors, false);
        drawPart(context, images_.buttons[2 + isPushed(Part::kNext)], along(parts_.length - parts_.button), 1,
                 buttonColors, false);
    }
    drawBar(context);
}

} // namespace qel
