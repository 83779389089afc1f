// The audio side of the conversation with the user interface.
#pragma once

#include "CAudioInterfaceBaseConnector.h"
#include "CAudioParamListener.h"
#include "CAudioParamUndo.h"
#include "CAudioVizData.h"
#include "CBridge.h"
#include "InterfaceRecords.h"

#include <map>
#include <memory>
#include <vector>

namespace qel {

class CAudioExtParamHostBridge;
class CAudioExtParamList;
class CAudioParamCollector;
class CAudioParamRegistry;
class CAudioVizCollector;

// Tag audio:interface-base; one per instance, owned by its tree, and the undo store of the instance.
// Attributes: base-connector, param-collector, viz-collector, undo-count-max.
//
// Acts on the requests of clients in their thread, and tells all clients of changes in the thread that made
// them. The truth about parameters, presets and history is on this side; clients mirror it. An answer goes to
// the client that asked. What clients send is outside data: a request that fails changes nothing and is
// reported to the caller.
class CAudioInterfaceBase : public CAudioParamUndo, public CAudioInterfaceRecordHandler
{
public:
    static void buildClassInfo(CClassInfo& info);

    CAudioInterfaceBase();
    ~CAudioInterfaceBase() override;

    CError init() override;
    void release() override;

    // --- control threads

    // Who reaches the host; null for nobody. `params` says which of its parameters a control moves.
    void setHost(CAudioExtParamHostBridge* host, CAudioExtParamList* params);
    // Tells all clients of another rate or layout.
    void setEnvironment(const record::CEnvironment& environment);
    // All clients drop what they mirror.
    void clearClients();

protected:
    void onHistoryChanged() override;

private:
    CError processRecord(std::int32_t client, const CByteBuffer& bytes) override;
    void onClientGone(std::int32_t client) override;

    static constexpr std::int32_t kAll = CAudioInterfaceBaseConnector::kAllClients;

    class CParamListener : public CAudioParamListener
    {
    public:
        explicit CParamListener(CAudioInterfaceBase& owner) : owner_(owner) {}
        ~CParamListener() override { endLink(); }
        void onParamChange(const CAudioParamNotice& notice) override { owner_.onParamChange(*notice.param); }

    private:
        CAudioInterfaceBase& owner_;
    };
    // One for each registry that a client has asked for.
    class CRegistryListener : public CBridge
    {
    public:
        CRegistryListener(CAudioInterfaceBase& owner, CAudioParamRegistry& registry);
        ~CRegistryListener() override { endLink(); }
        void update(CBridge*, std::uintptr_t) override { owner_.sendRegistryState(kAll, registry_); }
        const CAudioParamRegistry& getRegistry() const { return registry_; }

    private:
        CAudioInterfaceBase& owner_;
        CAudioParamRegistry& registry_;
    };

    template <class Record>
    void send(std::int32_t client, const Record& record)
    {
        connector_->sendToClients(client, encodeRecord(record));
    }
    CError handle(std::int32_t client, const record::CGetState& request);
    CError handle(std::int32_t client, const record::CGetParam& request);
    CError handle(std::int32_t client, const record::CChangeParams& request);
    CError handle(std::int32_t client, const record::CResetParams& request);
    CError handle(std::int32_t client, const record::CEdit& request);
    CError handle(std::int32_t client, const record::CGetRegistry& request);
    CError handle(std::int32_t client, const record::CRegistryCommand& request);
    CError handle(std::int32_t client, const record::CSetProgramName& request);
    CError handle(std::int32_t client, const record::CEditPrograms& request);
    CError handle(std::int32_t client, const record::CActivateData& request);
    CError handle(std::int32_t client, const record::CAcquireData& request);
    CError handle(std::int32_t client, const record::CMoveHistory& request);
    CError handle(std::int32_t client, const record::CListenViz& request);
    CError handle(std::int32_t client, const record::CGetViz& request);
    CError handle(std::int32_t client, const record::CImportChannelLabels& request);

    CError getRegistry(const CString& path, CAudioParamRegistry*& out);
    // False if the parameter takes no such values.
    bool write(const record::CParamWrite& write, CAudioParamContext& context);
    void writeTextsAgain(const record::CChangeParams& request, CAudioParamUndoStep& step);
    void onParamChange(CAudioParam& param);
    void sendHistory(std::int32_t client);
    void sendRegistryState(std::int32_t client, CAudioParamRegistry& registry);

    CString connectorPath_;
    CString paramsPath_;
    CString vizPath_;
    CAudioInterfaceBaseConnector* connector_ = nullptr;
    CAudioParamCollector* params_ = nullptr;
    CAudioVizCollector* viz_ = nullptr;
    CAudioExtParamHostBridge* host_ = nullptr;
    CAudioExtParamList* extParams_ = nullptr;
    CParamListener paramListener_{*this};

    CCriticalSection lock_; // guards what follows
    record::CEnvironment environment_;
    std::vector<std::unique_ptr<CRegistryListener>> registryListeners_;
    std::map<std::int32_t, std::vector<std::int32_t>> vizListens_; // client -> sources, one entry a listener
    std::vector<CAudioVizDataMeter> vizData_;
};

} // namespace qel
