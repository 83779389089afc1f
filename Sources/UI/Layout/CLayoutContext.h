// The layout of one window.
#pragma once

#include "CValueNetwork.h"

namespace qel {

class CViewArea;

// Areas that wait for something, in the order in which they came.
class CAreaQueue
{
public:
    void push(CViewArea& area) { areas_.push_back(&area); }
    // The next area, or null. Others may be pushed or removed in between.
    CViewArea* take();
    void remove(CViewArea& area);
    bool isEmpty() const { return next_ == areas_.size(); }
    // At least as many as take() will give.
    std::size_t size() const { return areas_.size() - next_; }

private:
    std::vector<CViewArea*> areas_; // null where an area was removed
    std::size_t next_ = 0;
};

// Holds the network of a window and the areas with work to do, and solves the layout. One a window, made by
// its root view and outliving all areas in it; used by the window's thread alone.
class CLayoutContext
{
public:
    // All pixel constants of the window are multiplied by `scale`, which does not change any more.
    explicit CLayoutContext(double scale) : scale_(scale) {}

    double getScale() const { return scale_; }
    CValueNetwork& getNetwork() { return network_; }

    // True if solveLayout() has something to do.
    bool hasWork() const;
    // Brings all formulas up to date, then reports every rectangle that has changed, then tells the views
    // whose rectangles were reported; and again, as long as they change something. Nothing is done twice, and
    // nothing at all when nothing has changed. May be called from a view that is being told, to have
    // rectangles at once; the views touched by that are told later. Fails when variables run out or a view
    // fails; the first error is returned, and all else is done nevertheless.
    CError solveLayout();

    // --- for areas: each queues itself once
    CAreaQueue& rebuildQueue() { return rebuild_; }
    CAreaQueue& reportQueue() { return report_; }
    CAreaQueue& settledQueue() { return settled_; }

private:
    void settle(CError& firstError);
    void tellViews(CError& firstError);

    const double scale_;
    CValueNetwork network_;
    CAreaQueue rebuild_; // formulas of the children are to be written anew
    CAreaQueue report_;  // rectangles may have changed
    CAreaQueue settled_; // the view is to be told
    bool isSolving_ = false;
};

} // namespace qel
