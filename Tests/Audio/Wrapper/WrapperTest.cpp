// One plug-in instance without a host interface: building, blocks, state, and its end.
#include "CAudioWrapperVST.h"
#include "WrapperRig.h"

#include <gtest/gtest.h>

#include <cmath>

namespace qel {
namespace {

using test::TestApplication;
using test::TestHost;

void bringUp(TestHost& host)
{
    test::requireOk(host.init());
    test::requireOk(host.finishInit());
    host.start();
}

template <class Sample>
std::vector<std::vector<Sample>> sines(std::size_t count)
{
    std::vector<std::vector<Sample>> signal(2, std::vector<Sample>(count));
    for (std::size_t i = 0; i < count; ++i) {
        signal[0][i] = static_cast<Sample>(std::sin(0.01 * static_cast<double>(i)));
        signal[1][i] = static_cast<Sample>(0.5 * std::cos(0.023 * static_cast<double>(i)));
    }
    return signal;
}

TEST(Wrapper, StartsAfreshAfterAPauseAndTakesANewRateAndLayout)
{
    const TestApplication application(test::wrapperTree());
    TestHost host;
    bringUp(host);
    const auto steady = [](std::size_t channels) {
        return std::vector<std::vector<double>>(channels, std::vector<double>(100, 1.0));
    };
    // Of a constant 1 at a gain of g come 0.25 (1 - g) + g, and g besides.
    EXPECT_NEAR(host.run(steady(2), {100})[1][99], 2.0, 1e-9);
    host.set("modGain.gain", 2.0);
    EXPECT_LT(host.run(steady(2), {100})[1][99], 2.2); // a fade of 720 samples is under way
    host.set("modGain.gain", 3.0);                     // and this change waits for its end
    host.run(steady(2), {100});
    host.suspend();
    host.start();
    EXPECT_NEAR(host.run(steady(2), {100})[1][0], 5.5, 1e-9);

    host.suspend();
    CAudioHostSetup setup;
    setup.sampleRateHz = 32000.0;
    setup.inputCount = 4;
    setup.outputCount = 3;
    host.resume(setup);
    EXPECT_EQ(host.delays, (std::vector<std::int32_t>{0, 0, 0, 0}));
    const double startSec = host.getParams().getEnv().getPositionSec();
    auto wide = steady(4);
    std::fill(wide[3].begin(), wide[3].end(), 5.0);
    const auto output = host.run(wide, {100});
    EXPECT_NEAR(host.getParams().getEnv().getPositionSec() - startSec, 100 / 32000.0, 1e-12);
    EXPECT_NEAR(output[2][0], (3 * 2.5 + 12.5) / 4 + 3.0, 1e-9); // the fourth channel is part of the mean
    EXPECT_EQ(output[3][0], 0.0);                                // and not written
}

// A window left open when the host ends the effect still looks into the tree.
TEST(Wrapper, EndsItsWindowBeforeItsTree)
{
    class Editor : public AEffEditor
    {
    public:
        Editor(CAudioWrapperVST& effect, std::string& log) : AEffEditor(&effect), wrapper_(effect), log_(log)
        {}
        ~Editor() override { log_ += wrapper_.getRoot()->findObject("plugin.audio-env") ? "ended" : "late"; }
        void close() override { log_ += "closed "; }

    private:
        CAudioWrapperVST& wrapper_;
        std::string& log_;
    };
    class Effect : public CAudioWrapperVST
    {
    public:
        explicit Effect(std::string& log)
            : CAudioWrapperVST([](AEffect*, std::int32_t, std::int32_t, std::intptr_t, void*,
                                  float) -> std::intptr_t { return 0; }),
              log_(log)
        {}
        CError init() override
        {
            CError error = CAudioWrapperVST::init();
            setEditor(std::make_unique<Editor>(*this, log_));
            return error;
        }

    private:
        std::string& log_;
    };
    const TestApplication application(test::wrapperTree());
    std::string log;
    auto* const effect = new Effect(log);
    test::requireOk(effect->init());
    AEffect* const face = effect->getAeffect();
    face->dispatcher(face, vst24::kClose, 0, 0, nullptr, 0.0f);
    EXPECT_EQ(log, "closed ended");
}

TEST(Wrapper, FollowsTheSettingOfAutomaticOversampling)
{
    const TestApplication application(test::wrapperTree());
    TestHost host;
    bringUp(host);
    EXPECT_EQ(host.get("host-oversampling-mode"), 1.0);
    CApplicationData& store = CApplication::get()->getGlobalData();
    test::requireOk(store.saveString("oversampling-level", "3", nullptr));
    EXPECT_EQ(host.get("host-oversampling-mode"), 3.0);
}

TEST(Wrapper, FollowsTheHostsTempoAndProcessLevel)
{
    const TestApplication application(test::wrapperTree());
    TestHost host;
    bringUp(host);
    host.tempo = 93.5;
    host.processLevel = 4;
    host.run(sines<double>(100), {50});
    host.getParams().takeChangesFromAudio();
    EXPECT_EQ(host.get("host-bpm"), 93.5);
    EXPECT_EQ(host.get("host-offline"), 1.0);
    host.tempo.reset();
    host.processLevel = 2;
    host.run(sines<double>(100), {50});
    host.getParams().takeChangesFromAudio();
    EXPECT_EQ(host.get("host-bpm"), 93.5);
    EXPECT_EQ(host.get("host-offline"), 0.0);
}

TEST(Wrapper, NamesChannelsAsAStepThatCanBeUndone)
{
    const TestApplication application(test::wrapperTree());
    TestHost host;
    bringUp(host);
    host.labels = {"Kick", "Snare"};
    host.importChannelLabels();
    CAudioParam& names = host.getParams().getParam("plugin.modMain.io-params.in-channel-names");
    EXPECT_EQ(names.getString(0, 1), "Snare");
}

} // namespace
} // namespace qel
