// Steps run from a plan, held against those that go the ordinary way.
#include "CAudioExtParam.h"
#include "CAudioVizCollector.h"
#include "EffectFixture.h"

#include <bit>
#include <span>

namespace qel {
namespace {

using namespace test;

std::uint64_t hashOf(std::span<const std::byte> bytes)
{
    std::uint64_t hash = 0xCBF29CE484222325;
    for (const std::byte byte : bytes) {
        hash = (hash ^ static_cast<std::uint64_t>(byte)) * 0x100000001B3;
    }
    return hash;
}

// What a block runs: every call, and the bits of the states that it finds.
class CCallLog final : public CKernelObserver
{
public:
    explicit CCallLog(EffectHost& host) : kernels_(host.kernels()) { kernels_.setObserver(this); }
    ~CCallLog() { kernels_.setObserver(nullptr); }
    CCallLog(const CCallLog&) = delete;
    CCallLog& operator=(const CCallLog&) = delete;

    void beforeCall(const CKernelCall& call) override
    {
        std::string line = std::string(call.entry->name) + " " + std::to_string(call.count) + " " +
                           std::to_string(std::bit_cast<std::uint64_t>(call.scalar));
        // Operand 0 is the output; memory that is set up here holds anything.
        for (int i = 1; i < call.entry->operandCount && call.count > 0; ++i) {
            const CBufferRef operand = call.operand(static_cast<std::size_t>(i));
            const std::size_t bytes = kernels_.pool().bytes(operand);
            if (bytes != longest_ && (call.entry->writeMask >> i & 1) != 0 && !hasRemains(line)) {
                line += " " + std::to_string(hashOf({kernels_.pool().address(operand), bytes}));
            }
        }
        lines_.push_back(line);
    }
    const std::vector<std::string>& lines() const { return lines_; }

private:
    // Half-bands and meters keep what nobody reads again, which depends on how calls were cut.
    static bool hasRemains(const std::string& name)
    {
        return name.find("flthbf") != std::string::npos || name.find("meter") != std::string::npos;
    }
    std::size_t longestSampleBytes() const
    {
        const CBufferRef buffer = kernels_.allocateSamples(0);
        const std::size_t bytes = kernels_.pool().bytes(buffer);
        kernels_.release(buffer);
        return bytes;
    }

    CKernelContext& kernels_;
    const std::size_t longest_ = longestSampleBytes(); // samples fill a part of their buffers
    std::vector<std::string> lines_;
};

constexpr std::size_t kChannels = 4;

// Beside those that all tests of the sound turn.
constexpr const char* kMoreControls[] = {"denorm-enable", "oversampling"};

// One session of an instance: things that users and hosts do between blocks of any length.
class Session
{
public:
    Session(unsigned seed, bool usesPlans) : random_(seed)
    {
        host_.getGraph().usesPlans = usesPlans;
        host_.set("denorm-enable", 1.0);
        host_.open(kRateHz, kChannels);
        for (std::size_t i = 0; i < kChannels; ++i) {
            music_.push_back(music(kRateHz, kLongest, static_cast<unsigned>(i)));
        }
    }

    void play(int rounds)
    {
        for (int round = 0; round < rounds; ++round) {
            act();
            sweep();
            for (int blocks = pick(12); blocks >= 0; --blocks) {
                constexpr int kSizes[] = {1, 16, 64, 100, 511, 512, 513, 1024};
                run(kSizes[pick(8)]);
            }
            if (pick(4) == 0) {
                const CCallLog log(host_);
                run(64);
                calls.insert(calls.end(), log.lines().begin(), log.lines().end());
            }
            dynamic_cast<CAudioVizCollector&>(*host_.getRoot()->findObject("plugin.viz-collector"))
                .take(findings);
            roundEnds.push_back(output.size());
        }
    }
    std::uint64_t plannedSteps() { return host_.getGraph().plannedSteps; }
    std::uint64_t sweptSteps = 0; // of these, with a change in front of each

    Signal output;                      // of all channels, block by block
    std::vector<std::size_t> roundEnds; // in `output`
    std::vector<std::string> calls;     // of some blocks
    std::vector<CAudioVizDataMeter> findings;

private:
    static constexpr std::size_t kLongest = 48000;

    int pick(int count) { return static_cast<int>(random_() / 8 % static_cast<unsigned>(count)); }
    void setList(const char* name, std::initializer_list<std::vector<double>> choices)
    {
        host_.setList(name, choices.begin()[pick(static_cast<int>(choices.size()))]);
    }

    void act()
    {
        switch (pick(16)) {
        case 0:
            return setList("io-params.in-routing", {{1, 2, 0, 0}, {1, 2, 3, 4}, {2, 1, 0, 0}, {1, 1, 2, 0}});
        case 1:
            return setList("io-params.out-routing", {{1, 2, 0, 0}, {1, 2, 3, 4}, {1, 1, 2, 2}});
        case 2:
            return setList("io-params.grouping", {{0, 0, 1, 1}, {0, 1, 2, 3}, {0, 0, 0, 0}, {5, 5, 6, 5}});
        case 3:
            return setList("io-params.ms-pairs", {{0, 0, 0, 0}, {1, 1, 0, 0}, {1, 1, 2, 2}});
        case 4:
            return setList("io-params.channel-group-solo", {{0, 0}, {0, 0}, {1, 0}, {0, 1}});
        case 5:
            return changeListener();
        case 6:
            rateHz_ = pick(2) == 0 ? kRateHz : 44100.0;
            return host_.open(rateHz_, pick(2) == 0 ? 2 : kChannels);
        case 7:
            isSilent_ = !isSilent_;
            return;
        case 8:
            host_.suspend();
            return host_.open(rateHz_, kChannels);
        case 9:
            return; // a long rest
        case 10:
            return host_.apply(busySettings(), pick(3));
        default:
            return turn(anyControl());
        }
    }
    // As a host automates: new positions for some knobs in front of every block, at times for a switch too.
    void sweep()
    {
        const std::uint64_t before = plannedSteps();
        const int first = pick(host_.getExtParams().getCount());
        const int length = pick(2) == 0 ? 16 : 64;
        for (int blocks = pick(3) == 0 ? 40 : 0; blocks > 0; --blocks) {
            for (int i = first; i < std::min(first + 4, host_.getExtParams().getCount()); ++i) {
                CAudioExtParam& param = *host_.getExtParams().get(i);
                if (param.getStepCount() == 0 || pick(20) == 0) {
                    param.postNormalized(0.01 * pick(100));
                }
            }
            run(length);
        }
        sweptSteps += plannedSteps() - before;
    }
    const char* anyControl()
    {
        constexpr std::size_t kUsual = std::size(kSoundControls);
        const auto choice =
            static_cast<std::size_t>(pick(static_cast<int>(kUsual + std::size(kMoreControls))));
        return choice < kUsual ? kSoundControls[choice] : kMoreControls[choice - kUsual];
    }
    void turn(const char* name)
    {
        const CAudioParamInfo& info = host_.parameter(name).getInfo();
        const double ends[] = {info.minValues[0], info.maxValues[0]};
        std::uniform_real_distribution<double> between(ends[0], ends[1]);
        const int choice = pick(4);
        host_.set(name, choice < 2 ? ends[choice] : between(random_), info.isSingleGroup ? 0 : pick(3));
    }
    void changeListener()
    {
        auto& viz = dynamic_cast<CAudioVizCollector&>(*host_.getRoot()->findObject("plugin.viz-collector"));
        const std::int32_t id =
            viz.findSource(CString("plugin.modMain.") + (pick(2) == 0 ? "modMeterOut" : "modMeterIODiff"));
        pick(3) == 0 ? viz.removeListener(id) : viz.addListener(id);
    }
    void run(int count)
    {
        const auto length = static_cast<std::size_t>(count);
        position_ = position_ + length > kLongest ? 0 : position_;
        Signals input(kChannels, Signal(length));
        for (std::size_t i = 0; i < kChannels && !isSilent_; ++i) {
            std::copy_n(music_[i].begin() + static_cast<std::ptrdiff_t>(position_), length, input[i].begin());
        }
        position_ += length;
        for (const Signal& channel : host_.run<double>(input, {count})) {
            output.insert(output.end(), channel.begin(), channel.end());
        }
    }

    std::minstd_rand random_;
    EffectHost host_;
    Signals music_;
    std::size_t position_ = 0;
    double rateHz_ = kRateHz;
    bool isSilent_ = false;
};

class EffectPlan : public EffectFixture
{};

TEST_F(EffectPlan, GivesTheSamplesAndStatesOfOrdinarySteps)
{
    constexpr int kRounds = 100;
    for (unsigned seed = 1; seed <= 3; ++seed) {
        SCOPED_TRACE("seed " + std::to_string(seed));
        CNoiseSource::restartSeeds();
        Session plain(seed, false);
        plain.play(kRounds);
        CNoiseSource::restartSeeds();
        Session planned(seed, true);
        planned.play(kRounds);

        EXPECT_EQ(plain.plannedSteps(), 0u);
        EXPECT_GT(planned.sweptSteps, 100u);
        EXPECT_GT(planned.plannedSteps(), planned.sweptSteps + 100u);
        ASSERT_EQ(plain.roundEnds, planned.roundEnds);
        for (std::size_t round = 0, i = 0; round < plain.roundEnds.size(); ++round) {
            for (; i < plain.roundEnds[round]; ++i) {
                ASSERT_EQ(std::bit_cast<std::uint64_t>(plain.output[i]),
                          std::bit_cast<std::uint64_t>(planned.output[i]))
                    << "round " << round << ", sample " << i;
            }
        }
        ASSERT_EQ(plain.calls.size(), planned.calls.size());
        for (std::size_t i = 0; i < plain.calls.size(); ++i) {
            EXPECT_EQ(plain.calls[i], planned.calls[i]) << "call " << i;
        }
        ASSERT_EQ(plain.findings.size(), planned.findings.size());
        for (std::size_t i = 0; i < plain.findings.size(); ++i) {
            const CAudioVizDataMeter& a = plain.findings[i];
            const CAudioVizDataMeter& b = planned.findings[i];
            EXPECT_TRUE(a.id == b.id && a.group == b.group && a.element == b.element &&
                        a.timeSec == b.timeSec && a.level == b.level && a.peak == b.peak)
                << "finding " << i;
        }
    }
}

} // namespace
} // namespace qel
