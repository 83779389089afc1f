// Left and right to mid and side, and back.
#include "CModMSCoder.h"

#include "CKernelContext.h"
#include "ParamRounding.h"

#include <array>

namespace qel {

namespace {

enum : int
{
    kPairsSlot,
    kModeSlot,
    kBypassSlot
};

constexpr int kMaxPair = 4;

} // namespace

void CModMSCoder::resolveKernels()
{
    encodeKernel_ = graph().kernels.findShortName("msenc");
    decodeKernel_ = graph().kernels.findShortName("msdec");
}

void CModMSCoder::syncLinks()
{
    output(0).setChannels(input(0).channels());
}

void CModMSCoder::applyEvents()
{
    isDecoder_ = roundParam(slots().value(kModeSlot, readGroup())) == 1;
    pairs_.clear();
    uncoded_.clear();
    if (slots().value(kBypassSlot, readGroup()) >= 0.5) {
        uncoded_ = channels();
    } else {
        findPairs();
    }
}

std::uint32_t CModMSCoder::layout() const
{
    std::uint32_t sum = slots().value(kBypassSlot, readGroup()) >= 0.5;
    for (int channel = 0; channel < kMaxChannels; ++channel) {
        sum = sum * 31 +
              static_cast<std::uint32_t>(roundParam(slots().value(kPairsSlot, readGroup(), channel)));
    }
    return sum;
}

void CModMSCoder::findPairs()
{
    struct Half
    {
        bool isOpen = false; // a first channel waits for its second
        bool isDone = false;
        Channel first{};
    };
    std::array<Half, kMaxPair + 1> halves;
    for (const Channel& channel : channels()) {
        const int number = roundParam(slots().value(kPairsSlot, readGroup(), channel.number));
        if (number < 1 || number > kMaxPair || halves[static_cast<std::size_t>(number)].isDone) {
            uncoded_.push(channel);
            continue;
        }
        Half& half = halves[static_cast<std::size_t>(number)];
        if (half.isOpen) {
            pairs_.push({half.first, channel});
            half.isDone = true;
        } else {
            half.first = channel;
        }
        half.isOpen = !half.isOpen;
    }
    for (const Half& half : halves) {
        if (half.isOpen) {
            uncoded_.push(half.first);
        }
    }
}

void CModMSCoder::step(int count)
{
    for (const Channel& channel : uncoded_) {
        output(0).emit(channel.number, input(0).gather(channel.number, count, def().isWeightedInput()), count,
                       channel.format);
    }
    for (const Pair& pair : pairs_) {
        code(pair, count);
    }
}

void CModMSCoder::code(const Pair& pair, int count)
{
    CKernelContext& kernels = graph().kernels;
    const auto samples = static_cast<std::size_t>(count);
    const CBufferRef in1 = input(0).gather(pair.first.number, count, def().isWeightedInput());
    const CBufferRef in2 = input(0).gather(pair.second.number, count, def().isWeightedInput());
    const CBufferRef out1 = kernels.allocateSamples(samples);
    const CBufferRef out2 = kernels.allocateSamples(samples);
    kernels.submit(isDecoder_ ? decodeKernel_ : encodeKernel_, static_cast<std::uint32_t>(count), 0.0,
                   {out1, out2, in1, in2});
    kernels.release(in1);
    kernels.release(in2);
    output(0).emit(pair.first.number, out1, count, pair.first.format);
    output(0).emit(pair.second.number, out2, count, pair.second.format);
}

template class CAudioModuleDef<CModMSCoder>;

} // namespace qel
