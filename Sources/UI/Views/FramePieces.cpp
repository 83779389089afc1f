// Frames of any size from eight images.
#include "FramePieces.h"

#include "CView.h"

namespace qel {

namespace {

// Columns and rows of the nine fields around and in a view, by image.
struct Field
{
    std::size_t column;
    std::size_t row;
};
constexpr Field kFields[kFramePieces] = {{1, 2}, {0, 1}, {2, 1}, {1, 0}, {0, 2}, {2, 2}, {0, 0}, {2, 0}};
constexpr std::size_t kMiddle = 1;

// Of one axis: where each of the three fields begins and ends, from the view's own edge.
struct Fields
{
    double edges[4];
};

// `first` and `last` are the thickness of the outer two.
Fields divide(double length, double first, double last)
{
    const double start = std::min(first, length * 0.5);
    const double end = std::max(length - last, length * 0.5);
    return {{0.0, start, std::max(start, end), length}};
}

double widthOf(const CImage* image)
{
    return image ? image->getWidth() : 0.0;
}
double heightOf(const CImage* image)
{
    return image ? image->getHeight() : 0.0;
}

std::array<FramePiece, kFramePieces> layout(const CView& view, const CRect& rect, std::uint32_t first,
                                            bool isInRange)
{
    const CImage* images[kFramePieces];
    // The outer fields are as thick as the thickest of their pieces.
    double thicknessX[3] = {};
    double thicknessY[3] = {};
    for (std::uint32_t i = 0; i < kFramePieces; ++i) {
        images[i] = view.findImage(first + i, isInRange);
        double& x = thicknessX[kFields[i].column];
        double& y = thicknessY[kFields[i].row];
        x = std::max(x, widthOf(images[i]));
        y = std::max(y, heightOf(images[i]));
    }
    const Fields columns = divide(rect.width, thicknessX[0], thicknessX[2]);
    const Fields rows = divide(rect.height, thicknessY[0], thicknessY[2]);

    std::array<FramePiece, kFramePieces> pieces;
    for (std::uint32_t i = 0; i < kFramePieces; ++i) {
        FramePiece& piece = pieces[i];
        piece.index = first + i;
        if (!images[i]) {
            continue;
        }
        const auto [column, row] = kFields[i];
        const double left = columns.edges[column];
        const double top = rows.edges[row];
        piece.clip = {rect.x + left, rect.y + top, columns.edges[column + 1] - left,
                      rows.edges[row + 1] - top};
        // What stands at the far edge is measured from there, so that what is cut is its inner part.
        piece.x = rect.x - view.getArea().x + (column > kMiddle ? rect.width - widthOf(images[i]) : left);
        piece.y = rect.y - view.getArea().y + (row > kMiddle ? rect.height - heightOf(images[i]) : top);
        piece.isTilingX = column == kMiddle;
        piece.isTilingY = row == kMiddle;
    }
    return pieces;
}

} // namespace

std::array<FramePiece, kFramePieces> layoutFrame(const CView& view)
{
    return layout(view, view.getArea(), 0, true);
}

std::array<FramePiece, kFramePieces> layoutFrame(const CView& view, const CRect& rect, std::uint32_t first)
{
    return layout(view, rect, first, false);
}

} // namespace qel
