// What binds a control to a parameter.
#pragma once

#include "CParamBridge.h"

namespace qel {

class CParamEdit;
class CParamGroupSelector;
class CSharedAttribute;
class CUIParamUpdateHandler;

// Tag `ui:ui-param`, a child of the control, which implements CUIParamUpdateHandler.
//
//     bridge                   path of the parameter's bridge
//     element                  where the window on the parameter's elements begins; empty: at the first
//     element-offset           added to it
//     element-count            how many elements the window has; 1 (default), or 0 for all to the end
//     group                    a fixed group
//     group-selector           path of a CParamGroupSelector, which the group follows
//     is-replacing             a change writes the whole window; where
//                              that reaches to the end of the list,
//                              the list ends with it
//     index                    for controls with several parameters: which of them this is
//     shared-attribute         path of a CSharedAttribute in place of a bridge
//     shared-attribute-value   text of the setting with which the control is active
//
// Elements are counted within the window from here on. What a control reads is what the audio side has taken:
// a write changes nothing here until it has come back, when the control gets onParamUpdate(), and the event
// "param-change" is raised. Before the parameter is known there is no element, and writes are dropped.
//
// A gesture (a drag, a turn of the wheel) goes from beginEdit() to endEdit(): one pair of calls for the host,
// and one step of the history. It belongs to the group in which it began; when the group changes meanwhile,
// nothing more is written until the next one. A write outside of a gesture is a gesture of its own.
//
// A shared attribute is one element: a number, and in the text of it. Where "shared-attribute-value" is given
// it is 1 if the setting has that text, and 0 if not; writing 1 (0.5 and up) sets the text; writing 0 does
// nothing but for "true", which gives "false", and the other way round.
//
// The event "reset" returns the first element to its default.
class CUIParam : public CObject, public CParamBridgeListener, public CStateSwitchSource
{
public:
    using TextMode = CAudioParamConverter::TextMode;

    static constexpr const char* kParamChange = "param-change";

    static void buildClassInfo(CClassInfo& info);

    CError init() override;
    void release() override;
    CError onAttrChanged(CObject& sender, const CString& key, const CAttrValue& value) override;

    virtual CError attrElement() { return onWindowChanged(); }
    virtual CError attrSharedAttributeValue() { return onWindowChanged(); }
    virtual CError attrIndex() { return {}; }
    virtual CError attrGroup() { return onWindowChanged(); }

    // --- what it is bound to

    // True once init has found a bridge or a shared attribute.
    bool isBound() const { return bridge_ || shared_; }
    CParamBridge* getBridge() const { return bridge_; }
    // Null without a bridge, and until the parameter is known.
    const CAudioParamInfo* getInfo() const { return bridge_ ? bridge_->getInfo() : nullptr; }
    std::int32_t getIndex() const { return index_; }
    std::int32_t getGroup() const;
    // The element of the parameter that is the first in the window.
    std::int32_t getFirstElement() const;
    // Elements in the window that the parameter has.
    std::int32_t getElementCount() const;

    // --- values; of elements that are not there 0, empty or false
    double getNorm(std::int32_t i) const;
    double getValue(std::int32_t i) const;
    // Without the unit.
    CString getText(std::int32_t i, TextMode mode = TextMode::kNormal) const;
    CString getUnit(std::int32_t i) const;
    double getDefaultNorm(std::int32_t i) const;
    // What the first element says to a switch: the setting has the text it is to have, or the value is not 0.
    bool isActive() const;
    // Conversions for controls that show more than the present value.
    double toNorm(std::int32_t i, double value) const;
    double toValue(std::int32_t i, double norm) const;
    CString getTextOf(std::int32_t i, double value, TextMode mode = TextMode::kNormal) const;

    // --- changes

    // Calls nest. The gesture holds all elements of the window.
    CError beginEdit();
    CError endEdit();
    bool isEditing() const { return editDepth_ > 0; }
    // With an edit, the change waits for CParamEdit::send(), together with those of other parameters.
    CError setNorm(std::int32_t i, double norm, CParamEdit* edit = nullptr);
    CError setValue(std::int32_t i, double value, CParamEdit* edit = nullptr);
    // Text with or without its unit. Fails, and changes nothing, if it is no value.
    CError setText(std::int32_t i, const CString& text);
    CError resetToDefault(std::int32_t i);
    // Changes from here on make no step of the history.
    void setUndoDisabled(bool isDisabled) { isUndoDisabled_ = isDisabled; }

    // --- for bridges
    CError onBridgeValues() override;
    CError onBridgeInfo() override;
    void onBridgeGone() override;

    // --- for state switches: the first element, or the text of a setting
    CError addSwitch(CViewStateSwitch& stateSwitch) override;
    void removeSwitch(CViewStateSwitch& stateSwitch) override;

private:
    CError onGroupChange(const CAttrMap& parameters);
    CError onReset(const CAttrMap& parameters);

    CError bindShared();
    CError bindBridge();
    // Ends the gesture at the bridge.
    CError letGo();
    bool hasElement(std::int32_t i) const;
    bool mayWrite() const;
    bool isKnown() const { return shared_ || getInfo(); }
    // An attribute says another element or group; those that come with the object are in force by init.
    CError onWindowChanged();
    // Tells the control if anything it shows is different, or in any case.
    CError update(bool isForced);
    CError tellSwitches();
    // Writes one element of the window by way of the bridge.
    CError writeElement(std::int32_t i, double value, const CString& text, CParamEdit* edit);
    CString getSharedText() const;
    CError setSharedNumber(double value);
    CError setSharedText(const CString& text);

    CUIParamUpdateHandler* handler_ = nullptr;
    CParamBridge* bridge_ = nullptr;
    CSharedAttribute* shared_ = nullptr;
    CParamGroupSelector* selector_ = nullptr;
    bool isUndoDisabled_ = false;
    std::int32_t editDepth_ = 0;
    // Of the gesture.
    std::int32_t editGroup_ = 0;
    std::int32_t editFirst_ = 0;
    std::int32_t editCount_ = 0;
    // What the control was told last.
    std::int32_t shownCount_ = -1;
    std::vector<double> shownValues_;
    std::vector<CString> shownTexts_;
    std::vector<CViewStateSwitch*> switches_;

    // Bound attributes.
    CString bridgePath_;
    CString element_;
    std::int32_t elementOffset_ = 0;
    std::int32_t elementCount_ = 1;
    std::int32_t group_ = 0;
    CString selectorPath_;
    bool isReplacing_ = false;
    std::int32_t index_ = 0;
    CString sharedPath_;
    std::optional<CString> sharedValue_;
};

} // namespace qel
