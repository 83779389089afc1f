// Every kernel that does the work of several calls against those calls, down to the last bit.
#include "KernelCalls.h"
#include "LaneLog.h"

#include <gtest/gtest.h>

namespace qel {
namespace {

using test::EChannels;
using test::KernelCalls;

void compare(const std::string& name, std::span<const CKernelPart> parts, std::size_t channels,
             CKernelGroupFunction function)
{
    for (const EChannels kind :
         {EChannels::kAlike, EChannels::kDifferentValues, EChannels::kDifferentModes}) {
        KernelCalls expected(parts, channels, kind, true);
        KernelCalls grouped(parts, channels, kind, false);
        unsigned seed = 1;
        for (const std::size_t count : {1, 64, 0, 7, 513, 2, 33, 129, 65}) {
            expected.fill(count, ++seed);
            grouped.fill(count, seed);
            expected.runSingles();
            grouped.run(function);
            const auto a = expected.outputs();
            const auto b = grouped.outputs();
            for (std::size_t i = 0; i < a.size(); ++i) {
                ASSERT_TRUE(test::isSameBits(a[i], b[i]))
                    << name << ", " << channels << " channels of kind " << static_cast<int>(kind)
                    << ", count " << count << ", output " << i;
            }
        }
    }
}

class KernelPairs : public ::testing::TestWithParam<bool>
{
protected:
    KernelPairs() { allowWideLanes(GetParam()); }
    ~KernelPairs() override { allowWideLanes(true); }
};

INSTANTIATE_TEST_SUITE_P(WithAndWithoutWideLanes, KernelPairs, ::testing::Bool());

TEST_P(KernelPairs, GiveTheBitsOfTheCallsTheyStandFor)
{
    int compared = 0;
    for (const auto& [function, kernel] : test::kernelsByFunction()) {
        if (kernel.pair) {
            const CKernelPart alone[] = {{function, CKernelPart::kInput}};
            compare(kernel.name, alone, 2, kernel.pair);
            ++compared;
            if (kernel.quad && hasWideLanes()) {
                compare(kernel.name, alone, 4, kernel.quad);
            }
        }
        for (const CKernelJoin& join : kernel.joins) {
            compare(test::nameOf(join.parts), join.parts, 1, join.one);
            compare(test::nameOf(join.parts), join.parts, 2, join.pair);
            ++compared;
            if (join.quad && hasWideLanes()) {
                compare(test::nameOf(join.parts), join.parts, 4, join.quad);
            }
        }
    }
    EXPECT_GT(compared, 40);
}

TEST(LaneLog, GivesTheBitsOfTheFunctionForOneNumber)
{
    std::vector<double> numbers = {1.0, std::nextafter(1.0, 2.0), DBL_MAX, INFINITY, NAN, 0x1p52};
    const test::Signal mantissas = test::noiseSignal(20000, 1);
    for (std::size_t i = 0; i < mantissas.size(); ++i) {
        numbers.push_back(
            std::ldexp(1.0 + std::fabs(mantissas[i]), static_cast<int>(i % 8 == 0 ? i % 1023 : i % 3)));
    }
    for (std::size_t i = 0; i < numbers.size(); i += 2) {
        const SamplePair pair = logAboveOne(SamplePair{numbers[i], numbers[i + 1]});
        const test::Signal expected = {math::log(numbers[i]), math::log(numbers[i + 1])};
        ASSERT_TRUE(test::isSameBits({pair[0], pair[1]}, expected)) << numbers[i] << ", " << numbers[i + 1];
    }
}

// Between the rates, half of a half-band filter rests: unless something is left in it.
TEST(HalfBandJoins, FallBackWhereTheFilterHasAlreadyRunAlone)
{
    const CKernelFunction filter = test::functionOf("flthbf8g");
    for (const bool isUp : {true, false}) {
        const std::span joins =
            test::kernelsByFunction().at(isUp ? test::functionOf("interp2") : filter).joins;
        const auto join = std::find_if(joins.begin(), joins.end(), [&](const CKernelJoin& candidate) {
            return candidate.parts[isUp ? 1 : 0].function == filter;
        });
        ASSERT_NE(join, joins.end());
        KernelCalls expected(join->parts, 2, EChannels::kDifferentValues, true);
        KernelCalls grouped(join->parts, 2, EChannels::kDifferentValues, true);
        for (KernelCalls* calls : {&expected, &grouped}) {
            calls->fill(37, 1);
            calls->runPart(isUp ? 1 : 0, 75);
        }
        for (unsigned seed = 2; seed < 6; ++seed) {
            expected.fill(50, seed);
            grouped.fill(50, seed);
            expected.runSingles();
            grouped.run(join->pair);
            ASSERT_EQ(expected.outputs(), grouped.outputs()) << (isUp ? "up" : "down");
        }
    }
}

} // namespace
} // namespace qel
