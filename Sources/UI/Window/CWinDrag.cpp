// The root of a window.
#include "CWinDrag.h"

namespace qel {

namespace {

constexpr std::size_t kFirstFrameClip = 2; // clip 1 is the whole area

} // namespace

void CWinDrag::buildClassInfo(CClassInfo& info)
{
    CView::buildClassInfo(info);
}

CError CWinDrag::init()
{
    QEL_TRY(CView::init(), getFullName());
    allocateClips(kFirstFrameClip + kFramePieces - 1);
    return {};
}

// --- drawing

CError CWinDrag::attrImageSet()
{
    QEL_TRY(CView::attrImageSet(), getFullName());
    updateClips();
    return {};
}

void CWinDrag::updateClips()
{
    CView::updateClips();
    frame_ = layoutFrame(*this);
    for (std::size_t i = 0; i < kFramePieces; ++i) {
        setClip(kFirstFrameClip + i, frame_[i].clip);
    }
}

void CWinDrag::draw(CDrawContext& context)
{
    for (std::size_t i = 0; i < kFramePieces; ++i) {
        const FramePiece& piece = frame_[i];
        drawImage(context, piece.index, true, {piece.x, piece.y}, kFirstFrameClip + i, 1.0, piece.isTilingX,
                  piece.isTilingY);
    }
}

} // namespace qel
