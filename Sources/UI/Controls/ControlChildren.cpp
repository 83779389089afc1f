// The children that controls with one parameter make themselves.
#include "ControlChildren.h"

#include "CUIParamController.h"

namespace qel {

namespace {

constexpr const char* kParamTag = "ui:ui-param";
constexpr const char* kParamName = "ui-param";
constexpr const char* kPaths[] = {"bridge", "shared-attribute", "group-selector"};
constexpr const char* kPassedOn[] = {"group", "element", "element-offset", "element-count"};

template <class Class>
Class* findChildOf(const CObject& object)
{
    for (std::size_t i = 0; i < object.getChildCount(); ++i) {
        if (auto* const found = dynamic_cast<Class*>(object.getChild(i))) {
            return found;
        }
    }
    return nullptr;
}

} // namespace

CError makeParam(CView& control)
{
    const bool isBound =
        !control.getAttrString("bridge").isEmpty() || !control.getAttrString("shared-attribute").isEmpty();
    if (!isBound || findChildOf<CUIParam>(control)) {
        return {};
    }
    CAttrMap attributes;
    for (const char* const name : kPaths) {
        const CString path = control.getAttrString(name);
        if (path.isEmpty()) {
            continue;
        }
        // From the child the path would lead elsewhere. One that leads nowhere is left for it to tell of.
        const CObject* const object = control.findObject(path);
        attributes[name] = CAttrValue(object ? object->getFullName() : path);
    }
    if (const CAttrValue* const isReplacing = control.findAttr("is-replacing")) {
        attributes["is-replacing"] = *isReplacing;
    }
    for (const char* const name : kPassedOn) {
        if (const CAttrValue* const value = control.findAttr(name)) {
            attributes[name] = *value;
        }
    }
    CUIParam* param = nullptr;
    QEL_TRY(control.createChild(param, kParamTag, kParamName, false, nullptr, &attributes),
            control.getFullName());
    for (const char* const name : kPassedOn) {
        param->listenAttribute(control, name, name);
    }
    return {};
}

CError makeController(CView& control, CUIParamController*& out)
{
    out = findChildOf<CUIParamController>(control);
    return out ? CError() : control.createChild(out, CUIParamController::kTag, CUIParamController::kName);
}

} // namespace qel
