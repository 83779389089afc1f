// The layout of one window.
#include "CLayoutContext.h"

#include "CViewArea.h"
#include "Trace.h"

#include <algorithm>

namespace qel {

namespace {

// Views that change something each time they are told must not hold up the window; what they changed last is
// solved at the next frame.
constexpr int kMaxRounds = 32;

void keepFirst(CError& first, CError error)
{
    if (!first) {
        first = std::move(error);
    }
}

} // namespace

CViewArea* CAreaQueue::take()
{
    while (next_ < areas_.size()) {
        if (CViewArea* area = areas_[next_++]) {
            return area;
        }
    }
    areas_.clear();
    next_ = 0;
    return nullptr;
}

void CAreaQueue::remove(CViewArea& area)
{
    std::ranges::replace(areas_, &area, static_cast<CViewArea*>(nullptr));
}

bool CLayoutContext::hasWork() const
{
    return network_.hasWork() || !rebuild_.isEmpty() || !report_.isEmpty() || !settled_.isEmpty();
}

CError CLayoutContext::solveLayout()
{
    CError firstError;
    settle(firstError);
    if (isSolving_) {
        return firstError;
    }
    isSolving_ = true;
    for (int round = 0; round < kMaxRounds && hasWork(); ++round) {
        tellViews(firstError);
        settle(firstError);
    }
    isSolving_ = false;
    if (hasWork()) {
        trace("The layout does not settle");
    }
    return firstError;
}

// Formulas, then rectangles; again if a report has changed something.
void CLayoutContext::settle(CError& firstError)
{
    for (int round = 0; round < kMaxRounds; ++round) {
        while (CViewArea* area = rebuild_.take()) {
            keepFirst(firstError, area->rebuildChildren());
        }
        network_.propagate();
        while (CViewArea* area = report_.take()) {
            area->report();
        }
        if (rebuild_.isEmpty() && report_.isEmpty() && !network_.hasWork()) {
            return;
        }
    }
}

void CLayoutContext::tellViews(CError& firstError)
{
    // Views that are touched again meanwhile wait for the next round.
    for (std::size_t left = settled_.size(); left > 0; --left) {
        if (CViewArea* area = settled_.take()) {
            keepFirst(firstError, area->tellSettled());
        }
    }
}

} // namespace qel
