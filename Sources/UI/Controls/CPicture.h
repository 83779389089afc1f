// One image.
#pragma once

#include "CView.h"

namespace qel {

// Tag `ui:picture`. By itself as large as its image.
//
//     image-set-index                     the image's place in the present range, 0 by default
//     pic-alignment-h, pic-alignment-v    "left" (default), "center", "right"; "top" (default), ...: where
//                                         the image stands inside the inner border
//     crop                                what is cut off the image's sides, as borders are written
//     is-tiling-x, is-tiling-y            repeats the image to the edges; nothing is cut off then
class CPicture : public CView
{
public:
    CPicture();

    static void buildClassInfo(CClassInfo& info);

    CError init() override;
    CError attrCompactWidth() override;
    CError attrCompactHeight() override;
    CError attrInnerBorder() override;

    void draw(CDrawContext& context) override;

protected:
    // What is drawn, or null.
    virtual const CImage* getImage() const { return findImage(static_cast<std::uint32_t>(index_), true); }
    // Makes the view as large as its image; an attribute of the tree wins.
    virtual void adoptImageSize(CAxis axis);

    void updateClips() override;
    void onLookChanged() override;

private:
    CError attrImage();
    CError attrAlignment();
    // False while there is no layout to change.
    bool isUp() const { return getInitState() != InitState::kCreated && !isReleased(); }
    void adoptImage();
    void placeImage();
    CRect placeOf(const CImage& image) const;
    bool isCropping() const { return !isTilingX() && !isTilingY(); }

    CViewBorder cropPx_;
    CAlignment alignment_[2] = {CAlignment::kStart, CAlignment::kStart};

    // Bound attributes.
    std::int32_t index_ = 0;
    CString alignmentH_;
    CString alignmentV_;
    CString crop_;
};

} // namespace qel
