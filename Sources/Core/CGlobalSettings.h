// The settings of the user interface, typed.
#pragma once

#include "CObject.h"

namespace qel {

// Tag `core:global-settings`. Mirrors attributes that the tree gives, usually as live references to stored
// settings, so that views read a member instead of parsing text. A missing or bad value is false or 0. Only
// reads; setting is up to whoever owns the attribute referred to. A class that wants to act on a change
// overrides the handler; the member has the new value by then.
class CGlobalSettings : public CObject
{
public:
    static void buildClassInfo(CClassInfo& info);

    bool isBuiltinRefresh() const { return isBuiltinRefresh_; }
    double getDragPrecision() const { return dragPrecision_; }
    double getMouseWheelPrecision() const { return mouseWheelPrecision_; }
    double getOversamplingLevel() const { return oversamplingLevel_; }
    bool isRadialKnobMode() const { return isRadialKnobMode_; }
    double getShiftKeyPrecision() const { return shiftKeyPrecision_; }
    bool isShowKnobLabels() const { return isShowKnobLabels_; }
    bool isShowVirtualKeyboard() const { return isShowVirtualKeyboard_; }
    bool isTabletMode() const { return isTabletMode_; }

    virtual CError attrBuiltinRefresh() { return {}; }
    virtual CError attrDragPrecision() { return {}; }
    virtual CError attrMouseWheelPrecision() { return {}; }
    virtual CError attrOversamplingLevel() { return {}; }
    virtual CError attrRadialKnobMode() { return {}; }
    virtual CError attrShiftKeyPrecision() { return {}; }
    virtual CError attrShowKnobLabels() { return {}; }
    virtual CError attrShowVirtualKeyboard() { return {}; }
    virtual CError attrTabletMode() { return {}; }

private:
    bool isBuiltinRefresh_ = false;
    double dragPrecision_ = 0.0;
    double mouseWheelPrecision_ = 0.0;
    double oversamplingLevel_ = 0.0;
    bool isRadialKnobMode_ = false;
    double shiftKeyPrecision_ = 0.0;
    bool isShowKnobLabels_ = false;
    bool isShowVirtualKeyboard_ = false;
    bool isTabletMode_ = false;
};

} // namespace qel
