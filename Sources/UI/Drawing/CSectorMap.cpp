// The sectors of a window: the grid, the views in it, and their painting.
#include "CSectorMap.h"

#include "CDrawContext.h"
#include "CDrawLoad.h"

#include <utility>

namespace qel {

namespace {

constexpr double kMaxWindowPx = 32000.0;

// A window's side in sectors.
std::int32_t sectorsAcross(double pixels)
{
    if (!(pixels > 0.0)) {
        return 0;
    }
    return static_cast<std::int32_t>(std::ceil(std::min(pixels, kMaxWindowPx) / kSectorPx));
}

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

CSectorMap::CSectorMap(CSectorSurface& surface) : surface_(surface), coverage_(kSectorPx * kSectorPx) {}

// --- the grid

CError CSectorMap::resize(double width, double height)
{
    for (CSectorView* const view : views_) {
        view->span_ = {};
    }
    if (CError error = makeGrid(sectorsAcross(width), sectorsAcross(height))) {
        releaseError(makeGrid(0, 0));
        return reportError(std::move(error), __FILE__, __LINE__);
    }
    width_ = width;
    height_ = height;
    for (CSectorView* const view : views_) {
        listView(*view);
    }
    markAll();
    return {};
}

CError CSectorMap::makeGrid(std::int32_t columns, std::int32_t rows)
{
    columns_ = 0;
    rows_ = 0;
    width_ = 0.0;
    height_ = 0.0;
    dirtySectors_.clear();
    paintedSectors_.clear();
    sectors_.reset();
    QEL_TRY(opacityScratch_.resize(kSectorPx, kSectorPx), {});
    QEL_TRY(fadeScratch_.resize(kSectorPx, kSectorPx), {});
    QEL_TRY(surface_.resize(columns, rows), {});
    const auto count = static_cast<std::size_t>(columns) * static_cast<std::size_t>(rows);
    sectors_ = std::make_unique<CSector[]>(count);
    for (std::size_t i = 0; i < count; ++i) {
        const auto column = static_cast<std::int32_t>(i) % columns;
        const auto row = static_cast<std::int32_t>(i) / columns;
        sectors_[i].image.attachSector(surface_.getSector(column, row));
        QEL_TRY(sectors_[i].staticImage.resize(kSectorPx, kSectorPx), {});
    }
    dirtySectors_.reserve(2 * count); // those of this frame, and those that drawing itself marks
    paintedSectors_.reserve(count);
    columns_ = columns;
    rows_ = rows;
    return {};
}

CPixelRect CSectorMap::spanOf(const CRect& rect) const
{
    // False, too, for NaN.
    const bool isInside = rect.x < width_ && rect.y < height_ && rect.right() > 0.0 && rect.bottom() > 0.0;
    if (rect.isEmpty() || !isInside || columns_ == 0 || rows_ == 0) {
        return {};
    }
    const auto toSector = [](double edge, std::int32_t count) {
        return std::min(std::max(roundToPixel(edge), 0) >> kSectorShift, count - 1);
    };
    const std::int32_t left = toSector(rect.x, columns_);
    const std::int32_t top = toSector(rect.y, rows_);
    return {left, top, toSector(rect.right(), columns_) - left + 1, toSector(rect.bottom(), rows_) - top + 1};
}

template <class Action>
void CSectorMap::forEachSector(const CPixelRect& span, Action&& action)
{
    for (std::int32_t row = span.y; row < span.bottom(); ++row) {
        for (std::int32_t column = span.x; column < span.right(); ++column) {
            action(row * columns_ + column);
        }
    }
}

// --- views

bool CSectorMap::precedes(const CSectorView* a, const CSectorView* b)
{
    return a->zIndex_ != b->zIndex_ ? a->zIndex_ < b->zIndex_ : a->serial_ < b->serial_;
}

void CSectorMap::insertSorted(std::vector<CSectorView*>& views, CSectorView& view)
{
    views.insert(std::upper_bound(views.begin(), views.end(), &view, &precedes), &view);
}

void CSectorMap::listView(CSectorView& view)
{
    const CPixelRect span = spanOf(view.visibleArea_);
    const CPixelRect before = view.span_;
    view.span_ = span;
    const auto holds = [this](const CPixelRect& rect, std::int32_t index) {
        return !rect.intersectedWith({index % columns_, index / columns_, 1, 1}).isEmpty();
    };
    forEachSector(before, [&](std::int32_t index) {
        if (!holds(span, index)) {
            std::erase(sectors_[static_cast<std::size_t>(index)].views, &view);
        }
    });
    forEachSector(span, [&](std::int32_t index) {
        if (!holds(before, index)) {
            insertSorted(sectors_[static_cast<std::size_t>(index)].views, view);
        }
    });
}

void CSectorMap::unlistView(CSectorView& view)
{
    forEachSector(view.span_, [&](std::int32_t index) {
        std::erase(sectors_[static_cast<std::size_t>(index)].views, &view);
    });
    view.span_ = {};
}

void CSectorMap::addView(CSectorView& view)
{
    view.serial_ = ++lastSerial_;
    view.span_ = {};
    insertSorted(views_, view);
    listView(view);
    markChanged(view);
}

void CSectorMap::removeView(CSectorView& view)
{
    markChanged(view);
    unlistView(view);
    std::erase(views_, &view);
}

void CSectorMap::moveView(CSectorView& view, const CRect& area, const CRect& visibleArea)
{
    markChanged(view);
    view.area_ = area;
    view.visibleArea_ = visibleArea;
    listView(view);
    markChanged(view);
}

void CSectorMap::setViewDynamic(CSectorView& view, bool isDynamic)
{
    if (view.isDynamic_ == isDynamic) {
        return;
    }
    markChanged(view);
    view.isDynamic_ = isDynamic;
    markChanged(view);
}

void CSectorMap::setViewZIndex(CSectorView& view, std::int32_t zIndex)
{
    if (view.zIndex_ == zIndex) {
        return;
    }
    markChanged(view);
    unlistView(view);
    std::erase(views_, &view);
    view.zIndex_ = zIndex;
    insertSorted(views_, view);
    listView(view);
    markChanged(view);
}

// --- marks

// A static view is in the static layer if it lies below the first visible dynamic one.
bool CSectorMap::isInStaticLayer(const CSector& sector, const CSectorView& view)
{
    for (const CSectorView* const listed : sector.views) {
        if (listed == &view) {
            return true;
        }
        if (listed->isDynamic_) {
            return false;
        }
    }
    return true;
}

// The static layer ends at the first dynamic view. If that is this one and static views lie above,
// then they come into the layer or drop out of it when this one comes or goes.
bool CSectorMap::isEndOfStaticLayer(const CSector& sector, const CSectorView& view)
{
    const auto isDynamic = [](const CSectorView* listed) { return listed->isDynamic_; };
    const auto first = std::find_if(sector.views.begin(), sector.views.end(), isDynamic);
    return first != sector.views.end() && *first == &view &&
           !std::all_of(first, sector.views.end(), isDynamic);
}

void CSectorMap::markDirty(const CRect& rect, CSectorView& view)
{
    forEachSector(spanOf(rect), [&](std::int32_t index) {
        CSector& sector = sectors_[static_cast<std::size_t>(index)];
        if (!view.isDynamic_ && isInStaticLayer(sector, view)) {
            sector.isStaticValid = false;
        }
        listDirty(index, rect);
    });
}

void CSectorMap::listDirty(std::int32_t index, const CRect& rect)
{
    CSector& sector = sectors_[static_cast<std::size_t>(index)];
    sector.dirty = sector.dirty.unitedWith(rect);
    if (!sector.isDirtyListed) {
        sector.isDirtyListed = true;
        dirtySectors_.push_back(index);
    }
}

void CSectorMap::markView(CSectorView& view)
{
    if (view.clips_.size() < 2) {
        markDirty(view.visibleArea_, view);
        return;
    }
    for (std::size_t i = 1; i < view.clips_.size(); ++i) {
        markDirty(view.clips_[i].getRect().intersectedWith(view.visibleArea_), view);
    }
}

void CSectorMap::markChanged(CSectorView& view)
{
    if (view.isDynamic_) {
        forEachSector(view.span_, [&](std::int32_t index) {
            CSector& sector = sectors_[static_cast<std::size_t>(index)];
            if (isEndOfStaticLayer(sector, view)) {
                sector.isStaticValid = false;
            }
        });
    }
    markDirty(view.visibleArea_, view);
}

void CSectorMap::markAll()
{
    forEachSector({0, 0, columns_, rows_}, [&](std::int32_t index) {
        sectors_[static_cast<std::size_t>(index)].isStaticValid = false;
        listDirty(index, {0.0, 0.0, width_, height_});
    });
}

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
