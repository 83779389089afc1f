// The audio side of the conversation with the user interface.
#include "CAudioInterfaceBase.h"

#include "CAudioExtParamHostBridge.h"
#include "CAudioExtParamList.h"
#include "CAudioParamCollector.h"
#include "CAudioParamRegistry.h"
#include "CAudioVizCollector.h"

#include <algorithm>

namespace qel {

namespace {

template <class Save>
CByteBuffer bytesOf(Save&& save)
{
    CMemoryWriteBuffer stream;
    CByteBuffer bytes;
    if (!save(stream)) {
        stream.copyTo(bytes);
    }
    return bytes;
}

// With the parameter's lock held.
CByteBuffer valuesOf(const CAudioParam& param)
{
    return bytesOf([&](COutputStream& stream) { return param.getCurrent().save(stream); });
}

} // namespace

CAudioInterfaceBase::CRegistryListener::CRegistryListener(CAudioInterfaceBase& owner,
                                                          CAudioParamRegistry& registry)
    : owner_(owner), registry_(registry)
{
    attach(&registry);
}

CAudioInterfaceBase::CAudioInterfaceBase() = default;

CAudioInterfaceBase::~CAudioInterfaceBase() = default;

void CAudioInterfaceBase::buildClassInfo(CClassInfo& info)
{
    using Self = CAudioInterfaceBase;
    CAudioParamUndo::buildClassInfo(info);
    info.bind<&Self::connectorPath_>("base-connector", "");
    info.bind<&Self::paramsPath_>("param-collector", "");
    info.bind<&Self::vizPath_>("viz-collector", "");
}

CError CAudioInterfaceBase::init()
{
    QEL_TRY(CAudioParamUndo::init(), getFullName());
    QEL_TRY(require(connector_, connectorPath_,
                    "@qelstr_CAudioInterfaceBase_init_NoBaseConnector No base connector '%1' found."),
            getFullName());
    QEL_TRY(require(params_, paramsPath_,
                    "@qelstr_CAudioInterfaceBase_init_NoParamCollector No parameter collector '%1' found."),
            getFullName());
    QEL_TRY(require(viz_, vizPath_,
                    "@qelstr_CAudioInterfaceBase_init_NoVizCollector No visual object collector '%1' found."),
            getFullName());
    connector_->setBase(this);
    paramListener_.attach(params_);
    return {};
}

void CAudioInterfaceBase::release()
{
    paramListener_.attach(nullptr);
    registryListeners_.clear();
    if (connector_) {
        connector_->setBase(nullptr);
    }
    CAudioParamUndo::release();
}

void CAudioInterfaceBase::setHost(CAudioExtParamHostBridge* host, CAudioExtParamList* params)
{
    host_ = host;
    extParams_ = params;
}

void CAudioInterfaceBase::setEnvironment(const record::CEnvironment& environment)
{
    const CLock lock(lock_);
    environment_ = environment;
    send(kAll, environment_);
}

void CAudioInterfaceBase::clearClients()
{
    send(kAll, record::CClear{});
}

CError CAudioInterfaceBase::processRecord(std::int32_t client, const CByteBuffer& bytes)
{
    std::uint32_t type = 0;
    bool isKnown = false;
    QEL_TRY(dispatchRecord(record::ToBase{}, bytes, type, isKnown,
                           [&](const auto& request) { return handle(client, request); }),
            getFullName());
    if (!isKnown) {
        QEL_FAIL(getFullName(),
                 "@qelstr_CAudioInterfaceBaseConnector_processClientData_InvalidType Invalid data type %1.",
                 type);
    }
    return {};
}

void CAudioInterfaceBase::onClientGone(std::int32_t client)
{
    std::vector<std::int32_t> sources;
    {
        const CLock lock(lock_);
        sources.swap(vizListens_[client]);
    }
    for (const std::int32_t source : sources) {
        viz_->removeListener(source);
    }
}

CError CAudioInterfaceBase::handle(std::int32_t client, const record::CGetState&)
{
    {
        const CLock lock(lock_);
        send(client, environment_);
    }
    sendHistory(client);
    return {};
}

CError CAudioInterfaceBase::handle(std::int32_t client, const record::CGetParam& request)
{
    CAudioParam& param = params_->getParam(request.param);
    // Sent within the lock, as all values are, so that a later value never arrives first.
    const CLock lock(param.getLock());
    record::CParamState state{.param = request.param, .info = {}, .values = {}};
    if (param.hasInfo()) {
        state.info = bytesOf([&](COutputStream& stream) { return param.getInfo().save(stream); });
        state.values = valuesOf(param);
    }
    send(client, state);
    return {};
}

bool CAudioInterfaceBase::write(const record::CParamWrite& write, CAudioParamContext& context)
{
    CAudioParam& param = params_->getParam(write.param);
    const CLock lock(param.getLock());
    if (!param.hasInfo() || write.start < 0 || write.start > CAudioParamStorage::kMaxEntries) {
        return false;
    }
    const CAudioParamStorage& current = param.getCurrent();
    CAudioParamData pool;
    std::vector<double> values;
    // A list may be shorter here than the client knows it: what is missing in front is written as it reads.
    const std::int32_t start = std::min(write.start, current.getCount(write.group));
    for (std::int32_t entry = start; entry < write.start; ++entry) {
        for (std::int32_t element = 0; element < current.getEsize(); ++element) {
            values.push_back(current.isString() ? pool.addString(current.getString(write.group, entry))
                                                : current.get(write.group, entry, element));
        }
    }
    if (current.isString()) {
        for (const CString& text : write.texts) {
            values.push_back(pool.addString(text));
        }
    } else {
        values.insert(values.end(), write.values.begin(), write.values.end());
    }
    const auto count = static_cast<std::int32_t>(values.size()) / current.getEsize();
    return param.change({.group = write.group,
                         .start = start,
                         .count = count,
                         .resize = write.resize,
                         .esize = current.getEsize(),
                         .dtype = current.getDtype(),
                         .reserved = current.getReserved(),
                         .values = values.data(),
                         .pool = &pool},
                        context);
}

CError CAudioInterfaceBase::handle(std::int32_t client, const record::CChangeParams& request)
{
    // The source only has to differ between controls; clients count theirs apart.
    const auto key =
        (static_cast<std::uintptr_t>(client + 1) << 24) + static_cast<std::uintptr_t>(request.source);
    CAudioParamUndoStep step(request.stepName, reinterpret_cast<const void*>(key), request.mergeable);
    params_->takeChangesFromAudio(); // or the step would hold values of before
    CAudioParamContext context;
    context.recorder = &step;
    context.batch = &params_->newBatch();
    CError error;
    {
        // Its end lets registries add what follows from the writes to the step.
        const CAudioParamContext::Scope scope(context);
        const auto isRefused = [&](const record::CParamWrite& one) { return !write(one, context); };
        const auto refused = std::find_if(request.writes.begin(), request.writes.end(), isRefused);
        if (refused == request.writes.end()) {
            params_->submitBatch(*context.batch);
        } else {
            error = makeError(__FILE__, __LINE__, getFullName(),
                              "@qelstr_CAudioInterfaceBase_changeParams_Refused Parameter '%1' does not take "
                              "these values.",
                              refused->param);
            params_->dropBatch(*context.batch);
        }
        context.batch = nullptr;
    }
    if (error) {
        CAudioParamContext back(CAudioParamOrigin::kActivation);
        step.undo(back);
        return error;
    }
    writeTextsAgain(request, step);
    if (!request.stepName.isEmpty()) {
        addStep(std::move(step));
    }
    return {};
}

// The name of a preset follows the parameters that were set by it. Where it is written with them, that
// counts.
void CAudioInterfaceBase::writeTextsAgain(const record::CChangeParams& request, CAudioParamUndoStep& step)
{
    CAudioParamContext context;
    context.recorder = &step;
    const CAudioParamContext::Scope scope(context);
    for (const record::CParamWrite& one : request.writes) {
        const CAudioParam& param = params_->getParam(one.param);
        std::int32_t entry = one.start;
        const auto isOther = [&](const CString& text) { return param.getString(one.group, entry++) != text; };
        if (std::ranges::any_of(one.texts, isOther)) {
            write(one, context);
        }
    }
}

CError CAudioInterfaceBase::handle(std::int32_t, const record::CResetParams& request)
{
    params_->takeChangesFromAudio();
    CAudioParamUndoStep step(request.stepName);
    CAudioParamContext context;
    context.recorder = request.stepName.isEmpty() ? nullptr : &step;
    context.batch = &params_->newBatch();
    {
        const CAudioParamContext::Scope scope(context);
        for (const CString& name : request.params) {
            CAudioParam& param = params_->getParam(name);
            if (request.toInitial) {
                param.reset(request.group, request.entry, context);
            } else {
                param.clearToDefault(request.group, request.entry, context);
            }
        }
        params_->submitBatch(*context.batch);
    }
    addStep(std::move(step));
    return {};
}

CError CAudioInterfaceBase::handle(std::int32_t, const record::CEdit& request)
{
    if (!host_ || !extParams_) {
        return {};
    }
    const std::int32_t index =
        extParams_->find(params_->getParam(request.param), request.group, request.element);
    if (index >= 0 && request.begins) {
        host_->beginEdit(index);
    } else if (index >= 0) {
        host_->endEdit(index);
    }
    return {};
}

CError CAudioInterfaceBase::getRegistry(const CString& path, CAudioParamRegistry*& out)
{
    return require(out, path,
                   "@qelstr_CAudioInterfaceBaseConnector_getRegistry_NoParamRegistry No param registry "
                   "object '%1' found.");
}

CError CAudioInterfaceBase::handle(std::int32_t client, const record::CGetRegistry& request)
{
    CAudioParamRegistry* registry = nullptr;
    QEL_TRY(getRegistry(request.registry, registry), getFullName());
    {
        const CLock lock(lock_);
        const bool isKnown = std::any_of(registryListeners_.begin(), registryListeners_.end(),
                                         [&](const auto& one) { return &one->getRegistry() == registry; });
        if (!isKnown) {
            registryListeners_.push_back(std::make_unique<CRegistryListener>(*this, *registry));
        }
    }
    sendRegistryState(client, *registry);
    return {};
}

CError CAudioInterfaceBase::handle(std::int32_t, const record::CRegistryCommand& request)
{
    using Command = record::CRegistryCommand;
    CAudioParamRegistry* registry = nullptr;
    QEL_TRY(getRegistry(request.registry, registry), getFullName());
    switch (request.command) {
    case Command::kSetProgram:
        return registry->setProgram(request.index);
    case Command::kActivateROMPreset:
        return registry->activateROMPreset(request.index);
    case Command::kMasterReset:
        registry->masterReset();
        return {};
    case Command::kABStore:
        return registry->abStore();
    case Command::kABSwap:
        return registry->abSwap();
    default:
        break;
    }
    QEL_FAIL(getFullName(), "@qelstr_CAudioInterfaceBase_InvalidCommand Invalid registry command %1.",
             request.command);
}

CError CAudioInterfaceBase::handle(std::int32_t, const record::CSetProgramName& request)
{
    CAudioParamRegistry* registry = nullptr;
    QEL_TRY(getRegistry(request.registry, registry), getFullName());
    registry->setProgramName(request.index, request.name, true);
    return {};
}

CError CAudioInterfaceBase::handle(std::int32_t, const record::CEditPrograms& request)
{
    using Command = record::CEditPrograms;
    CAudioParamRegistry* registry = nullptr;
    QEL_TRY(getRegistry(request.registry, registry), getFullName());
    CMemoryReader body(request.body.bytes());
    switch (request.command) {
    case Command::kAdd:
        return registry->addProgram(request.index, body);
    case Command::kDelete:
        return registry->removeProgram(request.index);
    case Command::kReplace:
        return registry->replaceProgram(request.index, body);
    case Command::kMove:
        return registry->moveProgram(request.index, request.target);
    default:
        break;
    }
    QEL_FAIL(getFullName(), "@qelstr_CAudioInterfaceBase_InvalidCommand Invalid registry command %1.",
             request.command);
}

CError CAudioInterfaceBase::handle(std::int32_t, const record::CActivateData& request)
{
    CAudioParamRegistry* registry = nullptr;
    QEL_TRY(getRegistry(request.registry, registry), getFullName());
    CMemoryReader reader(request.body.bytes());
    return request.isBank ? registry->activateBank(reader, false)
                          : registry->activatePreset(reader, false, request.group);
}

CError CAudioInterfaceBase::handle(std::int32_t client, const record::CAcquireData& request)
{
    CAudioParamRegistry* registry = nullptr;
    QEL_TRY(getRegistry(request.registry, registry), getFullName());
    CMemoryWriteBuffer stream;
    QEL_TRY(request.isBank ? registry->acquireBank(request.fromROM, stream, request.withPersistent)
                           : registry->acquirePreset(request.fromROM, request.index, request.group, stream,
                                                     request.withPersistent),
            getFullName());
    record::CRegistryData answer{
        .registry = request.registry, .request = request.request, .isBank = request.isBank, .body = {}};
    stream.copyTo(answer.body);
    send(client, answer);
    return {};
}

CError CAudioInterfaceBase::handle(std::int32_t, const record::CMoveHistory& request)
{
    params_->takeChangesFromAudio();
    moveTo(request.position);
    return {};
}

CError CAudioInterfaceBase::handle(std::int32_t client, const record::CListenViz& request)
{
    const std::int32_t id = viz_->findSource(request.source);
    bool isCounted = id >= 0;
    if (isCounted) {
        const CLock lock(lock_);
        std::vector<std::int32_t>& listens = vizListens_[client];
        if (request.listens) {
            listens.push_back(id);
        } else {
            const auto found = std::find(listens.begin(), listens.end(), id);
            isCounted = found != listens.end();
            if (isCounted) {
                listens.erase(found);
            }
        }
    }
    if (isCounted && request.listens) {
        viz_->addListener(id);
    } else if (isCounted) {
        viz_->removeListener(id);
    }
    send(client, record::CVizSource{.source = request.source, .id = id});
    return {};
}

// This is the clock of a window, so it also brings there what the host's automation has done.
CError CAudioInterfaceBase::handle(std::int32_t, const record::CGetViz&)
{
    params_->takeChangesFromAudio();
    if (extParams_) {
        extParams_->showPosted();
    }
    const CLock lock(lock_);
    vizData_.clear();
    viz_->take(vizData_);
    if (!vizData_.empty()) {
        record::CVizData batch{.count = static_cast<std::int32_t>(vizData_.size()), .data = {}};
        batch.data = bytesOf([this](COutputStream& stream) {
            CError error;
            for (const CAudioVizDataMeter& data : vizData_) {
                error = data.save(stream);
            }
            return error;
        });
        send(kAll, batch);
    }
    return {};
}

CError CAudioInterfaceBase::handle(std::int32_t, const record::CImportChannelLabels&)
{
    if (host_) {
        host_->importChannelLabels();
    }
    return {};
}

void CAudioInterfaceBase::onParamChange(CAudioParam& param)
{
    if (connector_->hasClients()) {
        const CLock lock(param.getLock());
        send(kAll, record::CParamValues{.param = param.getName(), .values = valuesOf(param)});
    }
}

void CAudioInterfaceBase::onHistoryChanged()
{
    if (connector_ && connector_->hasClients()) {
        sendHistory(kAll);
    }
}

void CAudioInterfaceBase::sendHistory(std::int32_t client)
{
    const CLock lock(getLock());
    record::CHistoryState state;
    state.position = listSteps(state.steps);
    send(client, state);
}

void CAudioInterfaceBase::sendRegistryState(std::int32_t client, CAudioParamRegistry& registry)
{
    record::CRegistryState state{.registry = registry.getFullName(),
                                 .isMaster = registry.isMaster(),
                                 .program = registry.getProgram(),
                                 .programs = registry.listPresets(false),
                                 .romPresets = registry.listPresets(true),
                                 .isB = registry.isB()};
    send(client, state);
}

} // namespace qel
