// The UI side of the conversation with an instance.
#pragma once

#include "CAudioInterfaceClientConnector.h"
#include "CAudioInterfaceListeners.h"
#include "CAudioParamInfo.h"
#include "CAudioParamStorage.h"

#include <memory>
#include <vector>

namespace qel {

// A parameter as the user interface knows it.
struct CAudioInterfaceParam
{
    CAudioParamInfo info; // `valid` when the audio side has declared it
    CAudioParamStorage values;
    bool isKnown = false; // the audio side has answered
};

// Tag audio:interface-client; in the UI tree, on its thread alone. Attribute: client-connector. Sends
// requests and mirrors what comes back; a request has no result but what the listeners receive. Raises the
// events "update-sample-rate", "update-io-channel-counts", "update-internal-channel-count",
// "update-group-count" and "clear" in its own name. Takes "import-channel-labels": the inputs get the names
// that the host has for them.
//
// Asks for environment and history when it starts. Parameters are mirrored from the first call of
// watchParam() on.
class CAudioInterfaceClient : public CObject
{
public:
    static void buildClassInfo(CClassInfo& info);

    CError init() override;
    void release() override;

    // Any record of the group "client to base".
    template <class Record>
    CError send(const Record& record)
    {
        return connector_->send(record);
    }

    // Acts at once on what has arrived, rather than when the tree's loop brings it. Listeners are told
    // meanwhile.
    void takeWaiting();

    // Mirrors a parameter. The reference stays valid as long as the client.
    const CAudioInterfaceParam& watchParam(const CString& param);
    // Null if it was never watched.
    const CAudioInterfaceParam* findParam(const CString& param) const;
    const record::CEnvironment& getEnvironment() const { return environment_; }
    const record::CHistoryState& getHistory() const { return history_; }

    // Listeners of one parameter; it is watched from then on.
    void addParamListener(const CString& param, CAudioInterfaceParamListener& listener);
    void removeParamListener(CAudioInterfaceParamListener& listener);
    void addRegistryListener(CAudioInterfaceRegistryListener& listener);
    void removeRegistryListener(CAudioInterfaceRegistryListener& listener);
    void setVizProcessor(CAudioInterfaceVizProcessor* processor) { vizProcessor_ = processor; }

    // For the connector. A record that fails changes nothing.
    CError processRecord(const CByteBuffer& bytes);

private:
    struct ParamEntry
    {
        CAudioInterfaceParam param;
        std::vector<CAudioInterfaceParamListener*> listeners;
    };

    CError onImportChannelLabels(const CAttrMap& parameters);

    CError handle(const record::CHistoryState& state);
    CError handle(const record::CParamState& state);
    CError handle(const record::CParamValues& values);
    CError handle(const record::CRegistryState& state);
    CError handle(const record::CRegistryData& data);
    CError handle(const record::CVizSource& source);
    CError handle(const record::CVizData& batch);
    CError handle(const record::CEnvironment& environment);
    CError handle(const record::CClear&);

    static CError loadValues(const CByteBuffer& bytes, CAudioParamStorage& values);
    // From a copy, since listeners may come and go while they are told.
    void tellParamListeners(const CString& param);
    template <class Call>
    void forRegistryListeners(Call&& call);

    CString connectorPath_;
    CAudioInterfaceClientConnector* connector_ = nullptr;
    CStringMap<ParamEntry> params_;
    std::vector<CAudioInterfaceRegistryListener*> registryListeners_;
    CAudioInterfaceVizProcessor* vizProcessor_ = nullptr;
    record::CEnvironment environment_;
    record::CHistoryState history_;
};

} // namespace qel
