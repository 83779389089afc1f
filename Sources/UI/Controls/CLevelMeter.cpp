// Bars that show levels.
#include "CLevelMeter.h"

#include <algorithm>
#include <cmath>

namespace qel {

namespace {

enum Slot : std::uint32_t
{
    kPitSlot,
    kFirstZoneSlot,
    kPeakSlot = 4,
    kOffSlot
};
constexpr const char* kSlotColors[] = {"LevelMeter",      "LevelMeterZone1", "LevelMeterZone2",
                                       "LevelMeterZone3", "LevelMeterPeak",  "LevelMeterBGLines"};

// Lamps at the start of a bar are this bright, those at its end fully.
constexpr double kLeastLight = 0.62;
constexpr double kOffOpacity = 0.5;
constexpr double kInactiveOpacity = 0.2;

// Between two bars, at a scale of 1, for few bars and for many.
double gapBetween(std::size_t bars)
{
    return bars <= 2 ? 4.0 : bars <= 4 ? 2.0 : 1.0;
}

} // namespace

void CLevelMeter::buildClassInfo(CClassInfo& info)
{
    using Self = CLevelMeter;
    CLevelMeterBase::buildClassInfo(info);
    info.bind<&Self::isVertical_, &Self::attrLook>("is-vertical", false);
    info.bind<&Self::isPeakShown_, &Self::attrLook>("is-peak-shown", true);
    info.bind<&Self::isMinimal_, &Self::attrLook>("is-minimal", false);
    info.bind<&Self::lampSize_, &Self::attrLook>("lamp-size", 4.0);
    info.bind<&Self::zoneYellow_, &Self::attrLook>("zone-yellow", -12.0);
    info.bind<&Self::zoneRed_, &Self::attrLook>("zone-red", 0.0);
}

CError CLevelMeter::init()
{
    QEL_TRY(CLevelMeterBase::init(), getFullName());
    for (std::uint32_t slot = 0; slot < std::size(kSlotColors); ++slot) {
        if (slot > 0 || getAttrString("color").isEmpty()) {
            setSlotColor(slot, kSlotColors[slot]);
        }
    }
    return {};
}

// --- places

CError CLevelMeter::attrLook()
{
    if (getInitState() != InitState::kCreated && !isReleased()) {
        layOut();
        markLook();
    }
    return {};
}

CError CLevelMeter::attrInnerBorder()
{
    QEL_TRY(CLevelMeterBase::attrInnerBorder(), getFullName());
    return attrLook();
}

void CLevelMeter::updateClips()
{
    CLevelMeterBase::updateClips();
    layOut();
}

void CLevelMeter::onRangeChanged()
{
    layOut();
    markLook();
}

std::int32_t CLevelMeter::toPixel(double value) const
{
    return roundToPixel(toPosition(value) * length_);
}

void CLevelMeter::layOut()
{
    using Var = CViewArea::Var;
    const CViewArea& area = getViewArea();
    const CRect& view = getArea();
    const auto inner = [&](Var side, CAxis axis) { return static_cast<double>(area.getValue(side, axis)); };
    const double left = inner(Var::kInnerBefore, CAxis::kX);
    const double top = inner(Var::kInnerBefore, CAxis::kY);
    content_ =
        roundToPixels({left, top, std::max(0.0, view.width - left - inner(Var::kInnerAfter, CAxis::kX)),
                       std::max(0.0, view.height - top - inner(Var::kInnerAfter, CAxis::kY))});
    length_ = isVertical_ ? content_.height : content_.width;

    const double scale = getInterfaceScale();
    gapPx_ = 1;
    lampPx_ = std::max(2, roundToPixel(lampSize_ * scale));
    zoneEnds_[0] = toPixel(zoneYellow_);
    zoneEnds_[1] = std::max(zoneEnds_[0], toPixel(zoneRed_));
    zoneEnds_[2] = length_;
    placeBars();
}

void CLevelMeter::placeBars()
{
    const std::vector<Channel>& channels = getChannels();
    bars_.resize(channels.size());
    const auto count = static_cast<std::int32_t>(bars_.size());
    const std::int32_t gap = std::max(1, roundToPixel(gapBetween(bars_.size()) * getInterfaceScale()));
    const std::int32_t room = isVertical_ ? content_.width : content_.height;
    for (std::int32_t i = 0; i < count; ++i) {
        // All as thick as they can be; what is left over goes to the outside.
        const std::int32_t thickness = std::max(1, (room - gap * (count - 1)) / count);
        const std::int32_t spare = std::max(0, room - thickness * count - gap * (count - 1));
        Bar& bar = bars_[static_cast<std::size_t>(i)];
        bar.across = (isVertical_ ? content_.x : content_.y) + spare / 2 + i * (thickness + gap);
        bar.thickness = thickness;
        measure(bar, channels[static_cast<std::size_t>(i)]);
    }
}

void CLevelMeter::measure(Bar& bar, const Channel& channel) const
{
    bar.isActive = channel.isActive;
    bar.level = channel.isActive && !channel.isSilent ? toPixel(channel.value) : 0;
    const bool hasPeak = isPeakShown_ && channel.isActive && !channel.isPeakSilent;
    const std::int32_t peak = hasPeak ? toPixel(channel.peak) : 0;
    bar.peak = peak > 0 ? std::max(peak, lampPx_) : 0;
}

// --- changes

void CLevelMeter::onValuesChanged()
{
    const std::vector<Channel>& channels = getChannels();
    if (channels.size() != bars_.size()) {
        onRangeChanged();
        return;
    }
    for (std::size_t i = 0; i < bars_.size(); ++i) {
        const Bar before = bars_[i];
        measure(bars_[i], channels[i]);
        if (!(before == bars_[i])) {
            markChange(before, bars_[i]);
        }
    }
}

void CLevelMeter::markChange(const Bar& before, const Bar& after)
{
    if (before.isActive != after.isActive) {
        markStrip(after, 0, length_);
        return;
    }
    markStrip(after, std::min(before.level, after.level), std::max(before.level, after.level));
    if (before.peak != after.peak) {
        markStrip(after, before.peak - lampPx_, before.peak);
        markStrip(after, after.peak - lampPx_, after.peak);
    }
}

void CLevelMeter::markStrip(const Bar& bar, std::int32_t from, std::int32_t to)
{
    if (to > std::max(from, 0)) {
        const CRect rect = rectOf(bar, std::max(from, 0), to).movedBy(getArea().x, getArea().y);
        getViewContext().getSectorMap().markDirty(rect.intersectedWith(getVisibleArea()), *this);
    }
}

CRect CLevelMeter::rectOf(const Bar& bar, std::int32_t from, std::int32_t to) const
{
    const double thickness = bar.thickness;
    const double across = bar.across;
    return isVertical_ ? CRect{across, static_cast<double>(content_.bottom() - to), thickness,
                               static_cast<double>(to - from)}
                       : CRect{static_cast<double>(content_.x + from), across, static_cast<double>(to - from),
                               thickness};
}

// --- drawing

void CLevelMeter::draw(CDrawContext& context)
{
    for (const Bar& bar : bars_) {
        if (context.isRectVisible(rectOf(bar, 0, length_), 1)) {
            drawBar(context, bar);
        }
    }
}

void CLevelMeter::drawBar(CDrawContext& context, const Bar& bar) const
{
    for (std::int32_t from = 0; from < length_; from += lampPx_) {
        const std::int32_t to = std::min(from + lampPx_ - gapPx_, length_);
        if (context.isRectVisible(rectOf(bar, from, to), 1)) {
            drawLamp(context, bar, from, to);
        }
    }
    if (bar.peak > 0) {
        drawFilledRect(context, kPeakSlot, rectOf(bar, bar.peak - lampPx_, bar.peak), 1, 1.0);
    }
}

// A lamp at the border of two zones has both colours; one that the level has not passed is lit in part.
void CLevelMeter::drawLamp(CDrawContext& context, const Bar& bar, std::int32_t from, std::int32_t to) const
{
    if (!isMinimal_ && bar.level < to) {
        drawFilledRect(context, kOffSlot, rectOf(bar, std::max(from, bar.level), to), 1,
                       bar.isActive ? kOffOpacity : kInactiveOpacity);
    }
    const double light = kLeastLight + (1.0 - kLeastLight) * to / length_;
    std::int32_t start = from;
    const std::int32_t end = std::min(to, bar.level);
    for (std::uint32_t zone = 0; zone < kZones && start < end; ++zone) {
        const std::int32_t zoneEnd = std::min(end, zoneEnds_[zone]);
        if (zoneEnd > start) {
            drawFilledRect(context, kFirstZoneSlot + zone, rectOf(bar, start, zoneEnd), 1, light);
            start = zoneEnd;
        }
    }
}

} // namespace qel
