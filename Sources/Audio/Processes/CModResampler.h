// Raises or lowers the sample rate by 1, 2, 4 or 8.
#pragma once

#include "CModProcessSeq.h"

#include <algorithm>

namespace qel {

// A chain of two-to-one stages, each a rate change and a half-band filter, that grows and shrinks with the
// parameters `mode` (slot 0: 0 automatic, else the number of stages plus one) and `host-mode` (slot 1: the
// number of stages when automatic). Its parts are made from definitions of the shared tree. The steep filter
// stands at the lowest rate on both sides, and the two chains mirror each other:
//
//   up:    interpolator, filter 1, interpolator, filter 2, interpolator, filter 2
//   down:  filter 2, decimator, filter 2, decimator, filter 1, decimator
//
// Everything between an upsampler and its downsampler sees a stream of the higher rate. The two must change
// at the same sample, or the stream would come out at a wrong rate: so a resampler takes up parameters only
// where a call of process() starts, which is once in a step of the compound, at times counted at the outer
// rate, and without the time shift that would let the later one lag behind. The change itself is a cut; under
// a CAudioProcessOverlap it is made in a stream that is not heard yet.
class CModResampler : public CModProcessSeq
{
public:
    static constexpr int kMaxStages = 3;

    CError init() override;
    bool process() override;
    std::int64_t steadySamples(double rateHz) const override
    {
        return stages_ == wantedStages() ? CModProcessSeq::steadySamples(rateHz) : 0;
    }
    std::uint32_t layout() const override { return static_cast<std::uint32_t>(wantedStages()); }
    bool hasLayout() const override { return true; }

    int rateFactor() const override { return 1 << std::max(stages_, wantedStages()); }

    // Factors of two at work.
    int stages() const { return stages_; }
    // By how much the filters of so many stages make the stream late, in samples of the outer rate. Before
    // the first step: it reads the filters' settings, which are fixed, where they stand.
    double latencySamples(int stages) const;

protected:
    int slotCount() const override { return 2; }
    // A change that comes between two steps of the whole finds spans of the length that was right before.
    int limitStep(int count) const override;
    CModResampler(const CAudioProcessDefBase& def, bool isUpsampler)
        : CModProcessSeq(def), isUpsampler_(isUpsampler)
    {}

private:
    int wantedStages() const;
    void takeDueChanges();
    void setStages(int stages);

    const bool isUpsampler_;
    int stages_ = 0;
};

} // namespace qel
