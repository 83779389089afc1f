// What the audio thread never does, from its first block on.
#include "AllocationGuard.h"
#include "HostRig.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <zlib.h>

using namespace vst24;

namespace qel::test {
namespace {

constexpr int kLongest = 4096;
constexpr std::int32_t kOversampling = 1; // the host's parameter

// Eight channels of drums, and what becomes of them is nobody's concern.
class Stage
{
public:
    explicit Stage(Host& host) : host_(host)
    {
        for (std::size_t i = 0; i < input_.size(); ++i) {
            in_.push_back(input_[i].data());
            out_.push_back(output_[i].data());
        }
    }

    // Runs blocks of a size, each with a value of the host for one parameter in front of it; -1: without.
    // Nothing may be counted.
    void expectSilentWork(const std::string& when, int blocks = 40, int size = 512,
                          std::int32_t parameter = -1, float value = 0.0f)
    {
        AllocationGuard guard;
        if (parameter >= 0) {
            host_.set(parameter, value);
        }
        for (int i = 0; i < blocks; ++i) {
            host_.processBlock(in_.data(), out_.data(), size);
        }
        const AllocationGuard::Counts counts = guard.stop();
        EXPECT_EQ(counts.allocations + counts.frees + counts.maps, 0u) << when;
        EXPECT_EQ(counts.locks, 0u) << when;
        // A filter of the parameter may be tried for, and is left to the next call if it is taken.
        EXPECT_LE(counts.tryLocks, 1u) << when;
    }

private:
    Host& host_;
    Channels<float> input_ = drums<float>(kLongest, 8);
    Channels<float> output_ = input_;
    std::vector<float*> in_;
    std::vector<float*> out_;
};

class RealTime : public testing::Test
{
protected:
    void SetUp() override
    {
        if (!AllocationGuard::kCounts) {
            GTEST_SKIP() << "nothing is counted in this build";
        }
    }
};

TEST_F(RealTime, KnobsSwitchesAndRatesFromTheFirstBlockOn)
{
    Host host;
    host.start();
    Stage stage(host);
    stage.expectSilentWork("first block", 1);
    for (const int size : {1, 64, kLongest, 777}) {
        stage.expectSilentWork("blocks of " + std::to_string(size), 4, size);
    }
    // Everything on at once, in blocks that are longer than a fade and then shorter.
    for (const int size : {kLongest, 64}) {
        for (const float value : {1.0f, 0.4f}) {
            for (std::int32_t i = 0; i < host->numParams; ++i) {
                stage.expectSilentWork("parameter " + std::to_string(i), 0, 0, i, value);
            }
            stage.expectSilentWork("all at " + std::to_string(value), kLongest * 4 / size, size);
        }
    }
    for (const float rate : {1.0f, 0.25f, 0.75f, 0.5f, 1.0f}) {
        stage.expectSilentWork("oversampling", 40, 512, kOversampling, rate);
    }
}

TEST_F(RealTime, RandomAutomation)
{
    Host host;
    host.start();
    Stage stage(host);
    std::minstd_rand random(1);
    for (int i = 0; i < 1000; ++i) {
        const auto parameter = static_cast<std::int32_t>(random() % 24);
        stage.expectSilentWork("block " + std::to_string(i), 1, 512, parameter,
                               static_cast<float>(random() % 1000) / 999.0f);
        if (HasFailure()) {
            return;
        }
    }
}

TEST_F(RealTime, ProgramsStopsAndOtherRates)
{
    Host host;
    host.start();
    Stage stage(host);
    for (int program = 0; program < host->numPrograms; ++program) {
        host.call(kSetProgram, 0, program);
        stage.expectSilentWork("program " + std::to_string(program), 20);
    }
    for (const float rate : {96000.0f, 44100.0f, 192000.0f}) {
        host.call(kSetSampleRate, 0, 0, nullptr, rate);
        stage.expectSilentWork("another rate", 20);
        host.stop();
        host.start(rate);
        stage.expectSilentWork("after a stop", 20);
    }
}

// --- routing, which only a state can change

std::uint32_t readU32(const Bytes& bytes, std::size_t at)
{
    return bytes[at] | bytes[at + 1] << 8 | bytes[at + 2] << 16 |
           static_cast<std::uint32_t>(bytes[at + 3]) << 24;
}

// A list of numbers for another one of the same length, wherever it stands.
using List = std::array<double, 8>;

void replace(Bytes& body, const List& from, const List& to)
{
    const auto bytesOf = [](const List& list) {
        Bytes bytes(sizeof(List));
        std::memcpy(bytes.data(), list.data(), sizeof(List));
        return bytes;
    };
    const Bytes wanted = bytesOf(from);
    for (auto found = body.begin();
         (found = std::search(found, body.end(), wanted.begin(), wanted.end())) != body.end();) {
        found = std::copy_n(bytesOf(to).begin(), sizeof(List), found);
    }
}

constexpr std::size_t kHead = 28; // of a chunk: the host's bytes, then its kind, its size and their sum

// The state with each of eight channels in a group of its own.
Bytes inEightGroups(const Bytes& chunk)
{
    Bytes body(readU32(chunk, 20));
    uLongf size = body.size();
    uncompress(body.data(), &size, chunk.data() + kHead, chunk.size() - kHead);
    replace(body, {1, 2, 0, 0, 0, 0, 0, 0}, {1, 2, 3, 4, 5, 6, 7, 8});
    replace(body, {0, 0, 1, 1, 2, 2, 3, 3}, {0, 1, 2, 3, 4, 5, 6, 7});
    Bytes result(chunk.begin(), chunk.begin() + kHead);
    uLongf packed = compressBound(body.size());
    result.resize(kHead + packed);
    compress(result.data() + kHead, &packed, body.data(), body.size());
    result.resize(kHead + packed);
    return result;
}

TEST_F(RealTime, GroupsThatWereNotThereBefore)
{
    Host host;
    host.setAll(3);
    host.set(kOversampling, 1.0f);
    host.start();
    Stage stage(host);
    stage.expectSilentWork("two channels", 40);
    const Bytes stereo = host.chunk(true);
    const Bytes grouped = inEightGroups(stereo);
    ASSERT_NE(grouped, stereo);
    for (int round = 0; round < 2; ++round) {
        ASSERT_EQ(host.load(grouped, true), 1);
        stage.expectSilentWork("eight groups", 60);
        ASSERT_EQ(host.load(stereo, true), 1);
        stage.expectSilentWork("two channels again", 60);
    }
}

} // namespace
} // namespace qel::test
