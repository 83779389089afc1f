// What a sector map knows of a view.
#pragma once

#include "CPalette.h"
#include "CViewClip.h"

#include <vector>

namespace qel {

class CDrawContext;
class CSectorMap;

// The part of a view that has to do with being drawn: where it is, in which order and how it is painted, and
// the hooks that paint it. Views derive from it and keep opacity, fade and clips up to date; place,
// visibility and order are changed through the map, which must know the old state. A change of what a view
// looks like is told with CSectorMap::markView(). Window's thread only.
class CSectorView
{
public:
    // Both ends of a cross-fade; a view at rest is in the "to" state.
    enum class FadeSide
    {
        kFrom,
        kTo
    };

    virtual ~CSectorView() = default;

    // The whole rectangle, in window pixels; drawing goes by its corner.
    const CRect& getArea() const { return area_; }
    // What the clips of its parents leave of it, widened by what it may draw around itself.
    const CRect& getVisibleArea() const { return visibleArea_; }
    // Static views are kept composed; dynamic ones are redrawn over them.
    bool isDynamic() const { return isDynamic_; }
    std::int32_t getZIndex() const { return zIndex_; }
    double getDrawOpacity() const { return drawOpacity_; }
    double getFadePosition() const { return fadePosition_; }
    // Entry `index`; one beyond the table is entry 0, which is always empty.
    const CViewClip& getClip(std::size_t index) const
    {
        static constexpr CViewClip kNone;
        return index < clips_.size() ? clips_[index] : kNone;
    }

    // --- hooks

    // From now on drawing is in the colours and images of this side.
    virtual void selectFadeSide(FadeSide side) = 0;
    // The colour of a slot in the selected state. Never null.
    virtual const CPaletteColor* getSlotColor(std::uint32_t slot) = 0;
    // Draws the view's own content. Called for each sector and, in a cross-fade, for each side, so it must
    // neither allocate nor change what it draws.
    virtual void drawInto(CDrawContext& context) = 0;

protected:
    // Makes room for the clips 1 to `count`. At init.
    void allocateClips(std::size_t count) { clips_.resize(count + 1); }
    // Sets a clip, `rect` in window coordinates. Whenever the area has changed.
    void setClip(std::size_t index, const CRect& rect)
    {
        if (index > 0 && index < clips_.size()) {
            clips_[index].set(rect, visibleArea_);
        }
    }
    // 0 to 1.
    void setDrawOpacity(double opacity) { drawOpacity_ = opacity; }
    // Position of a running cross-fade, 0 (as before) to 1 (as it will be); 1 without one.
    void setFadePosition(double position) { fadePosition_ = position; }

private:
    friend class CSectorMap;

    CRect area_;
    CRect visibleArea_;
    bool isDynamic_ = false;
    std::int32_t zIndex_ = 0;
    double drawOpacity_ = 1.0;
    double fadePosition_ = 1.0;
    std::vector<CViewClip> clips_;

    // For the map: the order of adding, and the sectors that list this view.
    std::uint64_t serial_ = 0;
    CPixelRect span_;
};

} // namespace qel
