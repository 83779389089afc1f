// Links from the events of views that a tree has laid out to the object that knows what they mean.
#include "ViewEvents.h"

namespace qel {

namespace {

constexpr const char* kParameters = "parameters";

} // namespace

CError linkEvent(CViewBaseCtlEvents& view, const char* onEvent, const CObject& target, const char* runEvent,
                 const CAttrMap& more)
{
    const CAttrMap attributes{{"on-event", CAttrValue(onEvent)},
                              {"run-event", CAttrValue(runEvent)},
                              {"run-event-target", CAttrValue(target.getFullName())},
                              {"run-event-params", CAttrValue(more.empty() ? "" : kParameters)},
                              {"run-event-forward-params", CAttrValue(true)}};
    CObject* command = nullptr;
    QEL_TRY(view.createChild(command, "ui:view-command", runEvent, false, nullptr, &attributes),
            view.getFullName());
    if (!more.empty()) {
        CObject* parameters = nullptr;
        QEL_TRY(command->createChild(parameters, "core:object", kParameters, false, nullptr, &more),
                view.getFullName());
    }
    return {};
}

std::int32_t eventIndex(const CAttrMap& parameters, std::int32_t fallback)
{
    const auto entry = parameters.find("index");
    const std::int32_t index = entry == parameters.end() ? -1 : entry->second.toInteger().value_or(-1);
    return index < 0 ? fallback : index;
}

CError setEnabled(CObject& view, bool isEnabled)
{
    return view.getAttrBool("is-disabled") == !isEnabled
               ? CError()
               : view.setAttribute("is-disabled", CAttrValue(!isEnabled), true);
}

} // namespace qel
