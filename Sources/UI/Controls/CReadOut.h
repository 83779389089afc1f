// The value of a parameter as text.
#pragma once

#include "CFramedText.h"
#include "CUIParamUpdateHandler.h"

namespace qel {

class CUIParamController;

// Tag `ui:readout`. Shows the first element of its ui-param with its unit, in a frame if the view has images
// for one, and takes typed values; it is bound by the attributes of makeParam() (ControlChildren.h).
//
//     needs-ui-param-controller   the value can be dragged and stepped,
//                                 too, as a knob's: by a drag upwards or
//                                 downwards, the wheel, and Ctrl and a press for the default
//     default-value               the text that an empty one stands for; without it the parameter's default
//     is-unit-hidden              shows the number alone
//
// The edit box opens as that of any text view (a double click, "is-editbox-on-dblclick"), and when the state
// "focus" is set by an event. While it is open, the wheel and the keys up and down step the value; Escape
// brings the one of before back. A text that is no value changes nothing.
class CReadOut : public CFramedText<CTextView>, public CUIParamUpdateHandler
{
public:
    static void buildClassInfo(CClassInfo& info);

    CError initChilds() override;

    // --- pointer
    CError onMousePress(const CAttrMap& parameters) override;
    CError onMouseMove(const CAttrMap& parameters) override;
    CError onMouseRelease(const CAttrMap& parameters) override;
    CError onMouseCancel(const CAttrMap& parameters) override;
    CError onMouseExit(const CAttrMap& parameters) override;
    virtual CError onMouseWheel(const CAttrMap& parameters);

    CError eventSetState(const CAttrMap& parameters) override;

    // --- parameters
    CError onParamAdded(CUIParam& param) override;
    CError onParamRemoved(CUIParam& param) override;
    CError onParamUpdate(CUIParam& param) override;
    CError onParamInfo(CUIParam& param) override;

protected:
    CString getEditText(std::int32_t paragraph) const override;
    CError onTextCommitted(const CString& text, std::int32_t paragraph) override;
    CError onEditCancelled() override;
    CError onEditStep(double notches, bool isShift, bool isCtrl) override;

private:
    enum class Drag
    {
        kNone,
        kPressed, // not far enough yet to be meant
        kMoving
    };

    CError attrUnit() { return showValue(); }
    CError showValue();
    CError write(const CString& text);
    CError endDrag();
    // What Escape brings back is what there was before the first step of this edit.
    void rememberValues();

    CUIParam* param_ = nullptr;
    CUIParamController* controller_ = nullptr;
    Drag drag_ = Drag::kNone;
    CAttrMap press_;
    std::optional<std::vector<double>> before_;

    // Bound attributes.
    bool needsController_ = false;
    std::optional<CString> default_;
    bool isUnitHidden_ = false;
};

} // namespace qel
