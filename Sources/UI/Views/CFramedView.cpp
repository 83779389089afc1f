// A view with a border that stretches with it.
#include "CFramedView.h"

namespace qel {

namespace {

constexpr std::size_t kFirstPieceClip = 2;

} // namespace

void CFramedView::updateClips()
{
    CView::updateClips();
    layOutPieces();
}

// Images of another set or range may have another size.
void CFramedView::onLookChanged()
{
    CView::onLookChanged();
    layOutPieces();
}

void CFramedView::layOutPieces()
{
    pieces_ = layoutFrame(*this);
    for (std::size_t i = 0; i < kFramePieces; ++i) {
        setClip(kFirstPieceClip + i, pieces_[i].clip);
    }
}

void CFramedView::drawFrame(CDrawContext& context) const
{
    for (std::size_t i = 0; i < kFramePieces; ++i) {
        const FramePiece& piece = pieces_[i];
        drawImage(context, piece.index, true, {piece.x, piece.y}, kFirstPieceClip + i, 1.0, piece.isTilingX,
                  piece.isTilingY);
    }
}

} // namespace qel
