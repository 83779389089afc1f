// What a host saves and loads of an instance.
#pragma once

#include "CBridge.h"
#include "CByteBuffer.h"
#include "CCriticalSection.h"
#include "CError.h"

#include <atomic>
#include <cstdint>
#include <functional>
#include <span>
#include <thread>

namespace qel {

class CAudioExtParamList;
class CAudioParamCollector;
class CAudioParamRegistry;

// A chunk is a compressed chunk, "aprs" for the current program or "abnk" for all, behind a header of 16 zero
// bytes where the host layer wants one. Control threads; loads take turns.
class CAudioHostState
{
public:
    using ProgramHandler = std::function<void()>;

    // `onProgramChange` is called for programs that change without the host's doing, with no lock held.
    CAudioHostState(CAudioParamRegistry& registry, CAudioParamCollector& params,
                    CAudioExtParamList& extParams, ProgramHandler onProgramChange);
    CAudioHostState(const CAudioHostState&) = delete;
    CAudioHostState& operator=(const CAudioHostState&) = delete;

    // Subscribes to program changes.
    void attach();

    CError save(CByteBuffer& outBuffer, bool isPreset, bool withHeader);
    // With a header and no more than that, does nothing. A faulty chunk changes nothing.
    CError load(std::span<const std::uint8_t> data, bool isPreset, bool hasHeader);
    CError activateProgram(std::int32_t index);
    void renameProgram(const CString& name);

    // Whether this thread is loading a state or going to a program for the host, which asks for all values
    // afterwards: told of each of them, it would take them for automation.
    bool isActivating() const { return activator_.load() == std::this_thread::get_id(); }

private:
    class CActivation;

    // Runs `action()` as a change of the state as a whole, which the host itself has asked for.
    template <class Action>
    CError change(Action&& action);
    CError acquire(CByteBuffer& outBody, bool isPreset);
    void takeHostValues();
    CError activate(const CByteBuffer& body, bool isPreset);
    CError activateOrRestore(const CByteBuffer& body, bool isPreset);
    void onProgramChange(CBridge* sender, std::uintptr_t userWord);

    CAudioParamRegistry& registry_;
    CAudioParamCollector& params_;
    CAudioExtParamList& extParams_;
    const ProgramHandler handler_;
    CCriticalSection lock_; // taken before all locks of the tree
    std::atomic<std::thread::id> activator_{};
    bool haveProgramsChanged_ = false; // while a state is activated; under the lock
    COwnedBridge<CAudioHostState> bridge_{*this, &CAudioHostState::onProgramChange};
};

} // namespace qel
