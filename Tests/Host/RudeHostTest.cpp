// Hosts that keep to no order, and what they may rely on all the same.
#include "HostRig.h"

#include <gtest/gtest.h>

#include <chrono>
#include <cmath>
#include <cstdlib>
#include <future>
#include <limits>
#include <thread>
#include <unistd.h>

using namespace vst24;

namespace qel::test {
namespace {

// --- beginning and end

TEST(RudeHost, ScansInABareProcess)
{
    inChild([] {
        for (const char* name : {"HOME", "XDG_DATA_HOME", "DISPLAY", "PATH", "LANG"}) {
            unsetenv(name);
        }
        Host host({2400, "", "", true});
        EXPECT_EQ(host->numParams, 24);
        host.setPrecision(1);
        host.text(kGetProductString, 64);
        host.start();
        host.run(drums<double>(3000), {512});
        return std::vector<double>();
    });
}

TEST(RudeHost, EndsInAnyState)
{
    {
        Host never;
    }
    for (int round = 0; round < 20; ++round) {
        Host one;
        Host two;
        one.start();
        one.close();
        two.start();
        two.run(drums<float>(2000), {512});
    }
    Host elsewhere;
    elsewhere.start();
    std::thread([&] { elsewhere.close(); }).join();
    // A process that ends with an effect running and nothing closed.
    inChild([] {
        auto* left = new Host();
        left->start();
        left->run(drums<float>(2000), {512});
        std::exit(0);
        return std::vector<double>();
    });
}

TEST(RudeHost, CallsEverythingWithNothing)
{
    Host host;
    for (int round = 0; round < 2; ++round) {
        for (std::int32_t opcode = 2; opcode < 100; ++opcode) {
            for (const std::int32_t index : {0, -1, 1 << 30}) {
                host.call(opcode, index);
                host.call(opcode, index, 0, nullptr, std::numeric_limits<float>::quiet_NaN());
            }
        }
        host.start();
    }
    const Channels<float> input = drums<float>(600);
    std::vector<float*> channels(8);
    std::vector<double*> doubles(8);
    host->processReplacing(host.effect(), nullptr, nullptr, 600);
    host->processReplacing(host.effect(), channels.data(), channels.data(), 600);
    host->processDoubleReplacing(host.effect(), nullptr, doubles.data(), 600);
    host->process(host.effect(), nullptr, nullptr, 600);
    host->process(host.effect(), channels.data(), channels.data(), 600);
    host->processReplacing(host.effect(), nullptr, nullptr, 0);
    host->processReplacing(host.effect(), nullptr, nullptr, -1000000);
    VstEvents events{};
    events.numEvents = 2;
    EXPECT_EQ(host.call(kProcessEvents, 0, 0, &events), 1);
    const Channels<float> output = host.run(input, {64});
    EXPECT_TRUE(std::isfinite(output[0].back()));
}

TEST(RudeHost, RatesAndBlockSizesThatAreNone)
{
    const Channels<float> input = drums<float>(4000);
    for (const float rate : {0.0f, -44100.0f, std::numeric_limits<float>::quiet_NaN(),
                             std::numeric_limits<float>::infinity(), 1.0f, 8000.0f, 768000.0f, 1e30f}) {
        Host host;
        host.setAll(3);
        host.start(rate, -7);
        for (const auto& channel : host.run(input, {512})) {
            for (const float sample : channel) {
                ASSERT_TRUE(std::isfinite(sample)) << rate;
            }
        }
        host.stop();
    }
}

// --- blocks

std::vector<double> render(const std::vector<int>& sizes, bool inPlace = false, bool isDouble = false,
                           bool isStarted = true)
{
    return inChild([&] {
        Host host;
        host.setAll(5);
        if (isStarted) {
            host.start(44100.0f);
        }
        host.setPrecision(isDouble);
        return isDouble ? flat(host.run(drums<double>(20000), sizes, inPlace))
                        : flat(host.run(drums<float>(20000), sizes, inPlace));
    });
}

// The first sample that differs, or the common length.
std::size_t firstDifference(const std::vector<double>& a, const std::vector<double>& b)
{
    return static_cast<std::size_t>(std::mismatch(a.begin(), a.end(), b.begin(), b.end()).first - a.begin());
}

TEST(RudeHost, BlocksOfAnySizeGiveTheSameSamples)
{
    const std::vector<double> fixed = render({512});
    ASSERT_EQ(fixed.size(), 40000u);
    EXPECT_GT(*std::max_element(fixed.begin(), fixed.end()), 0.01);
    EXPECT_EQ(firstDifference(render({1, 3000, 17, 512, 4096, 2}), fixed), fixed.size());
    EXPECT_EQ(firstDifference(render({64}, true), fixed), fixed.size()) << "in place";
    EXPECT_EQ(firstDifference(render({5000, 333}, true), fixed), fixed.size()) << "in place";
    EXPECT_EQ(firstDifference(render({20000}, false, false, false), fixed), fixed.size()) << "never started";
}

TEST(RudeHost, DoublesAndFloatsAgree)
{
    const std::vector<double> single = render({512});
    const std::vector<double> wide = render({512}, false, true);
    ASSERT_EQ(single.size(), wide.size());
    for (std::size_t i = 0; i < single.size(); ++i) {
        ASSERT_EQ(single[i], static_cast<double>(static_cast<float>(wide[i]))) << i;
    }
}

TEST(RudeHost, TheCallTellsTheWidthOfItsSamples)
{
    const auto changing = inChild([] {
        Host host;
        host.setAll(5);
        host.setPrecision(1);
        host.start(44100.0f);
        std::vector<double> output;
        const Channels<float> input = drums<float>(20000);
        for (std::size_t start = 0, turn = 0; start < input[0].size(); start += 500, ++turn) {
            Channels<float> part;
            Channels<double> wide;
            for (const auto& channel : input) {
                const auto from = channel.begin() + static_cast<std::ptrdiff_t>(start);
                part.emplace_back(from, from + 500);
                wide.emplace_back(from, from + 500);
            }
            host.setPrecision(turn / 2 % 2); // not always what is called for then
            const auto left = turn % 2 ? flat(host.run(wide, {500})) : flat(host.run(part, {500}));
            for (std::size_t i = 0; i < 500; ++i) {
                output.push_back(static_cast<float>(left[i]));
            }
        }
        return output;
    });
    std::vector<double> fixed = render({500});
    fixed.resize(20000);
    EXPECT_EQ(changing, fixed);
}

TEST(RudeHost, AccumulatingAddsToWhatIsThere)
{
    const std::vector<double> replaced = render({1500});
    const std::vector<double> added = inChild([] {
        Host host;
        host.setAll(5);
        host.start(44100.0f);
        Channels<float> input = drums<float>(20000);
        Channels<float> output(2, std::vector<float>(20000, 0.25f));
        std::vector<float*> in{input[0].data(), input[1].data(), nullptr, nullptr,
                               nullptr,         nullptr,         nullptr, nullptr};
        std::vector<float*> out{output[0].data(), output[1].data(), nullptr, nullptr,
                                nullptr,          nullptr,          nullptr, nullptr};
        host->process(host.effect(), in.data(), out.data(), 20000);
        return flat(output);
    });
    ASSERT_EQ(added.size(), replaced.size());
    for (std::size_t i = 0; i < added.size(); ++i) {
        ASSERT_EQ(added[i], static_cast<double>(0.25f + static_cast<float>(replaced[i]))) << i;
    }
}

// A host passes as many pointers as its arrangement has channels; behind them may stand anything.
TEST(RudeHost, TouchesNoMoreChannelsThanWereArranged)
{
    Host host;
    VstSpeakerArrangement stereo{};
    stereo.numChannels = 2;
    host.start();
    host.call(kSetSpeakerArrangement, 0, reinterpret_cast<std::intptr_t>(&stereo), &stereo);
    for (const bool isRestarted : {false, true}) {
        if (isRestarted) {
            host.stop();
            host.start();
        }
        Channels<float> signal = drums<float>(1000);
        auto* const nowhere = reinterpret_cast<float*>(std::uintptr_t{8});
        std::vector<float*> channels(8, nowhere);
        channels[0] = signal[0].data();
        channels[1] = signal[1].data();
        host->process(host.effect(), channels.data(), channels.data(), 1000);
        host->processReplacing(host.effect(), channels.data(), channels.data(), 1000);
        EXPECT_TRUE(std::isfinite(signal[0][999]));
    }
}

TEST(RudeHost, ANewRateCountsFromTheNextBlock)
{
    const auto at48k = [](bool isLate) {
        return inChild([isLate] {
            Host host;
            host.setAll(5);
            host.start(isLate ? 44100.0f : 48000.0f);
            if (isLate) {
                host.call(kSetSampleRate, 0, 0, nullptr, 48000.0f);
                host.call(kSetBlockSize, 0, 64);
            }
            return flat(host.run(drums<float>(20000), {512}));
        });
    };
    const std::vector<double> early = at48k(false);
    EXPECT_EQ(firstDifference(at48k(true), early), early.size());
}

TEST(RudeHost, KnowsItsDelayBeforeTheFirstBlock)
{
    std::int32_t oversampling = 0;
    Host host;
    while (host.text(kGetParamName, 8, oversampling) != "Oversmp") {
        ASSERT_LT(++oversampling, host->numParams);
    }
    for (int mode = 0; mode <= 4; ++mode) { // automatic, then 1 to 8 times
        host.stop();
        host.set(oversampling, static_cast<float>(mode) / 4.0f);
        host.start();
        const std::int32_t foreseen = host->initialDelay;
        host.run(drums<float>(2000), {512});
        EXPECT_EQ(host->initialDelay, foreseen) << mode;
        EXPECT_EQ(foreseen > 0, mode != 1) << mode;

        Bytes state = host.chunk(true);
        Host other;
        other.load(state, true);
        EXPECT_EQ(other->initialDelay, foreseen) << mode;
        EXPECT_EQ(other.ioChanges, mode == 1 ? 0 : 1) << mode;
        other.start();
        EXPECT_EQ(other->initialDelay, foreseen) << mode;
        other.run(drums<float>(2000), {512});
        EXPECT_EQ(other->initialDelay, foreseen) << mode;
        EXPECT_EQ(other.ioChanges, mode == 1 ? 0 : 1) << mode;
    }
}

TEST(RudeHost, StoppingForgetsWhatRang)
{
    Host host;
    host.setAll(5);
    host.start();
    host.run(drums<float>(20000), {512});
    host.stop();
    host.stop();
    host.start();
    host.start();
    const Channels<float> silence(2, std::vector<float>(8000));
    for (const auto& channel : host.run(silence, {512})) {
        for (const float sample : channel) {
            ASSERT_LT(std::fabs(sample), 1e-6f);
        }
    }
}

// --- threads

TEST(RudeHost, AutomatesFromSeveralThreadsWhileProcessing)
{
    Host host;
    host.start();
    std::atomic<bool> isOver{false};
    std::vector<std::thread> writers;
    for (unsigned seed = 1; seed <= 3; ++seed) {
        writers.emplace_back([&, seed] {
            std::mt19937 random(seed);
            while (!isOver) {
                const auto index = static_cast<std::int32_t>(random() % 24);
                host.set(index, static_cast<float>(random() % 1000) / 1000.0f);
                host.get(static_cast<std::int32_t>(random() % 24));
                host.text(kGetParamDisplay, 8, index);
                std::this_thread::yield();
            }
        });
    }
    writers.emplace_back([&] {
        Bytes state;
        while (!isOver) {
            state = host.chunk(true);
            host.load(state, true);
            host.call(kSetProgram, 0, 1);
            host.call(kSetProgram, 0, 0);
        }
    });
    const Channels<float> output = host.run(drums<float>(24000), {480, 31, 1000});
    isOver = true;
    for (std::thread& writer : writers) {
        writer.join();
    }
    for (const float sample : output[0]) {
        ASSERT_TRUE(std::isfinite(sample));
    }
    // When all is quiet, what was set last holds.
    host.set(5, 0.25f);
    host.run(drums<float>(1000), {100});
    EXPECT_NEAR(host.get(5), 0.25f, 1e-3);
}

// No host may, and some do.
TEST(RudeHost, IsTurnedOffAndOnAndRearrangedWhileProcessing)
{
    using Clock = std::chrono::steady_clock;
#ifdef DRUMFELL_SANITIZED
    constexpr std::chrono::seconds kLength(10);
#else
    constexpr std::chrono::seconds kLength(2);
#endif
    Host host;
    host.start();
    std::atomic<bool> isOver{false};
    std::thread audio([&] {
        Channels<float> signal = drums<float>(2048, 8);
        std::vector<float*> channels;
        for (auto& channel : signal) {
            channels.push_back(channel.data());
        }
        std::vector<std::vector<float>> made(8, std::vector<float>(2048));
        std::vector<float*> outputs;
        for (auto& channel : made) {
            outputs.push_back(channel.data());
        }
        for (unsigned turn = 0; !isOver; ++turn) {
            const int count = 1 + static_cast<int>(turn * 37 % 2048);
            const auto process = turn % 5 ? host->processReplacing : host->process;
            process(host.effect(), channels.data(), outputs.data(), count);
            ASSERT_TRUE(std::isfinite(outputs[0][0]));
        }
    });
    const Bytes preset = host.chunk(true);
    const Bytes bank = host.chunk(false);
    const auto rearrange = [&](unsigned seed) {
        std::mt19937 random(seed);
        for (const auto end = Clock::now() + kLength; Clock::now() < end;) {
            void* record = nullptr;
            VstSpeakerArrangement arrangement{};
            arrangement.numChannels = 1 + static_cast<std::int32_t>(random() % 8);
            switch (random() % 9) {
            case 0:
                host.stop();
                break;
            case 1:
                host.call(kMainsChanged, 0, 1);
                break;
            case 2:
                host.call(kSetSampleRate, 0, 0, nullptr, random() % 2 ? 44100.0f : 96000.0f);
                break;
            case 3:
                host.call(kSetBlockSize, 0, 64 << random() % 5);
                break;
            case 4:
                host.call(kSetSpeakerArrangement, 0, reinterpret_cast<std::intptr_t>(&arrangement),
                          &arrangement);
                host.call(kGetSpeakerArrangement, 0, reinterpret_cast<std::intptr_t>(&record), &record);
                break;
            case 5:
                host.load(preset, true);
                break;
            case 6:
                host.load(bank, false);
                break;
            case 7:
                host.call(kGetChunk, static_cast<std::int32_t>(random() % 2), 0, &record);
                break;
            default:
                host.call(kSetProgram, 0, static_cast<std::intptr_t>(random() % 3));
                host.set(static_cast<std::int32_t>(random() % 24),
                         static_cast<float>(random() % 100) / 99.0f);
            }
        }
    };
    std::thread other(rearrange, 2);
    rearrange(1);
    other.join();
    isOver = true;
    audio.join();
    host.start();
    EXPECT_TRUE(std::isfinite(host.run(drums<float>(2000), {512})[0][1999]));
}

// Such a host shows the names, asks for them elsewhere, and waits for that.
TEST(RudeHost, MayWaitForAnotherThreadWhenToldOfOtherPrograms)
{
    Host host;
    const Bytes bank = host.chunk(false);
    std::future<void> elsewhere;
    host.whenUpdated = [&] {
        if (!elsewhere.valid()) {
            elsewhere = std::async(std::launch::async, [&] { host.call(kSetProgram, 0, 2); });
            EXPECT_EQ(elsewhere.wait_for(std::chrono::seconds(20)), std::future_status::ready);
        }
    };
    EXPECT_EQ(host.load(bank, false), 1);
    EXPECT_GT(host.displayUpdates, 0);
    EXPECT_EQ(host.call(kGetProgram), 2);
}

} // namespace
} // namespace qel::test
