// The tie between a parameter and one slot of a module.
#pragma once

#include <cstdint>

namespace qel {

class CAudioParam;
class CAudioParamEventQueue;
class CAudioParamStorage;

// Owned by the target, which sets the middle part, hands the binding to CAudioParamAudioSide::prepare() and
// bind(), and back to unbind() before any of what it points to goes. In between the audio side alone touches
// it: a change that passes the filters arrives in `queue` and raises `isDirty`; the target applies it to
// `storage` when its time has come. `storage` is what the module sees now.
struct CAudioParamBinding
{
    CAudioParam* param = nullptr; // set by prepare()

    CAudioParamEventQueue* queue = nullptr;
    CAudioParamStorage* storage = nullptr;
    bool* isDirty = nullptr;
    std::int32_t group = -1; // the only group that matters, -1: every
    std::int32_t entry = -1; // the only entry that matters, -1: every

    CAudioParamBinding* next = nullptr; // the parameter's list
};

} // namespace qel
