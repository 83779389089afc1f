// The rotary control.
#pragma once

#include "CTickSource.h"
#include "CUIParamUpdateHandler.h"
#include "CView.h"
#include "KnobLaws.h"

namespace qel {

class CUIParamController;

// Tag `ui:knob`. Shows the position of a parameter as one picture of a range of turned knobs, by the first
// element of its ui-param, and moves it: a drag upwards, or in the user's radial mode to where the pointer
// is; the wheel; Ctrl and a press set the default; a double click types a value. It is bound by the
// attributes of makeParam() (ControlChildren.h).
//
//     center-x, center-y          the knob's axis in the view; by default the middle of the view
//     zone-start, zone-end        see CKnobZone
//     inner-radius, outer-radius  where a press counts, as distances from the axis; an outer radius of 0
//                                 (default) is everywhere. Elsewhere the view is a plain one
//     tablet-outer-radius         the outer radius in the user's tablet mode, where fingers press; there the
//                                 inner radius does not count
//     linked-knob                 path of a knob that moves along
//     is-link-inversed            in the other direction
//     is-axis-zero                the lit arc begins in the middle; without this, where the middle of the
//                                 parameter's range reads as zero
//     color-swatch, color-index   path of a CColorSwatch and the number of the colour there; the "color"
//                                 follows
//     update-fps                  repaints no more often than this; by default with every frame
//
// Children, all of them optional: "readout" (CReadOut), which takes typed values, "knob-labels"
// (CKnobLabels), told "show" while the pointer is on the knob or drags it and "hide" after, a ui:ui-param and
// a ui:ui-param-controller with attributes of their own. The last two are made if they are not there.
//
// Pictures: layer 0 of an image is the knob, layer 1 its lit arc from the left end, layer 2 that from the
// middle; one of the arcs is drawn, and none while the view is disabled. The right button opens the
// menu "ui:label-copy-paste", whose "owner-label" is the knob; its events "copy" and "paste" carry the value
// to the clipboard and back. State "dragged" while the user holds the knob.
class CKnob : public CView, public CUIParamUpdateHandler
{
public:
    static void buildClassInfo(CClassInfo& info);

    CKnob();

    CError initChilds() override;
    void release() override;

    // --- pointer
    CError onMousePress(const CAttrMap& parameters) override;
    CError onMouseMove(const CAttrMap& parameters) override;
    CError onMouseRelease(const CAttrMap& parameters) override;
    CError onMouseCancel(const CAttrMap& parameters) override;
    CError onMouseEnter(const CAttrMap& parameters) override;
    CError onMouseExit(const CAttrMap& parameters) override;
    CError onMouseReleaseR(const CAttrMap& parameters) override;
    virtual CError onMouseWheel(const CAttrMap& parameters);

    // --- parameters
    CError onParamAdded(CUIParam& param) override;
    CError onParamRemoved(CUIParam& param) override;
    CError onParamUpdate(CUIParam& param) override;
    CError onParamInfo(CUIParam& param) override;

    CKnobZone getZone() const { return {zoneStart_, zoneEnd_}; }
    // Window pixels, from the corner of the view.
    CPoint getCenter() const;
    // The picture that is shown.
    std::int32_t getPictureIndex() const { return picture_; }

    void draw(CDrawContext& context) override;

private:
    enum class Mode
    {
        kIdle,
        kDragging,
        kRadial
    };

    CError attrColorIndex();
    CError eventCopy(const CAttrMap& parameters);
    CError eventPaste(const CAttrMap& parameters);
    CPoint fromCenter(const CAttrMap& parameters) const;
    bool isInRing(const CAttrMap& parameters) const;
    CError press(const CAttrMap& parameters);
    CError moveToPointer(const CAttrMap& parameters);
    CError endDrag();
    CError openTextEntry();
    CError tellLabels(const char* event);
    void takePosition();
    bool isArcFromMiddle() const;

    CUIParam* param_ = nullptr;
    CUIParamController* controller_ = nullptr;
    Mode mode_ = Mode::kIdle;
    std::int32_t picture_ = 0;
    bool isFromMiddle_ = false;
    CTickSubscription tick_; // while a picture waits for its time
    double shownSec_ = 0.0;

    // Bound attributes.
    double centerX_ = -1.0;
    double centerY_ = -1.0;
    double zoneStart_ = 0.0;
    double zoneEnd_ = 0.0;
    double innerRadius_ = 0.0;
    double outerRadius_ = 0.0;
    double tabletOuterRadius_ = 0.0;
    CString linkedKnob_;
    bool isLinkInversed_ = false;
    std::optional<CString> isAxisZero_;
    double updateFps_ = 0.0;
    CString colorSwatch_;
    std::int32_t colorIndex_ = 0;
};

} // namespace qel
