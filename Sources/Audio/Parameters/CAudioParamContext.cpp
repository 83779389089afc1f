// What accompanies a write to a parameter.
#include "CAudioParamContext.h"

#include "CAudioParam.h"
#include "CAudioParamCollector.h"

#include <utility>

namespace qel {

CAudioParamContext::Scope::~Scope()
{
    if (--context_.depth_ > 0) {
        return;
    }
    // Taken out first: a listener may write with the same context.
    const std::vector<CAudioParamNotice> notices = std::exchange(context_.notices_, {});
    for (const CAudioParamNotice& notice : notices) {
        notice.param->getCollector().deliver(notice);
    }
}

void CAudioParamContext::addNotice(CAudioParam& param, const CAudioParamChange& change)
{
    CAudioParamNotice notice{&param, change, sender, origin, recorder};
    notice.change.values = nullptr;
    notice.change.pool = nullptr;
    notices_.push_back(notice);
}

} // namespace qel
