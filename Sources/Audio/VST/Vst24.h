// The VST 2.4 binary interface: the records, opcodes and flags that cross the border between a host and a
// plug-in.
//
// Everything is little endian with natural alignment and the C calling convention. The layouts are checked
// below at compile time: a host reads these records by offset, so a field may never move. Text fields are
// NUL-terminated; hosts allocate them shorter than the record of an answer suggests, so writers keep to the
// limits of `VstTextLimit`.
#pragma once

#include <cstddef>
#include <cstdint>

struct AEffect;

using AudioMasterCallback = std::intptr_t (*)(AEffect* effect, std::int32_t opcode, std::int32_t index,
                                              std::intptr_t value, void* ptr, float opt);
using AEffectDispatcher = std::intptr_t (*)(AEffect* effect, std::int32_t opcode, std::int32_t index,
                                            std::intptr_t value, void* ptr, float opt);
using AEffectProcess = void (*)(AEffect* effect, float** inputs, float** outputs, std::int32_t frames);
using AEffectProcessDouble = void (*)(AEffect* effect, double** inputs, double** outputs,
                                      std::int32_t frames);
using AEffectSetParameter = void (*)(AEffect* effect, std::int32_t index, float value);
using AEffectGetParameter = float (*)(AEffect* effect, std::int32_t index);
using VstPluginEntry = AEffect* (*)(AudioMasterCallback audioMaster);

// What a plug-in hands to its host. The plug-in owns it; it lives until the opcode `close` returns.
struct AEffect
{
    std::int32_t magic;
    AEffectDispatcher dispatcher;
    AEffectProcess process; // accumulates into the outputs; obsolete, yet some hosts call it
    AEffectSetParameter setParameter;
    AEffectGetParameter getParameter;
    std::int32_t numPrograms;
    std::int32_t numParams;
    std::int32_t numInputs;
    std::int32_t numOutputs;
    std::int32_t flags;
    std::intptr_t hostWords[2]; // the host's own; a plug-in leaves them alone
    std::int32_t initialDelay;  // samples
    std::int32_t obsoleteQualities[2];
    float ioRatio;
    void* object;
    void* user;
    std::int32_t uniqueID;
    std::int32_t version;
    AEffectProcess processReplacing;
    AEffectProcessDouble processDoubleReplacing;
    char reserved[56];
};

// Pixels.
struct ERect
{
    std::int16_t top;
    std::int16_t left;
    std::int16_t bottom;
    std::int16_t right;
};

struct VstTimeInfo
{
    double samplePos;
    double sampleRate; // Hz
    double nanoSeconds;
    double ppqPos; // quarter notes
    double tempo;  // beats a minute
    double barStartPos;
    double cycleStartPos;
    double cycleEndPos;
    std::int32_t timeSigNumerator;
    std::int32_t timeSigDenominator;
    std::int32_t smpteOffset;
    std::int32_t smpteFrameRate;
    std::int32_t samplesToNextClock;
    std::int32_t flags;
};

struct VstSpeakerProperties
{
    float azimuth;
    float elevation;
    float radius;
    float reserved;
    char name[64];
    std::int32_t type;
    char future[28];
};

// A host sends `numChannels` speakers, which may be more or fewer than the eight declared here.
struct VstSpeakerArrangement
{
    std::int32_t type;
    std::int32_t numChannels;
    VstSpeakerProperties speakers[8];
};

struct VstEvent
{
    std::int32_t type;
    std::int32_t byteSize;
    std::int32_t deltaFrames; // samples from the start of the next block
    std::int32_t flags;
    char data[16];
};

struct VstMidiEvent
{
    std::int32_t type;
    std::int32_t byteSize;
    std::int32_t deltaFrames; // samples from the start of the next block
    std::int32_t flags;
    std::int32_t noteLength;
    std::int32_t noteOffset;
    char midiData[4];
    char detuneAndVelocity[4];
};

// A host sends `numEvents` pointers, which may be more than the two declared here.
struct VstEvents
{
    std::int32_t numEvents;
    std::intptr_t reserved;
    VstEvent* events[2];
};

struct VstPinProperties
{
    char label[64];
    std::int32_t flags; // VstPinFlag
    std::int32_t arrangementType;
    char shortLabel[8];
    char future[48];
};

struct VstParameterProperties
{
    float stepFloat;
    float smallStepFloat;
    float largeStepFloat;
    char label[64];
    std::int32_t flags;
    std::int32_t minInteger;
    std::int32_t maxInteger;
    std::int32_t stepInteger;
    std::int32_t largeStepInteger;
    char shortLabel[8];
    std::int16_t displayIndex;
    std::int16_t category;
    std::int16_t numParametersInCategory;
    std::int16_t reserved;
    char categoryLabel[24];
    char future[16];
};

namespace vst24 {

inline constexpr std::int32_t kMagic = 0x56737450;    // 'VstP'
inline constexpr std::int32_t kIdentify = 0x4E764566; // 'NvEf'
inline constexpr std::int32_t kVersion = 2400;
inline constexpr std::int32_t kTempoValid = 1 << 10;
inline constexpr std::int32_t kMidiEventType = 1;

// Of VstParameterProperties.
enum ParameterFlag : std::int32_t
{
    kParameterIsSwitch = 1 << 0,
    kParameterHasIntegerRange = 1 << 1,
    kParameterHasFloatSteps = 1 << 2,
};

enum AEffectFlag : std::int32_t
{
    kHasEditor = 1 << 0,
    kCanReplace = 1 << 4,
    kProgramChunks = 1 << 5,
    kIsSynth = 1 << 8,
    kNoSoundInStop = 1 << 9,
    kCanDoubleReplace = 1 << 12,
};

enum VstPinFlag : std::int32_t
{
    kPinActive = 1 << 0,
    kPinStereo = 1 << 1,
    kPinSpeaker = 1 << 2,
};

// Bytes that every host really allocates for a text, the NUL included.
enum VstTextLimit : std::size_t
{
    kParameterTextBytes = 8,
    kProgramNameBytes = 24,
    kEffectNameBytes = 32,
    kVendorTextBytes = 64,
};

enum ProcessLevel : std::int32_t
{
    kLevelUnknown = 0,
    kLevelUser = 1,
    kLevelRealtime = 2,
    kLevelPrefetch = 3,
    kLevelOffline = 4,
};

// Host to plug-in. Numbers that are missing here are obsolete and answer 0.
enum EffectOpcode : std::int32_t
{
    kOpen = 0,
    kClose = 1,
    kSetProgram = 2,
    kGetProgram = 3,
    kSetProgramName = 4,
    kGetProgramName = 5,
    kGetParamLabel = 6,
    kGetParamDisplay = 7,
    kGetParamName = 8,
    kSetSampleRate = 10,
    kSetBlockSize = 11,
    kMainsChanged = 12,
    kEditGetRect = 13,
    kEditOpen = 14,
    kEditClose = 15,
    kEditIdle = 19,
    kEffectIdentify = 22,
    kGetChunk = 23,
    kSetChunk = 24,
    kProcessEvents = 25,
    kCanBeAutomated = 26,
    kString2Parameter = 27,
    kGetProgramNameIndexed = 29,
    kGetInputProperties = 33,
    kGetOutputProperties = 34,
    kGetPlugCategory = 35,
    kProcessVarIo = 41,
    kSetSpeakerArrangement = 42,
    kSetBypass = 44,
    kGetEffectName = 45,
    kGetVendorString = 47,
    kGetProductString = 48,
    kGetVendorVersion = 49,
    kVendorSpecific = 50,
    kCanDo = 51,
    kGetTailSize = 52,
    kGetParameterProperties = 56,
    kGetVstVersion = 58,
    kEditKeyDown = 59,
    kEditKeyUp = 60,
    kSetEditKnobMode = 61,
    kGetMidiProgramName = 62,
    kBeginSetProgram = 67,
    kEndSetProgram = 68,
    kGetSpeakerArrangement = 69,
    kShellGetNextPlugin = 70,
    kStartProcess = 71,
    kStopProcess = 72,
    kSetTotalSampleToProcess = 73,
    kSetPanLaw = 74,
    kBeginLoadBank = 75,
    kBeginLoadProgram = 76,
    kSetProcessPrecision = 77,
    kGetNumMidiInputChannels = 78,
    kGetNumMidiOutputChannels = 79,
};

// Plug-in to host.
enum MasterOpcode : std::int32_t
{
    kMasterAutomate = 0,
    kMasterVersion = 1,
    kMasterCurrentId = 2,
    kMasterIdle = 3,
    kMasterGetTime = 7,
    kMasterProcessEvents = 8,
    kMasterIOChanged = 13,
    kMasterSizeWindow = 15,
    kMasterGetSampleRate = 16,
    kMasterGetBlockSize = 17,
    kMasterGetInputLatency = 18,
    kMasterGetOutputLatency = 19,
    kMasterGetCurrentProcessLevel = 23,
    kMasterGetAutomationState = 24,
    kMasterGetVendorString = 32,
    kMasterGetProductString = 33,
    kMasterGetVendorVersion = 34,
    kMasterVendorSpecific = 35,
    kMasterCanDo = 37,
    kMasterGetLanguage = 38,
    kMasterGetDirectory = 41,
    kMasterUpdateDisplay = 42,
    kMasterBeginEdit = 43,
    kMasterEndEdit = 44,
    kMasterOpenFileSelector = 45,
    kMasterCloseFileSelector = 46,
};

} // namespace vst24

static_assert(sizeof(void*) == 8, "the offsets below are those of 64-bit systems");
static_assert(offsetof(AEffect, dispatcher) == 8 && offsetof(AEffect, numPrograms) == 40 &&
              offsetof(AEffect, hostWords) == 64 && offsetof(AEffect, initialDelay) == 80 &&
              offsetof(AEffect, ioRatio) == 92 && offsetof(AEffect, object) == 96 &&
              offsetof(AEffect, uniqueID) == 112 && offsetof(AEffect, processReplacing) == 120 &&
              offsetof(AEffect, reserved) == 136 && sizeof(AEffect) == 192);
static_assert(sizeof(VstSpeakerProperties) == 112 && offsetof(VstSpeakerArrangement, speakers) == 8);
static_assert(sizeof(VstMidiEvent) == sizeof(VstEvent) && offsetof(VstMidiEvent, midiData) == 24);
static_assert(offsetof(VstTimeInfo, timeSigNumerator) == 64 && offsetof(VstEvents, events) == 16);
static_assert(sizeof(VstPinProperties) == 128 && sizeof(VstParameterProperties) == 152);
