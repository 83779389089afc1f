// State as chunks.
#include "HostRig.h"

#include <gtest/gtest.h>

using namespace vst24;

namespace qel::test {
namespace {

std::vector<double> asNumbers(const Bytes& bytes)
{
    return {bytes.begin(), bytes.end()};
}

Bytes asBytes(const std::vector<double>& numbers)
{
    Bytes bytes;
    for (const double number : numbers) {
        bytes.push_back(static_cast<std::uint8_t>(number));
    }
    return bytes;
}

class State : public testing::TestWithParam<bool>
{};

TEST_P(State, ComesBackInAFreshInstance)
{
    const bool isPreset = GetParam();
    for (unsigned seed = 1; seed <= 4; ++seed) {
        const Bytes chunk = asBytes(inChild([&] {
            Host host;
            host.setAll(seed);
            return asNumbers(host.chunk(isPreset));
        }));
        ASSERT_GT(chunk.size(), 28u);
        const std::string head = std::string(16, '\0') + (isPreset ? "aprs" : "abnk");
        EXPECT_EQ(std::string(chunk.begin(), chunk.begin() + 20), head);
        const auto play = [&](bool fromChunk) {
            return inChild([&] {
                Host host;
                if (fromChunk) {
                    EXPECT_EQ(host.load(chunk, isPreset), 1);
                    EXPECT_EQ(host.chunk(isPreset), chunk);
                    EXPECT_EQ(host.automations, 0) << "the host's own doing is no automation";
                } else {
                    host.setAll(seed);
                    host.chunk(isPreset);
                }
                host.start();
                std::vector<double> result = flat(host.run(drums<double>(9000), {512}));
                const std::vector<float> values = host.getAll();
                result.insert(result.end(), values.begin(), values.end());
                return result;
            });
        };
        EXPECT_EQ(play(true), play(false)) << "seed " << seed;
    }
}

TEST_P(State, IsLeftAloneByWhatIsNoState)
{
    const bool isPreset = GetParam();
    Host host;
    host.setAll(1);
    const Bytes other = host.chunk(isPreset);
    const Bytes foreign = host.chunk(!isPreset);
    host.setAll(2);
    const Bytes own = host.chunk(isPreset);
    const auto isRefused = [&](const Bytes& bytes) { return host.load(bytes, isPreset) == 0; };

    EXPECT_TRUE(isRefused(foreign));
    EXPECT_EQ(host.call(kSetChunk, isPreset, 100, nullptr), 0);
    Bytes copy = other;
    EXPECT_EQ(host.call(kSetChunk, isPreset, -1, copy.data()), 0);
    for (std::size_t size = 17; size < other.size(); ++size) {
        EXPECT_TRUE(isRefused(Bytes(other.begin(), other.begin() + static_cast<std::ptrdiff_t>(size))))
            << size;
    }
    int unnoticed = 0;
    for (std::size_t at = 16; at < other.size(); ++at) {
        Bytes altered = other;
        altered[at] ^= 0x55;
        if (!isRefused(altered)) {
            // Padding bits at the end of the compressed data stand for nothing.
            EXPECT_EQ(host.chunk(isPreset), other) << at;
            EXPECT_EQ(++unnoticed, 1);
            EXPECT_EQ(host.load(own, isPreset), 1);
        }
    }
    std::mt19937 random(7);
    for (int round = 0; round < 200; ++round) {
        Bytes noise(17 + random() % 5000);
        std::generate(noise.begin(), noise.end(), [&] { return static_cast<std::uint8_t>(random()); });
        EXPECT_TRUE(isRefused(noise));
    }
    EXPECT_EQ(host.load(Bytes(16), isPreset), 1) << "no more than a header: nothing to do";
    EXPECT_EQ(host.chunk(isPreset), own);
    EXPECT_EQ(host.load(other, isPreset), 1);
    EXPECT_EQ(host.chunk(isPreset), other);
}

// Some hosts do when they open a window. The names of presets are part of it.
TEST_P(State, IsAsItWasWhenTheHostSendsAllValuesBack)
{
    Host host;
    host.start();
    const Bytes before = host.chunk(GetParam());
    for (int i = 0; i < static_cast<int>(host.getAll().size()); ++i) {
        host.set(i, host.get(i));
    }
    host.run(drums<float>(2000), {512});
    EXPECT_EQ(host.chunk(GetParam()), before);
}

// Set while nothing runs, and still waiting when a state arrives: the state is the newer one.
TEST_P(State, OverridesWhatWasSetBefore)
{
    Host host;
    host.setAll(1);
    const std::vector<float> wanted = host.getAll();
    const Bytes chunk = host.chunk(GetParam());
    host.setAll(2);
    EXPECT_EQ(host.load(chunk, GetParam()), 1);
    host.start();
    host.run(drums<float>(2000), {512});
    EXPECT_EQ(host.getAll(), wanted);
}

INSTANTIATE_TEST_SUITE_P(Kinds, State, testing::Bool(),
                         [](const auto& kind) { return std::string(kind.param ? "Preset" : "Bank"); });

} // namespace
} // namespace qel::test
