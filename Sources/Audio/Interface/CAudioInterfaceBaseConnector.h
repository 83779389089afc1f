// The audio side's end of the wire to the user interface.
#pragma once

#include "CByteBuffer.h"
#include "CCriticalSection.h"
#include "CObject.h"

#include <atomic>
#include <vector>

namespace qel {

class CAudioInterfaceClientConnector;

// What the audio side does with what comes from its clients. Both calls run on the client's thread.
class CAudioInterfaceRecordHandler
{
public:
    // Acts on a record; a failure is for the client that sent it.
    virtual CError processRecord(std::int32_t client, const CByteBuffer& record) = 0;
    // The client with this index has left; another may get the index.
    virtual void onClientGone(std::int32_t client) = 0;

protected:
    ~CAudioInterfaceRecordHandler() = default;
};

// Knows the attached clients and hands records over, whole and in order. Owned by the instance's tree. The
// list's lock comes before that of a client's queue; neither is held while a record is acted on.
class CAudioInterfaceBaseConnector : public CObject
{
public:
    static constexpr std::int32_t kAllClients = -1;

    static void buildClassInfo(CClassInfo& info) { CObject::buildClassInfo(info); }

    // Lets go of clients that are still attached. None of them may be in a call meanwhile.
    void release() override;

    // Who acts on records from clients; null for nobody.
    void setBase(CAudioInterfaceRecordHandler* base) { base_ = base; }

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
    CAudioInterfaceRecordHandler* base_ = nullptr;
    CCriticalSection lock_;                                // guards the list
    std::vector<CAudioInterfaceClientConnector*> clients_; // null: a free place
    std::atomic<std::int32_t> clientCount_{0};
};

// Tag audio:interface-base-connector-vst: both ends in one process.
class CAudioInterfaceBaseConnectorVST : public CAudioInterfaceBaseConnector
{};

} // namespace qel
