// What an opener says of the pop-up that it opens.
#include "CPopupSettings.h"

#include "CView.h"

namespace qel {

namespace {

constexpr const char* kPrefix = "popup-";
constexpr const char* kParametersName = "run-event-params";

} // namespace

CError CPopupSettings::gather(CView& opener, const CAttrMap& parameters)
{
    for (const auto& [key, value] : opener.getAttributes()) {
        if (key.startsWith(kPrefix)) {
            values_[key] = value;
        }
    }
    const auto named = parameters.find(kParametersName);
    const CString path =
        named == parameters.end() ? opener.getAttrString(kParametersName) : named->second.toString();
    if (!path.isEmpty()) {
        const CObject* object = opener.findChild(path);
        object = object ? object : opener.findObject(path);
        if (!object) {
            QEL_FAIL(opener.getFullName(),
                     "@qelstr_CPopups_toggle_NoParams Unable to locate event parameters '%1'.", path);
        }
        for (const auto& [key, value] : object->getAttributes()) {
            if (!(key == "name") && !(key == "full-name")) {
                values_[key] = value;
            }
        }
    }
    for (const auto& [key, value] : parameters) {
        values_[key] = value;
    }
    return {};
}

const CAttrValue* CPopupSettings::find(const char* name) const
{
    auto found = values_.find(name);
    if (found == values_.end()) {
        found = values_.find(CString(kPrefix) + name);
    }
    return found == values_.end() ? nullptr : &found->second;
}

bool CPopupSettings::getFlag(const char* name) const
{
    const CAttrValue* const value = find(name);
    return value && value->toBool().value_or(false);
}

double CPopupSettings::getNumber(const char* name, double fallback) const
{
    const CAttrValue* const value = find(name);
    return value ? value->toReal().value_or(fallback) : fallback;
}

CString CPopupSettings::getText(const char* name) const
{
    const CAttrValue* const value = find(name);
    return value ? value->toString() : CString();
}

CAttrMap CPopupSettings::makeRootAttributes(const CView& opener) const
{
    CAttrMap attributes;
    for (const auto& [key, value] : values_) {
        if (key.startsWith(kPrefix)) {
            attributes[key.substring(std::char_traits<char>::length(kPrefix))] = value;
        }
    }
    for (const char* const name : {"window-alignment", "constrain-y"}) {
        if (const CAttrValue* const value = find(name)) {
            attributes[name] = *value;
        }
    }
    if (getFlag("is-same-width")) {
        const double width = opener.getArea().width / opener.getInterfaceScale();
        attributes["width"] = CAttrValue(width + getNumber("width-modif", 0.0));
        // What would be cut off is worse than a list that is wider than its button.
        attributes.try_emplace("min-width", "compact");
    }
    attributes["is-popup-window"] = CAttrValue(true);
    attributes["opener"] = CAttrValue(opener.getFullName());
    return attributes;
}

CWindowPlacement CPopupSettings::makePlacement(const CView& opener, const platform::PixelRect& openerWindow,
                                               const CPoint& pointer) const
{
    CWindowPlacement placement;
    placement.openerWindow = openerWindow;
    const CPixelRect view = roundToPixels(opener.getArea());
    placement.opener = {openerWindow.x + view.x, openerWindow.y + view.y, view.width, view.height};

    placement.pointerX = roundToPixel(getNumber("actual-x", openerWindow.x + pointer.x));
    placement.pointerY = roundToPixel(getNumber("actual-y", openerWindow.y + pointer.y));

    placement.windowX = placement.opener.x;
    placement.windowY = placement.opener.y;
    if (getFlag("is-manual-coords")) {
        placement.windowX = roundToPixel(getNumber("window-x", placement.windowX));
        placement.windowY = roundToPixel(getNumber("window-y", placement.windowY));
    }
    const double scale = opener.getInterfaceScale();
    placement.shiftX = roundToPixel(getNumber("shift-x", 0.0) * scale);
    placement.shiftY = roundToPixel(getNumber("shift-y", 0.0) * scale);
    placement.lowestY = roundToPixel(getNumber("constrain-y", -1.0));
    return placement;
}

} // namespace qel
