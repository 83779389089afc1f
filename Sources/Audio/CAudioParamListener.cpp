// Hears of every change to a parameter of one instance.
#include "CAudioParamListener.h"

#include "CAudioParamCollector.h"

namespace qel {

void CAudioParamListener::attach(CAudioParamCollector* collector)
{
    if (collector_) {
        collector_->removeListener(*this);
    }
    collector_ = collector;
    if (collector_) {
        collector_->addListener(*this);
    }
}

} // namespace qel
