// One instance with its interface, without a host and without a screen.
#include "Views/CInterfaceHost.h"

#include "CApplication.h"
#include "CAudioInterfaceClientConnector.h"
#include "CAudioParamInfo.h"
#include "CInterfaceScale.h"
#include "CParamBridge.h"
#include "CreatorTable.h"
#include "TreeCompiler/ToolError.h"

#include <cmath>
#include <cstdlib>
#include <numbers>
#include <vector>

extern "C" const qel::CResourceRow drumfellResourceDirectory[];

namespace qel::tools {

namespace {

constexpr double kRateHz = 48000.0;
constexpr int kBlock = 480;
constexpr double kBlockSec = kBlock / kRateHz;
constexpr double kToneHz = 60.0;
constexpr int kChannels = 8;
// From each channel to the next.
constexpr double kGainStep = 0.8;
// Longer than any state takes to show.
constexpr double kSettleSec = 0.6;

void require(CError error)
{
    if (error) {
        throw CToolError(error.text());
    }
}

// As the setting has it: "1.0", "0.8".
std::string scaleText(double scale)
{
    std::string text = std::to_string(scale);
    while (text.ends_with('0') && !text.ends_with(".0")) {
        text.pop_back();
    }
    return text;
}

// The number of a state by its name.
bool findState(const CParamBridge& bridge, const CString& name, double& out)
{
    constexpr int kMaxStates = 64;
    for (int i = 0; i < kMaxStates; ++i) {
        if (bridge.getTextOf(0, i, CAudioParamConverter::TextMode::kNormal) == name) {
            out = i;
            return true;
        }
    }
    return false;
}

} // namespace

// A host that is told what happens and does nothing about it.
class CInterfaceHost::CInstance : public CAudioWrapper
{
public:
    void setParameterAutomated(std::int32_t, double) override {}
    void updateDisplay() override {}
};

CInterfaceHost::CInterfaceHost(const Options& options)
{
    startApplication();
    instance_ = std::make_unique<CInstance>();
    require(instance_->init());
    require(instance_->finishInit());
    instance_->resume({kRateHz, kChannels, 0, kChannels});
    processBlock();

    require(
        interface_.create({{CAudioInterfaceClientConnectorVST::kRootVar,
                            CAudioInterfaceClientConnectorVST::rootVarOf(*instance_->getRoot()).toString()},
                           {"plugin-tech", "VST PlugIn Technology by Steinberg"}}));
    CInterfaceScale::set(options.scale);
    require(interface_.load("UserInterface.xml"));
    auto* const window = dynamic_cast<CWindow*>(root().findObject(CUserInterface::kMainWindowPath));
    if (!window) {
        throw CToolError("The interface has no main window.");
    }
    user_ = std::make_unique<COffscreenUser>(*window);
    require(interface_.open());
    set("ui.local-data.ui-color-scheme:palette-name", options.palette);
    set("ui.local-data.ui-scale:scale", scaleText(options.scale));
    settle();
}

CInterfaceHost::~CInterfaceHost()
{
    user_.reset();
    interface_.release();
    instance_.reset();
    CApplication::finish();
    std::error_code ignored;
    std::filesystem::remove_all(home_, ignored);
}

void CInterfaceHost::startApplication()
{
    std::string pattern = (std::filesystem::temp_directory_path() / "drumfell-views-XXXXXX").string();
    if (!mkdtemp(pattern.data())) {
        throw CToolError("No folder for settings can be made in " + pattern);
    }
    home_ = pattern;
    setenv("XDG_DATA_HOME", pattern.c_str(), 1);
    CApplicationParts parts;
    parts.creators = kCreatorTable;
    parts.resources = drumfellResourceDirectory;
    require(CApplication::start(parts));
}

CAudioWrapper& CInterfaceHost::instance()
{
    return *instance_;
}

CWindow& CInterfaceHost::topWindow()
{
    return *mainWindow().getSystem().getWindows().back();
}

CWindow& CInterfaceHost::openWindow(const std::string& tag)
{
    CAttrMap parameters;
    parameters["tag"] = CAttrValue(CString::fromUtf8(tag));
    parameters["window-alignment"] = CAttrValue(CString("center"));
    parameters["is-popup-toggle-always-create"] = CAttrValue(true);
    require(mainWindow().togglePopup(*mainWindow().getRootView(), parameters));
    settle();
    if (!(topWindow().getRootView()->getTag() == CString::fromUtf8(tag))) {
        throw CToolError("No window opens for '" + tag + "'.");
    }
    return topWindow();
}

CView& CInterfaceHost::findView(const std::string& path)
{
    auto* const view = dynamic_cast<CView*>(root().findObject(CString::fromUtf8(path)));
    if (!view) {
        throw CToolError("There is no view '" + path + "'.");
    }
    return *view;
}

void CInterfaceHost::click(const std::string& path)
{
    user_->click(findView(path));
    settle();
}

void CInterfaceHost::hover(const std::string& path)
{
    user_->moveTo(findView(path));
    settle();
}

void CInterfaceHost::set(const std::string& name, const std::string& value)
{
    if (const std::size_t colon = name.rfind(':'); colon != name.npos) {
        CObject* const object = root().findObject(CString::fromUtf8(name.substr(0, colon)));
        if (!object) {
            throw CToolError("There is no object '" + name.substr(0, colon) + "'.");
        }
        require(object->setAttribute(CString::fromUtf8(name.substr(colon + 1)),
                                     CAttrValue(CString::fromUtf8(value)), true));
        settle();
        return;
    }
    auto* const bridge =
        dynamic_cast<CParamBridge*>(root().findObject(CString::fromUtf8("ui." + name + "-bridge")));
    if (!bridge || !bridge->getInfo()) {
        throw CToolError("There is no parameter '" + name + "'.");
    }
    CParamBridge::CWrite write;
    double real = 0.0;
    const CString text = CString::fromUtf8(value);
    if (!bridge->getInfo()->isString() &&
        (findState(*bridge, text, real) || bridge->parseText(0, text, real))) {
        write.values = {&real, 1};
    } else {
        write.texts = {&text, 1};
    }
    require(bridge->write(write, nullptr));
    settle();
}

void CInterfaceHost::play(double sec, double levelDb)
{
    gain_ = std::pow(10.0, levelDb / 20.0);
    advance(sec);
}

void CInterfaceHost::settle()
{
    advance(kSettleSec);
}

// Sound and time go on together, as they do in a host.
void CInterfaceHost::advance(double sec)
{
    for (double passed = 0.0; passed < sec; passed += kBlockSec) {
        processBlock();
        interface_.idle();
        if (user_) {
            user_->advance(kBlockSec);
        }
    }
}

void CInterfaceHost::processBlock()
{
    std::vector<double> samples[kChannels];
    void* channels[kChannels];
    double gain = gain_;
    for (int channel = 0; channel < kChannels; ++channel) {
        for (int i = 0; i < kBlock; ++i) {
            const double phase = 2.0 * std::numbers::pi * kToneHz * (positionSec_ + i / kRateHz);
            samples[channel].push_back(gain * std::sin(phase));
        }
        channels[channel] = samples[channel].data();
        gain *= kGainStep;
    }
    positionSec_ += kBlockSec;
    instance_->processBlock({channels, channels, kBlock, true});
}

} // namespace qel::tools
