// Writes parameters from other parameters.
#include "CAudioParamFilter.h"

#include "CAudioParamCollector.h"

namespace qel {

CAudioParamFilter::~CAudioParamFilter()
{
    CAudioParamFilter::release();
}

CError CAudioParamFilter::init(CAudioParamCollector& collector, const CString& processName,
                               const std::vector<CString>& sources, const std::vector<CString>& destinations)
{
    for (const CString& name : sources) {
        sources_.push(&collector.resolveParam(processName + "." + name));
    }
    for (const CString& name : destinations) {
        destinations_.push(&collector.resolveParam(processName + "." + name));
    }
    for (CAudioParam* destination : destinations_) {
        for (CAudioParam* source : sources_) {
            if (feeds(*destination, *source)) {
                QEL_FAIL(processName,
                         "@qelstr_CAudioParamFilter_init_Circle Parameter '%1' would be written from itself.",
                         source->getName());
            }
        }
    }
    for (CAudioParam* source : sources_) {
        source->addFilter(*this);
    }
    return {};
}

void CAudioParamFilter::release()
{
    for (CAudioParam* source : sources_) {
        source->removeFilter(*this);
    }
    sources_.clear();
    destinations_.clear();
}

bool CAudioParamFilter::feeds(CAudioParam& from, const CAudioParam& target)
{
    if (&from == &target) {
        return true;
    }
    bool found = false;
    from.forEachFilter([&](CAudioParamFilter& filter) {
        filter.forEachDestination(from, [&](CAudioParam& fed) { found = found || feeds(fed, target); });
    });
    return found;
}

} // namespace qel
