// The host-independent half of one plug-in instance: building and ending it.
#include "CAudioWrapper.h"

#include "CApplication.h"
#include "CAudioCCTable.h"
#include "CAudioEnv.h"
#include "CAudioExtParamList.h"
#include "CAudioGlobalParam.h"
#include "CAudioInterfaceBase.h"
#include "CAudioParamRegistry.h"
#include "CAudioVizCollector.h"
#include "CDCDAWContextObject.h"
#include "CModOutput.h"
#include "Definitions/CAudioProcessDef.h"
#include "NumberSyntax.h"

#include <algorithm>

namespace qel {

namespace {

constexpr const char* kMainName = "plugin.modMain";
constexpr const char* kOutputName = "plugin.modOutput";
constexpr std::int32_t kMaxInternalChannels = 32;
constexpr std::int32_t kMaxGroups = 8;
constexpr std::int32_t kMaxOversamplingLevel = 3;

template <class T>
T* find(CObject& root, const char* path)
{
    return dynamic_cast<T*>(root.findObject(path));
}

} // namespace

CAudioWrapper::CAudioWrapper() = default;

CAudioWrapper::~CAudioWrapper()
{
    programBridge_.detach();
    globalParams_.clear();
    if (extParams_) {
        extParams_->setHostBridge(nullptr);
        interfaceBase_->setHost(nullptr, nullptr);
    }
    disconnectProcesses();
    output_.release();
    main_.release();
    graph_.reset();
    if (CApplication* application = CApplication::get()) {
        application->releaseRootObject(root_);
    }
}

CError CAudioWrapper::init()
{
    CApplication* application = CApplication::get();
    if (!application) {
        QEL_FAIL({}, "@qelstr_CAudioWrapper_init_NoApp No application object created.");
    }
    QEL_TRY(application->initRootObject(root_), {});
    CObject* created = nullptr;
    QEL_TRY(root_->createChild(created, "plugin", "plugin", true), {});
    plugin_ = root_->findObject("plugin");
    if (!plugin_) {
        QEL_FAIL({}, "@qelstr_CAudioWrapper_init_PluginTree "
                     "Plug-in tree object with the name 'plugin' is required.");
    }
    hasSidechain_ = plugin_->getAttrBool("sidechain");
    QEL_TRY(initProject(), {});
    QEL_TRY(findObjects(), {});
    QEL_TRY(findProcessDefs(), {});
    findHostParams();
    QEL_TRY(buildProcesses(), {});
    bindGlobalParams();
    connectProcesses();
    extParams_->setHostBridge(this);
    readOversamplingLevel();
    return {};
}

CError CAudioWrapper::initProject()
{
    const CObject* project = root_->findObject("shared::project");
    if (!project) {
        QEL_FAIL({}, "@qelstr_CAudioWrapper_init_ProjectRoot "
                     "Shared project root 'shared::project' object is required.");
    }
    pluginName_ = project->getAttrString("app-name");
    if (pluginName_.isEmpty()) {
        QEL_FAIL({}, "@qelstr_CAudioWrapper_init_PluginNameEmpty Plug-in name is empty.");
    }
    vendor_ = project->getAttrString("app-vendor");
    if (vendor_.isEmpty()) {
        QEL_FAIL({}, "@qelstr_CAudioWrapper_init_VendorNameEmpty Vendor name is empty.");
    }
    usesHostBpm_ = project->getAttrBool("use-host-bpm");
    internalChannelCount_ = project->getAttrInt("plugin-intchannel-count");
    if (internalChannelCount_ < 1 || internalChannelCount_ > kMaxInternalChannels) {
        QEL_FAIL({}, "@qelstr_CAudioWrapper_init_InvalidIntChannelCount "
                     "Invalid 'plugin-intchannel-count' attribute value.");
    }
    groupCount_ = project->getAttrInt("plugin-group-count");
    if (groupCount_ < 1 || groupCount_ > kMaxGroups) {
        QEL_FAIL(
            {}, "@qelstr_CAudioWrapper_init_InvalidGroupCount Invalid 'plugin-group-count' attribute value.");
    }
    QEL_TRY(acquirePluginCode(*project), {});
    QEL_TRY(parseVersion(*project), {});
    return {};
}

CError CAudioWrapper::acquirePluginCode(const CObject& project)
{
    const CString code = project.getAttrString("plugin-code");
    if (code.length() != 4) {
        QEL_FAIL(
            {},
            "@qelstr_CAudioWrapper_acquirePluginCode_PluginCodeError Invalid plug-in code in string '%1'.",
            code);
    }
    std::uint32_t bits = 0;
    for (std::size_t i = 0; i < 4; ++i) {
        bits = bits << 8 | (code[i] & 0xFFu);
    }
    pluginCode_ = static_cast<std::int32_t>(bits);
    return {};
}

CError CAudioWrapper::parseVersion(const CObject& project)
{
    const CString text = project.getAttrString("app-version");
    const std::vector<CString> parts = text.split(u'.');
    std::int32_t* const numbers[] = {&version_.major, &version_.minor, &version_.patch};
    bool isValid = parts.size() == 2 || parts.size() == 3;
    for (std::size_t i = 0; isValid && i < parts.size(); ++i) {
        const auto number = parseInteger(parts[i]);
        isValid = number.has_value();
        *numbers[i] = number.value_or(0);
    }
    if (!isValid) {
        QEL_FAIL(
            {},
            "@qelstr_CAudioWrapper_parseVersion_InvalidVersion Invalid version specification in string '%1'.",
            text);
    }
    return {};
}

CError CAudioWrapper::findObjects()
{
    if (!(context_ = find<CDCDAWContextObject>(*root_, "plugin.dcdaw-context"))) {
        QEL_FAIL({}, "@qelstr_CAudioWrapper_init_ContextObject "
                     "No valid DCDAW context object with the name 'plugin.dcdaw-context' defined.");
    }
    if (!(env_ = find<CAudioEnv>(*root_, "plugin.audio-env"))) {
        QEL_FAIL({}, "@qelstr_CAudioWrapper_init_AudioEnv "
                     "No valid env object with the name 'plugin.audio-env' defined.");
    }
    if (!(params_ = find<CAudioParamCollector>(*root_, "plugin.param-collector"))) {
        QEL_FAIL({}, "@qelstr_CAudioWrapper_init_ParamCollector "
                     "No valid parameter collector object with the name 'plugin.param-collector' defined.");
    }
    if (!(viz_ = find<CAudioVizCollector>(*root_, "plugin.viz-collector"))) {
        QEL_FAIL({}, "@qelstr_CAudioWrapper_init_VizCollector "
                     "No valid visual object collector object with the name 'plugin.viz-collector' defined.");
    }
    if (!(interfaceBase_ = find<CAudioInterfaceBase>(*root_, "plugin.interface-base"))) {
        QEL_FAIL({},
                 "@qelstr_CAudioWrapper_init_InterfaceBase "
                 "No valid interface base collector object with the name 'plugin.interface-base' defined.");
    }
    if (!(extParams_ = find<CAudioExtParamList>(*root_, "plugin.ext-param-list"))) {
        QEL_FAIL({}, "@qelstr_CAudioWrapper_init_ExtParamList "
                     "No valid CAudioExtParamList* object with the name 'plugin.ext-param-list' defined.");
    }
    if (!(ccTable_ = find<CAudioCCTable>(*root_, "plugin.cctable"))) {
        QEL_FAIL({}, "@qelstr_CAudioWrapper_init_CCTable "
                     "No valid CAudioCCTable* object with the name 'plugin.cctable' defined.");
    }
    if (!(registry_ = find<CAudioParamRegistry>(*root_, "plugin.param-registry"))) {
        QEL_FAIL({}, "@qelstr_CAudioWrapper_init_ParamRegistry "
                     "No valid parameter registry object with the name 'plugin.param-registry' defined.");
    }
    return {};
}

CError CAudioWrapper::findProcessDefs()
{
    if (!(mainDef_ = find<CAudioProcessDef>(*root_, "shared::audio.modMain"))) {
        QEL_FAIL({}, "@qelstr_CAudioWrapper_init_NoMainProcessDef "
                     "No main process definition object with the name 'shared::audio.modMain' found.");
    }
    if (!(outputDef_ = find<CAudioProcessDefBase>(*root_, "shared::audio.modOutput"))) {
        QEL_FAIL({}, "@qelstr_CAudioWrapper_init_NoOutProcessDef "
                     "No output process definition object with the name 'shared::audio.modOutput' found.");
    }
    return {};
}

void CAudioWrapper::findHostParams()
{
    hostParams_[kOversamplingMode] = &params_->getParam("plugin.modMain.host-oversampling-mode");
    hostParams_[kOffline] = &params_->getParam("plugin.modMain.host-offline");
    hostParams_[kLatencyChange] = &params_->getParam("plugin.modMain.host-latency-change");
    hostParams_[kBpm] = &params_->getParam("plugin.modMain.host-bpm");
    hostParams_[kBypass] = &params_->getParam("plugin.modMain.modBypass.enable");
}

CError CAudioWrapper::buildProcesses()
{
    graph_ = std::make_unique<CAudioGraph>(CAudioGraph{*context_->context(), *params_, {}, {}, viz_});
    QEL_TRY(main_.build(*graph_, *mainDef_, kMainName), {});
    QEL_TRY(output_.build(*graph_, *outputDef_, kOutputName), {});
    outputProcess_ = dynamic_cast<CModOutput*>(output_.root());
    if (!outputProcess_) {
        QEL_FAIL({}, "@qelstr_CAudioWrapper_init_InvalidOutProcessType Output process object "
                     "'shared::audio.modOutput' is not of required 'CModOutput' type.");
    }
    return {};
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
}

// Auto oversampling needs a level that is the same offline, so that a render sounds like what was heard.
void CAudioWrapper::readOversamplingLevel()
{
    const CString text = CApplication::get()->getGlobalData().loadString("oversampling-level", "1");
    const std::int32_t level = std::clamp(parseInteger(text).value_or(1), 0, kMaxOversamplingLevel);
    CAudioParamContext context(CAudioParamOrigin::kHost);
    hostParams_[kOversamplingMode]->setValue(0, 0, 0, level, context);
}

CError CAudioWrapper::finishInit()
{
    interfaceBase_->setHost(this, extParams_);
    tellEnvironment();
    programBridge_.attach(registry_);
    params_->finalize();
    QEL_TRY(registry_->startProgram(), {});
    params_->resendAll();
    updateProcessConfig();
    if (env_->takeRestart()) {
        resetProcesses();
    }
    return {};
}

// --- links

void CAudioWrapper::connectProcesses()
{
    const auto connect = [this](Feed& target, int port) {
        target.port = std::make_unique<CAudioOutputPort>(*graph_);
        target.link = std::make_unique<CAudioLink>(*graph_, *target.port);
        target.link->connect();
        main_.root()->input(port).addLink(*target.link);
    };
    connect(mainFeed_, 0);
    if (hasSidechain_) {
        connect(sidechainFeed_, 1);
    }
    outputLink_ = std::make_unique<CAudioLink>(*graph_, main_.root()->output(0));
    outputLink_->connect();
    outputProcess_->input(0).addLink(*outputLink_);
}

void CAudioWrapper::disconnectProcesses()
{
    if (!outputLink_) {
        return;
    }
    for (int port = 0; port < main_.root()->inputCount(); ++port) {
        main_.root()->input(port).clearLinks();
    }
    outputProcess_->input(0).clearLinks();
    for (Feed* target : {&mainFeed_, &sidechainFeed_}) {
        if (target->link) {
            target->link->disconnect();
            target->link.reset();
            target->port.reset();
        }
    }
    outputLink_->disconnect();
    outputLink_.reset();
}

void CAudioWrapper::updateProcessConfig()
{
    const CLock lock(env_->getLock());
    if (isConfiguring_.exchange(true)) {
        return;
    }
    disconnectProcesses();
    connectProcesses();
    isConfiguring_ = false;
}

void CAudioWrapper::onProgramChange(CBridge* sender, std::uintptr_t)
{
    if (sender != &programBridge_) {
        programChanged();
    }
}

} // namespace qel
