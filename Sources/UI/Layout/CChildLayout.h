// The formulas that lay the children of one view out.
#pragma once

#include "CViewArea.h"

#include <vector>

namespace qel {

// Writes the formulas of one area's compact size and content box, and of the boxes, shares and positions of
// its visible children: docked ones take pieces off the content box one after another, flowing ones are put
// in rows in what is left, the others lie over it. Made for one pass.
//
// "Along" is the axis on which children of a row follow each other, "across" the one on which rows are
// stacked; a row of a vertical flow is a column.
class CChildLayout
{
public:
    explicit CChildLayout(CViewArea& area);

    // The first error, which is a lack of variables or constants; the rest is laid out as far as can be.
    CError write();

private:
    using Var = CViewArea::Var;

    // A piece of room, a formula for each axis.
    struct Box
    {
        CFormula start[2];
        CFormula size[2];
    };
    struct Row
    {
        std::vector<CViewArea*> children;
        CVariableId extent[2] = {kNoVariable, kNoVariable}; // row-width, row-height
    };

    // Variables for sums over children. Those of the pass before are taken again in the same order, so that
    // formulas that do not change stay as they are.
    CVariableId newSum();
    CVariableId sum(const CFormula& formula);
    void set(CVariableId variable, const CFormula& formula);
    void set(CViewArea& child, Var variable, CAxis axis, const CFormula& formula);
    void keepFirst(CError error);

    // Puts a long formula into a variable of its own and refers to that.
    void shorten(CFormula& formula);
    CFormula maximum(const std::vector<CFormula>& values);
    static CFormula extent(const CViewArea& child, CAxis axis);

    void splitRows();
    void writeRow(Row& row);
    CFormula rowsExtent(CAxis axis);
    CFormula compactSize(CAxis axis);
    CFormula contentStart(CAxis axis) const;
    CFormula contentSize(CAxis axis) const;

    void dockChildren(Box& box);
    void placeDocked(CViewArea& child, CAxis axis);
    static Box takeSide(const CViewArea& child);
    void layRows(const Box& box);
    void placeInRow(const Row& row, const CFormula& rowStart, const Box& box);
    CFormula alignedStart(CFormula start, CFormula freeRoom, CAxis axis);
    void layOver(CViewArea& child, const Box& content);
    void layMatching(CViewArea& child);
    void layBar(CViewArea& child);
    void offer(CViewArea& child, const Box& box);
    void offerRect(CViewArea& child, const CViewArea& other);

    CViewArea& area_;
    const CAxis along_;
    const CAxis across_;
    std::vector<Row> rows_;
    std::vector<CViewArea*> docked_;
    std::size_t sumCount_ = 0;
    CError firstError_;
};

} // namespace qel
