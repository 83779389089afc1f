// The tie between a parameter and one slot of a module.
#pragma once

#include <cstdint>
#include <utility>

namespace qel {

class CAudioParam;
class CAudioParamEventQueue;
class CAudioParamStorage;

// Raised where a change comes for a target, which lowers it when nothing waits any more. Raised marks hang on
// a list, so that nobody has to go round and look at all targets.
class CAudioParamMark
{
public:
    CAudioParamMark() = default;
    CAudioParamMark(const CAudioParamMark&) = delete;
    CAudioParamMark& operator=(const CAudioParamMark&) = delete;

    // The list's first mark, null for none, stands at `list`, which outlives the use of this one.
    void hangOn(CAudioParamMark*& list) { list_ = &list; }

    bool isRaised() const { return isRaised_; }
    void raise()
    {
        isRaised_ = true;
        if (list_ && !std::exchange(isListed_, true)) {
            next_ = std::exchange(*list_, this);
        }
    }
    void lower() { isRaised_ = false; }

    // Calls function(mark) for the raised ones of a list; what is lowered leaves it.
    template <class Function>
    static void forEachRaised(CAudioParamMark*& list, Function&& function)
    {
        for (CAudioParamMark* mark = std::exchange(list, nullptr); mark;) {
            CAudioParamMark* const following = mark->next_;
            mark->isListed_ = false;
            if (mark->isRaised_) {
                function(*mark);
            }
            if (mark->isRaised_) {
                mark->raise();
            }
            mark = following;
        }
    }

private:
    CAudioParamMark** list_ = nullptr;
    CAudioParamMark* next_ = nullptr;
    bool isRaised_ = false;
    bool isListed_ = false;
};

// Owned by the target, which sets the middle part, hands the binding to CAudioParamAudioSide::prepare() and
// bind(), and back to unbind() before any of what it points to goes. In between the audio side alone touches
// it: a change that passes the filters arrives in `queue` and raises `mark`; the target applies it to
// `storage` when its time has come. `storage` is what the module sees now.
struct CAudioParamBinding
{
    CAudioParam* param = nullptr; // set by prepare()

    CAudioParamEventQueue* queue = nullptr;
    CAudioParamStorage* storage = nullptr;
    CAudioParamMark* mark = nullptr;
    std::int32_t group = -1; // the only group that matters, -1: every
    std::int32_t entry = -1; // the only entry that matters, -1: every

    CAudioParamBinding* next = nullptr; // the parameter's list
};

} // namespace qel
