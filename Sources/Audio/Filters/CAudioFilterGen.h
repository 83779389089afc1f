// Base of the filter generators.
#pragma once

#include "CFilterSection.h"
#include "CObject.h"

#include <span>

namespace qel {

// Turns a few real numbers into a cascade of filter sections. Generators are nodes of the shared tree,
// complete once it is loaded and read-only from then on: any number of instances may call generate() at once,
// on their audio threads. It works in the caller's memory and allocates nothing.
//
// Parameters come in the order of a filter's slots: 0 frequency in Hz, 1 gain as a linear factor, 2 bandwidth
// in octaves or Q. Filters are stable for every value: where a formula would leave the unit circle, or have
// no finite result, its arguments are held at the nearest ones that work.
//
// What makes a generator unusable (a type that does not exist, missing coefficients) fails init.
class CAudioFilterGen : public CObject
{
public:
    static void buildClassInfo(CClassInfo& info);

    // Replaces what `outList` holds by the filter's sections, in the order in which they run. An empty list
    // passes the signal through; so does a filter that has been given fewer parameters than it needs.
    void generate(CFilterSections& outList, double sampleRateHz, std::span<const double> params) const
    {
        outList.clear();
        appendSections(outList, sampleRateHz, params);
    }
    virtual void appendSections(CFilterSections& outList, double sampleRateHz,
                                std::span<const double> params) const = 0;

    // Delay that the filter adds to the latency of a stream, in samples at the stream's rate, whatever the
    // parameters.
    virtual double latencySamples() const { return 0.0; }

    // The generator at `path`, as seen from `object`, or null. One that holds `object` is not found: it would
    // generate itself without end.
    static const CAudioFilterGen* findFrom(CObject& object, const CString& path);

protected:
    // Fails with `message` and the value unless `type` lies between 0 and `maxType`.
    CError checkType(std::int32_t maxType, const char* message) const;
    std::int32_t getType() const { return type_; }

private:
    std::int32_t type_ = 0;
};

// A cascade without sections.
class CAudioFilterBypassGen : public CAudioFilterGen
{
public:
    void appendSections(CFilterSections&, double, std::span<const double>) const override {}
};

} // namespace qel
