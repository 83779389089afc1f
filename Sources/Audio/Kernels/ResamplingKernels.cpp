// Factors of two in rate, and mid/side.
#include "KernelFamilies.h"
#include "RateChange.h"

namespace qel {

void interpolate(const CKernelCall& call)
{
    double* out = call.samples(0);
    const double* in = call.samples(1);
    for (std::size_t i = 0; i < call.count; ++i) {
        out[2 * i] = 2 * in[i];
        out[2 * i + 1] = 0;
    }
}

namespace {

template <std::size_t kPhase>
void takeEverySecond(const CKernelCall& call)
{
    double* out = call.samples(0);
    const double* in = call.samples(1);
    for (std::size_t i = 0; i < call.count; ++i) {
        out[i] = in[2 * i + kPhase];
    }
}

// Either output may be either input, here and below.
void encodeMidSide(const CKernelCall& call)
{
    double* mid = call.samples(0);
    double* side = call.samples(1);
    const double* in1 = call.samples(2);
    const double* in2 = call.samples(3);
    for (std::size_t i = 0; i < call.count; ++i) {
        const double right = in2[i];
        const double halfDifference = (right - in1[i]) * -0.5;
        mid[i] = right + halfDifference;
        side[i] = halfDifference;
    }
}

void decodeMidSide(const CKernelCall& call)
{
    double* left = call.samples(0);
    double* right = call.samples(1);
    const double* in1 = call.samples(2);
    const double* in2 = call.samples(3);
    for (std::size_t i = 0; i < call.count; ++i) {
        const double mid = in1[i];
        const double side = in2[i];
        left[i] = mid + side;
        right[i] = mid - side;
    }
}

} // namespace

void decimate(const CKernelCall& call)
{
    takeEverySecond<0>(call);
}

std::span<const CKernelDef> resamplingKernels()
{
    static const CKernelDef kTable[] = {
        {"interp2", interpolate, 2, 1, nullptr, nullptr, interpolatorJoins()},
        {"decim2", decimate, 2, 1},
        {"decim2s", takeEverySecond<1>, 2, 1},
        {"msenc", encodeMidSide, 4, 3},
        {"msdec", decodeMidSide, 4, 3},
    };
    return kTable;
}

} // namespace qel
