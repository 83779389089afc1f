// Frames of any size from eight images.
#pragma once

#include "CRect.h"

#include <array>
#include <cstdint>

namespace qel {

class CView;

// Where one piece of a frame stands.
struct FramePiece
{
    std::uint32_t index = 0; // in the present range of the image set, or in all of it
    CRect clip;              // of the window; empty where there is no room for the piece
    double x = 0.0;          // of the image, from the corner of the view
    double y = 0.0;
    bool isTilingX = false;
    bool isTilingY = false;
};

// The pieces around a view, from its image set: corners stand once, edges are repeated along their side. A
// view smaller than two corners cuts both in its middle. The images are, in the order of the range: bottom,
// left, right, top, bottom left, bottom right, top left, top right; one that is missing has no piece.
inline constexpr std::size_t kFramePieces = 8;
std::array<FramePiece, kFramePieces> layoutFrame(const CView& view);
// The same around a rectangle of the window that lies in the view, from the images `first` and on of the
// whole image set.
std::array<FramePiece, kFramePieces> layoutFrame(const CView& view, const CRect& rect, std::uint32_t first);

} // namespace qel
