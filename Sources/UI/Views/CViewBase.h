// What a view is drawn with: colours and images.
#pragma once

#include "CBrushSet.h"
#include "CColorTable.h"
#include "CImageSet.h"
#include "CSectorView.h"
#include "CViewBaseCtlEvents.h"

namespace qel {

// Attributes, besides "color-state" and "image-set-range" (CViewBaseState):
//     palette               a palette "pal." + this, in the tree or in the shared tree
//     palette-name          the same, where the other is not given; without both that of the view above
//     color                 the colour of slot 0
//     color-slots           the number of slots; children of tag "ui:view-color-slot" add theirs
//     shared-color          path of a view whose colours are used in place of own ones
//     is-gradient-animated  moves the colours that have frames; all views below follow
//     image-set, brush-set  paths
class CViewBase : public CViewBaseCtlEvents
{
public:
    CViewBase();

    static void buildClassInfo(CClassInfo& info);

    // Fails where something that an attribute names is missing.
    CError init() override;
    void release() override;

    virtual CError attrBrushSet();
    virtual CError attrColor();
    virtual CError attrImageSet();
    virtual CError attrIsGradientAnimated();
    virtual CError onGradientTick();

    // Takes up the palette that the attributes of this view say, or that of the view above; then the views
    // below do the same.
    virtual CError updatePalette();
    // Null if neither this view nor one above has a palette.
    const std::shared_ptr<const CPalette>& getPalette() const { return palette_; }

    // --- what to draw with; in a cross-fade, that of the side that is being drawn

    // The colour of a slot, or "Disabled". Never null.
    const CPaletteColor* getColor(std::size_t slot);
    // What text is drawn with while the view is disabled.
    const CPaletteColor* getDisabledTextColor() const { return colors_->getDisabledTextColor(); }

    // The images of the present range; a null set means that there is nothing to draw.
    const CImageSet* getImageSet() const { return imageSet_.get(); }
    CImageRange getImageRange() const { return side(side_).range; }
    // Image `index` of the present range or, without `isInRange`, of the whole set; null if there is none.
    const CImage* findImage(std::uint32_t index, bool isInRange) const;
    const CBrushSet* getBrushSet() const { return brushSet_.get(); }

    // --- for colour slots
    void setSlotColor(std::size_t slot, const CString& name);

protected:
    // From now on all of the above is that of this side.
    void selectSide(CSectorView::FadeSide fadeSide) { side_ = fadeSide; }
    void onLookChanged() override;

private:
    // One side of the fade, looked up.
    struct Side
    {
        std::size_t row = 0;
        CImageRange range;
    };

    CError attrPalette();
    CError findSharedColor();
    CError findPalette();
    void setPosition(double position);
    Side resolved(const CViewLook& look);
    const Side& side(CSectorView::FadeSide fadeSide) const
    {
        return sides_[static_cast<std::size_t>(fadeSide)];
    }

    std::shared_ptr<CColorTable> colors_; // own or shared
    bool hasOwnColors_ = true;
    std::shared_ptr<const CPalette> palette_;
    std::shared_ptr<const CImageSet> imageSet_;
    std::shared_ptr<const CBrushSet> brushSet_;
    Side sides_[2];
    CSectorView::FadeSide side_ = CSectorView::FadeSide::kTo;
    CTickSubscription gradientTick_;
    double gradientStartSec_ = 0.0;
    double gradientPosition_ = 0.0;

    // Bound attributes.
    CString paletteOwn_;
    CString paletteName_;
    CString color_;
    std::int32_t colorSlots_ = 1;
    CString sharedColor_;
    CString imageSetPath_;
    CString brushSetPath_;
    bool isGradientAnimated_ = false;
};

} // namespace qel
