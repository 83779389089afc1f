// The UI side's end of the wire to an instance.
#pragma once

#include "CAudioInterfaceRecord.h"
#include "CCriticalSection.h"
#include "CObject.h"

#include <vector>

namespace qel {

class CAudioInterfaceBaseConnector;
class CAudioInterfaceClient;

// Queues what comes from the audio side and acts on it on the thread of its own tree, by way of the tree's
// event loop: never in the sender's thread, who holds locks. What comes before there is a loop, or could not
// be posted, waits and is acted on with what comes next, or when there is a new loop. Owned by the UI tree;
// what is still queued when it is released is dropped.
class CAudioInterfaceClientConnector : public CObject
{
public:
    static void buildClassInfo(CClassInfo& info);

    void release() override;

    // Who acts on records from the base; null for nobody.
    void setClient(CAudioInterfaceClient* client) { client_ = client; }

    // --- any thread
    // Queues a record and has it acted on.
    void receive(const CByteBuffer& record);

    // --- the thread of the tree
    // Parts from the base; what is sent to it from now on is dropped.
    void leaveBase();
    CError sendToBase(const CByteBuffer& record);
    template <class Record>
    CError send(const Record& record)
    {
        return sendToBase(encodeRecord(record));
    }
    // Handler of the event "process-base-data": acts on all queued records. One that fails is traced and
    // dropped.
    CError onProcessBaseData(const CAttrMap& parameters);

protected:
    static constexpr std::int32_t kNoLoop = -1;

    // Joins a base connector, which must outlive this or be left before.
    void attachTo(CAudioInterfaceBaseConnector& base);

private:
    void postWaiting();

    CAudioInterfaceBaseConnector* base_ = nullptr;
    CAudioInterfaceClient* client_ = nullptr;
    std::int32_t index_ = -1;
    bool isProcessing_ = false;

    CCriticalSection lock_; // guards what follows
    std::vector<CByteBuffer> queue_;
    std::int32_t postedTo_ = kNoLoop; // the number of the loop that carries an event for what is queued
};

// Tag audio:interface-client-connector-vst: finds the audio tree of the same process through its root's
// attribute "PluginRootPtrVar". Attribute: base-connector, a path in that tree.
class CAudioInterfaceClientConnectorVST : public CAudioInterfaceClientConnector
{
public:
    static constexpr const char* kRootVar = "PluginRootPtrVar";

    // The attribute's value for an audio tree.
    static CAttrValue rootVarOf(const CObject& audioRoot);

    static void buildClassInfo(CClassInfo& info);
    CError init() override;

private:
    CString basePath_;
};

} // namespace qel
