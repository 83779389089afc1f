// The sectors of a window: painting.
#include "CSectorMap.h"

#include "CDrawContext.h"
#include "CDrawLoad.h"

#include <utility>

namespace qel {

namespace {

// Below the first a view is not drawn, from the second on it needs no blending of its own.
constexpr double kMinOpacity = 0.001;
constexpr double kFullOpacity = 0.999;
// What is left of a cross-fade when it no longer shows.
constexpr double kMinFade = 0.01;
constexpr double kMinViewPx = 0.1;

constexpr CPixelRect kWholeSector{0, 0, kSectorPx, kSectorPx};

// The pixels of a sector that a rectangle of the window touches.
CPixelRect regionOf(const CRect& dirty, std::int32_t column, std::int32_t row)
{
    const auto floorEdge = [](double edge, std::int32_t sector) {
        const double held = std::clamp(edge, -kPixelLimit, kPixelLimit);
        return static_cast<std::int32_t>(std::floor(held)) - sector * kSectorPx;
    };
    const std::int32_t left = floorEdge(dirty.x, column);
    const std::int32_t top = floorEdge(dirty.y, row);
    const CPixelRect touched{left, top, floorEdge(dirty.right(), column) - left + 1,
                             floorEdge(dirty.bottom(), row) - top + 1};
    return touched.intersectedWith(kWholeSector);
}

} // namespace

void CSectorMap::paintDirty()
{
    if (isFrozen_) {
        return;
    }
    // A mark that drawing itself makes is for the next frame.
    const std::size_t count = dirtySectors_.size();
    for (std::size_t i = 0; i < count; ++i) {
        const std::int32_t index = dirtySectors_[i];
        CSector& sector = sectors_[static_cast<std::size_t>(index)];
        sector.isDirtyListed = false;
        paintSector(index);
        if (!sector.isPaintedListed) {
            sector.isPaintedListed = true;
            paintedSectors_.push_back(index);
        }
    }
    dirtySectors_.erase(dirtySectors_.begin(), dirtySectors_.begin() + static_cast<std::ptrdiff_t>(count));
}

void CSectorMap::present()
{
    for (const std::int32_t index : paintedSectors_) {
        sectors_[static_cast<std::size_t>(index)].isPaintedListed = false;
        surface_.invalidate(
            {index % columns_ * kSectorPx, index / columns_ * kSectorPx, kSectorPx, kSectorPx});
    }
    paintedSectors_.clear();
}

void CSectorMap::paintSector(std::int32_t index)
{
    CSector& sector = sectors_[static_cast<std::size_t>(index)];
    const std::int32_t column = index % columns_;
    const std::int32_t row = index / columns_;
    const CRect dirty = std::exchange(sector.dirty, {});
    CPixelRect region = kWholeSector;
    if (sector.isStaticValid) {
        region = regionOf(dirty, column, row);
        sector.image.copyRect(sector.staticImage, region);
    } else {
        // Views that let the ground show through must not gather over their own old pictures.
        sector.image.clear();
        if (isExportingDrawLoad_) {
            lastStaticUpdate_ = drawing::getFrameTime();
        }
    }
    for (CSectorView* const view : sector.views) {
        if (!view->isShown_) {
            continue;
        }
        if (view->isDynamic_ && !sector.isStaticValid) {
            sector.staticImage.copyRect(sector.image, kWholeSector);
            sector.isStaticValid = true;
        }
        if (view->isDynamic_ || !sector.isStaticValid) {
            drawView(*view, sector.image, {column, row, region});
        }
    }
    if (!sector.isStaticValid) {
        sector.staticImage.copyRect(sector.image, kWholeSector);
        sector.isStaticValid = true;
    }
}

void CSectorMap::drawView(CSectorView& view, CLinearBitmap& image, Place place)
{
    const bool isTooSmall = view.area_.width <= kMinViewPx || view.area_.height <= kMinViewPx;
    // Nothing is drawn beyond the visible area, so nothing beyond it is copied and blended either.
    place.region = roundToPixels(view.visibleArea_)
                       .movedBy(-place.column * kSectorPx, -place.row * kSectorPx)
                       .intersectedWith(place.region);
    if (isTooSmall || view.drawOpacity_ < kMinOpacity || place.region.isEmpty()) {
        return;
    }
    if (view.drawOpacity_ >= kFullOpacity) {
        drawFaded(view, image, place);
        return;
    }
    opacityScratch_.copyRect(image, place.region);
    drawFaded(view, opacityScratch_, place);
    image.blendRect(opacityScratch_, place.region, view.drawOpacity_);
}

void CSectorMap::drawFaded(CSectorView& view, CLinearBitmap& target, const Place& place)
{
    const double rest = 1.0 - view.fadePosition_;
    if (!(rest >= kMinFade)) {
        drawSide(view, CSectorView::FadeSide::kTo, target, place);
        return;
    }
    fadeScratch_.copyRect(target, place.region);
    drawSide(view, CSectorView::FadeSide::kFrom, fadeScratch_, place);
    drawSide(view, CSectorView::FadeSide::kTo, target, place);
    target.blendRect(fadeScratch_, place.region, rest);
}

void CSectorMap::drawSide(CSectorView& view, CSectorView::FadeSide side, CLinearBitmap& target,
                          const Place& place)
{
    view.selectFadeSide(side);
    CDrawContext context(view, target, coverage_, place.column, place.row, place.region);
    view.drawInto(context);
}

} // namespace qel
