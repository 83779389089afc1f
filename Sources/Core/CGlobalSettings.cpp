// The settings of the user interface, typed.
#include "CGlobalSettings.h"

namespace qel {

void CGlobalSettings::buildClassInfo(CClassInfo& info)
{
    using Settings = CGlobalSettings;
    CObject::buildClassInfo(info);
    info.bind<&Settings::isBuiltinRefresh_, &Settings::attrBuiltinRefresh>("builtin-refresh", false);
    info.bind<&Settings::dragPrecision_, &Settings::attrDragPrecision>("drag-precision", 0.0);
    info.bind<&Settings::mouseWheelPrecision_, &Settings::attrMouseWheelPrecision>("mouse-wheel-precision",
                                                                                   0.0);
    info.bind<&Settings::oversamplingLevel_, &Settings::attrOversamplingLevel>("oversampling-level", 0.0);
    info.bind<&Settings::isRadialKnobMode_, &Settings::attrRadialKnobMode>("radial-knob-mode", false);
    info.bind<&Settings::shiftKeyPrecision_, &Settings::attrShiftKeyPrecision>("shift-key-precision", 0.0);
    info.bind<&Settings::isShowKnobLabels_, &Settings::attrShowKnobLabels>("show-knob-labels", false);
    info.bind<&Settings::isShowVirtualKeyboard_, &Settings::attrShowVirtualKeyboard>("show-virtual-keyboard",
                                                                                     false);
    info.bind<&Settings::isTabletMode_, &Settings::attrTabletMode>("tablet-mode", false);
}

} // namespace qel
