// Points that are dragged, and sliders.
#include "CControlSurfaceGroup.h"

#include "CAudioParamInfo.h"
#include "CColorSwatch.h"
#include "CParamEdit.h"
#include "CUIParam.h"
#include "DrawTiled.h"
#include "NumberSyntax.h"
#include "PointerEvents.h"

#include <cmath>

namespace qel {

namespace {

// Images of the set: pieces of the slider's parts, then the looks of a point.
constexpr std::uint32_t kPointImage = 32;
enum Look : std::uint32_t
{
    kPlain,
    kHovered,
    kHeld,
    kOff
};
// Colours by slot, where the tree gives no other.
constexpr const char* kSurfaceColors[] = {"Action", "CSPointOff", "CSSliderBarPit", "CSSliderBarUnderlay",
                                          "CSSliderBar"};
constexpr std::uint32_t kPointOffSlot = 1;
constexpr std::uint32_t kFirstSliderSlot = 2;
constexpr std::size_t kFirstSliderClip = 2;

// Pixels at a scale of 1.
constexpr double kReach = 10.0;
constexpr double kPitThickness = 10.0;
constexpr double kHandleLength = 14.0;
constexpr double kFineFactor = 0.1;
constexpr double kWheelNorm = 0.02;

} // namespace

void CControlSurfaceGroup::buildClassInfo(CClassInfo& info)
{
    using Self = CControlSurfaceGroup;
    CView::buildClassInfo(info);
    info.bind<&Self::swatchPath_>("color-swatch", "");
    info.bind<&Self::maxX_>("max-x", std::nullopt);
    info.bind<&Self::maxY_>("max-y", std::nullopt);
    info.handleEvent<&Self::onMouseWheel>("mouse-wheel");
}

CControlSurfaceGroup::CControlSurfaceGroup()
{
    allocateClips(kFirstSliderClip + kSliderParts * kFramePieces - 1);
}

CError CControlSurfaceGroup::init()
{
    QEL_TRY(CView::init(), getFullName());
    for (std::uint32_t slot = 0; slot < std::size(kSurfaceColors); ++slot) {
        if (slot > 0 || getAttrString("color").isEmpty()) {
            setSlotColor(slot, kSurfaceColors[slot]);
        }
    }
    if (!swatchPath_.isEmpty()) {
        QEL_TRY(require(swatch_, swatchPath_,
                        "@qelstr_CControlSurfaceGroup_init_NoSwatch Unable to locate color swatch '%1'."),
                getFullName());
    }
    return {};
}

// --- parameters

CError CControlSurfaceGroup::onParamAdded(CUIParam& param)
{
    const CString name = param.getName();
    if (name == "ui-param-x") {
        params_[0] = &param;
    } else if (name == "ui-param-y") {
        params_[1] = &param;
    } else if (name == "ui-param-active") {
        activeParam_ = &param;
    }
    return {};
}

CError CControlSurfaceGroup::onParamRemoved(CUIParam& param)
{
    const CHold keep(*this);
    CError error = letGo();
    for (CUIParam*& known : params_) {
        known = known == &param ? nullptr : known;
    }
    activeParam_ = activeParam_ == &param ? nullptr : activeParam_;
    layOut();
    return error;
}

CError CControlSurfaceGroup::onParamUpdate(CUIParam&)
{
    layOut();
    markLook();
    return {};
}

CError CControlSurfaceGroup::onParamInfo(CUIParam&)
{
    layOut();
    markLook();
    return {};
}

// --- layout

CError CControlSurfaceGroup::attrInnerBorder()
{
    QEL_TRY(CView::attrInnerBorder(), getFullName());
    if (getInitState() != InitState::kCreated && !isReleased()) {
        layOut();
        markLook();
    }
    return {};
}

void CControlSurfaceGroup::updateClips()
{
    CView::updateClips();
    layOut();
}

void CControlSurfaceGroup::onLookChanged()
{
    CView::onLookChanged();
    layOut();
}

CRect CControlSurfaceGroup::content() const
{
    using Var = CViewArea::Var;
    const CRect& view = getArea();
    if (view.isEmpty()) {
        return {};
    }
    const CViewArea& area = getViewArea();
    const auto inner = [&](Var side, CAxis axis) { return static_cast<double>(area.getValue(side, axis)); };
    const double left = inner(Var::kInnerBefore, CAxis::kX);
    const double top = inner(Var::kInnerBefore, CAxis::kY);
    return {left, top, view.width - left - inner(Var::kInnerAfter, CAxis::kX),
            view.height - top - inner(Var::kInnerAfter, CAxis::kY)};
}

// How far a point can go; a slider's handle stays in the pit with both ends.
double CControlSurfaceGroup::travel(CAxis axis) const
{
    const CRect inside = content();
    const double length = axis == CAxis::kX ? inside.width : inside.height;
    return std::max(1.0, isSlider() ? length - std::round(kHandleLength * getInterfaceScale()) : length);
}

double CControlSurfaceGroup::endNorm(CAxis axis) const
{
    const std::optional<CString>& text = axis == CAxis::kX ? maxX_ : maxY_;
    const std::optional<double> value = text ? parseReal(*text) : std::nullopt;
    const CUIParam* const param = params_[indexOf(axis)];
    return value && param ? std::max(1e-6, param->toNorm(0, *value)) : 1.0;
}

void CControlSurfaceGroup::layOut()
{
    std::int32_t count = 0;
    for (const CUIParam* const param : params_) {
        count = std::max(count, param ? param->getElementCount() : 0);
    }
    count = isSlider() ? std::min(count, 1) : count;
    points_.resize(static_cast<std::size_t>(count));
    const CRect inside = content();
    for (std::int32_t i = 0; i < count; ++i) {
        Point& point = points_[static_cast<std::size_t>(i)];
        for (const CAxis axis : kAxes) {
            const CUIParam* const param = params_[indexOf(axis)];
            point.norm[indexOf(axis)] = param ? std::min(1.0, param->getNorm(i) / endNorm(axis)) : 0.5;
        }
        point.isActive = !activeParam_ || activeParam_->getValue(i) != 0.0;
        point.color = swatch_ ? swatch_->getColor(i) : CString();
        const double endX = (inside.width - travel(CAxis::kX)) * 0.5;
        const double endY = (inside.height - travel(CAxis::kY)) * 0.5;
        point.center = {inside.x + endX + point.norm[0] * travel(CAxis::kX),
                        inside.y + endY + (1.0 - point.norm[1]) * travel(CAxis::kY)};
    }
    hovered_ = hovered_ < points_.size() ? hovered_ : kNone;
    held_ = held_ < points_.size() ? held_ : kNone;
    if (isSlider() && count > 0) {
        layOutSlider();
    }
}

void CControlSurfaceGroup::layOutSlider()
{
    const double scale = getInterfaceScale();
    const CRect inside = content().movedBy(getArea().x, getArea().y);
    const CPoint center{points_[0].center.x + getArea().x, points_[0].center.y + getArea().y};
    const bool isX = sliderAxis() == CAxis::kX;
    const double pit = std::round(kPitThickness * scale);
    const double handle = std::round(kHandleLength * scale);
    CRect rects[kSliderParts];
    if (isX) {
        const double y = std::round(inside.y + (inside.height - pit) * 0.5);
        rects[0] = {inside.x, y, inside.width, pit};
        rects[1] = {inside.x, y, center.x - inside.x, pit};
        rects[2] = {std::round(center.x - handle * 0.5), inside.y, handle, inside.height};
    } else {
        const double x = std::round(inside.x + (inside.width - pit) * 0.5);
        rects[0] = {x, inside.y, pit, inside.height};
        rects[1] = {x, center.y, pit, inside.bottom() - center.y};
        rects[2] = {inside.x, std::round(center.y - handle * 0.5), inside.width, handle};
    }
    for (std::size_t part = 0; part < kSliderParts; ++part) {
        const auto first = static_cast<std::uint32_t>(part * kFramePieces);
        slider_[part] = layoutFrame(*this, rects[part], first);
        for (std::size_t i = 0; i < kFramePieces; ++i) {
            setClip(kFirstSliderClip + first + i, slider_[part][i].clip);
        }
    }
}

// --- pointer

std::size_t CControlSurfaceGroup::pointAt(const CPoint& point) const
{
    double least = kReach * getInterfaceScale();
    std::size_t nearest = kNone;
    for (std::size_t i = 0; i < points_.size(); ++i) {
        const double distance = std::hypot(points_[i].center.x - point.x, points_[i].center.y - point.y);
        // Those drawn last lie on top.
        if (distance <= least) {
            least = distance;
            nearest = i;
        }
    }
    return nearest;
}

CError CControlSurfaceGroup::setHovered(std::size_t index)
{
    if (hovered_ != index) {
        hovered_ = index;
        markLook();
    }
    return {};
}

CError CControlSurfaceGroup::onMousePress(const CAttrMap& parameters)
{
    const CHold keep(*this);
    QEL_TRY(CView::onMousePress(parameters), getFullName());
    if (isReleased() || actsDisabled() || held_ != kNone) {
        return {};
    }
    const CPoint point = pointerIn(*this, parameters);
    const std::size_t index = isSlider() && !points_.empty() ? 0 : pointAt(point);
    if (index == kNone) {
        return {};
    }
    if (eventFlag(parameters, "is-ctrl") || eventFlag(parameters, "is-double-click")) {
        return resetPoint(index);
    }
    return grip(index, point);
}

CError CControlSurfaceGroup::grip(std::size_t index, const CPoint& point)
{
    held_ = index;
    lastPoint_ = point;
    std::copy_n(points_[index].norm, 2, dragNorm_);
    CError first;
    for (CUIParam* const param : params_) {
        if (param) {
            collectError(first, param->beginEdit());
        }
    }
    markLook();
    // A press beside a slider's handle brings it there.
    const bool isBeside = isSlider() && pointAt(point) == kNone;
    if (isBeside && held_ == index) {
        lastPoint_ = points_[index].center;
        collectError(first, drag(point, false));
    }
    return first;
}

CError CControlSurfaceGroup::onMouseMove(const CAttrMap& parameters)
{
    const CHold keep(*this);
    QEL_TRY(CView::onMouseMove(parameters), getFullName());
    if (isReleased()) {
        return {};
    }
    const CPoint point = pointerIn(*this, parameters);
    return held_ == kNone ? setHovered(actsDisabled() ? kNone : pointAt(point))
                          : drag(point, eventFlag(parameters, "is-shift"));
}

CError CControlSurfaceGroup::onMouseExit(const CAttrMap& parameters)
{
    const CHold keep(*this);
    QEL_TRY(CView::onMouseExit(parameters), getFullName());
    return isReleased() ? CError() : setHovered(kNone);
}

// What goes beyond an end has to be taken back first.
CError CControlSurfaceGroup::drag(const CPoint& point, bool isFine)
{
    const double factor = isFine ? kFineFactor : 1.0;
    dragNorm_[0] += (point.x - lastPoint_.x) * factor / travel(CAxis::kX);
    dragNorm_[1] -= (point.y - lastPoint_.y) * factor / travel(CAxis::kY);
    lastPoint_ = point;
    return write(held_, dragNorm_);
}

CError CControlSurfaceGroup::onMouseRelease(const CAttrMap& parameters)
{
    const CHold keep(*this);
    QEL_TRY(letGo(), getFullName());
    return isReleased() ? CError() : CView::onMouseRelease(parameters);
}

CError CControlSurfaceGroup::onMouseCancel(const CAttrMap& parameters)
{
    const CHold keep(*this);
    QEL_TRY(letGo(), getFullName());
    return isReleased() ? CError() : CView::onMouseCancel(parameters);
}

CError CControlSurfaceGroup::letGo()
{
    if (held_ == kNone) {
        return {};
    }
    held_ = kNone;
    markLook();
    CError first;
    for (CUIParam* const param : params_) {
        if (param && !param->isReleased()) {
            collectError(first, param->endEdit());
        }
    }
    return first;
}

CError CControlSurfaceGroup::onMouseWheel(const CAttrMap& parameters)
{
    const std::size_t index = isSlider() && !points_.empty() ? 0 : hovered_;
    if (index >= points_.size() || held_ != kNone || actsDisabled()) {
        return {};
    }
    const std::size_t axis = params_[0] ? 0 : 1;
    const double delta = eventNumber(parameters, "delta");
    const CAudioParamInfo* const info = params_[axis] ? params_[axis]->getInfo() : nullptr;
    if (info && info->isDiscrete) {
        const auto element = static_cast<std::int32_t>(index);
        const double step = delta < 0.0 ? std::floor(delta) : std::ceil(delta);
        return params_[axis]->setValue(element, params_[axis]->getValue(element) + step);
    }
    const double factor = eventFlag(parameters, "is-shift") ? kFineFactor : 1.0;
    double norm[2] = {points_[index].norm[0], points_[index].norm[1]};
    norm[axis] += delta * kWheelNorm * factor;
    return write(index, norm);
}

CError CControlSurfaceGroup::resetPoint(std::size_t index)
{
    const auto defaultOf = [&](CAxis axis) {
        const CUIParam* const param = params_[indexOf(axis)];
        return param ? param->getDefaultNorm(static_cast<std::int32_t>(index)) / endNorm(axis) : 0.0;
    };
    const double norm[2] = {defaultOf(CAxis::kX), defaultOf(CAxis::kY)};
    return write(index, norm);
}

// Both parameters each time, so that all movements of a gesture are one step.
CError CControlSurfaceGroup::write(std::size_t index, const double (&norm)[2])
{
    const CHold keep(*this);
    CError first;
    CParamEdit edit;
    for (const CAxis axis : kAxes) {
        // A shared attribute is set at once, and what hears of it may end this view.
        CUIParam* const param = params_[indexOf(axis)];
        if (param && !isReleased()) {
            collectError(first,
                         param->setNorm(static_cast<std::int32_t>(index),
                                        std::clamp(norm[indexOf(axis)], 0.0, 1.0) * endNorm(axis), &edit));
        }
    }
    collectError(first, edit.send());
    return first;
}

// --- drawing

void CControlSurfaceGroup::draw(CDrawContext& context)
{
    if (isSlider() && !points_.empty()) {
        drawSlider(context);
        return;
    }
    for (std::size_t i = 0; i < points_.size(); ++i) {
        drawPoint(context, i);
    }
}

void CControlSurfaceGroup::drawSlider(CDrawContext& context)
{
    for (std::size_t part = 0; part < kSliderParts; ++part) {
        const CPaletteColor* const color = getColor(kFirstSliderSlot + part);
        for (std::size_t i = 0; i < kFramePieces; ++i) {
            const FramePiece& piece = slider_[part][i];
            drawTiled(
                context, findImage(piece.index, false), {piece.x, piece.y}, getArea(),
                getClip(kFirstSliderClip + part * kFramePieces + i).getRect(),
                kFirstSliderClip + part * kFramePieces + i, [&](std::uint32_t) { return color; },
                piece.isTilingX, piece.isTilingY);
        }
    }
}

void CControlSurfaceGroup::drawPoint(CDrawContext& context, std::size_t index)
{
    const Point& point = points_[index];
    const Look look = !point.isActive ? kOff : index == held_ ? kHeld : index == hovered_ ? kHovered : kPlain;
    const CImage* const image = findImage(kPointImage + look, false);
    const auto& palette = getPalette();
    const CPaletteColor* color = getColor(point.isActive ? 0 : kPointOffSlot);
    if (point.isActive && !point.color.isEmpty() && palette && !actsDisabled()) {
        color = palette->findColor(point.color);
    }
    if (image) {
        const CPoint corner{std::round(point.center.x) - std::round(image->getWidth() * 0.5),
                            std::round(point.center.y) - std::round(image->getHeight() * 0.5)};
        for (const CImageLayer& layer : image->layers) {
            context.drawGlyph(layer, corner, 1, *color, 1.0);
        }
    }
}

} // namespace qel
