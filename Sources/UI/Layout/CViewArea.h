// Where one view lies.
#pragma once

#include "CInlineArray.h"
#include "CLayoutContext.h"
#include "CViewAreaUpdateHandler.h"
#include "LayoutSyntax.h"

#include <functional>
#include <optional>

namespace qel {

// The variables of one view in its window's network, and what shapes its formulas. Setting anything only
// writes formulas down or queues work; rectangles hold after CLayoutContext::solveLayout().
//
// Owned by its view; the parent's area and the context outlive it. Areas of one parent are laid out in the
// order in which they were made. All lengths are window pixels: the interface scale is in them already.
class CViewArea final : public CValueOwner
{
public:
    // The variables that come in pairs, one for each axis.
    enum class Var : std::uint8_t
    {
        kPosition,    // x, y: the top-left corner, window pixels, whole but for overlays and bars
        kSize,        // width, height: without the outer border
        kInnerBefore, // inner-left, inner-top
        kInnerAfter,  // inner-right, inner-bottom
        kOuterBefore, // outer-left, outer-top
        kOuterAfter,  // outer-right, outer-bottom
        kCompact,     // compact-width, compact-height: the natural size of the content
        kMin,         // min-width, min-height
        kBoxStart,    // box-left, box-top: the rectangle that the parent offers
        kBoxSize,     // box-width, box-height
        kShare,       // share-width, share-height: what percentages refer to
        kScroll,      // scroll-x, scroll-y: 0 to 1. From here on only scrollable areas have them
        kZoom,        // zoom-x, zoom-y: the part of the content that is seen
        kScroller     // scroller-width, scroller-height: the space kept for bars
    };

    struct Options
    {
        CViewArea* parent = nullptr; // null for a root view
        CViewAreaUpdateHandler* handler = nullptr;
        bool isScrollable = false;
        int unclipLevel = 0; // how many ancestors' clips the view may leave
    };

    CViewArea(CLayoutContext& context, const Options& options);
    ~CViewArea();
    CViewArea(const CViewArea&) = delete;
    CViewArea& operator=(const CViewArea&) = delete;

    // Takes the variables and joins the parent. Fails when the window has no variables left.
    CError init();

    // --- what shapes the layout

    // A root view stays as it is.
    CError setPlacement(CPlacement placement);
    // Finds the area that a view of placement kMatch lies over, or null; asked at every rebuild.
    void setMatchFinder(std::function<CViewArea*()> finder);
    void setAlignment(CAxis axis, CAlignment alignment);
    void setInlineAlignment(CAxis axis, CAlignment alignment);
    void setInlineVertical(bool isInlineVertical);
    void setNewInlineRow(bool isNewInlineRow);
    void setVisible(bool isVisible);
    bool isVisible() const { return isVisible_; }
    // Visible, and inside visible areas only.
    bool isShown() const;

    CError setSize(CAxis axis, const CViewSize& size);
    CError setMinSize(CAxis axis, const CViewSize& size);
    // Without a value the compact size is computed from the children.
    void setCompactSize(CAxis axis, std::optional<double> size);
    void setInnerBorder(const CViewBorder& border);
    void setOuterBorder(const CViewBorder& border);
    void setSpread(const CViewBorder& spread);
    // Scrollable areas; on others these do nothing. The zoom is held above 0.
    bool isScrollable() const { return isScrollable_; }
    void setScroll(CAxis axis, double offset);
    void setZoom(CAxis axis, double ratio);
    void setScrollerSize(CAxis axis, double size);

    // --- results, as of the last solveLayout()

    CLayoutContext& getContext() { return context_; }
    CViewArea* getParent() const { return parent_; }
    CViewArea& getRoot() { return *root_; }
    float getValue(Var variable, CAxis axis) const;
    // The number of visible children that are docked or flow.
    float getChildCount() const;
    // The view's own rectangle, not clipped; empty while hidden.
    CRect getRect() const;
    // What was reported last.
    const CRect& getVisibleRect() const { return visible_; }
    // Reports the rectangles with the next solve, changed or not: to a view that has just become interested.
    void requestReport();

    // --- for the context

    // Writes the formulas of all children.
    CError rebuildChildren();
    // Reports the rectangles if they have changed.
    void report();
    CError tellSettled();

private:
    friend class CChildLayout;

    static constexpr std::size_t kPlainPairs = static_cast<std::size_t>(Var::kScroll);
    static constexpr std::size_t kAllPairs = static_cast<std::size_t>(Var::kScroller) + 1;

    void onValueChanged() override { queueReport(); }

    CValueNetwork& network() { return context_.getNetwork(); }
    CVariableId id(Var variable, CAxis axis) const;
    CFormula var(Var variable, CAxis axis) const { return CFormula().variable(id(variable, axis)); }
    bool isBar() const { return placement_ >= CPlacement::kScrollerH; }
    // Docked or flowing: takes room, and counts when room is shared out.
    bool takesRoom() const { return isVisible_ && placement_ <= CPlacement::kRight; }

    CFormula shareFormula(CAxis axis, double ratio) const;
    CFormula sizeFormula(CAxis axis, const CViewSize& size) const;
    CError writeSize(CAxis axis);
    CError writeMinSize(CAxis axis);
    void setPair(Var before, Var after, const CViewBorder& border);

    void queueRebuild();
    void queueParentRebuild();
    void queueReport();
    void queueReportOfAll();
    CRect ownRect() const;
    CRect virtualExtent() const;

    CLayoutContext& context_;
    CViewArea* const parent_;
    CViewArea* const root_;
    CViewAreaUpdateHandler* const handler_;
    const bool isScrollable_;
    CViewArea* const clipSource_; // whose visible rectangle clips this one; null for a root view

    CPlacement placement_ = CPlacement::kInline;
    CAlignment alignment_[2] = {CAlignment::kStart, CAlignment::kStart};
    CAlignment inlineAlignment_[2] = {CAlignment::kStart, CAlignment::kStart};
    bool isInlineVertical_ = false;
    bool isNewInlineRow_ = false;
    bool isVisible_ = true;
    std::optional<CViewSize> size_[2]; // none: compact, or what is kept free for a bar
    CViewSize minSize_[2];
    bool isCompactFixed_[2] = {false, false};
    CViewBorder spread_;
    std::function<CViewArea*()> matchFinder_;

    CInlineArray<CViewArea*, 8> children_; // in tree order
    CInlineArray<CViewArea*, 8> clipped_;  // areas whose clip source this is
    CInlineArray<CViewArea*, 2> matching_; // areas that lie over this one
    CViewArea* matched_ = nullptr;         // what this area lies over
    CVariableId ids_[2 * kAllPairs];
    CVariableId childCountId_ = kNoVariable;
    CInlineArray<CVariableId, 8> sumIds_; // of rows and other sums over children

    bool isRebuildQueued_ = false;
    bool isReportQueued_ = false;
    bool isReportForced_ = false;
    bool isSettledQueued_ = false;
    CRect visible_;
    CRect whole_;
};

} // namespace qel
