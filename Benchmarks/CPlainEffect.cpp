// The whole effect as one plain loop.
#include "CPlainEffect.h"

#include <algorithm>
#include <cmath>
#include <iterator>
#include <numbers>
#include <vector>

namespace qel {

namespace {

constexpr int kChannels = 2;
constexpr double kTwoPi = 2.0 * std::numbers::pi;

double linear(double db)
{
    return std::pow(10.0, db / 20.0);
}

// --- filters

double onePoleGain(double w)
{
    const double x = 2.0 - std::cos(std::min(w, std::numbers::pi));
    return 1.0 + std::sqrt(x * x - 1.0) - x;
}

struct Biquad
{
    double n1, n2, a1, a2, gain;
    double w1 = 0.0, w2 = 0.0;

    Biquad(double b0, double b1, double b2, double a0, double a1In, double a2In)
        : n1(b1 / b0), n2(b2 / b0), a1(-a1In / a0), a2(-a2In / a0), gain(b0 / a0)
    {}
    static Biquad pass(bool isHigh, double w, double q)
    {
        const double c = std::cos(w);
        const double alpha = std::sin(w) / (2.0 * q);
        const double b = isHigh ? (1.0 + c) / 2.0 : (1.0 - c) / 2.0;
        return {b, isHigh ? -2.0 * b : 2.0 * b, b, 1.0 + alpha, -2.0 * c, 1.0 - alpha};
    }
    // With its gain g at the centre and that of its analogue model at half the sample rate. `cycles` is the
    // centre over the sample rate.
    static Biquad peaking(double cycles, double g, double octaves)
    {
        const double w = 2.0 * cycles;
        const double v = w * std::pow(0.5, octaves / 2.0);
        const double w2 = w * w, w4 = w2 * w2, v2 = v * v, v4 = v2 * v2;
        const double G = g * g;
        const double X = v2 * (G - g);
        const double Q = 2.0 * w2 * v2 * (1.0 - G);
        const double H = (v4 + w4) * (g - 1.0);
        const double P = G * H + g * Q;
        const double U = 4.0 * w4 + 0.25;
        const double T = (1.0 + w4) * X;
        const double R1 = (P + X * U) / (X * U + Q + H);
        const double R2 = (P + T) / (T + Q + H);
        const double t = std::tan(std::numbers::pi * w / 2.0);
        const double t2 = t * t;
        const double A = std::sqrt((1.0 - G) / (R2 - G));
        const double B = std::sqrt(R2) * A;
        const double F = 1.0 / ((R1 - G) * (R2 - G));
        const double C = (R2 - R1) * (1.0 - G) + (1.0 - R1) * (R2 - G) * (t2 * t2);
        const double D = -2.0 * t2 * (R2 - G) * (1.0 - G);
        const double E = 2.0 * t2 * (R1 - G) * (R2 - G) * A;
        const double Sa = std::sqrt((C + D + E) * F);
        const double Sb = std::sqrt((G * C + R1 * D + std::sqrt(R2) * E) * F);
        return {Sb + B + t2, 2.0 * (t2 - B), t2 - Sb + B, Sa + A + t2, 2.0 * (t2 - A), A - Sa + t2};
    }

    double advance(double w)
    {
        w2 = w1;
        w1 = w;
        return w;
    }
    double lowPass(double x)
    {
        const double w = w1 * a1 + x + a2 * w2;
        const double y = (w + 2.0 * w1 + w2) * gain;
        advance(w);
        return y;
    }
    double highPass(double x)
    {
        const double w = w1 * a1 + x + a2 * w2;
        const double y = (w - 2.0 * w1 + w2) * gain;
        advance(w);
        return y;
    }
    double common(double x)
    {
        const double w = w1 * a1 + x + a2 * w2;
        const double y = (w + n1 * w1 + n2 * w2) * gain;
        advance(w);
        return y;
    }
};

struct Follower
{
    double k;
    double level = 0.0;

    double follow(double x) { return level += (x - level) * k; }
};

// Two paths of all-pass sections in z^-2, the second a sample late.
template <int kSections>
struct HalfBand
{
    double c[2][kSections];
    double z1[2][kSections + 1] = {};
    double z2[2][kSections + 1] = {};
    double late = 0.0;

    double next(double x)
    {
        double y[2];
        for (int path = 0; path < 2; ++path) {
            double v = x;
            for (int j = 0; j < kSections; ++j) {
                const double section = (v - z2[path][j + 1]) * c[path][j] + z2[path][j];
                z2[path][j] = z1[path][j];
                z1[path][j] = v;
                v = section;
            }
            z2[path][kSections] = z1[path][kSections];
            z1[path][kSections] = v;
            y[path] = v;
        }
        const double sum = (y[0] + late) * 0.5;
        late = y[1];
        return sum;
    }
};

// The steep one stands at the lowest rate.
using Steep = HalfBand<4>;
using Soft = HalfBand<2>;
constexpr Steep kSteep{
    {{0.035832788431062100, 0.272040143396457710, 0.572057197235700250, 0.827124761997323770},
     {0.134090141943066930, 0.424324871271868350, 0.706292142138639220, 0.941503094173755220}}};
constexpr Soft kSoft{
    {{0.042454709865267684, 0.393319893190328010}, {0.170739850497499070, 0.745713588720222980}}};

// --- modules

struct Noise
{
    std::uint32_t seed;

    double add(double x)
    {
        const std::uint32_t bit = (seed >> 23) & 1;
        seed = seed * 30013 + 30011;
        return x - 1e-11 + bit * 2e-11;
    }
};

// How far the level has fallen behind itself, in its steepest curve.
struct Transients
{
    static constexpr double kScaleDb = 9.0;
    static constexpr double kTimeSec = 0.025;
    static constexpr double kDecaySec = 0.08;

    double gain;
    Follower slow, smooth0, smooth1, smooth2, smooth3;
    double rise, fall, attack, decay;
    double fast = 0.0;
    double decayed = 0.0;

    explicit Transients(double rateHz)
    {
        const auto smooth = [&](double multiple) {
            return Follower{onePoleGain(multiple * kTwoPi * 240.0 / rateHz)};
        };
        const double w = kTwoPi * 0.6 / kTimeSec / rateHz;
        gain = 40.0 * 0.5 * linear(kScaleDb);
        slow = {onePoleGain(w)};
        rise = onePoleGain(w * 0.2);
        fall = onePoleGain(w * 0.04);
        smooth0 = smooth(7.56);
        smooth1 = smooth(1.31);
        smooth2 = smooth(1.31);
        smooth3 = smooth(1.5);
        attack = onePoleGain(kTwoPi / kTimeSec / rateHz);
        decay = onePoleGain(kTwoPi / kDecaySec / rateHz);
    }
    double next(double x)
    {
        slow.follow(x);
        fast += (x - fast) * (x <= fast ? fall : rise);
        double v = 1e-15;
        if (fast < slow.level) {
            v += (1.0 - std::sqrt(std::sqrt(std::sqrt(std::sqrt(fast / slow.level))))) * gain;
            v = std::min(v, 1.0);
        }
        v = smooth3.follow(smooth2.follow(smooth1.follow(smooth0.follow(v))));
        decayed += (v - decayed) * (decayed < v ? attack : decay);
        return decayed;
    }
};

struct Saturator
{
    static constexpr double kDriveDb = 12.0;
    static constexpr double kPhaseHz = 100.0;
    static constexpr double kRadius = 0.71349439;

    double b1, b2, c1, c2, smooth, pumpFirst;
    double up[4], down[4];
    double norm = 1.0;
    double drive = linear(kDriveDb);
    double y1 = 0.0, y2 = 0.0, e1 = 1.0, e2 = 1.0;
    double p[5] = {1.0, 1.0, 1.0, 1.0, 1.0};

    explicit Saturator(double rateHz)
    {
        const double cosine = std::cos(kTwoPi * kPhaseHz / rateHz);
        b1 = -2.0 * cosine / kRadius;
        b2 = 1.0 / (kRadius * kRadius);
        c1 = 2.0 * kRadius * cosine;
        c2 = -kRadius * kRadius;
        smooth = onePoleGain(8000.0 * kTwoPi / rateHz);
        pumpFirst = onePoleGain(50.0 * kTwoPi / rateHz);
        constexpr double kMultiples[] = {7.56, 1.31, 1.31, 1.5};
        for (int i = 0; i < 4; ++i) {
            up[i] = onePoleGain(kMultiples[i] * kTwoPi / rateHz / 0.083);
            down[i] = onePoleGain(kMultiples[i] * kTwoPi / rateHz / 0.00083);
        }
        calibrate(rateHz);
    }
    // Of the positive half-wave's curve and the negative one's, which bends at a third of the slope, one
    // is 1.
    static double curveGain(double level)
    {
        constexpr double kStart = -0.99;
        constexpr double kCentre = -2.390071426749364;
        const double u = level - 1.0 > kStart ? level : level * (-1.0 / 3.0);
        const double v = u - 1.0;
        if (v <= kStart) {
            return 1.0;
        }
        if (v < 0.700034704510532) {
            return 1.0 + (std::sqrt(kCentre * kCentre - (v - kStart) * (v - kStart)) + kCentre) / u;
        }
        return 1.0 - v / u;
    }
    double next(double x)
    {
        const double f = drive * x + c1 * y1 + c2 * y2;
        const double u = (f + b1 * y1 + b2 * y2) * (kRadius * kRadius);
        y2 = y1;
        y1 = f;
        e1 += (curveGain(u) - e1) * smooth;
        e2 += (e1 - e2) * smooth;
        p[0] += (e2 - p[0]) * pumpFirst;
        for (int i = 0; i < 4; ++i) {
            p[i + 1] += (p[i] - p[i + 1]) * (p[i + 1] <= p[i] ? up[i] : down[i]);
        }
        return x * (e2 * p[4]) * norm;
    }

private:
    // So that a sine of full scale keeps its level.
    void calibrate(double rateHz)
    {
        const Saturator atRest = *this;
        double total = 0.0;
        for (const double freqHz : {500.0, 2000.0}) {
            *this = atRest;
            double sums[2] = {};
            int counts[2] = {};
            const int count = static_cast<int>(rateHz / freqHz + 0.5);
            // By this recurrence: it decides which half-wave counts the zero between them.
            const double w = kTwoPi * freqHz / rateHz;
            double sine = 0.0;
            double previous = -std::sin(w);
            for (int i = 0; i < count; ++i) {
                const double y = next(sine);
                const double following = 2.0 * std::cos(w) * sine - previous;
                previous = sine;
                sine = following;
                const int half = y >= 0.0 ? 0 : 1;
                sums[half] += y * y;
                ++counts[half];
            }
            for (int half = 0; half < 2; ++half) {
                total += counts[half] > 0 ? std::sqrt(sums[half] / counts[half]) : 0.0;
            }
        }
        *this = atRest;
        norm = 2.8284 / total;
    }
};

// An octave down: two heads at half speed fade into each other.
struct Shifter
{
    static constexpr int kGrain = 2205;
    static constexpr int kHalfGrain = kGrain / 2;

    std::vector<double> rings[kChannels] = {std::vector<double>(2 * kGrain), std::vector<double>(2 * kGrain)};
    double twoCos = 2.0 * std::cos(kTwoPi / kGrain);
    double window = -0.5;
    double previous = 0.5 * std::sin(-std::numbers::pi / 2.0 - kTwoPi / kGrain);
    int write = 3;
    int headA = 0;
    int headB = 2 * kGrain - kHalfGrain;

    void next(const double* x, double* y)
    {
        for (int channel = 0; channel < kChannels; ++channel) {
            rings[channel][static_cast<std::size_t>(write)] = x[channel];
            rings[channel][static_cast<std::size_t>(write + kGrain)] = x[channel];
        }
        write = write == kGrain - 1 ? 0 : write + 1;
        int a = headA >> 1;
        if (a >= kHalfGrain) {
            window = -0.5;
            previous = 0.5 * std::sin(-std::numbers::pi / 2.0 - kTwoPi / kGrain);
            a -= kHalfGrain;
            headA -= kGrain;
        }
        const double t = 0.5 * (headA++ & 1);
        int b = headB >> 1;
        if (b >= kGrain) {
            b -= kHalfGrain;
            headB -= kGrain;
        }
        ++headB;
        const double weightA = window + 0.5;
        const double weightB = 1.0 - weightA;
        const double nextWindow = twoCos * window - previous;
        previous = window;
        window = nextWindow;
        for (int channel = 0; channel < kChannels; ++channel) {
            const double* const tapsA = rings[channel].data() + a;
            const double* const tapsB = rings[channel].data() + b;
            double p[4];
            for (int i = 0; i < 4; ++i) {
                p[i] = tapsA[i] * weightA + tapsB[i] * weightB;
            }
            y[channel] = p[1] + (0.5 * (p[2] - p[0]) + (p[0] - 2.5 * p[1] + 2.0 * p[2] - 0.5 * p[3] +
                                                        (1.5 * (p[1] - p[2]) + 0.5 * (p[3] - p[0])) * t) *
                                                           t) *
                                    t;
        }
    }
};

// Four followers in a row. The tables go by how near they have come to their target.
struct Stages
{
    double e1, e2, e3, e4;

    void set(double value) { e1 = e2 = e3 = e4 = value; }
    void follow(double target, double first, double middle, double last)
    {
        e1 += (target - e1) * first;
        e2 += (e1 - e2) * middle;
        e3 += (e2 - e3) * middle;
        e4 += (e3 - e4) * last;
    }
};

struct Compressor
{
    static constexpr double kDriveDb = 12.0;
    static constexpr double kReleaseSec = 0.15;
    static constexpr double kAttackSec = 0.02;

    double first[128], middle[128], last[128];
    double attackFirst, attackMiddle, attackLast;
    double drive = linear(kDriveDb) * 0.375;
    double norm = 1.0;
    Stages release, attack;

    explicit Compressor(double rateHz)
    {
        for (int i = 127; i >= 0; --i) {
            const double w = kTwoPi / rateHz * std::max(i, 1) / (127.0 * kReleaseSec);
            first[i] = onePoleGain(7.56 * w);
            middle[i] = onePoleGain(1.31 * w);
            last[i] = onePoleGain(1.5 * w);
        }
        const double w = std::max(kTwoPi / rateHz / kAttackSec, 0.0001);
        attackFirst = onePoleGain(7.56 * w);
        attackMiddle = onePoleGain(1.31 * w);
        attackLast = onePoleGain(1.5 * w);
        double sum = 0.0;
        for (const auto& [test, count] : {std::pair{0.07123792865282977, 88}, {0.2849517146113191, 22}}) {
            double squares = 0.0;
            for (int i = 0; i < count; ++i) {
                const double gain = target(std::fabs(std::sin(test * i)));
                squares += gain * gain;
            }
            sum += squares / count;
        }
        norm = 1.0 / std::sqrt(sum * 0.5);
        release.set(norm);
        attack.set(1.0);
    }
    double target(double level) const
    {
        const double v = std::max(level * drive, 0.005);
        return std::log(1.0 + v) * norm / v;
    }
    double next(double level)
    {
        const double gain = target(level);
        if (release.e4 < gain) {
            const auto entry = static_cast<std::size_t>(127.0 * release.e4 / gain + 0.5);
            release.follow(gain, first[entry], middle[entry], last[entry]);
        } else {
            release.set(gain);
        }
        attack.follow(release.e4, attackFirst, attackMiddle, attackLast);
        return attack.e4;
    }
};

} // namespace

// --- the effect

struct CPlainEffect::State
{
    static constexpr double kCrossoverHz = 100.0;
    static constexpr double kQ = 0.7071;

    struct Channel
    {
        Noise noise;
        Steep steepUp = kSteep, steepDown = kSteep;
        Soft softUp[2] = {kSoft, kSoft}, softDown[2] = {kSoft, kSoft};
        Biquad low[2], high[2];
        Follower dcFirst; // at the defaults
        Biquad dc[3];     // with everything on
        Biquad punch;
        Saturator saturator;
        Follower saturatorLow[2];
        Follower saturatorHigh;

        Channel(std::uint32_t seed, double rateHz)
            : noise{seed}, low{pass(false, kCrossoverHz, 1.0, rateHz), low[0]},
              high{pass(true, kCrossoverHz, 1.0, rateHz), high[0]}, dcFirst{onePoleGain(kTwoPi * 3.0 /
                                                                                        rateHz)},
              dc{pass(true, 20.0 * 0.5263158, 1.442511667, rateHz),
                 pass(true, 20.0 * 0.591715976, 0.8626785, rateHz),
                 pass(true, 20.0 * 0.625, 0.7212558, rateHz)},
              punch(Biquad::peaking(kCrossoverHz / rateHz, linear(6.0), 2.0)),
              saturator(rateHz), saturatorLow{{onePoleGain(9.762843238257704 * 1000.0 / rateHz)},
                                              saturatorLow[0]},
              saturatorHigh{onePoleGain(kTwoPi * 10.0 / rateHz)}
        {}
        static Biquad pass(bool isHigh, double freqHz, double qFactor, double rateHz)
        {
            return Biquad::pass(isHigh, kTwoPi * freqHz / rateHz, kQ * qFactor);
        }
    };

    Channel channels[kChannels];
    Transients transients;
    Shifter shifter;
    Compressor compressor;
    double subGain = linear(-3.0);

    explicit State(double rateHz) : channels{{1, rateHz}, {2, rateHz}}, transients(rateHz), compressor(rateHz)
    {}

    // One sample of each channel, at the inner rate.
    template <bool kHasEverything>
    void band(double* x)
    {
        double low[kChannels], high[kChannels], wet[kChannels];
        for (int i = 0; i < kChannels; ++i) {
            Channel& channel = channels[i];
            low[i] = channel.low[1].lowPass(channel.low[0].lowPass(x[i]));
            high[i] = channel.high[1].highPass(channel.high[0].highPass(x[i]));
        }
        if constexpr (!kHasEverything) {
            for (int i = 0; i < kChannels; ++i) {
                const double sum = low[i] + high[i];
                x[i] = sum - channels[i].dcFirst.follow(sum);
            }
            return;
        }
        const double punch = transients.next((std::fabs(low[0]) + std::fabs(low[1])) * 0.5);
        double punched[kChannels], sub[kChannels];
        for (int i = 0; i < kChannels; ++i) {
            punched[i] = low[i] + (channels[i].punch.common(low[i]) - low[i]) * punch;
        }
        shifter.next(punched, sub);
        for (int i = 0; i < kChannels; ++i) {
            Channel& channel = channels[i];
            double y = channel.saturator.next(punched[i]);
            y = channel.saturatorLow[1].follow(channel.saturatorLow[0].follow(y));
            y -= channel.saturatorHigh.follow(y);
            wet[i] = y + sub[i] * subGain + punched[i];
        }
        const double mono = (wet[0] + wet[1]) * 0.5;
        const double compressed = mono * compressor.next(std::fabs(mono));
        for (int i = 0; i < kChannels; ++i) {
            double y = compressed + (low[i] - compressed) * 0.3 + high[i];
            for (Biquad& section : channels[i].dc) {
                y = section.highPass(y);
            }
            x[i] = y;
        }
    }

    template <bool kHasEverything, int kStages>
    void process(const double* const* in, double* const* out, std::size_t count)
    {
        for (std::size_t n = 0; n < count; ++n) {
            double frames[1 << kStages][kChannels];
            for (int i = 0; i < kChannels; ++i) {
                Channel& channel = channels[i];
                frames[0][i] = channel.noise.add(in[i][n]);
                for (int stage = 0; stage < kStages; ++stage) {
                    for (int k = (1 << stage) - 1; k >= 0; --k) {
                        frames[2 * k][i] = 2.0 * frames[k][i];
                        frames[2 * k + 1][i] = 0.0;
                    }
                    for (int k = 0; k < 2 << stage; ++k) {
                        frames[k][i] = stage == 0 ? channel.steepUp.next(frames[k][i])
                                                  : channel.softUp[stage - 1].next(frames[k][i]);
                    }
                }
            }
            for (double* const frame : frames) {
                band<kHasEverything>(frame);
            }
            for (int i = 0; i < kChannels; ++i) {
                Channel& channel = channels[i];
                for (int stage = kStages - 1; stage >= 0; --stage) {
                    for (int k = 0; k < 2 << stage; ++k) {
                        const double y = stage == 0 ? channel.steepDown.next(frames[k][i])
                                                    : channel.softDown[stage - 1].next(frames[k][i]);
                        if (k % 2 == 0) {
                            frames[k / 2][i] = y;
                        }
                    }
                }
                out[i][n] = frames[0][i];
            }
        }
    }

    using Process = void (State::*)(const double* const*, double* const*, std::size_t);
    static constexpr Process kProcesses[2][4] = {{&State::process<false, 0>, &State::process<false, 1>,
                                                  &State::process<false, 2>, &State::process<false, 3>},
                                                 {&State::process<true, 0>, &State::process<true, 1>,
                                                  &State::process<true, 2>, &State::process<true, 3>}};
};

CPlainEffect::CPlainEffect(double sampleRateHz, int stages, bool hasEverything)
    : stages_(stages), hasEverything_(hasEverything),
      state_(std::make_unique<State>(sampleRateHz * (1 << stages)))
{}

CPlainEffect::~CPlainEffect() = default;

void CPlainEffect::process(const double* const* in, double* const* out, std::size_t count)
{
    (state_.get()->*State::kProcesses[hasEverything_ ? 1 : 0][stages_])(in, out, count);
}

} // namespace qel
