// The audio side's end of the wire to the user interface.
#include "CAudioInterfaceBaseConnector.h"

#include "CAudioInterfaceClientConnector.h"

#include <algorithm>

namespace qel {

void CAudioInterfaceBaseConnector::release()
{
    std::vector<CAudioInterfaceClientConnector*> clients;
    {
        const CLock lock(lock_);
        clients = clients_;
    }
    for (CAudioInterfaceClientConnector* client : clients) {
        if (client) {
            client->leaveBase();
        }
    }
    CObject::release();
}

void CAudioInterfaceBaseConnector::sendToClients(std::int32_t clientIndex, const CByteBuffer& record)
{
    const CLock lock(lock_);
    for (std::size_t i = 0; i < clients_.size(); ++i) {
        const bool isMeant = clientIndex == kAllClients || static_cast<std::size_t>(clientIndex) == i;
        if (isMeant && clients_[i]) {
            clients_[i]->receive(record);
        }
    }
}

std::int32_t CAudioInterfaceBaseConnector::attachClient(CAudioInterfaceClientConnector& client)
{
    const CLock lock(lock_);
    auto place = std::find(clients_.begin(), clients_.end(), nullptr);
    if (place == clients_.end()) {
        place = clients_.insert(place, nullptr);
    }
    *place = &client;
    ++clientCount_;
    return static_cast<std::int32_t>(place - clients_.begin());
}

void CAudioInterfaceBaseConnector::detachClient(CAudioInterfaceClientConnector& client)
{
    std::int32_t index = 0;
    {
        const CLock lock(lock_);
        const auto place = std::find(clients_.begin(), clients_.end(), &client);
        if (place == clients_.end()) {
            return;
        }
        index = static_cast<std::int32_t>(place - clients_.begin());
        *place = nullptr;
        --clientCount_;
    }
    if (base_) {
        base_->onClientGone(index);
    }
}

CError CAudioInterfaceBaseConnector::processClientData(std::int32_t clientIndex, const CByteBuffer& record)
{
    if (!base_) {
        QEL_FAIL(getFullName(), "@qelstr_CAudioInterfaceBaseConnector_processClientData_NoBaseObject "
                                "No base object defined.");
    }
    QEL_TRY(base_->processRecord(clientIndex, record), getFullName());
    return {};
}

} // namespace qel
