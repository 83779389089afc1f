// Writes parameters from other parameters.
#include "CAudioParamFilter.h"

#include "CAudioParamCollector.h"

#include <algorithm>

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

std::vector<CAudioParam*> CAudioParamFilter::destinationsOf(const CAudioParam& source) const
{
    std::vector<CAudioParam*> fed;
    for (std::size_t i = 0; i < destinations_.size(); ++i) {
        if (sources_[std::min(i, sources_.size() - 1)] == &source) {
            fed.push_back(destinations_[i]);
        }
    }
    return fed;
}

bool CAudioParamFilter::feeds(CAudioParam& from, const CAudioParam& target)
{
    if (&from == &target) {
        return true;
    }
    bool found = false;
    from.forEachFilter([&](CAudioParamFilter& filter) {
        for (CAudioParam* destination : filter.destinationsOf(from)) {
            found = found || feeds(*destination, target);
        }
    });
    return found;
}

} // namespace qel
