// The UI side of the conversation with an instance.
#include "CAudioInterfaceClient.h"

#include <algorithm>

namespace qel {

void CAudioInterfaceClient::buildClassInfo(CClassInfo& info)
{
    using Self = CAudioInterfaceClient;
    CObject::buildClassInfo(info);
    info.bind<&Self::connectorPath_>("client-connector", "");
    info.handleEvent<&Self::onImportChannelLabels>("import-channel-labels");
}

CError CAudioInterfaceClient::init()
{
    QEL_TRY(CObject::init(), getFullName());
    QEL_TRY(require(connector_, connectorPath_,
                    "@qelstr_CAudioInterfaceClient_init_NoClientConnector No client connector '%1' found."),
            getFullName());
    connector_->setClient(this);
    QEL_TRY(send(record::CGetState{}), getFullName());
    return {};
}

void CAudioInterfaceClient::release()
{
    if (connector_) {
        connector_->setClient(nullptr);
    }
    CObject::release();
}

CError CAudioInterfaceClient::onImportChannelLabels(const CAttrMap&)
{
    return send(record::CImportChannelLabels{});
}

void CAudioInterfaceClient::takeWaiting()
{
    traceError(connector_->onProcessBaseData({}));
}

const CAudioInterfaceParam& CAudioInterfaceClient::watchParam(const CString& param)
{
    const auto [entry, isNew] = params_.try_emplace(param);
    if (isNew) {
        traceError(send(record::CGetParam{param}));
    }
    return entry->second.param;
}

const CAudioInterfaceParam* CAudioInterfaceClient::findParam(const CString& param) const
{
    const auto entry = params_.find(param);
    return entry == params_.end() ? nullptr : &entry->second.param;
}

void CAudioInterfaceClient::addParamListener(const CString& param, CAudioInterfaceParamListener& listener)
{
    params_[param].listeners.push_back(&listener);
    if (!params_[param].param.isKnown) {
        traceError(send(record::CGetParam{param}));
    }
}

void CAudioInterfaceClient::removeParamListener(CAudioInterfaceParamListener& listener)
{
    for (auto& [name, entry] : params_) {
        std::erase(entry.listeners, &listener);
    }
}

void CAudioInterfaceClient::addRegistryListener(CAudioInterfaceRegistryListener& listener)
{
    registryListeners_.push_back(&listener);
}

void CAudioInterfaceClient::removeRegistryListener(CAudioInterfaceRegistryListener& listener)
{
    std::erase(registryListeners_, &listener);
}

CError CAudioInterfaceClient::processRecord(const CByteBuffer& bytes)
{
    std::uint32_t type = 0;
    bool isKnown = false;
    QEL_TRY(dispatchRecord(record::ToClient{}, bytes, type, isKnown,
                           [this](const auto& record) { return handle(record); }),
            getFullName());
    if (!isKnown) {
        QEL_FAIL(getFullName(),
                 "@qelstr_CAudioInterfaceClient_processRecord_InvalidType Invalid data type %1.", type);
    }
    return {};
}

template <class Call>
void CAudioInterfaceClient::forRegistryListeners(Call&& call)
{
    // One that is told may take itself or another out.
    for (CAudioInterfaceRegistryListener* listener : std::vector(registryListeners_)) {
        if (std::find(registryListeners_.begin(), registryListeners_.end(), listener) !=
            registryListeners_.end()) {
            call(*listener);
        }
    }
}

void CAudioInterfaceClient::tellParamListeners(const CString& param)
{
    for (CAudioInterfaceParamListener* listener : std::vector(params_[param].listeners)) {
        const auto& present = params_[param].listeners;
        if (std::find(present.begin(), present.end(), listener) != present.end()) {
            listener->onParamUpdate(param);
        }
    }
}

CError CAudioInterfaceClient::handle(const record::CHistoryState& state)
{
    history_ = state;
    forRegistryListeners([&](CAudioInterfaceRegistryListener& listener) { listener.onHistoryState(state); });
    QEL_TRY(notify("undo-history-changed", {}, false), getFullName());
    return {};
}

CError CAudioInterfaceClient::loadValues(const CByteBuffer& bytes, CAudioParamStorage& values)
{
    CMemoryReader reader(bytes.bytes());
    QEL_TRY(values.load(reader), {});
    return checkRecordEnd(reader);
}

CError CAudioInterfaceClient::handle(const record::CParamState& state)
{
    CAudioInterfaceParam param;
    param.isKnown = true;
    if (!state.info.isEmpty()) {
        CMemoryReader reader(state.info.bytes());
        QEL_TRY(param.info.load(reader), getFullName());
        param.values.fillWithDefaults(param.info);
        QEL_TRY(loadValues(state.values, param.values), getFullName());
    }
    params_[state.param].param = std::move(param);
    tellParamListeners(state.param);
    return {};
}

CError CAudioInterfaceClient::handle(const record::CParamValues& values)
{
    const auto entry = params_.find(values.param);
    if (entry == params_.end()) {
        return {}; // nobody here wants to know
    }
    CAudioInterfaceParam& param = entry->second.param;
    if (!param.info.valid) {
        // Declared since it was asked for.
        return send(record::CGetParam{values.param});
    }
    CAudioParamStorage loaded = param.values;
    QEL_TRY(loadValues(values.values, loaded), getFullName());
    param.values = std::move(loaded);
    tellParamListeners(values.param);
    return {};
}

CError CAudioInterfaceClient::handle(const record::CRegistryState& state)
{
    forRegistryListeners([&](CAudioInterfaceRegistryListener& listener) { listener.onRegistryState(state); });
    return {};
}

CError CAudioInterfaceClient::handle(const record::CRegistryData& data)
{
    forRegistryListeners([&](CAudioInterfaceRegistryListener& listener) { listener.onRegistryData(data); });
    return {};
}

CError CAudioInterfaceClient::handle(const record::CVizSource& source)
{
    if (vizProcessor_) {
        vizProcessor_->onVizSource(source.source, source.id);
    }
    return {};
}

CError CAudioInterfaceClient::handle(const record::CVizData& batch)
{
    CMemoryReader reader(batch.data.bytes());
    for (std::int32_t i = 0; i < batch.count; ++i) {
        std::unique_ptr<CAudioVizData> data;
        QEL_TRY(CAudioVizData::load(reader, data), getFullName());
        if (vizProcessor_) {
            vizProcessor_->onVizData(*data);
        }
    }
    return {};
}

CError CAudioInterfaceClient::handle(const record::CEnvironment& environment)
{
    const record::CEnvironment old = environment_;
    environment_ = environment;
    const auto raise = [this](bool isChanged, const char* event) {
        return isChanged ? notify(event, {}, false) : CError();
    };
    QEL_TRY(raise(old.sampleRateHz != environment.sampleRateHz, "update-sample-rate"), getFullName());
    QEL_TRY(raise(old.hostInputs != environment.hostInputs || old.hostOutputs != environment.hostOutputs,
                  "update-io-channel-counts"),
            getFullName());
    QEL_TRY(raise(old.groups != environment.groups, "update-group-count"), getFullName());
    QEL_TRY(raise(old.internalChannels != environment.internalChannels, "update-internal-channel-count"),
            getFullName());
    return {};
}

CError CAudioInterfaceClient::handle(const record::CClear&)
{
    for (auto& [name, entry] : params_) {
        entry.param.isKnown = false;
        traceError(send(record::CGetParam{name}));
    }
    return notify("clear", {}, false);
}

} // namespace qel
