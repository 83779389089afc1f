// The view that a scroll bar moves.
#pragma once

#include "CView.h"

namespace qel {

// The view at a path, or the nearest one above the bar that scrolls. It is looked up at each call, since it
// may come and go while the bar stays. Ratios and offsets are parts of its content: how much of it is seen,
// and where that begins. Without a view all is seen and nothing can be moved. The tree's thread.
class CScrolledView
{
public:
    // `path` is an attribute of the bar; empty for a view above.
    CScrolledView(CObject& bar, const CString& path) : bar_(bar), path_(path) {}

    CView* find() const; // or null

    double getRatio(CAxis axis) const;
    double getOffset(CAxis axis) const;
    // No less may be seen.
    double getMinRatio(CAxis axis) const;
    bool isAllSeen(CAxis axis) const;

    // Moves as far as the content goes.
    CError setOffset(CAxis axis, double offset);
    CError setRange(CAxis axis, double ratio, double offset);

    // The bar hears of changes as one attribute of that name.
    void listen(const CString& name);

private:
    CObject& bar_;
    const CString& path_;
};

} // namespace qel
