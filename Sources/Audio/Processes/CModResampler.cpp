// Raises or lowers the sample rate by 1, 2, 4 or 8.
#include "CModResampler.h"

#include "CModDownsampler.h"
#include "CModFilter.h"
#include "CModUpsampler.h"
#include "Definitions/CAudioProcessDefBase.h"
#include "ParamRounding.h"

namespace qel {

namespace {

enum : int
{
    kModeSlot,
    kHostModeSlot
};

constexpr int kAutomatic = 0;
constexpr int kModeIfUnbound = 1; // no oversampling
constexpr std::size_t kMembersOfStage = 2;

struct Part
{
    const char* upsampler;
    const char* downsampler;
    const char* error;
};

constexpr Part kRateChange = {"shared::audio.modUpsamplerInterpolator",
                              "shared::audio.modDownsamplerDecimator",
                              "@qelstr_CModResampler_init_NoInterpMod "
                              "No module definition object with the name '%1' found."};
constexpr Part kFilter1 = {"shared::audio.modUpsamplerFilter1", "shared::audio.modDownsamplerFilter1",
                           "@qelstr_CModResampler_init_NoFilter1Mod "
                           "No filter 1 module definition object with the name '%1' found."};
constexpr Part kFilter2 = {"shared::audio.modUpsamplerFilter2", "shared::audio.modDownsamplerFilter2",
                           "@qelstr_CModResampler_init_NoFilter2Mod "
                           "No filter 2 module definition object with the name '%1' found."};

CError findPart(const CAudioProcessBase& owner, const Part& part, bool isUpsampler,
                const CAudioProcessDefBase*& outDef)
{
    const CString name = isUpsampler ? part.upsampler : part.downsampler;
    outDef = dynamic_cast<const CAudioProcessDefBase*>(owner.def().findObject(name));
    if (!outDef) {
        QEL_FAIL(owner.fullName(), part.error, name);
    }
    return {};
}

} // namespace

// Stages are added at the side of the higher rate: at the end of an upsampler, at the front of a downsampler.
CError CModResampler::init()
{
    QEL_TRY(CModProcessSeq::init(), fullName());
    const CAudioProcessDefBase* rateChange = nullptr;
    const CAudioProcessDefBase* filter1 = nullptr;
    const CAudioProcessDefBase* filter2 = nullptr;
    QEL_TRY(findPart(*this, kRateChange, isUpsampler_, rateChange), fullName());
    QEL_TRY(findPart(*this, kFilter1, isUpsampler_, filter1), fullName());
    QEL_TRY(findPart(*this, kFilter2, isUpsampler_, filter2), fullName());
    for (int place = 0; place < kMaxStages; ++place) {
        const int stage = isUpsampler_ ? place : kMaxStages - 1 - place;
        const CAudioProcessDefBase& filter = stage == 0 ? *filter1 : *filter2;
        if (isUpsampler_) {
            QEL_TRY(addMember(*rateChange, "modInterpDecim"), fullName());
            QEL_TRY(addMember(filter, "modFilter"), fullName());
        } else {
            QEL_TRY(addMember(filter, "modFilter"), fullName());
            QEL_TRY(addMember(*rateChange, "modInterpDecim"), fullName());
        }
    }
    return {};
}

double CModResampler::latencySamples(int stages) const
{
    double latency = 0.0;
    for (int stage = 0; stage < stages; ++stage) {
        const int place = isUpsampler_ ? 2 * stage + 1 : 2 * (kMaxStages - 1 - stage);
        const auto& filter = dynamic_cast<const CModFilter&>(member(static_cast<std::size_t>(place)));
        latency += filter.latencySamples(0) / (2 << stage);
    }
    return latency;
}

bool CModResampler::process()
{
    takeDueChanges();
    setStages(wantedStages());
    return CModProcessSeq::process();
}

int CModResampler::limitStep(int count) const
{
    const int longest = isUpsampler_ ? kLongestOrdinaryStep >> stages_ : kLongestOrdinaryStep;
    return std::min(CModProcessSeq::limitStep(count), longest);
}

void CModResampler::takeDueChanges()
{
    if (hasEvents() && !graph().holdsSettings) {
        const double outerRateHz = isUpsampler_ ? sampleRateHz() : sampleRateHz() / (1 << stages_);
        takeChangesUntil(positionSec() + 1.0 / outerRateHz);
    }
}

int CModResampler::wantedStages() const
{
    const int readGroup = group() == kGroupOfChannel ? 0 : group();
    const auto read = [&](int slot, int fallback) {
        const bool isBound = slots().entryCount(slot, readGroup) > 0;
        return isBound ? roundParam(slots().value(slot, readGroup)) : fallback;
    };
    const int mode = read(kModeSlot, kModeIfUnbound);
    return std::clamp(mode == kAutomatic ? read(kHostModeSlot, 0) : mode - 1, 0, kMaxStages);
}

void CModResampler::setStages(int stages)
{
    if (stages == stages_) {
        return;
    }
    stages_ = stages;
    const std::size_t working = static_cast<std::size_t>(stages) * kMembersOfStage;
    if (isUpsampler_) {
        activate(0, working);
    } else {
        activate(memberCount() - working, memberCount());
    }
}

template class CAudioModuleDef<CModDownsampler>;
template class CAudioModuleDef<CModUpsampler>;

} // namespace qel
