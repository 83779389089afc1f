// Filter generators whose tags are known and whose filters do not exist.
#pragma once

#include "CAudioFilterGen.h"

namespace qel {

// A tree that names one of these does not load: init checks what it can, then says that the filter is not
// available. A plain object under such a tag would instead be found missing much later, by whoever wanted to
// run it.
class CAudioFilterReservedGen : public CAudioFilterGen
{
public:
    CError init() override;
    void appendSections(CFilterSections&, double, std::span<const double>) const override {}

protected:
    virtual CError checkAttributes() { return {}; }
};

// FIR low-pass.
class CAudioFilterFIRLPGen : public CAudioFilterReservedGen
{};

// FIR filters for limiters, types 0 to 2.
class CAudioFilterFIRLimGen : public CAudioFilterReservedGen
{
protected:
    CError checkAttributes() override;
};

// FIR Hilbert transform.
class CAudioFilterFIRHilbGen : public CAudioFilterReservedGen
{};

// The two halves of a Hilbert pair of first-order all-passes, types 0 and 1.
class CAudioFilterAPF1Gen : public CAudioFilterReservedGen
{
protected:
    CError checkAttributes() override;
};

} // namespace qel
