// What all views have in common: their place in the window.
#pragma once

#include "CObject.h"
#include "CViewArea.h"

namespace qel {

// Turns placement attributes into calls on a CViewArea, which lays the view out. The bottom of the classes
// of views: a subclass refines a handler by overriding it and calling the base.
//
// The nearest view above is the parent view; a view with "is-root-view" has none, holds the layout of its
// window and lives longer than all in it. What is said to be read at init does not change any more.
// Attributes change nothing until solveLayout() runs, which the window does before each frame. One thread,
// the window's.
//
//     width, height            "compact" (default), "full", "balanced", a number, a percentage ("50%")
//     min-width, min-height    "compact", "balanced", a number, a percentage; 0 by default
//     compact-width, -height   a number takes the place of what the content needs; empty gives it back
//     placement                "inline" (default), "full", "top", "bottom", "left", "right", "overlay",
//                              "window-overlay", "match" (of "placement-match", a path), "scroller-h", "-v",
//                              "-p"
//     alignment-h, -v          where there is more room than needed: "left", "center", "right"; "top", ...
//     inline-alignment-h, -v   the same for the rows of children
//     is-inline-vertical       children flow in columns instead of rows
//     is-new-inline-row        what follows starts a new row
//     inner-border, outer-border, spread
//                              see parseBorder(): around the content; around the view; of what is drawn
//                              beyond the view
//     is-visible, is-disabled
//     ratio-x, -y, min-ratio-x, -y, offset-x, -y, scroller-width, -height
//                              scrolling: the part seen, its least, how far, room for bars
//     is-root-view, is-scrollable, unclip-level, is-decorative, is-dynamic, is-force-non-dynamic, z-index,
//     z-index-dynamic-childs, z-index-static-childs
//                              read at init
//
// Numbers are pixels at an interface scale of 1.
class CViewBasePlacement : public CObject
{
public:
    CViewBasePlacement();
    ~CViewBasePlacement() override;

    static void buildClassInfo(CClassInfo& info);

    // Fails without a parent view, or when the window has no layout variables left.
    CError init() override;
    // Takes the view out of the layout.
    void detach() override;

    // --- handlers of attributes

    virtual CError attrAlignmentH() { return setAlignment(CAxis::kX); }
    virtual CError attrAlignmentV() { return setAlignment(CAxis::kY); }
    virtual CError attrCompactWidth() { return setCompactSize(CAxis::kX); }
    virtual CError attrCompactHeight() { return setCompactSize(CAxis::kY); }
    virtual CError attrInlineAlignmentH() { return setInlineAlignment(CAxis::kX); }
    virtual CError attrInlineAlignmentV() { return setInlineAlignment(CAxis::kY); }
    virtual CError attrInnerBorder();
    // How a disabled view looks and acts is up to subclasses; placement does not change.
    virtual CError attrIsDisabled() { return {}; }
    virtual CError attrIsInlineVertical();
    virtual CError attrIsNewInlineRow();
    virtual CError attrIsVisible();
    virtual CError attrMinRatioX() { return setZoom(CAxis::kX); }
    virtual CError attrMinRatioY() { return setZoom(CAxis::kY); }
    virtual CError attrMinWidth() { return setMinSize(CAxis::kX); }
    virtual CError attrMinHeight() { return setMinSize(CAxis::kY); }
    virtual CError attrOffsetX();
    virtual CError attrOffsetY();
    virtual CError attrOuterBorder();
    virtual CError attrPlacement();
    virtual CError attrRatioX() { return setZoom(CAxis::kX); }
    virtual CError attrRatioY() { return setZoom(CAxis::kY); }
    virtual CError attrScrollerWidth() { return setScrollerSize(CAxis::kX); }
    virtual CError attrScrollerHeight() { return setScrollerSize(CAxis::kY); }
    virtual CError attrSpread();
    virtual CError attrWidth() { return setSize(CAxis::kX); }
    virtual CError attrHeight() { return setSize(CAxis::kY); }

    // Brings the rectangles of the whole window up to date; a subclass that is a window's root then asks the
    // window for its new size.
    virtual CError solveAndAdoptWindowSize();

    // --- the view and its window; valid from init on and until the view is released

    CError solveLayout() { return area_->getContext().solveLayout(); }
    // Gives a root view the size of its window, in whole window pixels, in place of "width" and "height",
    // which the layout does not round.
    CError setRootSize(double width, double height);

    CViewArea& getViewArea() { return *area_; }
    const CViewArea& getViewArea() const { return *area_; }
    // Null for a root view.
    CViewBasePlacement* getParentView() const { return parentView_; }
    CViewBasePlacement& getRootView() const { return *rootView_; }
    CLayoutContext& getLayoutContext() { return area_->getContext(); }
    // The factor of all pixel numbers in attributes.
    double getInterfaceScale() const { return interfaceScale_; }

    bool isRootView() const { return rootView_ == this; }
    bool isScrollable() const { return isScrollable_; }
    bool isDecorative() const { return isDecorative_; }
    bool isDisabled() const { return isDisabled_; }
    // Repainted often, so that it is kept apart from what is not: by "is-dynamic", or as the parent is.
    bool isDynamic() const { return isDynamic_; }
    // Views of a higher number are drawn over those of a lower one, equal ones in the order of the tree. A
    // view lies as much above its parent as "z-index" says or, without it, the parent's
    // "z-index-dynamic-childs" or "z-index-static-childs"; a path gives it the number of another view.
    std::int32_t getZIndex() const { return zIndex_; }

protected:
    // A class of views that are roots whatever "is-root-view" says.
    virtual bool isAlwaysRoot() const { return false; }
    // The layout that a root view joins: by default a new one at the present interface scale. What gives
    // another one keeps it alive as long as the view.
    virtual std::shared_ptr<CLayoutContext> makeLayoutContext();

private:
    CError initParents();
    CError initOrder();
    // Each takes the present attribute of an axis over. An attribute that follows another may change before
    // init; there is nothing to lay out by then.
    CError setAlignment(CAxis axis);
    CError setInlineAlignment(CAxis axis);
    CError setSize(CAxis axis);
    CError setMinSize(CAxis axis);
    CError setCompactSize(CAxis axis);
    CError setScrollerSize(CAxis axis);
    CError setZoom(CAxis axis);
    CError readAlignment(const char* name, CAxis axis, std::optional<CAlignment>& out) const;
    CViewBorder readBorder(const char* name, bool isRounded) const;
    CViewArea* findMatch();

    std::shared_ptr<CLayoutContext> context_; // of a root view
    std::unique_ptr<CViewArea> area_;
    CViewBasePlacement* parentView_ = nullptr;
    CViewBasePlacement* rootView_ = nullptr;
    double interfaceScale_ = 1.0;
    bool isDynamic_ = false;
    std::int32_t zIndex_ = 0;

    // Bound attributes.
    bool isRootWanted_ = false;
    bool isScrollable_ = false;
    bool isDecorative_ = false;
    bool isDynamicWanted_ = false;
    bool isForceNonDynamic_ = false;
    bool isDisabled_ = false;
    bool isInlineVertical_ = false;
    bool isNewInlineRow_ = false;
    bool isVisible_ = true;
    std::int32_t unclipLevel_ = 0;
    std::int32_t zIndexOfDynamicChilds_ = 0;
    std::int32_t zIndexOfStaticChilds_ = 0;
    double ratioX_ = 1.0;
    double ratioY_ = 1.0;
    double minRatioX_ = 0.0;
    double minRatioY_ = 0.0;
    double offsetX_ = 0.0;
    double offsetY_ = 0.0;
};

} // namespace qel
