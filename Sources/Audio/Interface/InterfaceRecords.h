// The records that cross between the audio side and the UI side of an instance.
#pragma once

#include "CAudioInterfaceRecord.h"

namespace qel {

// Numbers are private to the two ends, which are always built together.
enum class EAudioInterfaceRecord : std::uint32_t
{
    // Client to base.
    kGetState = 1,
    kGetParam = 2,
    kChangeParams = 3,
    kResetParams = 4,
    kEdit = 5,
    kGetRegistry = 6,
    kRegistryCommand = 7,
    kSetProgramName = 8,
    kActivateData = 9,
    kAcquireData = 10,
    kMoveHistory = 11,
    kListenViz = 12,
    kGetViz = 13,
    kImportChannelLabels = 14,
    kEditPrograms = 15,
    // Base to client.
    kHistoryState = 29,
    kParamState = 30,
    kParamValues = 31,
    kRegistryState = 32,
    kRegistryData = 33,
    kVizSource = 34,
    kVizData = 35,
    kEnvironment = 36,
    kClear = 37
};

#define QEL_RECORD_FIELDS(...)                                                                               \
    template <class Self, class Io>                                                                          \
    static CError fields([[maybe_unused]] Self& self, Io& io)                                                \
    {                                                                                                        \
        return io(__VA_ARGS__);                                                                              \
    }

namespace record {

using Type = EAudioInterfaceRecord;

// --- client to base

// Everything a client begins with: environment and history.
struct CGetState
{
    static constexpr Type kType = Type::kGetState;
    QEL_RECORD_FIELDS()
};

// Answered by CParamState.
struct CGetParam
{
    static constexpr Type kType = Type::kGetParam;
    CString param;
    QEL_RECORD_FIELDS(self.param)
};

// One write: numbers, or texts for a string parameter.
struct CParamWrite
{
    CString param;
    std::int32_t group = 0;
    std::int32_t start = 0;
    bool resize = false;
    std::vector<double> values; // whole entries
    std::vector<CString> texts; // one an entry
    QEL_RECORD_FIELDS(self.param, self.group, self.start, self.resize, self.values, self.texts)
};

// One step of the history, of one or several writes; without a name no step. Steps of one source over the
// same entries become one if they are mergeable.
struct CChangeParams
{
    static constexpr Type kType = Type::kChangeParams;
    CString stepName;
    std::int32_t source = 0;
    bool mergeable = false;
    std::vector<CParamWrite> writes;
    QEL_RECORD_FIELDS(self.stepName, self.source, self.mergeable, self.writes)
};

// Back to the initial values, or to the declared defaults. -1 stands for all groups, and all entries.
struct CResetParams
{
    static constexpr Type kType = Type::kResetParams;
    CString stepName;
    std::vector<CString> params;
    std::int32_t group = -1;
    std::int32_t entry = -1;
    bool toInitial = false;
    QEL_RECORD_FIELDS(self.stepName, self.params, self.group, self.entry, self.toInitial)
};

// The user takes hold of a control or lets it go; for the host.
struct CEdit
{
    static constexpr Type kType = Type::kEdit;
    CString param;
    std::int32_t group = 0;
    std::int32_t element = 0;
    bool begins = true;
    QEL_RECORD_FIELDS(self.param, self.group, self.element, self.begins)
};

// Answered by CRegistryState, now and after every change. Registries are named by path.
struct CGetRegistry
{
    static constexpr Type kType = Type::kGetRegistry;
    CString registry;
    QEL_RECORD_FIELDS(self.registry)
};

struct CRegistryCommand
{
    static constexpr Type kType = Type::kRegistryCommand;
    enum Command : std::int32_t
    {
        kSetProgram,
        kActivateROMPreset,
        kMasterReset,
        kABStore,
        kABSwap
    };
    CString registry;
    std::int32_t command = kSetProgram;
    std::int32_t index = 0; // program or preset
    QEL_RECORD_FIELDS(self.registry, self.command, self.index)
};

struct CSetProgramName
{
    static constexpr Type kType = Type::kSetProgramName;
    CString registry;
    std::int32_t index = 0;
    CString name;
    QEL_RECORD_FIELDS(self.registry, self.index, self.name)
};

// Changes one program of the session bank; the others stay as they are.
struct CEditPrograms
{
    static constexpr Type kType = Type::kEditPrograms;
    enum Command : std::int32_t
    {
        kAdd,     // `body` in front of the one at `index`, or with -1 behind all
        kDelete,  // the one at `index`
        kReplace, // the one at `index` by `body`
        kMove     // the one at `index` to `target`
    };
    CString registry;
    std::int32_t command = kAdd;
    std::int32_t index = -1;
    std::int32_t target = -1;
    CByteBuffer body; // of a preset
    QEL_RECORD_FIELDS(self.registry, self.command, self.index, self.target, self.body)
};

// Applies the body of a preset, to one group or with -1 to all, or of a bank.
struct CActivateData
{
    static constexpr Type kType = Type::kActivateData;
    CString registry;
    bool isBank = false;
    std::int32_t group = -1;
    CByteBuffer body;
    QEL_RECORD_FIELDS(self.registry, self.isBank, self.group, self.body)
};

// Answered by CRegistryData with the same request number.
struct CAcquireData
{
    static constexpr Type kType = Type::kAcquireData;
    CString registry;
    std::int32_t request = 0;
    bool isBank = false;
    bool fromROM = false;
    std::int32_t index = -1;
    std::int32_t group = -1;
    bool withPersistent = false;
    QEL_RECORD_FIELDS(self.registry, self.request, self.isBank, self.fromROM, self.index, self.group,
                      self.withPersistent)
};

struct CMoveHistory
{
    static constexpr Type kType = Type::kMoveHistory;
    std::int32_t position = 0;
    QEL_RECORD_FIELDS(self.position)
};

// Answered by CVizSource.
struct CListenViz
{
    static constexpr Type kType = Type::kListenViz;
    CString source;
    bool listens = true;
    QEL_RECORD_FIELDS(self.source, self.listens)
};

// Answered by CVizData, to all clients, if there is something new.
struct CGetViz
{
    static constexpr Type kType = Type::kGetViz;
    QEL_RECORD_FIELDS()
};

struct CImportChannelLabels
{
    static constexpr Type kType = Type::kImportChannelLabels;
    QEL_RECORD_FIELDS()
};

// --- base to client

struct CHistoryState
{
    static constexpr Type kType = Type::kHistoryState;
    std::int32_t position = 0;
    std::vector<CString> steps;
    QEL_RECORD_FIELDS(self.position, self.steps)
};

// Declaration and values of a parameter, in their wire forms; both empty for one without a declaration.
struct CParamState
{
    static constexpr Type kType = Type::kParamState;
    CString param;
    CByteBuffer info;
    CByteBuffer values;
    QEL_RECORD_FIELDS(self.param, self.info, self.values)
};

// All values of a parameter that has changed.
struct CParamValues
{
    static constexpr Type kType = Type::kParamValues;
    CString param;
    CByteBuffer values;
    QEL_RECORD_FIELDS(self.param, self.values)
};

struct CRegistryState
{
    static constexpr Type kType = Type::kRegistryState;
    CString registry;
    bool isMaster = false;
    std::int32_t program = 0;
    std::vector<CString> programs; // or the presets of an enumerated registry's list
    std::vector<CString> romPresets;
    bool isB = false; // of the slots A and B
    QEL_RECORD_FIELDS(self.registry, self.isMaster, self.program, self.programs, self.romPresets, self.isB)
};

struct CRegistryData
{
    static constexpr Type kType = Type::kRegistryData;
    CString registry;
    std::int32_t request = 0;
    bool isBank = false;
    CByteBuffer body;
    QEL_RECORD_FIELDS(self.registry, self.request, self.isBank, self.body)
};

struct CVizSource
{
    static constexpr Type kType = Type::kVizSource;
    CString source;
    std::int32_t id = -1; // -1: there is none of this name
    QEL_RECORD_FIELDS(self.source, self.id)
};

// CAudioVizData one after another.
struct CVizData
{
    static constexpr Type kType = Type::kVizData;
    std::int32_t count = 0;
    CByteBuffer data;
    QEL_RECORD_FIELDS(self.count, self.data)
};

// Rate and channel counts of the instance.
struct CEnvironment
{
    static constexpr Type kType = Type::kEnvironment;
    double sampleRateHz = 44100.0;
    std::int32_t hostInputs = 0;
    std::int32_t hostOutputs = 0;
    std::int32_t internalChannels = 0;
    std::int32_t groups = 0;
    QEL_RECORD_FIELDS(self.sampleRateHz, self.hostInputs, self.hostOutputs, self.internalChannels,
                      self.groups)
};

// Mirrored state is void.
struct CClear
{
    static constexpr Type kType = Type::kClear;
    QEL_RECORD_FIELDS()
};

using ToBase =
    CAudioInterfaceRecordList<CGetState, CGetParam, CChangeParams, CResetParams, CEdit, CGetRegistry,
                              CRegistryCommand, CSetProgramName, CEditPrograms, CActivateData, CAcquireData,
                              CMoveHistory, CListenViz, CGetViz, CImportChannelLabels>;
using ToClient = CAudioInterfaceRecordList<CHistoryState, CParamState, CParamValues, CRegistryState,
                                           CRegistryData, CVizSource, CVizData, CEnvironment, CClear>;

} // namespace record

#undef QEL_RECORD_FIELDS

} // namespace qel
