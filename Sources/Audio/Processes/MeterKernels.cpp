// Level measurement: the state of a meter and the kernels that work on it.
#include "MeterKernels.h"

#include "KernelMath.h"
#include "Math/Elementary.h"
#include "OnePoleGain.h"

#include <algorithm>
#include <cmath>

namespace qel {

namespace {

// Which of two levels is the more extreme one.
struct Largest
{
    static bool beats(double a, double b) { return a > b; }
};
struct Smallest
{
    static bool beats(double a, double b) { return a < b; }
};

template <class Order>
double extreme(double a, double b)
{
    return Order::beats(b, a) ? b : a;
}

// Coefficient of a one-pole follower with its -3 dB point at `cutoffHz`.
double onePole(double cutoffHz, double sampleRateHz)
{
    return envelopeGain(2.0 * kernelmath::kPi * cutoffHz / sampleRateHz);
}

double releaseCoefficient(double releaseSec, double sampleRateHz)
{
    constexpr double kShortestSec = 0.0001;
    if (releaseSec < kShortestSec) {
        return 1.0;
    }
    constexpr double kLogOfHundredth = -4.605170185988091368; // ln 0.01
    return 1.0 - math::exp(kLogOfHundredth / (releaseSec * sampleRateHz));
}

void init(const CKernelCall& call)
{
    CMeterState& m = *call.state<CMeterState>(0);
    double* history = call.samples(1);
    const double rate = call.scalar;
    m.rmsCoefficient = onePole(m.rmsCutoffHz, rate);
    m.biasCoefficient = onePole(m.biasCutoffHz, rate);
    m.releaseCoefficient = releaseCoefficient(m.releaseSec, rate);
    m.dtSec = 1.0 / rate;
    m.startSec = m.timeSec;
    m.samples = 0;
    m.s1 = m.s2 = m.t1 = m.t2 = m.held = m.peak = m.frameMax = m.windowMax = m.start;
    m.historyLength = std::max(m.historyLength, 1);
    m.frameLength = std::max(m.frameLength, 1);
    std::fill_n(history, m.historyLength, m.start);
    m.writeIndex = m.historyLength - 1;
    m.windowAge = m.historyLength - 1;
    m.samplesLeft = m.frameLength;
}

// Finds the extreme of the history anew, from the newest slot back; among equals the oldest counts, so that
// the next scan comes when that one leaves.
template <class Order>
void scanHistory(CMeterState& m, const double* history, std::int32_t newest)
{
    // Slots fill downwards, so going up goes back in time.
    std::int32_t slot = newest;
    m.windowMax = history[slot];
    m.windowAge = m.historyLength - 1;
    for (std::int32_t back = 1; back < m.historyLength; ++back) {
        slot = slot + 1 == m.historyLength ? 0 : slot + 1;
        if (!Order::beats(m.windowMax, history[slot])) {
            m.windowMax = history[slot];
            m.windowAge = m.historyLength - 1 - back;
        }
    }
}

template <class Order>
void endFrame(CMeterState& m, double* history)
{
    const std::int32_t newest = m.writeIndex;
    history[newest] = m.frameMax;
    m.writeIndex = newest == 0 ? m.historyLength - 1 : newest - 1;
    if (!Order::beats(m.windowMax, m.frameMax)) {
        m.windowMax = m.frameMax;
        m.windowAge = m.historyLength - 1;
    } else if (m.windowAge == 0) {
        scanHistory<Order>(m, history, newest);
    } else {
        --m.windowAge;
    }
    m.peak = m.windowMax;
    m.samplesLeft = m.frameLength;
}

// Cuts the call at the ends of frames and runs `part(from, to)` on the samples between.
template <class Order, class Part>
void forFrames(const CKernelCall& call, Part&& part)
{
    CMeterState& m = *call.state<CMeterState>(0);
    double* history = call.samples(1);
    std::uint32_t done = 0;
    while (done < call.count) {
        const auto length = std::min(call.count - done, static_cast<std::uint32_t>(m.samplesLeft));
        part(m, done, done + length);
        done += length;
        m.samplesLeft -= static_cast<std::int32_t>(length);
        if (m.samplesLeft == 0) {
            endFrame<Order>(m, history);
            m.frameMax = m.held;
        }
    }
    m.samples += call.count;
    m.timeSec = m.startSec + static_cast<double>(m.samples) * m.dtSec;
}

template <class Order>
void meter(const CKernelCall& call)
{
    const double* in = call.samples(2);
    forFrames<Order>(call, [in](CMeterState& m, std::uint32_t from, std::uint32_t to) {
        const double c = m.rmsCoefficient;
        const double release = m.releaseCoefficient;
        double s1 = m.s1;
        double s2 = m.s2;
        double held = m.held;
        double frameMax = m.frameMax;
        for (std::uint32_t i = from; i < to; ++i) {
            const double q = in[i] * in[i];
            frameMax = extreme<Order>(frameMax, q);
            s1 += (q - s1) * c;
            s2 += (s1 - s2) * c;
            held = Order::beats(s2, held) ? s2 : held + (s2 - held) * release;
            frameMax = extreme<Order>(frameMax, held);
        }
        m.s1 = s1;
        m.s2 = s2;
        m.held = held;
        m.frameMax = frameMax;
    });
}

double quotient(double s, double t)
{
    return t != 0.0 ? s / t : 1.0;
}

double ratio(const CMeterState& m)
{
    return std::sqrt(quotient(m.s2, m.t2));
}

void meterDifference(const CKernelCall& call)
{
    const double* a = call.samples(2);
    const double* b = call.samples(3);
    forFrames<Largest>(call, [a, b](CMeterState& m, std::uint32_t from, std::uint32_t to) {
        const double c = m.rmsCoefficient;
        double s1 = m.s1;
        double s2 = m.s2;
        double t1 = m.t1;
        double t2 = m.t2;
        double largest = 0.0; // the root is monotonic, so the largest root is the root of the largest
        for (std::uint32_t i = from; i < to; ++i) {
            s1 += (a[i] * a[i] - s1) * c;
            s2 += (s1 - s2) * c;
            t1 += (b[i] * b[i] - t1) * c;
            t2 += (t1 - t2) * c;
            largest = extreme<Largest>(largest, quotient(s2, t2));
        }
        m.s1 = s1;
        m.s2 = s2;
        m.t1 = t1;
        m.t2 = t2;
        m.held = ratio(m);
        m.frameMax = extreme<Largest>(m.frameMax, std::sqrt(largest));
    });
}

template <class Order>
void readOut(const CKernelCall& call)
{
    double* out = call.samples(0);
    const CMeterState& m = *call.state<CMeterState>(1);
    out[0] = m.timeSec;
    out[1] = call.scalar * std::sqrt(m.held);
    out[2] = call.scalar * std::sqrt(extreme<Order>(m.peak, m.frameMax));
}

void readOutDifference(const CKernelCall& call)
{
    double* out = call.samples(0);
    const CMeterState& m = *call.state<CMeterState>(1);
    out[0] = m.timeSec;
    out[1] = ratio(m);
    out[2] = extreme<Largest>(m.peak, m.frameMax);
}

constexpr CKernelDef kTable[] = {
    {"meter", meter<Largest>, 3, 3},        {"meterc", meter<Smallest>, 3, 3},
    {"meterd", meterDifference, 4, 3},      {"meteri", init, 2, 3},
    {"metersub", readOut<Largest>, 2, 1},   {"metersubc", readOut<Smallest>, 2, 1},
    {"metersubd", readOutDifference, 2, 1},
};

} // namespace

std::span<const CKernelDef> meterKernels()
{
    return kTable;
}

} // namespace qel
