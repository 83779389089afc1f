// What events of pointer and keys tell views.
#include "PointerParameters.h"

namespace qel {

namespace {

void addModifiers(CAttrMap& parameters, const platform::Modifiers& modifiers)
{
    parameters["is-alt"] = CAttrValue(modifiers.isAlt);
    parameters["is-ctrl"] = CAttrValue(modifiers.isCtrl);
    parameters["is-shift"] = CAttrValue(modifiers.isShift);
}

CAttrMap heldParameters(const platform::PointerEvent& event)
{
    CAttrMap parameters;
    parameters["is-button-l"] = CAttrValue(event.isLeftDown);
    parameters["is-button-r"] = CAttrValue(event.isRightDown);
    addModifiers(parameters, event.modifiers);
    return parameters;
}

CAttrMap placeParameters(const platform::PointerEvent& event)
{
    CAttrMap parameters = heldParameters(event);
    parameters["x"] = CAttrValue(event.x);
    parameters["y"] = CAttrValue(event.y);
    parameters["actual-x"] = CAttrValue(event.screenX);
    parameters["actual-y"] = CAttrValue(event.screenY);
    return parameters;
}

} // namespace

CAttrMap moveParameters(const platform::PointerEvent& event)
{
    CAttrMap parameters = placeParameters(event);
    parameters["button"] = CAttrValue(event.isLeftDown ? "l" : event.isRightDown ? "r" : "");
    return parameters;
}

CAttrMap buttonParameters(const platform::ButtonEvent& event)
{
    CAttrMap parameters = placeParameters(event);
    parameters["button"] = CAttrValue(event.button == platform::MouseButton::kLeft ? "l" : "r");
    parameters["is-double-click"] = CAttrValue(event.isDoubleClick);
    return parameters;
}

CAttrMap wheelParameters(const platform::WheelEvent& event)
{
    CAttrMap parameters = heldParameters(event);
    parameters["delta"] = CAttrValue(event.delta);
    return parameters;
}

CAttrMap keyParameters(const platform::KeyEvent& event)
{
    CAttrMap parameters;
    const bool isCharacter = event.character != 0;
    parameters["keycode"] =
        CAttrValue(static_cast<std::int32_t>(isCharacter ? std::uint32_t{event.character} : event.key));
    parameters["is-character"] = CAttrValue(isCharacter);
    addModifiers(parameters, event.modifiers);
    return parameters;
}

} // namespace qel
