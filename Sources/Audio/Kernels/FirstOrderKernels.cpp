// Chains of one to four equal one-pole low-passes or high-passes.
#include "FilterSections.h"
#include "KernelFamilies.h"

namespace qel {

namespace {

// Serves as init and as update: both clear the memory and take k from operand 1.
void init(const CKernelCall& call)
{
    *call.state<FirstOrderState>(0) = {*call.samples(1), {}};
}

// The low-pass and the high-pass behind the saturator, and high-passes of odd order.
using HighPass1 = FirstOrderSection<1, true, false>;
using HighPass2 = BiquadSection<HighPassNumerator, true>;
constexpr CKernelJoin kLowPassJoins[] = {ChainOf<FirstOrderSection<2, false, false>, HighPass1>::kJoin};
constexpr CKernelJoin kLowPassGainJoins[] = {ChainOf<FirstOrderSection<2, false, true>, HighPass1>::kJoin};
constexpr CKernelJoin kHighPassJoins[] = {
    ChainOf<HighPass1, HighPass2, HighPass2>::kJoin,
    ChainOf<HighPass1, HighPass2>::kJoin,
};

template <std::size_t kStages, bool kIsHighPass, bool kHasGain>
constexpr CKernelDef row(const char* name, std::span<const CKernelJoin> joins = {})
{
    return sectionKernel<FirstOrderSection<kStages, kIsHighPass, kHasGain>>(name, joins);
}

constexpr CKernelDef kTable[] = {
    {"fltlphp1i", init, 2, 1},
    {"fltlphp1u", init, 3, 1},
    row<1, false, false>("fltlp1a"),
    row<1, false, true>("fltlp1ag"),
    row<2, false, false>("fltlp1b", kLowPassJoins),
    row<2, false, true>("fltlp1bg", kLowPassGainJoins),
    row<3, false, false>("fltlp1c"),
    row<3, false, true>("fltlp1cg"),
    row<4, false, false>("fltlp1d"),
    row<4, false, true>("fltlp1dg"),
    row<1, true, false>("flthp1a", kHighPassJoins),
    row<1, true, true>("flthp1ag"),
    row<2, true, false>("flthp1b"),
    row<2, true, true>("flthp1bg"),
    row<3, true, false>("flthp1c"),
    row<3, true, true>("flthp1cg"),
    row<4, true, false>("flthp1d"),
    row<4, true, true>("flthp1dg"),
};

} // namespace

std::span<const CKernelDef> firstOrderKernels()
{
    return kTable;
}

} // namespace qel
