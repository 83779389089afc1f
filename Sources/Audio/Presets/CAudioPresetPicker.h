// Presets that parameters pick.
#pragma once

#include "CAudioParamCollector.h"
#include "CAudioParamListener.h"
#include "CAudioPresetBank.h"

#include <functional>

namespace qel {

// A part of an enumerated registry: the user's list of its presets, and the parameters that select one of
// them, each for its group or for all. The list is read once. Any thread but the audio thread.
class CAudioPresetPicker
{
public:
    // Called in the thread that has set the parameter, without a lock of this class.
    using Picked = std::function<void(const CAudioPreset& preset, std::int32_t group)>;

    // Begins to listen to the parameters that name `registry` as theirs.
    void setUp(CAudioParamCollector& collector, CAudioParamRegistryBase& registry, const CString& storeName,
               Picked picked);
    void release() { listener_.attach(nullptr); }

    const CAudioPresetBank& getList() const { return list_; }

private:
    void onParamChange(const CAudioParamNotice& notice);

    CAudioParamCollector* collector_ = nullptr;
    CAudioParamRegistryBase* registry_ = nullptr;
    CAudioPresetBank list_;
    Picked picked_;
    COwnedParamListener<CAudioPresetPicker> listener_{*this, &CAudioPresetPicker::onParamChange};
};

} // namespace qel
