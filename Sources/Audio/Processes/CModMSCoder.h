// Left and right to mid and side, and back.
#pragma once

#include "CAudioProcessBase.h"
#include "Definitions/CAudioModuleDef.h"

namespace qel {

// Codes channel pairs; slots: 0 `pairs` (for each channel 0 or the number of its pair, 1 to 4), 1 `mode` (0
// encoder, 1 decoder), 2 `bypass`. The first two channels with the same number are a pair, in channel order.
// All other channels pass by reference. mid = (l + r) / 2, side = (l - r) / 2; the decoder's sum and
// difference restore the pair.
class CModMSCoder : public CAudioProcessBase
{
public:
    using CAudioProcessBase::CAudioProcessBase;

    void resolveKernels() override;
    void syncLinks() override;
    void applyEvents() override;
    std::uint32_t layout() const override;
    bool hasLayout() const override { return true; }

protected:
    int slotCount() const override { return 3; }
    void step(int count) override;

private:
    struct Pair
    {
        Channel first;
        Channel second;
    };

    int readGroup() const { return group() == kGroupOfChannel ? 0 : group(); }
    void findPairs();
    void code(const Pair& pair, int count);

    int encodeKernel_ = -1;
    int decodeKernel_ = -1;
    bool isDecoder_ = false;
    CInlineArray<Pair, 4> pairs_;
    CInlineArray<Channel, 8> uncoded_;
};

using CModMSCoderDef = CAudioModuleDef<CModMSCoder>;
extern template class CAudioModuleDef<CModMSCoder>;

} // namespace qel
