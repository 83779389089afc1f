// Buttons that controls make for themselves, and what clicks on them tell.
#include "ClickCommands.h"

#include "CViewCommand.h"

namespace qel {

namespace {

// The number is the parameter of all commands of a button.
constexpr const char* kParameters = "click-parameters";

} // namespace

CError addClickCommand(CView& button, const char* onEvent, const char* runEvent, const CObject& target,
                       const char* key, std::int32_t index)
{
    if (!button.findChild(kParameters)) {
        CAttrMap parameters;
        parameters[key] = CAttrValue(index);
        CObject* made = nullptr;
        QEL_TRY(button.createChild(made, "core:object", kParameters, false, nullptr, &parameters),
                button.getFullName());
    }
    CAttrMap attributes;
    attributes["on-event"] = CAttrValue(onEvent);
    attributes["run-event"] = CAttrValue(runEvent);
    attributes["run-event-target"] = CAttrValue(target.getFullName());
    attributes["run-event-params"] = CAttrValue(kParameters);
    attributes["run-event-forward-params"] = CAttrValue(true);
    CViewCommand* command = nullptr;
    QEL_TRY(button.createChild(command, "ui:view-command", "click", false, nullptr, &attributes),
            button.getFullName());
    return {};
}

} // namespace qel
