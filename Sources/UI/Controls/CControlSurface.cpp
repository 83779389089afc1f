// The plane on which points are dragged.
#include "CControlSurface.h"

#include "CUIParam.h"

#include <cmath>

namespace qel {

namespace {

constexpr std::uint32_t kGridSlot = 0;
constexpr std::uint32_t kCurveSlot = 1;
constexpr double kGridOpacity = 0.35;
constexpr double kFillOpacity = 0.16;
constexpr double kCurveWidth = 1.48;
// Where the curve leaves the view it goes on a little, so that its end is not seen.
constexpr double kOvershootPx = 4.0;
constexpr int kMaxGridLines = 64;

} // namespace

void CControlSurface::buildClassInfo(CClassInfo& info)
{
    using Self = CControlSurface;
    CView::buildClassInfo(info);
    info.bind<&Self::filtersPath_>("filters", "");
    info.bind<&Self::minDb_, &Self::attrLook>("min-db", -48.0);
    info.bind<&Self::maxDb_, &Self::attrLook>("max-db", 6.0);
    info.bind<&Self::stepDb_, &Self::attrLook>("step-db", 12.0);
}

CError CControlSurface::init()
{
    QEL_TRY(CView::init(), getFullName());
    if (!filtersPath_.isEmpty()) {
        CObject* filters = nullptr;
        QEL_TRY(require(filters, filtersPath_,
                        "@qelstr_CControlSurface_init_NoFilters Unable to locate filters '%1'."),
                getFullName());
        response_.load(*filters);
    }
    return {};
}

// --- parameters

CError CControlSurface::onParamAdded(CUIParam& param)
{
    const CString name = param.getName();
    if (name == "ui-param-freq") {
        freq_ = &param;
    } else if (name == "ui-param-type") {
        type_ = &param;
    }
    return {};
}

CError CControlSurface::onParamRemoved(CUIParam& param)
{
    freq_ = freq_ == &param ? nullptr : freq_;
    type_ = type_ == &param ? nullptr : type_;
    return attrLook();
}

CError CControlSurface::onParamUpdate(CUIParam&)
{
    return attrLook();
}

CError CControlSurface::onParamInfo(CUIParam&)
{
    return attrLook();
}

// --- layout

CError CControlSurface::attrLook()
{
    layOut();
    markLook();
    return {};
}

CError CControlSurface::attrInnerBorder()
{
    QEL_TRY(CView::attrInnerBorder(), getFullName());
    return attrLook();
}

void CControlSurface::updateClips()
{
    CView::updateClips();
    layOut();
}

double CControlSurface::toPixelY(double db) const
{
    const double height = getArea().height;
    const double range = maxDb_ - minDb_;
    const double y = range > 0.0 ? (maxDb_ - db) / range * height : 0.0;
    return std::clamp(y, -kOvershootPx, height + kOvershootPx);
}

// Beyond the ends in equal ratios.
double CControlSurface::frequencyAt(double norm) const
{
    const double leastHz = std::max(freq_->toValue(0, 0.0), 1e-3);
    const double mostHz = std::max(freq_->toValue(0, 1.0), leastHz);
    const double beyond = norm - std::clamp(norm, 0.0, 1.0);
    return std::max(freq_->toValue(0, norm - beyond), 1e-3) * std::pow(mostHz / leastHz, beyond);
}

void CControlSurface::layOut()
{
    curve_.clear();
    gridAcross_.clear();
    gridUpright_.clear();
    const CRect& area = getArea();
    if (stepDb_ > 0.0 && (maxDb_ - minDb_) / stepDb_ < kMaxGridLines) {
        for (double db = std::ceil(minDb_ / stepDb_) * stepDb_; db <= maxDb_; db += stepDb_) {
            gridAcross_.push_back(std::round(toPixelY(db)));
        }
    }
    if (!freq_ || freq_->getElementCount() == 0 || area.isEmpty()) {
        return;
    }
    using Var = CViewArea::Var;
    const double left = static_cast<double>(getViewArea().getValue(Var::kInnerBefore, CAxis::kX));
    const double right = static_cast<double>(getViewArea().getValue(Var::kInnerAfter, CAxis::kX));
    const double width = std::max(1.0, area.width - left - right);
    const double leastHz = frequencyAt(0.0);
    const double mostHz = frequencyAt(1.0);
    for (double decade = std::pow(10.0, std::floor(std::log10(leastHz))); decade <= mostHz; decade *= 10.0) {
        for (const double digit : {1.0, 2.0, 5.0}) {
            if (digit * decade >= leastHz && digit * decade <= mostHz) {
                gridUpright_.push_back(std::round(left + freq_->toNorm(0, digit * decade) * width));
            }
        }
    }
    const std::int32_t type = type_ ? static_cast<std::int32_t>(std::lround(type_->getValue(0))) : 0;
    const double cornerHz = freq_->getValue(0);
    for (double x = 0.0; x <= area.width; x += 1.0) {
        const double hz = frequencyAt((x - left) / width);
        curve_.push_back({x, toPixelY(response_.getGainDb(type, hz, cornerHz))});
    }
}

// --- drawing

void CControlSurface::draw(CDrawContext& context)
{
    const CRect& area = getArea();
    for (const double y : gridAcross_) {
        drawFilledRect(context, kGridSlot, {0.0, y, area.width, 1.0}, 1, kGridOpacity);
    }
    for (const double x : gridUpright_) {
        drawFilledRect(context, kGridSlot, {x, 0.0, 1.0, area.height}, 1, kGridOpacity);
    }
    for (const CPoint& point : curve_) {
        const double top = std::round(point.y);
        drawFilledRect(context, kCurveSlot, {point.x, top, 1.0, area.height - top}, 1, kFillOpacity);
    }
    const CBrushSet* const brushes = getBrushSet();
    if (const CBrush* const brush = brushes ? brushes->findBrush(kCurveWidth) : nullptr) {
        context.drawPolyline(curve_, *brush, 1, *getColor(kCurveSlot), 1.0);
    }
}

} // namespace qel
