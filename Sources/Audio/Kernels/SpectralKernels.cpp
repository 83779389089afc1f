// Real Fourier transforms, spectra multiplied, and partitioned convolution.
//
// All work on the half-complex format of RealFft.h. `rdft*` take the length from the low 24 bits of the
// count.
//
// Convolution with a filter of P partitions of B taps, B input samples at a time, length L = 2B:
//   1. transform the last 2B input samples;
//   2. `convacquire` puts the spectrum in the history, in the place of the oldest of P, and clears the
//   accumulator;
//   3. for each partition p, `convmultadd` adds history (p blocks ago) x filter spectrum p to the accumulator
//      (`convmult` overwrites it instead: enough for a single partition, or for the first one);
//   4. transform the accumulator back; its last B samples are the output.
// A filter spectrum is the transform of B taps followed by B zeros. The count's low 24 bits are a number of
// bins and the scalar the first of them, so that the work of a block can be spread over several calls; the
// top 8 bits are log2 L. Bins beyond L / 2 are ignored.
#include "KernelFamilies.h"
#include "RealFft.h"

#include <algorithm>

namespace qel {

namespace {

void forward(const CKernelCall& call)
{
    realFftForward(call.samples(0), call.length(), call.state<std::int32_t>(1), call.samples(2));
}

void inverse(const CKernelCall& call)
{
    realFftInverse(call.samples(0), call.length(), call.state<std::int32_t>(1), call.samples(2));
}

// One product of half-complex values, put or added; any two of the three spectra may be the same.
template <bool kIsAdding>
void put(double& out, double value)
{
    out = kIsAdding ? out + value : value;
}

template <bool kIsAdding>
void multiplyReal(double* out, const double* a, const double* b, std::size_t index)
{
    put<kIsAdding>(out[index], a[index] * b[index]);
}

template <bool kIsAdding>
void multiplyComplex(double* out, const double* a, const double* b, std::size_t begin, std::size_t end)
{
    for (std::size_t re = 2 * begin; re < 2 * end; re += 2) {
        const double aRe = a[re];
        const double aIm = a[re + 1];
        const double bRe = b[re];
        const double bIm = b[re + 1];
        put<kIsAdding>(out[re], aRe * bRe - aIm * bIm);
        put<kIsAdding>(out[re + 1], aRe * bIm + aIm * bRe);
    }
}

template <bool kIsAdding>
void multiplySpectra(double* out, const double* a, const double* b, std::size_t length)
{
    if (length < 2) {
        return;
    }
    multiplyReal<kIsAdding>(out, a, b, 0);
    multiplyReal<kIsAdding>(out, a, b, 1);
    multiplyComplex<kIsAdding>(out, a, b, 1, length / 2);
}

template <bool kIsAdding>
void multiply(const CKernelCall& call)
{
    multiplySpectra<kIsAdding>(call.samples(0), call.samples(1), call.samples(2), call.length());
}

void square(const CKernelCall& call)
{
    double* spectrum = call.samples(0);
    multiplySpectra<false>(spectrum, spectrum, spectrum, call.length());
}

// The bins of a convolution step: the two real ones, which share the first two values, and the rest.
struct BinRange
{
    explicit BinRange(const CKernelCall& call)
    {
        const std::uint32_t log2 = call.log2Length();
        const double first = call.scalar + 0.5;
        if (log2 < 1 || log2 > CKernelCall::kLengthBits ||
            !(first >= 0 && first < CKernelCall::spectralCount(0, 1))) {
            return;
        }
        const std::size_t half = std::size_t{1} << (log2 - 1);
        const std::size_t from = static_cast<std::size_t>(first);
        const std::size_t to = from + call.length();
        begin = std::max<std::size_t>(from, 1);
        end = std::max(std::min(to, half), begin);
        hasZero = from == 0 && to > 0;
        hasHalf = from <= half && half < to;
    }

    std::size_t begin = 1;
    std::size_t end = 1;
    bool hasZero = false;
    bool hasHalf = false;
};

template <bool kIsAdding>
void convolve(const CKernelCall& call)
{
    const BinRange bins(call);
    double* out = call.samples(0);
    const double* history = call.samples(1);
    const double* filter = call.samples(2);
    if (bins.hasZero) {
        multiplyReal<kIsAdding>(out, history, filter, 0);
    }
    if (bins.hasHalf) {
        multiplyReal<kIsAdding>(out, history, filter, 1);
    }
    multiplyComplex<kIsAdding>(out, history, filter, bins.begin, bins.end);
}

void acquire(const CKernelCall& call)
{
    const BinRange bins(call);
    double* history = call.samples(0);
    double* accumulator = call.samples(1);
    const double* input = call.samples(2);
    const auto take = [&](std::size_t begin, std::size_t end) {
        for (std::size_t i = begin; i < end; ++i) {
            history[i] = input[i];
            accumulator[i] = 0;
        }
    };
    take(bins.hasZero ? 0 : 1, bins.hasHalf ? 2 : 1);
    take(2 * bins.begin, 2 * bins.end);
}

constexpr CKernelDef kTable[] = {
    {"rdftf", forward, 3, 7},
    {"rdfti", inverse, 3, 7},
    {"rdftm", multiply<false>, 3, 1},
    {"rdftma", multiply<true>, 3, 1},
    {"rdftsqr", square, 1, 1},
    {"convacquire", acquire, 3, 3},
    {"convmult", convolve<false>, 3, 1},
    {"convmultadd", convolve<true>, 3, 1},
};

} // namespace

std::span<const CKernelDef> spectralKernels()
{
    return kTable;
}

} // namespace qel
