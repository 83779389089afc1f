// Turns gestures of the hand into changes of parameters.
#pragma once

#include "CTickSource.h"
#include "CUIParam.h"
#include "CValueDrag.h"

#include <list>
#include <memory>

namespace qel {

class CGlobalSettings;
class CView;

// Tag `ui:ui-param-controller`, a child of the view that it serves: a knob, a read-out, a slider, any view
// with CUIParam children. The view passes on what the pointer does; the controller moves all those
// parameters, with all elements of their windows, and those of a linked view.
//
// A gesture is one pair of begin and end for the host and one step of the history. Positions are counted from
// its beginning, so automation that plays meanwhile does not drag along. It ends with finish(), and when the
// controller or the parameters go, so that a window that closes in mid-drag leaves no control held. Turns of
// the wheel and presses of keys belong to one gesture until there is a pause.
//
//     mode               of a drag: 1 (default) keeps differences, 0 keeps ratios
//     is-axis-zero       ratios are those of distances from the middle of the range, not from its beginning
//     is-horizontal      a drag to the right counts, instead of one upwards
//     is-motion-smoothed slow movements are evened out
//     is-undo-disabled   no steps of the history
//
// Steps follow the user's preferences (CGlobalSettings); those of discrete parameters are at least one unit.
class CUIParamController : public CObject
{
public:
    static constexpr const char* kTag = "ui:ui-param-controller";
    static constexpr const char* kName = "ui-param-controller";

    static void buildClassInfo(CClassInfo& info);

    CUIParamController();

    // Fails without a parent view or without the global settings.
    CError init() override;
    void release() override;

    const CGlobalSettings& getSettings() const { return *settings_; }

    // Another view whose parameters move along, from the next gesture on; null for none.
    void setLinkedView(CView* view, bool isInverse);

    // --- drags; the parameters are those of pointer events

    // Begins a drag, or with `isRadial` one that goes where moveTo() says. Ends what was going on.
    CError press(const CAttrMap& parameters, bool isRadial = false);
    CError drag(const CAttrMap& parameters);
    CError moveTo(double position);
    CError finish();

    // --- steps

    // "mouse-wheel": moves the first parameter; with Ctrl, all that a drag would.
    CError turnWheel(const CAttrMap& parameters);
    // As many notches of the wheel.
    CError step(double notches, bool isShift, bool isCtrl);
    // The wheel has been left: its gesture ends without a pause.
    CError leave();

    // --- whole values, each a gesture of its own
    CError resetToDefault();
    // Fails, and changes nothing, if the text is no value.
    CError setText(const CString& text);
    // Text of the first parameter, with its unit; empty if there is none.
    CString getText() const;
    // By way of the clipboard. Pasted text that is no value changes nothing.
    CError copy();
    CError paste();

private:
    enum class Gesture
    {
        kNone,
        kDrag,
        kRadial,
        kSteps
    };
    // One element of a parameter.
    struct CMoved
    {
        CUIParam* param;
        std::int32_t element;
        bool isInverse;
        double value; // written last

        double toPosition() const;
        double toValue(double position) const;
    };

    CError begin(Gesture gesture, bool isAll);
    void collect(const CObject& view, bool isInverse, bool isAll);
    CError apply();
    // Calls for each element that a drag would move, as one gesture.
    template <class Change>
    CError change(Change&& make);
    void onTick();

    CView* view_ = nullptr;
    const CGlobalSettings* settings_ = nullptr;
    CString linkedView_; // in full; it may end before the next gesture
    bool isLinkInverse_ = false;

    // Of the gesture.
    Gesture gesture_ = Gesture::kNone;
    CValueDrag drag_;
    std::vector<CMoved> moved_;
    std::vector<CUIParam*> params_;
    std::list<CHold> holds_; // of the parameters
    bool isAll_ = false;
    double pointer_ = 0.0; // along the axis of the drag, growing with the value
    double lastStepSec_ = 0.0;
    CTickSubscription tick_;

    // What the clipboard answers to; null once the controller has gone.
    std::shared_ptr<CUIParamController*> self_;

    // Bound attributes.
    std::int32_t mode_ = 1;
    bool isAxisZero_ = false;
    bool isHorizontal_ = false;
    bool isMotionSmoothed_ = false;
    bool isUndoDisabled_ = false;
};

} // namespace qel
