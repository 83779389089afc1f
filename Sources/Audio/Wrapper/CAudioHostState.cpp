// What a host saves and loads of an instance.
#include "CAudioHostState.h"

#include "CAudioExtParamList.h"
#include "CAudioParamCollector.h"
#include "CAudioParamRegistry.h"
#include "Streams/CMemoryReader.h"
#include "Streams/CMemoryWriteBuffer.h"

#include <utility>

namespace qel {

namespace {

constexpr std::uint32_t kPresetId = 0x73727061; // "aprs"
constexpr std::uint32_t kBankId = 0x6B6E6261;   // "abnk"
constexpr std::size_t kHeaderBytes = 16;

} // namespace

// Marks a call in which the host changes the state as a whole.
class CAudioHostState::CActivation
{
public:
    explicit CActivation(CAudioHostState& state)
        : state_(state), lock_(state.lock_), outer_(state.activator_.exchange(std::this_thread::get_id()))
    {}
    ~CActivation() { state_.activator_ = outer_; }
    CActivation(const CActivation&) = delete;
    CActivation& operator=(const CActivation&) = delete;

private:
    CAudioHostState& state_;
    CLock lock_;
    std::thread::id outer_;
};

CAudioHostState::CAudioHostState(CAudioParamRegistry& registry, CAudioParamCollector& params,
                                 CAudioExtParamList& extParams, ProgramHandler onProgramChange)
    : registry_(registry), params_(params), extParams_(extParams), handler_(std::move(onProgramChange))
{}

void CAudioHostState::attach()
{
    bridge_.attach(&registry_);
}

// Told of new programs, hosts ask for them, in other threads as well, and some wait for the answer.
void CAudioHostState::onProgramChange(CBridge* sender, std::uintptr_t)
{
    if (sender == &bridge_) {
        return;
    }
    if (isActivating()) {
        haveProgramsChanged_ = true; // told when the lock is left
    } else {
        handler_();
    }
}

template <class Action>
CError CAudioHostState::change(Action&& action)
{
    CError error;
    bool haveProgramsChanged = false;
    {
        const CActivation activation(*this);
        error = action();
        haveProgramsChanged = std::exchange(haveProgramsChanged_, false);
    }
    if (haveProgramsChanged) {
        handler_();
    }
    return error;
}

CError CAudioHostState::save(CByteBuffer& outBuffer, bool isPreset, bool withHeader)
{
    CByteBuffer body;
    QEL_TRY(acquire(body, isPreset), {});
    CMemoryWriteBuffer chunk;
    if (withHeader) {
        for (std::size_t i = 0; i < kHeaderBytes / 4; ++i) {
            QEL_TRY(chunk.writeU32(0), {});
        }
    }
    QEL_TRY(chunk.writeCompressedData(body, isPreset ? kPresetId : kBankId), {});
    chunk.copyTo(outBuffer);
    return {};
}

// Values that no processing call has taken yet belong to the state: a host may set parameters of a stopped
// effect.
CError CAudioHostState::acquire(CByteBuffer& outBody, bool isPreset)
{
    params_.takeChangesFromAudio();
    extParams_.showPosted();
    CMemoryWriteBuffer body;
    QEL_TRY(isPreset ? registry_.acquirePreset(false, CAudioParamRegistry::kCurrentProgram,
                                               CAudioParamRegistry::kAllGroups, body, true)
                     : registry_.acquireBank(false, body, true),
            {});
    body.copyTo(outBody);
    return {};
}

// What was set before counts before what comes now.
void CAudioHostState::takeHostValues()
{
    params_.takeChangesFromAudio();
    extParams_.takePosted();
}

CError CAudioHostState::activate(const CByteBuffer& body, bool isPreset)
{
    CMemoryReader reader(body.bytes());
    QEL_TRY(isPreset ? registry_.activatePreset(reader, true) : registry_.activateBank(reader, true), {});
    return {};
}

CError CAudioHostState::activateProgram(std::int32_t index)
{
    return change([&] {
        takeHostValues();
        return registry_.setProgram(index, &bridge_);
    });
}

void CAudioHostState::renameProgram(const CString& name)
{
    releaseError(change([&] {
        registry_.setProgramName(registry_.getProgram(), name, false, &bridge_);
        return CError();
    }));
}

CError CAudioHostState::load(std::span<const std::uint8_t> data, bool isPreset, bool hasHeader)
{
    if (hasHeader) {
        if (data.size() <= kHeaderBytes) {
            return {};
        }
        data = data.subspan(kHeaderBytes);
    }
    CByteBuffer body;
    {
        CMemoryReader chunk(data);
        QEL_TRY(chunk.readCompressedData(body, isPreset ? kPresetId : kBankId), {});
    }
    return change([&] { return activateOrRestore(body, isPreset); });
}

// A chunk can be whole and hold an entry that does not fit, which shows when others are in place already.
// Programs and their histories the registry keeps itself.
CError CAudioHostState::activateOrRestore(const CByteBuffer& body, bool isPreset)
{
    takeHostValues();
    CByteBuffer before;
    QEL_TRY(acquire(before, true), {});
    if (CError error = activate(body, isPreset)) {
        releaseError(activate(before, true));
        QEL_TRY(std::move(error), {});
    }
    return {};
}

} // namespace qel
