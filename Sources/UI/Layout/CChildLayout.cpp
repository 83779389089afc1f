// The formulas that lay the children of one view out.
#include "CChildLayout.h"

#include "Trace.h"

namespace qel {

namespace {

// Formulas beyond this length go into variables of their own: it leaves room for what is appended, and a
// change of one child's size costs a few terms for each of its successors instead of all.
constexpr std::size_t kLongFormula = 48;

bool isDocked(CPlacement placement)
{
    return placement >= CPlacement::kFull && placement <= CPlacement::kRight;
}

bool isVerticalSide(CPlacement placement)
{
    return placement == CPlacement::kTop || placement == CPlacement::kBottom;
}

// The axis along which a child docked to a side takes room off.
CAxis sideAxis(CPlacement placement)
{
    return isVerticalSide(placement) ? CAxis::kY : CAxis::kX;
}

} // namespace

CChildLayout::CChildLayout(CViewArea& area)
    : area_(area), along_(area.isInlineVertical_ ? CAxis::kY : CAxis::kX), across_(otherAxis(along_))
{}

CError CChildLayout::write()
{
    splitRows();
    std::size_t inlineCount = 0;
    for (Row& row : rows_) {
        writeRow(row);
        inlineCount += row.children.size();
    }
    for (const CAxis axis : kAxes) {
        if (!area_.isCompactFixed_[indexOf(axis)]) {
            set(area_, Var::kCompact, axis, compactSize(axis));
        }
    }
    area_.network().setValue(area_.childCountId_, static_cast<double>(inlineCount + docked_.size()));
    if (!area_.children_.isEmpty()) {
        Box content;
        for (const CAxis axis : kAxes) {
            content.start[indexOf(axis)] = CFormula().variable(sum(contentStart(axis)));
            content.size[indexOf(axis)] = CFormula().variable(sum(contentSize(axis)));
        }
        Box rest = content;
        dockChildren(rest);
        layRows(rest);
        for (CViewArea* child : area_.children_) {
            if (child->isVisible_ && !child->takesRoom()) {
                layOver(*child, content);
            }
        }
    }
    while (area_.sumIds_.size() > sumCount_) {
        area_.network().freeVariable(area_.sumIds_[area_.sumIds_.size() - 1]);
        area_.sumIds_.erase(area_.sumIds_.size() - 1);
    }
    return std::move(firstError_);
}

// --- writing

void CChildLayout::keepFirst(CError error)
{
    if (error && !firstError_) {
        firstError_ = std::move(error);
    }
}

CVariableId CChildLayout::newSum()
{
    if (sumCount_ == area_.sumIds_.size()) {
        CVariableId id = kNoVariable;
        if (CError error = area_.network().newVariable(id, nullptr)) {
            keepFirst(std::move(error));
            return kNoVariable;
        }
        area_.sumIds_.push(id);
    }
    return area_.sumIds_[sumCount_++];
}

CVariableId CChildLayout::sum(const CFormula& formula)
{
    const CVariableId id = newSum();
    set(id, formula);
    return id;
}

void CChildLayout::set(CVariableId variable, const CFormula& formula)
{
    keepFirst(area_.network().setFormula(variable, formula));
}

void CChildLayout::set(CViewArea& child, Var variable, CAxis axis, const CFormula& formula)
{
    set(child.id(variable, axis), formula);
}

void CChildLayout::shorten(CFormula& formula)
{
    if (formula.size() > kLongFormula) {
        formula = CFormula().variable(sum(formula));
    }
}

// --- sizes

// With its outer border.
CFormula CChildLayout::extent(const CViewArea& child, CAxis axis)
{
    return child.var(Var::kSize, axis)
        .add(child.var(Var::kOuterBefore, axis))
        .add(child.var(Var::kOuterAfter, axis));
}

CFormula CChildLayout::maximum(const std::vector<CFormula>& values)
{
    CFormula formula;
    int count = 0;
    const auto close = [&] { formula.constant(count).op(COperator::kMaxN); };
    for (const CFormula& value : values) {
        if (formula.size() > kLongFormula) {
            close();
            formula = CFormula().variable(sum(formula));
            count = 1;
        }
        formula.append(value);
        ++count;
    }
    close();
    return formula;
}

void CChildLayout::splitRows()
{
    bool startsRow = true;
    for (CViewArea* child : area_.children_) {
        if (!child->isVisible_) {
            continue;
        }
        if (isDocked(child->placement_)) {
            docked_.push_back(child);
        } else if (child->placement_ == CPlacement::kInline) {
            if (startsRow) {
                rows_.emplace_back();
            }
            rows_.back().children.push_back(child);
            startsRow = child->isNewInlineRow_;
        }
    }
}

void CChildLayout::writeRow(Row& row)
{
    CFormula length;
    std::vector<CFormula> thicknesses;
    for (const CViewArea* child : row.children) {
        length.append(extent(*child, along_));
        if (!thicknesses.empty()) {
            length.add();
        }
        shorten(length);
        thicknesses.push_back(extent(*child, across_));
    }
    row.extent[indexOf(along_)] = sum(length);
    row.extent[indexOf(across_)] = sum(maximum(thicknesses));
}

CFormula CChildLayout::rowsExtent(CAxis axis)
{
    if (axis == along_) {
        std::vector<CFormula> lengths;
        for (const Row& row : rows_) {
            lengths.push_back(CFormula().variable(row.extent[indexOf(axis)]));
        }
        return maximum(lengths);
    }
    CFormula total;
    for (const Row& row : rows_) {
        const bool isFirst = total.isEmpty();
        total.variable(row.extent[indexOf(axis)]);
        if (!isFirst) {
            total.add();
        }
        shorten(total);
    }
    return total;
}

// From the inside outwards: rows, then docked children from the last to the first. One that docks to a side
// of this axis adds to what it leaves room for; across, the greater counts.
CFormula CChildLayout::compactSize(CAxis axis)
{
    CFormula formula;
    if (!rows_.empty()) {
        formula = rowsExtent(axis);
    }
    for (auto child = docked_.rbegin(); child != docked_.rend(); ++child) {
        const CPlacement placement = (*child)->placement_;
        const bool isFirst = formula.isEmpty();
        formula.append(extent(**child, axis));
        if (!isFirst) {
            const bool isAdded = placement != CPlacement::kFull && sideAxis(placement) == axis;
            formula.op(isAdded ? COperator::kAdd : COperator::kMax2);
        }
        shorten(formula);
    }
    return formula.isEmpty() ? CFormula().constant(0.0) : formula;
}

// --- boxes

// The content of a scrollable view is larger than what is seen of it, and moves under it.
CFormula CChildLayout::contentStart(CAxis axis) const
{
    CFormula formula = area_.var(Var::kPosition, axis);
    if (area_.isScrollable_) {
        CFormula seen = area_.var(Var::kSize, axis).subtract(area_.var(Var::kScroller, axis));
        formula.append(area_.var(Var::kScroll, axis)).append(seen).multiply();
        formula.append(area_.var(Var::kZoom, axis)).divide().subtract();
    }
    return formula.add(area_.var(Var::kInnerBefore, axis));
}

CFormula CChildLayout::contentSize(CAxis axis) const
{
    CFormula formula = area_.var(Var::kSize, axis);
    if (area_.isScrollable_) {
        formula.subtract(area_.var(Var::kScroller, axis)).append(area_.var(Var::kZoom, axis)).divide();
    }
    return formula.subtract(area_.var(Var::kInnerBefore, axis)).subtract(area_.var(Var::kInnerAfter, axis));
}

// The box, which is also what percentages of the child refer to.
void CChildLayout::offer(CViewArea& child, const Box& box)
{
    for (const CAxis axis : kAxes) {
        set(child, Var::kBoxStart, axis, box.start[indexOf(axis)]);
        set(child, Var::kBoxSize, axis, box.size[indexOf(axis)]);
        set(child, Var::kShare, axis, box.size[indexOf(axis)]);
    }
}

// --- docked children

void CChildLayout::dockChildren(Box& box)
{
    // Children docked alike take percentages of what was left when the first of them came.
    const CViewArea* runStart = nullptr;
    for (CViewArea* child : docked_) {
        offer(*child, box);
        const bool isFull = child->placement_ == CPlacement::kFull;
        const bool isSameRun = runStart && !isFull &&
                               isVerticalSide(runStart->placement_) == isVerticalSide(child->placement_) &&
                               runStart->alignment_[0] == child->alignment_[0] &&
                               runStart->alignment_[1] == child->alignment_[1];
        if (isSameRun) {
            for (const CAxis axis : kAxes) {
                set(*child, Var::kShare, axis, runStart->var(Var::kBoxSize, axis));
            }
        } else {
            runStart = isFull ? nullptr : child;
        }
        placeDocked(*child, CAxis::kX);
        placeDocked(*child, CAxis::kY);
        box = takeSide(*child);
    }
}

void CChildLayout::placeDocked(CViewArea& child, CAxis axis)
{
    const CAlignment alignment = child.alignment_[indexOf(axis)];
    const bool isAtEnd = child.placement_ == (axis == CAxis::kX ? CPlacement::kRight : CPlacement::kBottom);
    const bool isFree = child.placement_ == CPlacement::kFull || sideAxis(child.placement_) != axis;
    CFormula formula = child.var(Var::kBoxStart, axis).add(child.var(Var::kOuterBefore, axis));
    if (isAtEnd || (isFree && alignment != CAlignment::kStart)) {
        CFormula room = child.var(Var::kBoxSize, axis).subtract(extent(child, axis));
        if (isAtEnd) {
            room.round();
        }
        if (alignment == CAlignment::kCenter) {
            room.half();
        }
        formula.add(room);
    }
    set(child, Var::kPosition, axis, formula.round());
}

// What a docked child leaves of its box.
CChildLayout::Box CChildLayout::takeSide(const CViewArea& child)
{
    Box box;
    for (const CAxis axis : kAxes) {
        CFormula& start = box.start[indexOf(axis)];
        CFormula& size = box.size[indexOf(axis)];
        start = child.var(Var::kBoxStart, axis);
        size = child.var(Var::kBoxSize, axis);
        if (child.placement_ == CPlacement::kFull || sideAxis(child.placement_) != axis) {
            continue;
        }
        size.subtract(extent(child, axis));
        if (child.placement_ == CPlacement::kLeft || child.placement_ == CPlacement::kTop) {
            start.add(extent(child, axis));
        }
    }
    return box;
}

// --- rows

CFormula CChildLayout::alignedStart(CFormula start, CFormula freeRoom, CAxis axis)
{
    const CAlignment alignment = area_.inlineAlignment_[indexOf(axis)];
    if (alignment == CAlignment::kCenter) {
        return start.add(freeRoom.half().round());
    }
    return alignment == CAlignment::kEnd ? start.add(freeRoom) : start;
}

void CChildLayout::layRows(const Box& box)
{
    if (rows_.empty()) {
        return;
    }
    CFormula stackRoom = box.size[indexOf(across_)];
    for (const Row& row : rows_) {
        stackRoom.variable(row.extent[indexOf(across_)]).subtract();
        shorten(stackRoom);
    }
    CFormula rowStart = alignedStart(box.start[indexOf(across_)], stackRoom, across_);
    for (const Row& row : rows_) {
        shorten(rowStart);
        placeInRow(row, rowStart, box);
        rowStart.variable(row.extent[indexOf(across_)]).add();
    }
}

void CChildLayout::placeInRow(const Row& row, const CFormula& rowStart, const Box& box)
{
    CFormula room = box.size[indexOf(along_)];
    room.variable(row.extent[indexOf(along_)]).subtract();
    CFormula position = alignedStart(box.start[indexOf(along_)], room, along_);
    for (CViewArea* child : row.children) {
        offer(*child, box);
        shorten(position);
        set(*child, Var::kPosition, along_,
            CFormula(position).add(child->var(Var::kOuterBefore, along_)).round());
        position.add(extent(*child, along_));

        CFormula across = CFormula(rowStart).add(child->var(Var::kOuterBefore, across_));
        const CAlignment alignment = child->alignment_[indexOf(across_)];
        if (alignment != CAlignment::kStart) {
            CFormula space =
                CFormula().variable(row.extent[indexOf(across_)]).subtract(extent(*child, across_));
            across.add(alignment == CAlignment::kCenter ? space.half() : space);
        }
        set(*child, Var::kPosition, across_, across.round());
    }
}

// --- what lies over others

void CChildLayout::layOver(CViewArea& child, const Box& content)
{
    if (child.isBar()) {
        layBar(child);
        return;
    }
    if (child.placement_ == CPlacement::kMatch) {
        layMatching(child);
    } else if (child.placement_ == CPlacement::kOverlay) {
        offer(child, content);
    } else {
        offerRect(child, *area_.root_);
    }
    for (const CAxis axis : kAxes) {
        set(child, Var::kPosition, axis,
            child.var(Var::kBoxStart, axis).add(child.var(Var::kOuterBefore, axis)));
    }
}

void CChildLayout::offerRect(CViewArea& child, const CViewArea& other)
{
    Box box;
    for (const CAxis axis : kAxes) {
        box.start[indexOf(axis)] = other.var(Var::kPosition, axis);
        box.size[indexOf(axis)] = other.var(Var::kSize, axis);
    }
    offer(child, box);
}

void CChildLayout::layMatching(CViewArea& child)
{
    CViewArea* matched = child.matchFinder_ ? child.matchFinder_() : nullptr;
    if (matched && &matched->context_ != &area_.context_) {
        matched = nullptr; // of another window
    }
    if (child.matched_ != matched) {
        if (child.matched_) {
            child.matched_->matching_.eraseFirst(&child);
        }
        child.matched_ = matched;
        if (matched) {
            matched->matching_.push(&child);
        }
    }
    if (matched && matched->isShown()) {
        offerRect(child, *matched);
        return;
    }
    Box nothing; // the rectangle of a view that is hidden or gone
    for (const CAxis axis : kAxes) {
        nothing.start[indexOf(axis)].constant(0.0);
        nothing.size[indexOf(axis)].constant(0.0);
    }
    offer(child, nothing);
}

// Bars lie at the right and bottom edges of the view itself, whatever is scrolled.
void CChildLayout::layBar(CViewArea& child)
{
    Box box;
    for (const CAxis axis : kAxes) {
        // The bar that lies along this axis is as long as the other bar leaves it.
        const bool isLength =
            child.placement_ == (axis == CAxis::kX ? CPlacement::kScrollerH : CPlacement::kScrollerV);
        const CFormula space =
            area_.isScrollable_ ? area_.var(Var::kScroller, axis) : CFormula().constant(0.0);
        CFormula& start = box.start[indexOf(axis)];
        CFormula& size = box.size[indexOf(axis)];
        start = area_.var(Var::kPosition, axis);
        if (isLength) {
            size = area_.var(Var::kSize, axis).subtract(space);
        } else {
            start.add(area_.var(Var::kSize, axis)).subtract(child.var(Var::kSize, axis));
            size = space;
        }
        set(child, Var::kPosition, axis, start);
    }
    offer(child, box);
}

} // namespace qel
