#include "KernelRig.h"

#include <gtest/gtest.h>

#include <cmath>
#include <functional>
#include <limits>
#include <string>

namespace qel {
namespace {

using test::isSameBits;
using test::KernelRig;
using test::noiseSignal;
using test::Signal;

constexpr double kScalar = 0.37;

// What one output sample is, from the samples a, b, d, e, f of operands 0 to 4 at the same place. Operands
// that are single values, or a pair, are read through `first`.
struct Sample
{
    double x[5];
    double first[5][2];
};
struct Row
{
    const char* name;
    std::size_t operands;
    std::function<double(const Sample&)> expected;
};

const double kC = kScalar;
const Row kRows[] = {
    {"copy", 2, [](const Sample& s) { return s.x[1]; }},
    {"addc", 2, [](const Sample& s) { return s.x[1] + kC; }},
    {"addcid", 2, [](const Sample& s) { return s.x[0] + s.first[1][0]; }},
    {"add2", 3, [](const Sample& s) { return s.x[1] + s.x[2]; }},
    {"add2i", 2, [](const Sample& s) { return s.x[0] + s.x[1]; }},
    {"add3", 4, [](const Sample& s) { return (s.x[1] + s.x[2]) + s.x[3]; }},
    {"add4", 5, [](const Sample& s) { return ((s.x[1] + s.x[2]) + s.x[3]) + s.x[4]; }},
    {"sub2", 3, [](const Sample& s) { return s.x[1] - s.x[2]; }},
    {"max2", 3, [](const Sample& s) { return std::fmax(s.x[1], s.x[2]); }},
    {"max2i", 2, [](const Sample& s) { return std::fmax(s.x[0], s.x[1]); }},
    {"max3", 4, [](const Sample& s) { return std::fmax(std::fmax(s.x[1], s.x[2]), s.x[3]); }},
    {"max4", 5,
     [](const Sample& s) {
         return std::max({s.x[1], s.x[2], s.x[3], s.x[4]});
     }},
    {"min2", 3, [](const Sample& s) { return std::fmin(s.x[1], s.x[2]); }},
    {"min3", 4, [](const Sample& s) { return std::fmin(std::fmin(s.x[1], s.x[2]), s.x[3]); }},
    {"min4", 5,
     [](const Sample& s) {
         return std::min({s.x[1], s.x[2], s.x[3], s.x[4]});
     }},
    {"mix", 3, [](const Sample& s) { return s.x[2] + (s.x[1] - s.x[2]) * kC; }},
    {"mix2", 4, [](const Sample& s) { return s.x[1] * s.first[3][0] + s.x[2] * s.first[3][1]; }},
    {"mixb", 4, [](const Sample& s) { return s.x[2] + (s.x[1] - s.x[2]) * s.x[3]; }},
    {"add2mul", 3, [](const Sample& s) { return (s.x[1] + s.x[2]) * kC; }},
    {"add3mul", 4, [](const Sample& s) { return ((s.x[1] + s.x[2]) + s.x[3]) * kC; }},
    {"mulc", 2, [](const Sample& s) { return s.x[1] * kC; }},
    {"mulci", 1, [](const Sample& s) { return s.x[0] * kC; }},
    {"mul2", 3, [](const Sample& s) { return s.x[1] * s.x[2]; }},
    {"mul2i", 2, [](const Sample& s) { return s.x[0] * s.x[1]; }},
    {"mul2addi", 3, [](const Sample& s) { return s.x[0] + s.x[1] * s.x[2]; }},
    {"abs", 2, [](const Sample& s) { return std::fabs(s.x[1]); }},
    {"sqrt", 2, [](const Sample& s) { return std::sqrt(s.x[1]); }},
    {"fill0", 1, [](const Sample&) { return 0.0; }},
    {"fillc", 1, [](const Sample&) { return kC; }},
    {"filld", 2, [](const Sample& s) { return s.first[1][0]; }},
};

Signal expectedOutput(const Row& row, const std::vector<Signal>& operands, std::size_t count)
{
    Signal expected = operands[0];
    for (std::size_t i = 0; i < count; ++i) {
        Sample sample{};
        for (std::size_t k = 0; k < row.operands; ++k) {
            sample.x[k] = operands[k][i];
            sample.first[k][0] = operands[k][0];
            sample.first[k][1] = operands[k][1];
        }
        expected[i] = row.expected(sample);
    }
    return expected;
}

// The buffers are longer than any count, so that a sample written too far shows.
std::vector<Signal> operandSignals(const Row& row, std::size_t size)
{
    std::vector<Signal> signals;
    for (std::size_t k = 0; k < row.operands; ++k) {
        signals.push_back(noiseSignal(size, static_cast<unsigned>(k + 1)));
        if (std::string(row.name) == "sqrt") {
            for (double& value : signals.back()) {
                value = std::fabs(value);
            }
        }
    }
    return signals;
}

void submit(KernelRig& rig, const Row& row, std::size_t count, std::span<const CBufferRef> operands)
{
    rig.context().submit(rig.context().findShortName(row.name), static_cast<std::uint32_t>(count), kScalar,
                         operands);
}

TEST(VectorKernels, ComputeTheirFormulaForAnyCountAndTouchNothingElse)
{
    for (const Row& row : kRows) {
        for (const std::size_t count : {0U, 1U, 2U, 7U, 399U, 400U, 401U, 512U}) {
            KernelRig rig;
            const std::vector<Signal> signals = operandSignals(row, 520);
            std::vector<CBufferRef> operands;
            for (const Signal& signal : signals) {
                operands.push_back(rig.buffer(signal));
            }
            submit(rig, row, count, operands);
            EXPECT_TRUE(isSameBits(rig.read(operands[0], 520), expectedOutput(row, signals, count)))
                << row.name << " count " << count;
            for (std::size_t k = 1; k < row.operands; ++k) {
                EXPECT_TRUE(isSameBits(rig.read(operands[k], 520), signals[k]))
                    << row.name << " operand " << k;
            }
        }
    }
}

TEST(VectorKernels, MayWriteOverAnyInputSignal)
{
    for (const Row& row : kRows) {
        for (std::size_t shared = 1; shared < row.operands; ++shared) {
            KernelRig rig;
            std::vector<Signal> signals = operandSignals(row, 512);
            signals[0] = signals[shared];
            std::vector<CBufferRef> operands;
            for (const Signal& signal : signals) {
                operands.push_back(rig.buffer(signal));
            }
            operands[0] = operands[shared];
            const bool isPairOfWeights = std::string(row.name) == "mix2" && shared == 3;
            submit(rig, row, 512, operands);
            EXPECT_TRUE(isPairOfWeights ||
                        isSameBits(rig.read(operands[0], 512), expectedOutput(row, signals, 512)))
                << row.name << " over operand " << shared;
        }
    }
}

TEST(VectorKernels, CopyRunsFrontToBackWhereSpansOverlap)
{
    for (const std::size_t count : {300U, 600U}) {
        for (const int shift : {-3, -1, 0, 1, 5}) {
            KernelRig rig;
            Signal expected = noiseSignal(700, 9);
            const CBufferRef buffer = rig.buffer(expected);
            rig.run("copy", count, 0, {buffer.advancedBy(10 + shift), buffer.advancedBy(10)});
            for (std::size_t i = 10; i < 10 + count; ++i) {
                expected[i + static_cast<std::size_t>(shift)] = expected[i];
            }
            EXPECT_TRUE(isSameBits(rig.read(buffer, 700), expected)) << count << " shifted by " << shift;
        }
    }
}

TEST(VectorKernels, TiesOfMaxAndMinReturnTheFirstOperand)
{
    for (const char* name : {"max2", "min2"}) {
        KernelRig rig;
        const CBufferRef out = rig.buffer({7, 7});
        rig.run(name, 2, 0, {out, rig.buffer({0.0, -0.0}), rig.buffer({-0.0, 0.0})});
        EXPECT_TRUE(isSameBits(rig.read(out, 2), {0.0, -0.0})) << name;
    }
}

} // namespace
} // namespace qel
