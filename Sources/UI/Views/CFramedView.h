// A view with a border that stretches with it.
#pragma once

#include "CView.h"
#include "FramePieces.h"

namespace qel {

// The border is that of FramePieces.h, from the present range of images. Base of views that draw a frame
// among other things: they call drawFrame() from draw(). Clips of their own come after kFrameClips; they
// allocate all of them in their constructor.
class CFramedView : public CView
{
protected:
    // Clip 1, which all views have, and one for each piece.
    static constexpr std::size_t kFrameClips = 1 + kFramePieces;

    CFramedView() { allocateClips(kFrameClips); }

    void drawFrame(CDrawContext& context) const;

    void updateClips() override;
    void onLookChanged() override;

private:
    void layOutPieces();

    std::array<FramePiece, kFramePieces> pieces_;
};

} // namespace qel
