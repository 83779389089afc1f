// The audio side's end of the wire to the user interface.
#pragma once

#include "CByteBuffer.h"
#include "CCriticalSection.h"
#include "CObject.h"

#include <atomic>
#include <vector>

namespace qel {

class CAudioInterfaceBase;
class CAudioInterfaceClientConnector;

// Knows the attached clients and hands records over, whole and in order. Owned by the instance's tree. The
// list's lock comes before that of a client's queue; neither is held while a record is acted on.
class CAudioInterfaceBaseConnector : public CObject
{
public:
    static constexpr std::int32_t kAllClients = -1;

    static void buildClassInfo(CClassInfo& info) { CObject::buildClassInfo(info); }

    // Who acts on records from clients; null for nobody.
    void setBase(CAudioInterfaceBase* base) { base_ = base; }

    // --- any thread but the audio thread
    // A copy goes to each attached client, or to one. Without any it costs nothing.
    void sendToClients(std::int32_t clientIndex, const CByteBuffer& record);
    bool hasClients() const { return clientCount_.load(std::memory_order_acquire) > 0; }

    // --- the client's thread
    // The index of the client, which stays its own until it leaves.
    std::int32_t attachClient(CAudioInterfaceClientConnector& client);
    void detachClient(CAudioInterfaceClientConnector& client);
    // Acts on a client's record, in the calling thread.
    CError processClientData(std::int32_t clientIndex, const CByteBuffer& record);

private:
    CAudioInterfaceBase* base_ = nullptr;
    CCriticalSection lock_;                                // guards the list
    std::vector<CAudioInterfaceClientConnector*> clients_; // null: a free place
    std::atomic<std::int32_t> clientCount_{0};
};

// Tag audio:interface-base-connector-vst: both ends in one process.
class CAudioInterfaceBaseConnectorVST : public CAudioInterfaceBaseConnector
{};

} // namespace qel
