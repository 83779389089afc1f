// The sectors of a window.
#pragma once

#include "CLinearBitmap.h"
#include "CSector.h"
#include "CSectorSurface.h"
#include "CSectorView.h"

#include <memory>
#include <vector>

namespace qel {

// Paints views into the squares of a window, and of those only the parts that changed. Each sector keeps its
// static views composed, so that a moving meter repaints only what lies above them. Static views are meant to
// lie below dynamic ones: in a sector, one above the first visible dynamic view is not drawn.
//
// Owned by the window; views and surface outlive it or are taken out first. Call order: resize() once the
// size is known, then for each frame markDirty() and markView() for what changed, paintDirty(), present().
// Window's thread only. Painting does not allocate; all memory is made by resize() and when views move.
class CSectorMap
{
public:
    explicit CSectorMap(CSectorSurface& surface);
    CSectorMap(const CSectorMap&) = delete;
    CSectorMap& operator=(const CSectorMap&) = delete;

    // A grid for a window of this size (0 or less: none), with all views in their places and everything to be
    // repainted. On error, which is a lack of memory, the grid is empty.
    CError resize(double width, double height);
    std::int32_t getColumns() const { return columns_; }
    std::int32_t getRows() const { return rows_; }
    const CSector& getSector(std::size_t index) const { return sectors_[index]; }

    // --- views: each call marks what it changes

    // Of views of one z-index, those added first lie below.
    void addView(CSectorView& view);
    void removeView(CSectorView& view);
    // The view's whole rectangle and the visible part of it, window pixels. The view sets its clips after
    // this.
    void moveView(CSectorView& view, const CRect& area, const CRect& visibleArea);
    void setViewDynamic(CSectorView& view, bool isDynamic);
    void setViewZIndex(CSectorView& view, std::int32_t zIndex);

    // --- frames

    // The rectangle, window pixels, is to be repainted because of a change in `view`.
    void markDirty(const CRect& rect, CSectorView& view);
    // The view looks different: its clips, or the whole visible part if it has none.
    void markView(CSectorView& view);
    // Everything is to be repainted.
    void markAll();
    // True if a frame has something to paint.
    bool isDirty() const { return !dirtySectors_.empty(); }

    // While frozen, nothing is painted; marks are kept.
    void setFrozen(bool isFrozen) { isFrozen_ = isFrozen; }
    bool isFrozen() const { return isFrozen_; }

    // Repaints all dirty sectors.
    void paintDirty();
    // Hands what was painted to the surface.
    void present();

    // While the draw load is shown, the time of the last rebuild of a static layer is kept, in seconds of the
    // frame clock (CDrawLoad.h).
    void setExportingDrawLoad(bool isExporting) { isExportingDrawLoad_ = isExporting; }
    double getLastStaticUpdate() const { return lastStaticUpdate_; }

private:
    // What is being painted: the part of a sector, in the sector's own pixels.
    struct Place
    {
        std::int32_t column;
        std::int32_t row;
        CPixelRect region;
    };

    CError makeGrid(std::int32_t columns, std::int32_t rows);
    // The sectors that a rectangle touches, as columns and rows.
    CPixelRect spanOf(const CRect& rect) const;
    template <class Action>
    void forEachSector(const CPixelRect& span, Action&& action);

    static bool precedes(const CSectorView* a, const CSectorView* b);
    static void insertSorted(std::vector<CSectorView*>& views, CSectorView& view);
    // Brings the lists of sectors in line with where the view is now.
    void listView(CSectorView& view);
    void unlistView(CSectorView& view);

    // A shown view comes, goes or changes its kind: told before the change for what it leaves, and after it.
    void markChanged(CSectorView& view);
    void listDirty(std::int32_t index, const CRect& rect);
    static bool isInStaticLayer(const CSector& sector, const CSectorView& view);
    static bool isEndOfStaticLayer(const CSector& sector, const CSectorView& view);

    void paintSector(std::int32_t index);
    void drawView(CSectorView& view, CLinearBitmap& image, Place place);
    void drawFaded(CSectorView& view, CLinearBitmap& target, const Place& place);
    void drawSide(CSectorView& view, CSectorView::FadeSide side, CLinearBitmap& target, const Place& place);

    CSectorSurface& surface_;
    std::int32_t columns_ = 0;
    std::int32_t rows_ = 0;
    double width_ = 0.0; // of the window, pixels
    double height_ = 0.0;
    std::unique_ptr<CSector[]> sectors_;
    std::vector<CSectorView*> views_; // as a sector lists them
    std::uint64_t lastSerial_ = 0;
    std::vector<std::int32_t> dirtySectors_;
    std::vector<std::int32_t> paintedSectors_; // and not yet presented
    CLinearBitmap opacityScratch_;
    CLinearBitmap fadeScratch_;
    std::vector<std::uint8_t> coverage_; // of a brush stroke, a byte for each pixel of a sector
    bool isFrozen_ = false;
    bool isExportingDrawLoad_ = false;
    double lastStaticUpdate_ = 0.0;
};

} // namespace qel
