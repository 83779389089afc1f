// The UI side's end of the wire to an instance.
#pragma once

#include "CAudioInterfaceRecord.h"
#include "CCriticalSection.h"
#include "CObject.h"

#include <vector>

namespace qel {

class CAudioInterfaceBaseConnector;
class CAudioInterfaceClient;

// Queues what comes from the audio side and acts on it on the thread of its own tree. Owned by the UI tree;
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
    // Joins a base connector, which must outlive this or be left before.
    void attachTo(CAudioInterfaceBaseConnector& base);

private:
    CAudioInterfaceBaseConnector* base_ = nullptr;
    CAudioInterfaceClient* client_ = nullptr;
    std::int32_t index_ = -1;
    bool isProcessing_ = false;

    CCriticalSection lock_; // guards the queue
    std::vector<CByteBuffer> queue_;
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
