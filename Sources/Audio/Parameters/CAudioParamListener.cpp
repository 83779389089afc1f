// Hears of every change to a parameter of one instance.
#include "CAudioParamListener.h"

#include <utility>

namespace qel {

namespace {

// A bridge carries no more than a word, so the notice lies here while this thread tells the bridges. A
// listener may write in its turn and so begin another round inside its own.
thread_local const CAudioParamNotice* currentNotice = nullptr;

} // namespace

void CAudioParamListener::tellAll(CBridgeBase& source, const CAudioParamNotice& notice)
{
    const CAudioParamNotice* outer = std::exchange(currentNotice, &notice);
    source.updateBridges(notice.sender);
    currentNotice = outer;
}

void CAudioParamListener::update(CBridge*, std::uintptr_t)
{
    if (currentNotice) {
        onParamChange(*currentNotice);
    }
}

} // namespace qel
