// The host-independent half of one plug-in instance.
#include "CAudioWrapper.h"

#include "CApplication.h"
#include "CAudioCCTable.h"
#include "CAudioEnv.h"
#include "CAudioExtParamList.h"
#include "CAudioGlobalParam.h"
#include "CAudioInterfaceBase.h"
#include "CAudioParam.h"
#include "CAudioParamCollector.h"
#include "CAudioParamRegistry.h"
#include "CAudioParamUndoStep.h"
#include "CAudioProcessOverlap.h"
#include "CAudioVizCollector.h"
#include "CDCDAWContextObject.h"
#include "CModOutput.h"
#include "CModResampler.h"
#include "Definitions/CAudioProcessDef.h"
#include "NumberSyntax.h"

#include <algorithm>
#include <cmath>

namespace qel {

namespace {

constexpr const char* kMainName = "plugin.modMain";
constexpr const char* kOutputName = "plugin.modOutput";
constexpr const char* kLevelSetting = "oversampling-level";
constexpr const char* kRoutingName = "plugin.modMain.io-params.in-routing";
constexpr const char* kGroupingName = "plugin.modMain.io-params.grouping";
constexpr int kOfflineLevel = 4;

// What two channels take at the most: with everything on at the highest rate, while all of it fades to other
// settings under an overlap. And what each further channel takes. Both with a little to spare; the tests of
// the audio thread tell when they no longer do.
constexpr std::size_t kUsualBytes = 396 * 1024;
constexpr std::size_t kFurtherChannelBytes = 200 * 1024;

} // namespace

CAudioWrapper::CAudioWrapper() = default;

CAudioWrapper::~CAudioWrapper()
{
    paramListener_.detach();
    levelBridge_.detach();
    globalParams_.clear();
    if (extParams_) {
        extParams_->setHostBridge(nullptr);
        interfaceBase_->setHost(nullptr, nullptr);
    }
    state_.reset();
    stream_.reset();
    output_.release();
    main_.release();
    graph_.reset();
    if (CApplication* application = CApplication::get()) {
        application->releaseRootObject(root_);
    }
}

// --- building

CError CAudioWrapper::init()
{
    CApplication* application = CApplication::get();
    if (!application) {
        QEL_FAIL({}, "@qelstr_CAudioWrapper_init_NoApp No application object created.");
    }
    QEL_TRY(application->initRootObject(root_), {});
    CObject* created = nullptr;
    QEL_TRY(root_->createChild(created, "plugin", "plugin", true), {});
    QEL_TRY(root_->require(plugin_, "plugin",
                           "@qelstr_CAudioWrapper_init_PluginTree "
                           "Plug-in tree object with the name 'plugin' is required."),
            {});
    hasSidechain_ = plugin_->getAttrBool("sidechain");
    QEL_TRY(initProject(), {});
    QEL_TRY(findObjects(), {});
    state_ =
        std::make_unique<CAudioHostState>(*registry_, *params_, *extParams_, [this] { programChanged(); });
    params_->beginBuilding();
    findHostParams();
    QEL_TRY(buildProcesses(), {});
    findLatencies();
    bindGlobalParams();
    extParams_->setHostBridge(this);
    return {};
}

CError CAudioWrapper::initProject()
{
    CObject* project = nullptr;
    QEL_TRY(root_->require(project, "shared::project",
                           "@qelstr_CAudioWrapper_init_ProjectRoot "
                           "Shared project root 'shared::project' object is required."),
            {});
    QEL_TRY(identity_.read(*project), {});
    return {};
}

CError CAudioWrapper::findObjects()
{
    QEL_TRY(root_->require(context_, "plugin.dcdaw-context",
                           "@qelstr_CAudioWrapper_init_ContextObject "
                           "No valid DCDAW context object with the name 'plugin.dcdaw-context' defined."),
            {});
    QEL_TRY(root_->require(env_, "plugin.audio-env",
                           "@qelstr_CAudioWrapper_init_AudioEnv "
                           "No valid env object with the name 'plugin.audio-env' defined."),
            {});
    QEL_TRY(
        root_->require(params_, "plugin.param-collector",
                       "@qelstr_CAudioWrapper_init_ParamCollector "
                       "No valid parameter collector object with the name 'plugin.param-collector' defined."),
        {});
    QEL_TRY(root_->require(
                viz_, "plugin.viz-collector",
                "@qelstr_CAudioWrapper_init_VizCollector "
                "No valid visual object collector object with the name 'plugin.viz-collector' defined."),
            {});
    QEL_TRY(root_->require(
                interfaceBase_, "plugin.interface-base",
                "@qelstr_CAudioWrapper_init_InterfaceBase "
                "No valid interface base collector object with the name 'plugin.interface-base' defined."),
            {});
    QEL_TRY(
        root_->require(extParams_, "plugin.ext-param-list",
                       "@qelstr_CAudioWrapper_init_ExtParamList "
                       "No valid CAudioExtParamList* object with the name 'plugin.ext-param-list' defined."),
        {});
    QEL_TRY(root_->require(ccTable_, "plugin.cctable",
                           "@qelstr_CAudioWrapper_init_CCTable "
                           "No valid CAudioCCTable* object with the name 'plugin.cctable' defined."),
            {});
    QEL_TRY(
        root_->require(registry_, "plugin.param-registry",
                       "@qelstr_CAudioWrapper_init_ParamRegistry "
                       "No valid parameter registry object with the name 'plugin.param-registry' defined."),
        {});
    QEL_TRY(root_->require(mainDef_, "shared::audio.modMain",
                           "@qelstr_CAudioWrapper_init_NoMainProcessDef "
                           "No main process definition object with the name 'shared::audio.modMain' found."),
            {});
    QEL_TRY(
        root_->require(outputDef_, "shared::audio.modOutput",
                       "@qelstr_CAudioWrapper_init_NoOutProcessDef "
                       "No output process definition object with the name 'shared::audio.modOutput' found."),
        {});
    return {};
}

void CAudioWrapper::findHostParams()
{
    hostParams_[kOversampling] = &params_->getParam("plugin.modMain.oversampling");
    hostParams_[kOversamplingMode] = &params_->getParam("plugin.modMain.host-oversampling-mode");
    hostParams_[kOffline] = &params_->getParam("plugin.modMain.host-offline");
    hostParams_[kLatencyChange] = &params_->getParam("plugin.modMain.host-latency-change");
    hostParams_[kBpm] = &params_->getParam("plugin.modMain.host-bpm");
    hostParams_[kBypass] = &params_->getParam("plugin.modMain.modBypass.enable");
    routing_ = &params_->getParam(kRoutingName);
    grouping_ = &params_->getParam(kGroupingName);
}

CError CAudioWrapper::buildProcesses()
{
    graph_.reset(new CAudioGraph{*context_->context(), *params_, viz_});
    QEL_TRY(main_.build(*graph_, *mainDef_, kMainName), {});
    QEL_TRY(output_.build(*graph_, *outputDef_, kOutputName), {});
    auto* const output = dynamic_cast<CModOutput*>(output_.root());
    if (!output) {
        QEL_FAIL({}, "@qelstr_CAudioWrapper_init_InvalidOutProcessType Output process object "
                     "'shared::audio.modOutput' is not of required 'CModOutput' type.");
    }
    stream_ = std::make_unique<CAudioHostStream>(*graph_, *main_.root(), *output, hasSidechain_);
    return {};
}

// Nothing but the filters of the rate changes makes the stream late, and theirs are fixed.
void CAudioWrapper::findLatencies()
{
    const auto* overlap = dynamic_cast<const CAudioProcessOverlap*>(main_.root());
    const CAudioProcess* main =
        overlap ? &overlap->running() : dynamic_cast<const CAudioProcess*>(main_.root());
    for (const char* name : {"modUpsampler", "modDownsampler"}) {
        if (const auto* resampler =
                main ? dynamic_cast<const CModResampler*>(main->findProcess(name)) : nullptr) {
            for (int stages = 0; stages <= kMaxOversamplingLevel; ++stages) {
                latencies_[stages] += resampler->latencySamples(stages);
            }
        }
    }
}

void CAudioWrapper::bindGlobalParams()
{
    CApplication& application = *CApplication::get();
    const auto bind = [&](const char* param, CApplicationData& store, const char* setting) {
        globalParams_.push_back(std::make_unique<CAudioGlobalParam>(*params_, param, store, setting));
    };
    bind("plugin.modMain.meter-rmstime", application.getLocalData(), "integration-time");
    bind("plugin.modMain.meter-releasetime", application.getLocalData(), "release-time");
    bind("plugin.modMain.meter-peaktime", application.getLocalData(), "peak-level-hold-time");
    bind("plugin.modMain.denorm-enable", application.getGlobalData(), "denorm-enable");
    levelBridge_.attachSetting(application.getGlobalData(), kLevelSetting);
    followOversamplingLevel(nullptr, 0);
}

// Auto oversampling needs a level that is the same offline, so that a render sounds like what was heard.
void CAudioWrapper::followOversamplingLevel(CBridge*, std::uintptr_t)
{
    const CString text = CApplication::get()->getGlobalData().loadString(kLevelSetting, "1");
    const std::int32_t level = std::clamp(parseInteger(text).value_or(1), 0, kMaxOversamplingLevel);
    CAudioParamContext context(CAudioParamOrigin::kHost);
    hostParams_[kOversamplingMode]->setValue(0, 0, 0, level, context);
}

CError CAudioWrapper::finishInit()
{
    interfaceBase_->setHost(this, extParams_);
    tellEnvironment();
    state_->attach();
    params_->finalize();
    QEL_TRY(registry_->startProgram(), {});
    params_->endBuilding();
    extParams_->refresh();
    prepareGraph();
    env_->setLatencySamples(expectedLatencySamples());
    setInitialDelay(env_->getLatencySamples());
    paramListener_.attach(params_);
    return {};
}

// --- what the audio thread is to do at its next block

template <class Change>
void CAudioWrapper::order(Change&& change)
{
    const CLock lock(env_->getLock());
    change(ordered_);
    mailbox_.put(ordered_);
}

CAudioHostSetup CAudioWrapper::clamped(const CAudioHostSetup& setup) const
{
    CAudioHostSetup result = setup;
    result.inputCount = std::clamp(setup.inputCount, 0, mostInputs_);
    result.outputCount = std::clamp(setup.outputCount, 0, mostOutputs_);
    result.sidechainCount = hasSidechain_ ? std::clamp(setup.sidechainCount, 0, result.inputCount) : 0;
    return result;
}

void CAudioWrapper::resume(const CAudioHostSetup& setup)
{
    provideMemory();
    order([&](CAudioHostMailbox::Order& order) {
        const CAudioHostSetup wanted = clamped(setup);
        const bool isNewLayout = wanted.inputCount != order.setup.inputCount ||
                                 wanted.sidechainCount != order.setup.sidechainCount ||
                                 wanted.outputCount != order.setup.outputCount;
        if (env_->takeRestart() || isNewLayout) {
            ++order.resetCount;
        }
        order.setup = wanted;
    });
    // What the host has set of a stopped effect counts for the latency as well.
    params_->takeChangesFromAudio();
    extParams_->showPosted();
    env_->setLatencySamples(expectedLatencySamples());
    setInitialDelay(env_->getLatencySamples());
    tellEnvironment();
}

void CAudioWrapper::suspend()
{
    order([](CAudioHostMailbox::Order& order) { ++order.resetCount; });
    interfaceBase_->clearClients();
}

void CAudioWrapper::setSampleRate(double rateHz)
{
    order([&](CAudioHostMailbox::Order& order) { order.setup.sampleRateHz = rateHz; });
    tellEnvironment();
}

void CAudioWrapper::setDefaultLayout(int inputCount, int outputCount)
{
    order([&](CAudioHostMailbox::Order& order) {
        order.setup.inputCount = inputCount;
        order.setup.outputCount = outputCount;
        order.setup = clamped(order.setup);
    });
}

void CAudioWrapper::announceLayout(int inputCount, int outputCount)
{
    env_->requestRestart();
    order([&](CAudioHostMailbox::Order& order) {
        mostInputs_ = std::clamp(inputCount, 0, kMaxChannels);
        mostOutputs_ = std::clamp(outputCount, 0, kMaxChannels);
        order.setup = clamped(order.setup);
    });
}

void CAudioWrapper::tellEnvironment()
{
    CAudioHostSetup setup;
    {
        const CLock lock(env_->getLock());
        setup = ordered_.setup;
    }
    interfaceBase_->setEnvironment({.sampleRateHz = setup.sampleRateHz,
                                    .hostInputs = setup.inputCount,
                                    .hostOutputs = setup.outputCount,
                                    .internalChannels = identity_.channelCount,
                                    .groups = identity_.groupCount});
}

// --- what the graph needs

// Before the first block that may need it, which is the first after a start.
void CAudioWrapper::provideMemory()
{
    if (!hasMemory_.exchange(true, std::memory_order_relaxed)) {
        context_->context()->memory().provide(kUsualBytes);
    }
}

// The audio side waits with a routing for the groups that it calls for.
void CAudioWrapper::prepareGraph()
{
    const CLock lock(prepareLock_);
    std::uint32_t groups = 0;
    int channels = 0;
    for (int channel = 0; channel < identity_.channelCount; ++channel) {
        if (std::lround(routing_->getValue(0, channel)) > 0) {
            const long group = std::lround(grouping_->getValue(0, channel));
            groups |= 1U << std::clamp(group, 0L, identity_.groupCount - 1L);
            ++channels;
        }
    }
    if (channels > preparedChannels_) {
        context_->context()->memory().provide(static_cast<std::size_t>(channels - preparedChannels_) *
                                              kFurtherChannelBytes);
        preparedChannels_ = channels;
    }
    if ((groups & ~preparedGroups_) != 0) {
        main_.root()->prepareGroups(groups & ~preparedGroups_);
        preparedGroups_ |= groups;
    }
}

// --- latency

std::int32_t CAudioWrapper::getLatencySamples() const
{
    return env_->getLatencySamples();
}

std::int32_t CAudioWrapper::expectedLatencySamples() const
{
    const auto read = [this](HostParam param) {
        return static_cast<int>(std::lround(hostParams_[param]->getValue(0, 0)));
    };
    const int mode = read(kOversampling); // 0: automatic, else the number of doublings plus one
    const int stages = mode == 0 ? read(kOversamplingMode) : mode - 1;
    return static_cast<std::int32_t>(std::lround(latencies_[std::clamp(stages, 0, kMaxOversamplingLevel)]));
}

// Hosts that ask once, before the first block or after a load, are to hear what the stream will have.
void CAudioWrapper::foreseeLatency()
{
    const std::int32_t latency = expectedLatencySamples();
    if (latency != env_->getLatencySamples()) {
        env_->setLatencySamples(latency);
        ioChanged();
    }
}

// While a state is loaded the host is told once, at its end.
void CAudioWrapper::onParamChange(const CAudioParamNotice& notice)
{
    if (notice.param == routing_ || notice.param == grouping_) {
        prepareGraph();
    }
    if ((notice.param == hostParams_[kOversampling] || notice.param == hostParams_[kOversamplingMode]) &&
        !isHostActivating()) {
        foreseeLatency();
    }
}

// --- state

CError CAudioWrapper::saveChunk(CByteBuffer& outBuffer, bool isPreset, bool withHeader)
{
    return state_->save(outBuffer, isPreset, withHeader);
}

CError CAudioWrapper::loadChunk(std::span<const std::uint8_t> data, bool isPreset, bool hasHeader)
{
    CError error = state_->load(data, isPreset, hasHeader);
    foreseeLatency();
    return error;
}

CError CAudioWrapper::activateProgram(std::int32_t index)
{
    CError error = state_->activateProgram(index);
    foreseeLatency();
    return error;
}

void CAudioWrapper::importChannelLabels()
{
    CAudioParam& names = params_->getParam("plugin.modMain.io-params.in-channel-names");
    const std::vector<CString> labels = hostChannelLabels();
    CAudioParamUndoStep step("Channel label import", this);
    CAudioParamContext context;
    context.recorder = &step;
    for (std::size_t i = 0; i < labels.size(); ++i) {
        names.setString(0, static_cast<std::int32_t>(i), labels[i], context);
    }
    interfaceBase_->addStep(std::move(step));
}

// --- audio thread

const CAudioHostSetup& CAudioWrapper::beginBlock()
{
    const std::uint32_t resetCount = active_.resetCount;
    if (mailbox_.take(active_) && active_.resetCount != resetCount) {
        stream_->reset(env_->getPositionSec());
        viz_->reset();
    }
    return active_.setup;
}

void CAudioWrapper::processBlock(const CAudioHostBlock& block)
{
    if (!hasMemory_.load(std::memory_order_relaxed)) [[unlikely]] {
        provideMemory(); // a host that never starts the effect
    }
    env_->setInProcess(true);
    const CAudioHostSetup& setup = beginBlock();
    viz_->beginBlock();
    params_->applyPending(env_->getPositionSec());
    extParams_->applyPosted(env_->getPositionSec());
    updateProcessLevel();
    updateTempo();
    stream_->process(setup, block, env_->getPositionSec());
    env_->advance(block.count / setup.sampleRateHz);
    env_->setInProcess(false);
    updateLatency();
}

// A change that finds no room on the audio side's road is made at the next block.
void CAudioWrapper::updateProcessLevel()
{
    const int level = hostProcessLevel();
    const bool isOffline = level == kOfflineLevel;
    if (isOffline != (lastProcessLevel_ == kOfflineLevel)) {
        isOfflinePosted_ = false;
    }
    lastProcessLevel_ = level;
    if (!isOfflinePosted_) {
        isOfflinePosted_ =
            params_->changeFromAudio(*hostParams_[kOffline], isOffline ? 1.0 : 0.0, env_->getPositionSec());
    }
}

void CAudioWrapper::updateTempo()
{
    if (!identity_.usesHostBpm) {
        return;
    }
    const std::optional<double> tempo = hostTempo();
    if (tempo && *tempo != lastBpm_ &&
        params_->changeFromAudio(*hostParams_[kBpm], *tempo, env_->getPositionSec())) {
        lastBpm_ = *tempo;
    }
}

// A change that was foreseen has been told already.
void CAudioWrapper::updateLatency()
{
    const std::int32_t latency = stream_->latencySamples();
    if (latency == foundLatency_) {
        return;
    }
    foundLatency_ = latency;
    if (latency != env_->getLatencySamples()) {
        env_->setLatencySamples(latency);
        ioChanged();
    }
}

} // namespace qel
