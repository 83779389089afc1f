// Kernels of the compressor's attack: a gain that jumps becomes one that moves.
#include "CrunchKernels.h"
#include "OnePoleGain.h"

#include <algorithm>
#include <numbers>

namespace qel {

namespace {

constexpr double kRestGain = 1.0;
constexpr double kMinW = 0.0001;
constexpr double kEvenMultiple = 6.0;

enum class EOutput
{
    kGain,
    kReciprocal,
    kRatio,
};

template <bool kIsFixed, EOutput kOutput>
void follow(const CKernelCall& call)
{
    double* out = call.samples(0);
    CrunchAtkState& state = *call.state<CrunchAtkState>(1);
    const double* in = call.samples(2);
    const auto stateOf = [&](std::size_t) -> CrunchAtkState& { return state; };
    CrunchAttack<double, kIsFixed> attack(stateOf);
    for (std::size_t i = 0; i < call.count; ++i) {
        const double x = in[i];
        const double before = attack.last();
        const double gain = attack.follow(x);
        if constexpr (kOutput == EOutput::kGain) {
            out[i] = gain;
        } else if constexpr (kOutput == EOutput::kReciprocal) {
            out[i] = 1.0 / gain;
        } else {
            out[i] = attack.ratio(before, x);
        }
    }
    attack.store(stateOf);
}

template <EOutput kOutput>
void followByType(const CKernelCall& call)
{
    if (call.state<CrunchAtkState>(1)->type == CrunchAtkState::EType::kFixed) {
        follow<true, kOutput>(call);
    } else {
        follow<false, kOutput>(call);
    }
}

void fillTables(CrunchAtkState& state, double sampleRateHz)
{
    const double q = 2.0 * std::numbers::pi / sampleRateHz;
    const bool isEven = state.type == CrunchAtkState::EType::kEven;
    const double first = isEven ? kEvenMultiple : kCascadeFirst;
    const double middle = isEven ? kEvenMultiple : kCascadeMiddle;
    const double last = isEven ? kEvenMultiple : kCascadeLast;
    CrunchTables& tables = state.tables;
    for (std::size_t i = 1; i < CrunchTables::kEntries; ++i) {
        const double w =
            std::max(q / (static_cast<double>(i) * state.attackSec / CrunchTables::kSteps), kMinW);
        tables.first[i] = envelopeGain(first * w);
        tables.middle[i] = envelopeGain(middle * w);
        tables.last[i] = envelopeGain(last * w);
    }
    // A time of 0 has no frequency.
    tables.first[0] = tables.first[1];
    tables.middle[0] = tables.middle[1];
    tables.last[0] = tables.last[1];
}

void init(const CKernelCall& call)
{
    CrunchAtkState& state = *call.state<CrunchAtkState>(0);
    fillTables(state, call.scalar);
    state.stages.set(kRestGain);
}

void update(const CKernelCall& call)
{
    CrunchAtkState& state = *call.state<CrunchAtkState>(0);
    const CrunchStages running = call.state<CrunchAtkState>(1)->stages;
    fillTables(state, call.scalar);
    state.stages = running;
}

void clear(const CKernelCall& call)
{
    call.state<CrunchAtkState>(0)->stages.set(kRestGain);
}

} // namespace

void runCrunchAttack(const CKernelCall& call)
{
    const CrunchAtkState& state = *call.state<CrunchAtkState>(1);
    if (state.isInverse) {
        followByType<EOutput::kRatio>(call);
    } else if (state.isShaped) {
        followByType<EOutput::kReciprocal>(call);
    } else {
        followByType<EOutput::kGain>(call);
    }
}

namespace {

constexpr CKernelDef kTable[] = {
    {"crunchatk", runCrunchAttack, 3, 3},
    {"crunchatki", init, 1, 1},
    {"crunchatku", update, 2, 1},
    {"crunchatkc", clear, 1, 1},
};

} // namespace

std::span<const CKernelDef> crunchAtkKernels()
{
    return kTable;
}

} // namespace qel
