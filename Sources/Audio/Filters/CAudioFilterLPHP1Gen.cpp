// First-order low-pass and high-pass filters, up to four in a row.
#include "CAudioFilterLPHP1Gen.h"

#include "OnePoleGain.h"

namespace qel {

namespace {

// Angular frequency of each stage, over the frequency where the chain is 3 dB down, by type: 2 pi /
// sqrt(2^(1/n) - 1) for n low-passes, 2 pi sqrt(2^(1/n) - 1) for n high-passes.
constexpr double kStageFactors[] = {
    6.283185307179586, 9.762843238257704, 12.324520004807102, 14.445182941459475, // low-pass
    6.283185307179586, 4.043741832261851, 3.2032417967563136, 2.7329814903935525, // high-pass
};

} // namespace

void CAudioFilterLPHP1Gen::buildClassInfo(CClassInfo& info)
{
    using Self = CAudioFilterLPHP1Gen;
    CAudioFilterGen::buildClassInfo(info);
    info.bind<&Self::usesGain_>("use-gain", false);
}

CError CAudioFilterLPHP1Gen::init()
{
    QEL_TRY(CAudioFilterGen::init(), getFullName());
    QEL_TRY(checkType(7, "@qelstr_CAudioFilterLPHP1Gen_init_InvalidType Invalid filter type '%1' specified."),
            getFullName());
    return {};
}

void CAudioFilterLPHP1Gen::appendSections(CFilterSections& outList, double sampleRateHz,
                                          std::span<const double> params) const
{
    if (params.empty()) {
        return;
    }
    CFilterSection section;
    section.kind =
        static_cast<EFilterFamily>(static_cast<std::int32_t>(EFilterFamily::kLowPass1) + getType());
    section.gain = usesGain_ && params.size() > 1 ? params[1] : 1.0;
    section.poles = {onePoleGain(kStageFactors[getType()] * params[0] / sampleRateHz)};
    outList.push(std::move(section));
}

} // namespace qel
