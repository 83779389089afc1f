// One plug-in instance without a host interface: building, blocks, state, and its end.
#include "CAudioWrapperVST.h"
#include "WrapperRig.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

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

TEST(Wrapper, GivesTheSameSamplesAtEveryBlockSizeAndPrecision)
{
    const auto input = sines<double>(10000);
    std::vector<std::vector<double>> reference;
    for (const std::vector<int>& sizes :
         std::vector<std::vector<int>>{{10000}, {1}, {7}, {64}, {512}, {513}, {4096}, {1025, 3, 700}}) {
        const TestApplication application(test::wrapperTree());
        TestHost host;
        bringUp(host);
        const auto output = host.run(input, sizes);
        if (reference.empty()) {
            reference = output;
        }
        EXPECT_EQ(output, reference) << "blocks of " << sizes[0];
    }
    // One sample by the formula: mono of the mix of gain and magnitude, plus the gain.
    const auto mixed = [&](std::size_t channel) {
        const double x = input[channel][5000];
        return x + (std::fabs(x) - x) * 0.25;
    };
    EXPECT_NEAR(reference[0][5000], 0.5 * (mixed(0) + mixed(1)) + input[0][5000], 1e-10);

    const TestApplication application(test::wrapperTree());
    TestHost host;
    bringUp(host);
    const auto narrow = host.run(sines<float>(2000), {300});
    EXPECT_NEAR(narrow[1][1500], reference[1][1500], 1e-6);
}

TEST(Wrapper, TakesSilenceForMissingInputsAndForWhatIsNotFinite)
{
    const TestApplication application(test::wrapperTree());
    TestHost host;
    bringUp(host);
    std::vector<float> left(64, 0.5f);
    left[10] = std::numeric_limits<float>::quiet_NaN();
    left[11] = std::numeric_limits<float>::infinity();
    std::vector<float> out[2] = {std::vector<float>(64, 9.0f), std::vector<float>(64, 9.0f)};
    const void* inputs[] = {left.data(), nullptr};
    void* outputs[] = {out[0].data(), out[1].data()};
    CAudioHostBlock block;
    block.inputs = inputs;
    block.outputs = outputs;
    block.count = 64;
    host.processBlock(block);
    for (int i = 0; i < 64; ++i) {
        const float expected = i == 10 || i == 11 ? 0.0f : 0.75f; // half of 0.5, and 0.5 itself
        ASSERT_NEAR(out[0][static_cast<std::size_t>(i)], expected, 1e-6f) << i;
    }
    EXPECT_NEAR(out[1][20], 0.25f, 1e-6f);
    block.count = 0; // no slice runs
    host.processBlock(block);
    EXPECT_EQ(host.getParams().getEnv().getPositionSec(), 64 / 48000.0);
}

TEST(Wrapper, TellsWhichPartOfTheTreeIsMissing)
{
    struct Case
    {
        const char* what;
        const char* instead;
        const char* message;
    };
    const Case cases[] = {
        {"name=\"plugin\" content", "name=\"plug\" content", "Run-time template 'plugin' does not exist."},
        {"name=\"project\"", "name=\"projekt\"", "Shared project root 'shared::project' object is required."},
        {"app-name=\"Test\"", "", "Plug-in name is empty."},
        {"app-vendor=\"Maker\"", "", "Vendor name is empty."},
        {"intchannel-count=\"8\"", "intchannel-count=\"33\"",
         "Invalid 'plugin-intchannel-count' attribute value."},
        {"group-count=\"8\"", "group-count=\"0\"", "Invalid 'plugin-group-count' attribute value."},
        {"\"7qtz\" use", "\"7qt\" use", "Invalid plug-in code in string '7qt'."},
        {"\"7qtz\" use", "\"7qtz5\" use", "Invalid plug-in code in string '7qtz5'."},
        {"\"1.2\"", "\"1\"", "in string '1'."},
        {"\"1.2\"", "\"1.x\"", "in string '1.x'."},
        {"name=\"dcdaw-context\"", "name=\"x\"", "No valid DCDAW context object with the name"},
        {"name=\"cctable\"", "name=\"x\"", "No valid CAudioCCTable* object with the name"},
        {"name=\"ext-param-list\"", "name=\"x\"", "No valid CAudioExtParamList* object with the name"},
        {"name=\"param-registry\"", "name=\"x\"", "No valid parameter registry object with the name"},
        {"name=\"modMain\"", "name=\"x\"", "No main process definition object with the name"},
        {"name=\"modOutput\"", "name=\"x\"", "No output process definition object with the name"},
        {"audio:modOutput", "audio:modNode", "is not of required 'CModOutput' type."},
    };
    for (const Case& c : cases) {
        std::string xml = test::wrapperTree();
        xml.replace(xml.find(c.what), std::string(c.what).size(), c.instead);
        const TestApplication application(xml);
        TestHost host;
        const CError error = host.init();
        ASSERT_TRUE(error) << c.message;
        EXPECT_NE(error.text().find(c.message), std::string::npos) << error.text();
    }
    TestHost host;
    const CError error = host.init();
    EXPECT_NE(error.text().find("No application object created."), std::string::npos);
}

TEST(Wrapper, RestoresItsStateToTheLastByte)
{
    const TestApplication application(test::wrapperTree());
    TestHost host;
    bringUp(host);
    host.set("modGain.gain", 2.0);
    host.set("wet", 0.0);
    for (const bool isPreset : {true, false}) {
        CByteBuffer chunk;
        test::requireOk(host.saveChunk(chunk, isPreset, true));
        TestHost other;
        bringUp(other);
        test::requireOk(other.loadChunk(chunk.bytes(), isPreset, true));
        EXPECT_EQ(other.get("modGain.gain"), 2.0);
        CByteBuffer again;
        test::requireOk(other.saveChunk(again, isPreset, true));
        EXPECT_TRUE(again == chunk);
        const auto soundOf = [](TestHost& instance) {
            CNoiseSource::restartSeeds();
            return instance.run(sines<double>(3000), {100});
        };
        TestHost fresh;
        bringUp(fresh);
        test::requireOk(fresh.loadChunk(chunk.bytes(), isPreset, true));
        EXPECT_EQ(soundOf(fresh), soundOf(other));
    }
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
                                  float) -> std::intptr_t { return 0; })
        {
            setEditor(std::make_unique<Editor>(*this, log));
        }
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
