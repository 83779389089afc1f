// What accompanies a write to a parameter.
#pragma once

#include "CAudioParamChange.h"
#include "CCheckedObject.h"

#include <vector>

namespace qel {

class CAudioParam;
class CAudioParamBatch;
class CAudioParamStorage;
class CBridge;

// Takes down what a write changes, for undo. Called with the parameter's lock held, around the write.
class CAudioParamRecorder : public CCheckedObject
{
public:
    // `current` still holds the old values. The change's own values and pool are not set.
    virtual void onBeforeChange(CAudioParam& param, const CAudioParamStorage& current,
                                const CAudioParamChange& change) = 0;
    // `current` holds the new ones.
    virtual void onAfterChange(CAudioParam& param, const CAudioParamStorage& current,
                               const CAudioParamChange& change) = 0;
};

// Where a change came from, as listeners and registries see it.
enum class CAudioParamOrigin
{
    kUser,       // the UI, or code on its behalf
    kHost,       // the host's automation: not to be told to the host again
    kActivation, // a preset, an undo step, a reset
    kAudio       // set by the audio thread, or derived by a filter
};

// A change that has happened, for listeners and registries. The change says which part of the parameter is
// concerned and carries no values: the parameter has them, and they may be newer. Who keeps a copy of a value
// reads and stores it under the parameter's lock, or an older one could overwrite a newer.
struct CAudioParamNotice
{
    CAudioParam* param;
    CAudioParamChange change;
    CBridge* sender;
    CAudioParamOrigin origin;
    // Of the writer, for what belongs to the same step; null if there is none.
    CAudioParamRecorder* recorder = nullptr;
};

// Made by the caller for one or several writes, used by one thread. Notices of what was written gather here
// and go out when the outermost scope ends, which is after the parameter's lock is left (unless the caller
// holds it around the call). A caller that writes much under locks of its own keeps them back with a
// CAudioParamContext::Scope around all of it.
class CAudioParamContext
{
public:
    CAudioParamContext() = default;
    explicit CAudioParamContext(CAudioParamOrigin from) : origin(from) {}
    CAudioParamContext(const CAudioParamContext&) = delete;
    CAudioParamContext& operator=(const CAudioParamContext&) = delete;

    CAudioParamOrigin origin = CAudioParamOrigin::kUser;
    // It outlives the outermost scope: listeners may add what follows from a write.
    CAudioParamRecorder* recorder = nullptr;
    // Set: changes for the audio side gather there, for the caller to submit. Null: they go at once.
    CAudioParamBatch* batch = nullptr;
    // Does not hear of the change.
    CBridge* sender = nullptr;
    // The audio side has the values already, or newer ones: it is sent nothing.
    bool isKnownToAudio = false;

    // Keeps notices back while it lives; the outermost one delivers them.
    class Scope
    {
    public:
        explicit Scope(CAudioParamContext& context) : context_(context) { ++context_.depth_; }
        ~Scope();
        Scope(const Scope&) = delete;
        Scope& operator=(const Scope&) = delete;

    private:
        CAudioParamContext& context_;
    };

    // For CAudioParam: a part of a parameter has changed.
    void addNotice(CAudioParam& param, const CAudioParamChange& change);

private:
    std::vector<CAudioParamNotice> notices_;
    int depth_ = 0;
};

} // namespace qel
