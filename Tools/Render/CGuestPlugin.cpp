// One instance of a VST 2.4 effect, and the host that it sees.
#include "Render/CGuestPlugin.h"

#include "Render/RenderError.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstring>

namespace qel::tools {

namespace {

// Effects write more than the interface allows them; room for the worst known.
constexpr std::size_t kTextBytes = 1024;

constexpr std::int32_t kTransportPlaying = 1 << 1;
constexpr std::int32_t kPpqPosValid = 1 << 9;
constexpr std::int32_t kBarsValid = 1 << 11;
constexpr std::int32_t kTimeSignatureValid = 1 << 13;
constexpr int kBeatsInBar = 4;
constexpr double kTempoBpm = 120.0;
constexpr std::intptr_t kEnglish = 1;
constexpr std::intptr_t kHostVersion = 1000;

// The effect calls back before it has a record to be known by.
thread_local CGuestPlugin* beingMade = nullptr;

std::string cleaned(const char* bytes, std::size_t size)
{
    std::string text(bytes, std::find(bytes, bytes + size, '\0'));
    std::ranges::replace_if(
        text, [](unsigned char c) { return c < 0x20 || c == 0x7F; }, ' ');
    const std::size_t first = text.find_first_not_of(' ');
    return first == text.npos ? "" : text.substr(first, text.find_last_not_of(' ') - first + 1);
}

bool hostCan(std::string_view what)
{
    constexpr std::array<std::string_view, 4> kAbilities{"sendVstTimeInfo", "startStopProcess",
                                                         "acceptIOChanges", "offline"};
    return std::ranges::find(kAbilities, what) != kAbilities.end();
}

} // namespace

CGuestPlugin::CGuestPlugin(std::shared_ptr<CGuestLibrary> library, const Setup& setup)
    : library_(std::move(library)), setup_(setup), folder_(library_->path().parent_path().string())
{
    setPosition(0);
    beingMade = this;
    effect_ = library_->entry()(&CGuestPlugin::answer);
    beingMade = nullptr;
    const std::string path = library_->path().string();
    if (!effect_) {
        throw CRenderError(CExitCode::kLibrary, path + ": the library makes no effect");
    }
    if (effect_->magic != vst24::kMagic) {
        throw CRenderError(CExitCode::kLibrary, path + ": what the library makes is no VST effect");
    }
    effect_->hostWords[0] = reinterpret_cast<std::intptr_t>(this);
    std::string fault;
    if (!effect_->dispatcher || !effect_->processReplacing) {
        fault = ": the effect cannot replace its output, which VST 2.4 asks for";
    } else if (setup_.isDouble && !(canDouble() && effect_->processDoubleReplacing)) {
        fault = ": the effect does not process in double precision";
    } else if (effect_->numInputs < 0 || effect_->numOutputs < 0 || effect_->numParams < 0) {
        fault = ": the effect has a negative count of channels or parameters";
    }
    if (!fault.empty()) {
        if (effect_->dispatcher) {
            dispatch(vst24::kClose);
        }
        throw CRenderError(CExitCode::kLibrary, path + fault);
    }
    open();
}

CGuestPlugin::~CGuestPlugin()
{
    suspend();
    dispatch(vst24::kClose);
}

void CGuestPlugin::open()
{
    dispatch(vst24::kOpen);
    dispatch(vst24::kSetSampleRate, 0, 0, nullptr, static_cast<float>(setup_.rateHz));
    dispatch(vst24::kSetBlockSize, 0, setup_.maxBlock);
    dispatch(vst24::kSetProcessPrecision, 0, setup_.isDouble ? 1 : 0);
}

std::intptr_t CGuestPlugin::dispatch(std::int32_t opcode, std::int32_t index, std::intptr_t value, void* ptr,
                                     float opt)
{
    return effect_->dispatcher(effect_, opcode, index, value, ptr, opt);
}

std::string CGuestPlugin::text(std::int32_t opcode, std::int32_t index)
{
    std::array<char, kTextBytes> bytes{};
    dispatch(opcode, index, 0, bytes.data());
    return cleaned(bytes.data(), bytes.size());
}

std::string CGuestPlugin::name()
{
    std::string name = text(vst24::kGetEffectName);
    if (name.empty()) {
        name = text(vst24::kGetProductString);
    }
    return name.empty() ? library_->path().stem().string() : name;
}

std::string CGuestPlugin::vendor()
{
    return text(vst24::kGetVendorString);
}

// --- programs and parameters

int CGuestPlugin::program()
{
    return static_cast<int>(dispatch(vst24::kGetProgram));
}

void CGuestPlugin::setProgram(int index)
{
    dispatch(vst24::kBeginSetProgram);
    dispatch(vst24::kSetProgram, 0, index);
    dispatch(vst24::kEndSetProgram);
}

// Effects without the indexed question tell only the name of the program that is on.
std::string CGuestPlugin::programName(int index)
{
    std::array<char, kTextBytes> bytes{};
    if (dispatch(vst24::kGetProgramNameIndexed, index, -1, bytes.data()) != 0) {
        return cleaned(bytes.data(), bytes.size());
    }
    const int before = program();
    if (before != index) {
        setProgram(index);
    }
    std::string name = text(vst24::kGetProgramName);
    if (before != index) {
        setProgram(before);
    }
    return name;
}

std::string CGuestPlugin::parameterName(int index)
{
    return text(vst24::kGetParamName, index);
}

std::string CGuestPlugin::parameterLabel(int index)
{
    return text(vst24::kGetParamLabel, index);
}

std::string CGuestPlugin::parameterDisplay(int index)
{
    return text(vst24::kGetParamDisplay, index);
}

bool CGuestPlugin::setParameterText(int index, const std::string& value)
{
    std::array<char, kTextBytes> bytes{};
    value.copy(bytes.data(), bytes.size() - 1);
    return dispatch(vst24::kString2Parameter, index, 0, bytes.data()) != 0;
}

// --- state

bool CGuestPlugin::setChunk(std::span<const std::uint8_t> bytes, bool isPreset)
{
    std::vector<std::uint8_t> copy(bytes.begin(), bytes.end());
    return dispatch(vst24::kSetChunk, isPreset ? 1 : 0, static_cast<std::intptr_t>(copy.size()),
                    copy.data()) != 0;
}

// --- processing

void CGuestPlugin::resume()
{
    if (!isRunning_) {
        dispatch(vst24::kMainsChanged, 0, 1);
        dispatch(vst24::kStartProcess);
        isRunning_ = true;
    }
}

void CGuestPlugin::suspend()
{
    if (isRunning_) {
        dispatch(vst24::kStopProcess);
        dispatch(vst24::kMainsChanged, 0, 0);
        isRunning_ = false;
    }
}

void CGuestPlugin::setPosition(std::int64_t position)
{
    time_.samplePos = static_cast<double>(position);
    time_.sampleRate = setup_.rateHz;
    time_.nanoSeconds = time_.samplePos / setup_.rateHz * 1e9;
    time_.tempo = kTempoBpm;
    time_.ppqPos = time_.samplePos / setup_.rateHz * kTempoBpm / 60.0;
    time_.barStartPos = std::floor(time_.ppqPos / kBeatsInBar) * kBeatsInBar;
    time_.timeSigNumerator = kBeatsInBar;
    time_.timeSigDenominator = 4;
    time_.flags = kTransportPlaying | kPpqPosValid | kBarsValid | kTimeSignatureValid | vst24::kTempoValid;
}

void CGuestPlugin::process(float** inputs, float** outputs, int frames, std::int64_t position)
{
    setPosition(position);
    effect_->processReplacing(effect_, inputs, outputs, frames);
}

void CGuestPlugin::process(double** inputs, double** outputs, int frames, std::int64_t position)
{
    setPosition(position);
    effect_->processDoubleReplacing(effect_, inputs, outputs, frames);
}

// --- what the effect asks

std::intptr_t CGuestPlugin::answer(AEffect* effect, std::int32_t opcode, std::int32_t, std::intptr_t,
                                   void* ptr, float)
{
    if (opcode == vst24::kMasterVersion) {
        return vst24::kVersion;
    }
    CGuestPlugin* self = beingMade;
    if (!self && effect) {
        self = reinterpret_cast<CGuestPlugin*>(effect->hostWords[0]);
    }
    return self ? self->answerOwn(opcode, ptr) : 0;
}

std::intptr_t CGuestPlugin::answerOwn(std::int32_t opcode, void* ptr)
{
    const auto say = [ptr](const char* words) {
        if (ptr) {
            std::strcpy(static_cast<char*>(ptr), words);
        }
        return std::intptr_t{ptr ? 1 : 0};
    };
    switch (opcode) {
    case vst24::kMasterGetTime:
        return reinterpret_cast<std::intptr_t>(&time_);
    case vst24::kMasterGetSampleRate:
        return static_cast<std::intptr_t>(setup_.rateHz);
    case vst24::kMasterGetBlockSize:
        return setup_.maxBlock;
    case vst24::kMasterGetCurrentProcessLevel:
        return vst24::kLevelOffline;
    case vst24::kMasterGetVendorString:
        return say("Brintal");
    case vst24::kMasterGetProductString:
        return say("drumfell-render");
    case vst24::kMasterGetVendorVersion:
        return kHostVersion;
    case vst24::kMasterCanDo:
        return ptr && hostCan(static_cast<const char*>(ptr)) ? 1 : 0;
    case vst24::kMasterGetLanguage:
        return kEnglish;
    case vst24::kMasterGetDirectory:
        return reinterpret_cast<std::intptr_t>(folder_.c_str());
    case vst24::kMasterIOChanged: // the delay is read after every block
    case vst24::kMasterUpdateDisplay:
    case vst24::kMasterBeginEdit:
    case vst24::kMasterEndEdit:
        return 1;
    default:
        return 0;
    }
}

} // namespace qel::tools
