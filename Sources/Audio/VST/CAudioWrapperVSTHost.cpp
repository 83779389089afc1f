// One plug-in instance behind the VST 2.4 interface: parameters, programs, state, and what the host is told.
#include "CAudioWrapperVST.h"

#include "CAudioExtParamList.h"
#include "CAudioParam.h"
#include "CAudioParamCollector.h"
#include "CAudioParamRegistry.h"
#include "VstText.h"

#include <algorithm>
#include <cstring>
#include <iterator>

namespace qel {

namespace {

using vst24::kEffectNameBytes;
using vst24::kParameterTextBytes;
using vst24::kProgramNameBytes;
using vst24::kVendorTextBytes;

constexpr std::size_t kMaxQuestionBytes = 64; // of a canDo(); no host asks longer ones
constexpr std::size_t kMaxTypedBytes = 256;   // of a parameter's text

constexpr std::intptr_t kCockosExtensions = 0xBEEF0000;
constexpr std::int32_t kCockosDisplay = 7; // vendorSpecific(): the text of any value
constexpr std::intptr_t kCockosDone = 0xBEEF;
constexpr std::int32_t kWheelIndex = 0x73744341;  // "stCA"
constexpr std::intptr_t kWheelValue = 0x57686565; // "Whee"

// Their places are the interface's numbers.
constexpr const char* kCategories[] = {
    "kPlugCategUnknown",     "kPlugCategEffect",         "kPlugCategSynth",  "kPlugCategAnalysis",
    "kPlugCategMastering",   "kPlugCategSpacializer",    "kPlugCategRoomFx", "kPlugSurroundFx",
    "kPlugCategRestoration", "kPlugCategOfflineProcess", "kPlugCategShell",  "kPlugCategGenerator",
};

} // namespace

// --- parameters

void CAudioWrapperVST::setParameter(std::int32_t index, float value)
{
    if (CAudioExtParam* param = getExtParams().get(index)) {
        param->postNormalized(value);
    }
}

float CAudioWrapperVST::getParameter(std::int32_t index)
{
    const CAudioExtParam* param = getExtParams().get(index);
    return param ? static_cast<float>(param->getNormalized()) : 0.0f;
}

void CAudioWrapperVST::getParameterLabel(std::int32_t index, char* text)
{
    const CAudioExtParam* param = getExtParams().get(index);
    vst24::writeText(text, kParameterTextBytes, param ? param->getLabel() : CString());
}

namespace {

// The whole text, or the short one where the whole does not fit.
template <class Display>
void writeDisplay(char* text, Display&& display)
{
    CString shown = display(CAudioParamConverter::TextMode::kNormal);
    if (shown.length() >= kParameterTextBytes) {
        shown = display(CAudioParamConverter::TextMode::kShort);
    }
    vst24::writeText(text, kParameterTextBytes, shown);
}

} // namespace

void CAudioWrapperVST::getParameterDisplay(std::int32_t index, char* text)
{
    const CAudioExtParam* param = getExtParams().get(index);
    writeDisplay(text, [&](auto mode) { return param ? param->getDisplay(mode) : CString(); });
}

void CAudioWrapperVST::getParameterName(std::int32_t index, char* text)
{
    const CAudioExtParam* param = getExtParams().get(index);
    vst24::writeText(text, kParameterTextBytes, param ? param->getExtName() : CString());
}

bool CAudioWrapperVST::string2parameter(std::int32_t index, const char* text)
{
    CAudioExtParam* param = getExtParams().get(index);
    if (!param || !text) {
        return param != nullptr;
    }
    const std::optional<double> norm = param->getNormalizedOf(vst24::readText(text, kMaxTypedBytes));
    if (norm) {
        param->postNormalized(*norm);
    }
    return norm.has_value();
}

bool CAudioWrapperVST::getParameterProperties(std::int32_t index, VstParameterProperties* properties)
{
    const CAudioExtParam* param = getExtParams().get(index);
    if (!param) {
        return false;
    }
    *properties = {};
    vst24::writeText(properties->label, sizeof(properties->label), param->getVisualName());
    vst24::writeText(properties->shortLabel, sizeof(properties->shortLabel), param->getExtName());
    return true;
}

// --- programs and state

std::int32_t CAudioWrapperVST::getProgram()
{
    return getRegistry().getProgram();
}

void CAudioWrapperVST::setProgram(std::int32_t program)
{
    curProgram_ = program;
    releaseError(activateProgram(program));
}

void CAudioWrapperVST::setProgramName(const char* text)
{
    renameProgram(vst24::readText(text, kProgramNameBytes));
}

void CAudioWrapperVST::getProgramName(char* text)
{
    vst24::writeText(text, kProgramNameBytes, getRegistry().getCurrentProgramName());
}

bool CAudioWrapperVST::getProgramNameIndexed(std::int32_t, std::int32_t index, char* text)
{
    const bool exists = index >= 0 && index < getRegistry().getProgramCount();
    vst24::writeText(text, kProgramNameBytes, exists ? getRegistry().getProgramName(index) : CString());
    return exists;
}

std::intptr_t CAudioWrapperVST::getChunk(void** data, bool isPreset)
{
    CByteBuffer chunk;
    if (const CError error = saveChunk(chunk, isPreset, true)) {
        chunkBuffer_.release();
        *data = nullptr;
        return 0;
    }
    chunkBuffer_ = std::move(chunk);
    *data = chunkBuffer_.data();
    return static_cast<std::intptr_t>(chunkBuffer_.size());
}

bool CAudioWrapperVST::setChunk(const void* data, std::intptr_t size, bool isPreset)
{
    if (!data || size < 0) {
        return false;
    }
    const std::span bytes(static_cast<const std::uint8_t*>(data), static_cast<std::size_t>(size));
    return !loadChunk(bytes, isPreset, true);
}

// --- names and abilities

CObject* CAudioWrapperVST::project() const
{
    return getRoot()->findObject("shared::project");
}

bool CAudioWrapperVST::getEffectName(char* text)
{
    vst24::writeText(text, kEffectNameBytes, getPluginName());
    return true;
}

bool CAudioWrapperVST::getVendorString(char* text)
{
    vst24::writeText(text, kVendorTextBytes, getVendor());
    return true;
}

bool CAudioWrapperVST::getProductString(char* text)
{
    vst24::writeText(text, kVendorTextBytes, getPluginName() + " " + project()->getAttrString("app-version"));
    return true;
}

std::int32_t CAudioWrapperVST::getVendorVersion()
{
    const Version& version = getVersion();
    return version.major << 16 | version.minor << 8 | version.patch;
}

std::intptr_t CAudioWrapperVST::vendorSpecific(std::int32_t index, std::intptr_t value, void* ptr, float opt)
{
    if (index == kWheelIndex && value == kWheelValue) {
        return getEditor() && getEditor()->onWheel(opt);
    }
    const CAudioExtParam* param = getExtParams().get(toIndex(value));
    if (index == kCockosDisplay && ptr && param) {
        writeDisplay(static_cast<char*>(ptr), [&](auto mode) { return param->getDisplayOf(opt, mode); });
        return kCockosDone;
    }
    return 0;
}

std::intptr_t CAudioWrapperVST::canDo(const char* text)
{
    const CString question = vst24::readText(text, kMaxQuestionBytes);
    if (question == "hasCockosExtensions") {
        return kCockosExtensions;
    }
    return question == "receiveVstMidiEvent" || question == "receiveVstTimeInfo";
}

std::int32_t CAudioWrapperVST::getPlugCategory()
{
    const CString name = project()->getAttrString("plugin-category-vst");
    const auto found = std::find_if(std::begin(kCategories), std::end(kCategories),
                                    [&](const char* each) { return name == each; });
    return found == std::end(kCategories) ? 0 : static_cast<std::int32_t>(found - std::begin(kCategories));
}

void CAudioWrapperVST::fillPin(VstPinProperties& pin, std::int32_t index, std::int32_t count,
                               const CString& label)
{
    pin = {};
    vst24::writeText(pin.label, sizeof(pin.label), label);
    vst24::writeText(pin.shortLabel, sizeof(pin.shortLabel), label);
    const bool hasPartner = (index | 1) < count;
    pin.flags = vst24::kPinActive | (hasPartner ? vst24::kPinStereo : 0);
}

bool CAudioWrapperVST::getInputProperties(std::int32_t index, VstPinProperties* properties)
{
    const std::int32_t count = getAeffect()->numInputs;
    if (index < 0 || index >= count) {
        return false;
    }
    const CString name =
        getParams().getParam("plugin.modMain.io-params.in-channel-names").getString(0, index);
    fillPin(*properties, index, count, name.isEmpty() ? CString("In ") + CString::number(index + 1) : name);
    return true;
}

bool CAudioWrapperVST::getOutputProperties(std::int32_t index, VstPinProperties* properties)
{
    const std::int32_t count = getAeffect()->numOutputs;
    if (index < 0 || index >= count) {
        return false;
    }
    fillPin(*properties, index, count, CString("Out ") + CString::number(index + 1));
    return true;
}

// --- to the host

void CAudioWrapperVST::setParameterAutomated(std::int32_t index, double norm)
{
    if (!isHostActivating()) {
        AudioEffectX::setParameterAutomated(index, static_cast<float>(norm));
    }
}

void CAudioWrapperVST::updateDisplay()
{
    if (hasHost()) {
        AudioEffectX::updateDisplay();
    }
}

void CAudioWrapperVST::beginEdit(std::int32_t index)
{
    if (hasHost()) {
        AudioEffectX::beginEdit(index);
    }
}

void CAudioWrapperVST::endEdit(std::int32_t index)
{
    if (hasHost()) {
        AudioEffectX::endEdit(index);
    }
}

} // namespace qel
