// Where one view lies.
#include "CViewArea.h"

#include "CChildLayout.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace qel {

namespace {

constexpr double kMinZoom = 0.0001;

CViewArea* findClipSource(CViewArea* parent, int unclipLevel)
{
    CViewArea* source = parent;
    for (; source && source->getParent() && unclipLevel > 0; --unclipLevel) {
        source = source->getParent();
    }
    return source;
}

CRect widened(const CRect& rect, const CViewBorder& spread)
{
    return {rect.x - spread.left, rect.y - spread.top, rect.width + spread.left + spread.right,
            rect.height + spread.top + spread.bottom};
}

bool isSame(const CRect& a, const CRect& b)
{
    const auto isNear = [](double p, double q) {
        return std::abs(p - q) <= std::numeric_limits<double>::epsilon();
    };
    return isNear(a.x, b.x) && isNear(a.y, b.y) && isNear(a.width, b.width) && isNear(a.height, b.height);
}

CRect orEmpty(const CRect& rect)
{
    return rect.isEmpty() ? CRect() : rect;
}

} // namespace

CViewArea::CViewArea(CLayoutContext& context, const Options& options)
    : context_(context), parent_(options.parent), root_(parent_ ? parent_->root_ : this),
      handler_(options.handler), isScrollable_(options.isScrollable),
      clipSource_(findClipSource(parent_, options.unclipLevel))
{
    std::ranges::fill(ids_, kNoVariable);
    minSize_[0] = minSize_[1] = {CViewSize::Form::kNumber, 0.0};
    if (!parent_) {
        placement_ = CPlacement::kFull;
    }
}

CViewArea::~CViewArea()
{
    context_.rebuildQueue().remove(*this);
    context_.reportQueue().remove(*this);
    context_.settledQueue().remove(*this);
    for (const CVariableId variable : ids_) {
        network().freeVariable(variable);
    }
    for (const CVariableId variable : sumIds_) {
        network().freeVariable(variable);
    }
    network().freeVariable(childCountId_);
    for (CViewArea* area : matching_) {
        area->matched_ = nullptr;
        area->queueParentRebuild();
    }
    if (matched_) {
        matched_->matching_.eraseFirst(this);
    }
    if (parent_ && parent_->children_.eraseFirst(this)) {
        clipSource_->clipped_.eraseFirst(this);
        queueParentRebuild();
    }
}

CError CViewArea::init()
{
    for (std::size_t i = 0; i < 2 * (isScrollable_ ? kAllPairs : kPlainPairs); ++i) {
        QEL_TRY(network().newVariable(ids_[i], this), {});
    }
    QEL_TRY(network().newVariable(childCountId_, this), {});
    if (parent_) {
        parent_->children_.push(this);
        clipSource_->clipped_.push(this);
    }
    for (const CAxis axis : kAxes) {
        setZoom(axis, 1.0);
        QEL_TRY(writeSize(axis), {});
    }
    queueRebuild();
    queueParentRebuild();
    queueReport();
    return {};
}

// --- what shapes the layout

CError CViewArea::setPlacement(CPlacement placement)
{
    if (!parent_) {
        return {};
    }
    placement_ = placement;
    queueParentRebuild();
    QEL_TRY(writeSize(CAxis::kX), {});
    return writeSize(CAxis::kY);
}

void CViewArea::setMatchFinder(std::function<CViewArea*()> finder)
{
    matchFinder_ = std::move(finder);
    queueParentRebuild();
}

void CViewArea::setAlignment(CAxis axis, CAlignment alignment)
{
    alignment_[indexOf(axis)] = alignment;
    queueParentRebuild();
}

void CViewArea::setInlineAlignment(CAxis axis, CAlignment alignment)
{
    inlineAlignment_[indexOf(axis)] = alignment;
    queueRebuild();
}

void CViewArea::setInlineVertical(bool isInlineVertical)
{
    isInlineVertical_ = isInlineVertical;
    queueRebuild();
}

void CViewArea::setNewInlineRow(bool isNewInlineRow)
{
    isNewInlineRow_ = isNewInlineRow;
    queueParentRebuild();
}

void CViewArea::setVisible(bool isVisible)
{
    if (isVisible_ != isVisible) {
        isVisible_ = isVisible;
        queueParentRebuild();
        queueReportOfAll();
    }
}

bool CViewArea::isShown() const
{
    const CViewArea* area = this;
    while (area->isVisible_ && area->parent_) {
        area = area->parent_;
    }
    return area->isVisible_;
}

CError CViewArea::setSize(CAxis axis, const CViewSize& size)
{
    size_[indexOf(axis)] = size;
    return writeSize(axis);
}

CError CViewArea::setMinSize(CAxis axis, const CViewSize& size)
{
    minSize_[indexOf(axis)] = size;
    return writeMinSize(axis);
}

void CViewArea::setCompactSize(CAxis axis, std::optional<double> size)
{
    isCompactFixed_[indexOf(axis)] = size.has_value();
    if (size) {
        network().setValue(id(Var::kCompact, axis), *size);
    } else {
        queueRebuild();
    }
}

void CViewArea::setInnerBorder(const CViewBorder& border)
{
    setPair(Var::kInnerBefore, Var::kInnerAfter, border);
}

void CViewArea::setOuterBorder(const CViewBorder& border)
{
    setPair(Var::kOuterBefore, Var::kOuterAfter, border);
}

void CViewArea::setPair(Var before, Var after, const CViewBorder& border)
{
    for (const CAxis axis : kAxes) {
        network().setValue(id(before, axis), border.before(axis));
        network().setValue(id(after, axis), border.after(axis));
    }
}

void CViewArea::setSpread(const CViewBorder& spread)
{
    spread_ = spread;
    queueReport();
}

void CViewArea::setScroll(CAxis axis, double offset)
{
    network().setValue(id(Var::kScroll, axis), std::clamp(offset, 0.0, 1.0));
}

void CViewArea::setZoom(CAxis axis, double ratio)
{
    network().setValue(id(Var::kZoom, axis), std::max(ratio, kMinZoom));
}

void CViewArea::setScrollerSize(CAxis axis, double size)
{
    network().setValue(id(Var::kScroller, axis), size);
}

// --- formulas of the view's own size

CFormula CViewArea::shareFormula(CAxis axis, double ratio) const
{
    CFormula formula = var(Var::kShare, axis);
    if (ratio != 1.0) {
        formula = CFormula().constant(ratio).append(formula).multiply();
    }
    return formula.subtract(var(Var::kOuterBefore, axis)).subtract(var(Var::kOuterAfter, axis));
}

CFormula CViewArea::sizeFormula(CAxis axis, const CViewSize& size) const
{
    switch (size.form) {
    case CViewSize::Form::kNumber:
        return CFormula().constant(size.value);
    case CViewSize::Form::kShare:
        return shareFormula(axis, size.value);
    case CViewSize::Form::kBalanced: {
        if (!parent_) {
            return shareFormula(axis, 1.0);
        }
        CFormula formula = var(Var::kShare, axis);
        formula.variable(parent_->childCountId_).append(var(Var::kShare, axis)).op(COperator::kSafeDivide);
        return formula.subtract(var(Var::kOuterBefore, axis)).subtract(var(Var::kOuterAfter, axis));
    }
    case CViewSize::Form::kCompact:
        break;
    }
    CFormula formula = var(Var::kCompact, axis);
    formula.add(var(Var::kInnerAfter, axis)).add(var(Var::kInnerBefore, axis));
    return isScrollable_ ? formula.add(var(Var::kScroller, axis)) : formula;
}

CError CViewArea::writeSize(CAxis axis)
{
    const CVariableId target = id(Var::kSize, axis);
    if (placement_ == (axis == CAxis::kX ? CPlacement::kScrollerH : CPlacement::kScrollerV)) {
        return network().setFormula(target, var(Var::kBoxSize, axis)); // the length of a bar
    }
    const std::optional<CViewSize>& wanted = size_[indexOf(axis)];
    CFormula formula;
    if (placement_ == CPlacement::kMatch) {
        formula = shareFormula(axis, 1.0);
    } else if (isBar() && !wanted) {
        formula = var(Var::kShare, axis); // as thick as the space kept for it
    } else {
        formula = sizeFormula(axis, wanted.value_or(CViewSize()));
    }
    formula.append(var(Var::kMin, axis)).max2();
    return network().setFormula(target, formula);
}

CError CViewArea::writeMinSize(CAxis axis)
{
    const CViewSize& size = minSize_[indexOf(axis)];
    if (size.form == CViewSize::Form::kNumber) {
        network().setValue(id(Var::kMin, axis), size.value);
        return {};
    }
    return network().setFormula(id(Var::kMin, axis), sizeFormula(axis, size));
}

// --- results

CVariableId CViewArea::id(Var variable, CAxis axis) const
{
    return ids_[2 * static_cast<std::size_t>(variable) + indexOf(axis)];
}

float CViewArea::getValue(Var variable, CAxis axis) const
{
    return context_.getNetwork().getValue(id(variable, axis));
}

float CViewArea::getChildCount() const
{
    return context_.getNetwork().getValue(childCountId_);
}

CRect CViewArea::ownRect() const
{
    return {getValue(Var::kPosition, CAxis::kX), getValue(Var::kPosition, CAxis::kY),
            getValue(Var::kSize, CAxis::kX), getValue(Var::kSize, CAxis::kY)};
}

CRect CViewArea::getRect() const
{
    return isShown() ? orEmpty(ownRect()) : CRect();
}

// What a scrollable area's children are laid out in.
CRect CViewArea::virtualExtent() const
{
    double start[2];
    double size[2];
    for (const CAxis axis : kAxes) {
        const std::size_t i = indexOf(axis);
        const double zoom = getValue(Var::kZoom, axis);
        const double inner = getValue(Var::kInnerBefore, axis);
        const double seen = getValue(Var::kSize, axis) - getValue(Var::kScroller, axis);
        start[i] = getValue(Var::kPosition, axis) - getValue(Var::kScroll, axis) * seen / zoom + inner;
        size[i] = seen / zoom - inner - getValue(Var::kInnerAfter, axis);
    }
    return orEmpty({start[0], start[1], size[0], size[1]});
}

// --- work for the context

void CViewArea::queueRebuild()
{
    if (!isRebuildQueued_) {
        isRebuildQueued_ = true;
        context_.rebuildQueue().push(*this);
    }
}

void CViewArea::queueParentRebuild()
{
    if (parent_) {
        parent_->queueRebuild();
    }
}

void CViewArea::queueReport()
{
    if (!isReportQueued_) {
        isReportQueued_ = true;
        context_.reportQueue().push(*this);
    }
}

void CViewArea::requestReport()
{
    isReportForced_ = true;
    queueReport();
}

void CViewArea::queueReportOfAll()
{
    queueReport();
    for (CViewArea* area : matching_) {
        area->queueParentRebuild();
    }
    for (CViewArea* child : children_) {
        child->queueReportOfAll();
    }
}

CError CViewArea::rebuildChildren()
{
    isRebuildQueued_ = false;
    return CChildLayout(*this).write();
}

void CViewArea::report()
{
    if (!isReportQueued_) {
        return; // another area needed it earlier
    }
    isReportQueued_ = false;
    if (clipSource_) {
        clipSource_->report();
    }
    CRect visible;
    CRect whole;
    if (isShown()) {
        whole = isScrollable_ ? virtualExtent() : getRect();
        visible =
            clipSource_ ? widened(ownRect(), spread_).intersectedWith(clipSource_->visible_) : getRect();
    }
    const bool isClipChanged = !isSame(visible, visible_);
    if (!isClipChanged && isSame(whole, whole_) && !isReportForced_) {
        return;
    }
    isReportForced_ = false;
    visible_ = visible;
    whole_ = whole;
    if (isClipChanged) {
        for (CViewArea* area : clipped_) {
            area->queueReport();
        }
    }
    if (handler_) {
        handler_->onAreaBounds(visible_, whole_);
    }
    if (!isSettledQueued_) {
        isSettledQueued_ = true;
        context_.settledQueue().push(*this);
    }
}

CError CViewArea::tellSettled()
{
    isSettledQueued_ = false;
    return handler_ ? handler_->onAreaSettled() : CError();
}

} // namespace qel
