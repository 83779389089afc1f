// Writes parameters from other parameters.
#pragma once

#include "CAudioParamContext.h"
#include "CCheckedObject.h"
#include "CError.h"
#include "CInlineArray.h"
#include "CString.h"

#include <algorithm>
#include <vector>

namespace qel {

class CAudioParamCollector;

// A rule that keeps destinations in step with sources: the destination at an index follows the source at the
// same index, and destinations without a source of their own follow the last one. Owned by the process whose
// definition declares it; init and release on control threads. onParamChange runs in the thread that wrote
// the source, inside the source's lock, so that a destination can never be left behind by two writers; a rule
// that would feed a parameter from itself, directly or through other filters, is refused.
class CAudioParamFilter : public CCheckedObject
{
public:
    CAudioParamFilter() = default;
    CAudioParamFilter(const CAudioParamFilter&) = delete;
    CAudioParamFilter& operator=(const CAudioParamFilter&) = delete;
    ~CAudioParamFilter() override;

    // Names are relative to the process with this full name; remaps are followed.
    virtual CError init(CAudioParamCollector& collector, const CString& processName,
                        const std::vector<CString>& sources, const std::vector<CString>& destinations);
    // A source has changed; it holds the new values. The change itself carries none.
    virtual void onParamChange(CAudioParam& source, const CAudioParamChange& change,
                               CAudioParamContext& context) = 0;
    // Audio thread: group 0, entry 0 of a source has become `value` there; sends what follows from it to the
    // slots of the destinations, which control threads derive by themselves. False if it must be tried again
    // in the next processing call.
    virtual bool onChangeFromAudio(CAudioParam& source, double value, double timeSec) = 0;
    // Leaves the sources. Harmless when repeated.
    virtual void release();

protected:
    // Calls function(destination) for each destination that follows this source.
    template <class Function>
    void forEachDestination(const CAudioParam& source, Function&& function) const
    {
        for (std::size_t i = 0; i < destinations_.size(); ++i) {
            if (sources_[std::min(i, sources_.size() - 1)] == &source) {
                function(*destinations_[i]);
            }
        }
    }

private:
    // True if a change of `from` reaches `target` through filters.
    static bool feeds(CAudioParam& from, const CAudioParam& target);

    CInlineArray<CAudioParam*, 4> sources_;
    CInlineArray<CAudioParam*, 4> destinations_;
};

} // namespace qel
