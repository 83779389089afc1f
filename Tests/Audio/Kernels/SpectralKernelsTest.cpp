#include "KernelRig.h"
#include "RealFft.h"

#include <gtest/gtest.h>

#include <cmath>
#include <complex>
#include <numbers>
#include <string>

namespace qel {
namespace {

using test::isSameBits;
using test::KernelRig;
using test::noiseSignal;
using test::Signal;
using Complex = std::complex<double>;

// A context with the tables of one transform length.
class SpectralRig : public KernelRig
{
public:
    explicit SpectralRig(std::size_t length)
        : work_(bytes(realFftWorkSize(length) * sizeof(std::int32_t))),
          roots_(bytes(realFftRootsSize(length) * 8))
    {
        *static_cast<std::int32_t*>(context().address(work_)) = 0;
    }

    void forward(CBufferRef data, std::size_t length) { run("rdftf", length, 0, {data, work_, roots_}); }
    void inverse(CBufferRef data, std::size_t length) { run("rdfti", length, 0, {data, work_, roots_}); }
    CBufferRef spectrumOf(const Signal& signal)
    {
        const CBufferRef ref = buffer(signal);
        forward(ref, signal.size());
        return ref;
    }

private:
    CBufferRef work_;
    CBufferRef roots_;
};

// The sum that defines the transform, in the packed order.
Signal directTransform(const Signal& x)
{
    const std::size_t length = x.size();
    Signal packed(length);
    for (std::size_t k = 0; k <= length / 2; ++k) {
        Complex sum = 0;
        for (std::size_t n = 0; n < length; ++n) {
            const double turn = static_cast<double>(n * k % length) / static_cast<double>(length);
            sum += x[n] * std::polar(1.0, -2 * std::numbers::pi * turn);
        }
        if (k == 0 || k == length / 2) {
            packed[k == 0 ? 0 : 1] = sum.real();
        } else {
            packed[2 * k] = sum.real();
            packed[2 * k + 1] = sum.imag();
        }
    }
    return packed;
}

void expectNear(const Signal& a, const Signal& b, double tolerance)
{
    ASSERT_EQ(a.size(), b.size());
    for (std::size_t i = 0; i < a.size(); ++i) {
        ASSERT_NEAR(a[i], b[i], tolerance) << "index " << i << " of " << a.size();
    }
}

TEST(SpectralKernels, TransformAsTheDefiningSumAndBack)
{
    SpectralRig rig(2048);
    // Down again at the end: the tables follow the length.
    for (const std::size_t length : {2U, 4U, 8U, 16U, 128U, 2048U, 32U}) {
        const Signal signal = noiseSignal(length, 31);
        const CBufferRef data = rig.spectrumOf(signal);
        expectNear(rig.read(data, length), directTransform(signal), 1e-12 * std::sqrt(length));
        rig.inverse(data, length);
        expectNear(rig.read(data, length), signal, 1e-14);
    }
}

// Each block's bins are done in three calls that meet at odd places.
void submitInParts(KernelRig& rig, const char* name, std::size_t log2Length,
                   std::initializer_list<CBufferRef> operands)
{
    const std::size_t bins = (std::size_t{1} << log2Length) / 2 + 1;
    const std::size_t cuts[] = {0, bins / 3, bins / 2, bins};
    for (std::size_t i = 0; i < 3; ++i) {
        const auto count = CKernelCall::spectralCount(static_cast<std::uint32_t>(cuts[i + 1] - cuts[i]),
                                                      static_cast<std::uint32_t>(log2Length));
        rig.run(name, count, static_cast<double>(cuts[i]), operands);
    }
}

TEST(SpectralKernels, PartitionedConvolutionEqualsDirectConvolution)
{
    for (const std::size_t log2Length : {2U, 4U, 7U}) {
        const std::size_t length = std::size_t{1} << log2Length;
        const std::size_t block = length / 2;
        constexpr std::size_t kPartitions = 3;
        constexpr std::size_t kBlocks = 8;
        const Signal taps = noiseSignal(kPartitions * block, 36);
        const Signal in = noiseSignal(kBlocks * block, 37);

        SpectralRig rig(length);
        std::vector<CBufferRef> filter;
        std::vector<CBufferRef> history;
        for (std::size_t p = 0; p < kPartitions; ++p) {
            Signal part(length);
            std::copy_n(taps.begin() + static_cast<std::ptrdiff_t>(p * block), block, part.begin());
            filter.push_back(rig.spectrumOf(part));
            history.push_back(rig.buffer(Signal(length)));
        }
        const CBufferRef accumulator = rig.buffer(noiseSignal(length, 38));
        Signal out;
        for (std::size_t b = 0; b < kBlocks; ++b) {
            Signal window(length);
            const std::size_t begin = b == 0 ? block : 0;
            for (std::size_t i = begin; i < length; ++i) {
                window[i] = in[b * block + i - block];
            }
            const CBufferRef spectrum = rig.spectrumOf(window);
            submitInParts(rig, "convacquire", log2Length, {history[b % kPartitions], accumulator, spectrum});
            for (std::size_t p = 0; p < kPartitions; ++p) {
                const CBufferRef past = history[(b + kPartitions - p) % kPartitions];
                // Overwriting is as good as adding to the cleared accumulator.
                const char* name = p == 0 && b % 2 == 1 ? "convmult" : "convmultadd";
                submitInParts(rig, name, log2Length, {accumulator, past, filter[p]});
            }
            rig.inverse(accumulator, length);
            const Signal result = rig.read(accumulator, length);
            out.insert(out.end(), result.begin() + static_cast<std::ptrdiff_t>(block), result.end());
        }

        Signal expected(in.size());
        for (std::size_t n = 0; n < in.size(); ++n) {
            for (std::size_t k = 0; k < taps.size() && k <= n; ++k) {
                expected[n] += taps[k] * in[n - k];
            }
        }
        expectNear(out, expected, 1e-13 * static_cast<double>(length));
    }
}

} // namespace
} // namespace qel
