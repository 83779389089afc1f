// A text in a frame.
#pragma once

#include "CTextView.h"
#include "FramePieces.h"

namespace qel {

// Draws the eight pieces of the view's own images (FramePieces.h) behind the text of `Base`, a CTextView.
template <class Base>
class CFramedText : public Base
{
public:
    CFramedText() { this->allocateClips(kFirstPieceClip + kFramePieces - 1); }

protected:
    void updateClips() override
    {
        Base::updateClips();
        layOutPieces();
    }
    // Images of another set or range may have another size.
    void onLookChanged() override
    {
        Base::onLookChanged();
        layOutPieces();
    }
    void drawBehindText(CDrawContext& context) override
    {
        for (std::size_t i = 0; i < kFramePieces; ++i) {
            const FramePiece& piece = pieces_[i];
            this->drawImage(context, piece.index, true, {piece.x, piece.y}, kFirstPieceClip + i, 1.0,
                            piece.isTilingX, piece.isTilingY);
        }
        Base::drawBehindText(context);
    }

private:
    static constexpr std::size_t kFirstPieceClip = Base::kTextClip + 1;

    void layOutPieces()
    {
        pieces_ = layoutFrame(*this);
        for (std::size_t i = 0; i < kFramePieces; ++i) {
            this->setClip(kFirstPieceClip + i, pieces_[i].clip);
        }
    }

    std::array<FramePiece, kFramePieces> pieces_;
};

} // namespace qel
