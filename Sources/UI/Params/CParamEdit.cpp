// Changes of several parameters that the user makes in one go.
#include "CParamEdit.h"

#include "CAudioInterfaceClient.h"

namespace qel {

void CParamEdit::add(CAudioInterfaceClient& client, const CString& stepName, std::int32_t source,
                     bool isMergeable, record::CParamWrite write)
{
    if (isEmpty()) {
        client_ = &client;
        record_.source = source;
        record_.mergeable = isMergeable;
    }
    if (record_.stepName.isEmpty()) {
        record_.stepName = stepName;
    }
    record_.mergeable = record_.mergeable && isMergeable;
    record_.writes.push_back(std::move(write));
}

CError CParamEdit::send()
{
    if (isEmpty()) {
        return {};
    }
    const record::CChangeParams record = std::exchange(record_, {});
    return client_->send(record);
}

} // namespace qel
