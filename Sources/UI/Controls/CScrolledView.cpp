// The view that a scroll bar moves.
#include "CScrolledView.h"

#include <algorithm>

namespace qel {

namespace {

constexpr const char* kOffset[] = {"offset-x", "offset-y"};
constexpr const char* kRatio[] = {"ratio-x", "ratio-y"};
constexpr const char* kMinRatio[] = {"min-ratio-x", "min-ratio-y"};

constexpr double kAllSeen = 1.0 - 1e-6;
constexpr double kLeastRatio = 0.001;

} // namespace

CView* CScrolledView::find() const
{
    if (!path_.isEmpty()) {
        return dynamic_cast<CView*>(bar_.findObject(path_));
    }
    for (CObject* above = bar_.getParent(); above; above = above->getParent()) {
        if (auto* const view = dynamic_cast<CView*>(above); view && view->isScrollable()) {
            return view;
        }
    }
    return nullptr;
}

double CScrolledView::getRatio(CAxis axis) const
{
    const CView* const view = find();
    return view ? view->getAttrReal(kRatio[indexOf(axis)], 1.0) : 1.0;
}

double CScrolledView::getOffset(CAxis axis) const
{
    const CView* const view = find();
    return view ? view->getAttrReal(kOffset[indexOf(axis)]) : 0.0;
}

double CScrolledView::getMinRatio(CAxis axis) const
{
    const CView* const view = find();
    return view ? std::clamp(view->getAttrReal(kMinRatio[indexOf(axis)]), kLeastRatio, 1.0) : 1.0;
}

bool CScrolledView::isAllSeen(CAxis axis) const
{
    return getRatio(axis) >= kAllSeen;
}

CError CScrolledView::setOffset(CAxis axis, double offset)
{
    CView* const view = bar_.isReleased() ? nullptr : find();
    const double wanted = std::clamp(offset, 0.0, std::max(0.0, 1.0 - getRatio(axis)));
    return view && wanted != getOffset(axis)
               ? view->setAttribute(kOffset[indexOf(axis)], CAttrValue(wanted), true)
               : CError();
}

CError CScrolledView::setRange(CAxis axis, double ratio, double offset)
{
    if (CView* const view = find()) {
        QEL_TRY(view->setAttribute(kRatio[indexOf(axis)], CAttrValue(ratio), true), bar_.getFullName());
    }
    return setOffset(axis, offset);
}

void CScrolledView::listen(const CString& name)
{
    if (CView* const view = find()) {
        for (const CAxis axis : kAxes) {
            bar_.listenAttribute(*view, kRatio[indexOf(axis)], name);
            bar_.listenAttribute(*view, kOffset[indexOf(axis)], name);
        }
    }
}

} // namespace qel
