// What the product is delivered with: the factory bank and the lists of the two smaller registries.
#include "ProductInstance.h"

#include "CAudioParamConverter.h"

namespace qel::test {
namespace {

using Texts = std::vector<std::string>;
using Numbers = std::vector<double>;

// Settings as the front panel shows them; null where the unit is off.
struct Program
{
    const char* name;
    const char* crossover;
    const char* punch;
    const char* satDrive;
    const char* satLowPass;
    const char* satHighPass;
    const char* satGain;
    const char* sub;
    const char* comp;
    const char* lowGain;
    const char* mixGain;
    bool isMono = false;
    bool isPumping = false;
};

constexpr const char* kOff = nullptr;
const Program kPrograms[] = {
    {"Default", "100", kOff, kOff, "1000", "10", "0", kOff, kOff, "0", "0"},
    {"Acoustic Drums Punch", "109.4", "6.5", "28.3", "210", "102", "-12.6", kOff, "18", "0.2", "-2"},
    {"Defined Kicks", "100.4", "9", "15.8", "128", "130", "-7.9", "-7.1", "10", "-3.3", "-2.2"},
    {"Edgy Kicker", "100", "12", "33.6", "241", "6", "-11.1", "-4.9", "10", "0", "-3.5", true},
    {"Extra Sub", "130.6", "2.3", kOff, "1000", "10", "0", "-0.8", "6.1", "-0.6", "0"},
    {"Full Saturation", "102.7", "5.8", "22", "748", "1", "2.2", "0.6", kOff, kOff, "0", true, true},
    {"Fuller Bass Guitar", "133.5", "5.8", "19.7", "117", "10", "-4.5", "-6.1", "13.8", "0", "-3.4"},
    {"Overtones", "144.5", kOff, "35.1", "134", "190", "-5.9", kOff, kOff, "0", "0"},
    {"Overtones and Subs", "130", kOff, "32.4", "125", "137", "-6.7", "-4.3", kOff, "0", "0"},
    {"Punch, Mono and Comp", "81.8", "7.1", kOff, "1000", "10", "0", kOff, "33.3", "0", "-1.4", true},
    {"Punchy Pad", "122.8", "4.4", "19", "256", "104", "-7.8", "-2", "27.8", "-0.6", "-1.7"},
    {"Roaring Bass", "124.5", kOff, "35.3", "128", "57", "1.6", kOff, kOff, "-1.9", "0", false, true},
    {"Saturated Bass", "138.3", "5", "41.2", "585", "1", "-9.2", "-2.6", "20.8", "0", "-0.9"},
};

class FactoryPresets : public ProductTest
{
protected:
    FactoryPresets() { bringUp(host_); }

    CAudioParamRegistry& master() { return host_.getRegistry(); }
    CAudioParam& param(const std::string& name) { return paramOf(host_, name); }

    void expectShown(const std::string& name, const char* text)
    {
        EXPECT_EQ(param(name).getValue(0, 0), typed(host_, name, text)) << name;
    }
    // A unit with a switch: while it is off its value is the default.
    void expectUnit(const std::string& name, const char* text, const char* value)
    {
        const std::string unit = "modDrumfell." + name;
        expectShown(unit + "-enable", text ? "1" : "0");
        expectShown(unit + "-" + value, text ? text : "0");
    }
    void expectProgram(const Program& wanted)
    {
        expectShown("modDrumfell.xover-freq", wanted.crossover);
        expectShown("modDrumfell.xover-type", "2");
        expectUnit("punch", wanted.punch, "gain");
        expectUnit("sat", wanted.satDrive, "drive");
        expectShown("modDrumfell.sat-mode", wanted.isPumping ? "1" : "0");
        expectShown("modDrumfell.sat-lpf", wanted.satLowPass);
        expectShown("modDrumfell.sat-hpf", wanted.satHighPass);
        expectShown("modDrumfell.sat-gain", wanted.satGain);
        expectUnit("sub", wanted.sub, "gain");
        expectUnit("comp", wanted.comp, "drive");
        expectUnit("lf", wanted.lowGain, "gain");
        expectShown("modDrumfell.mix-gain", wanted.mixGain);
        expectShown("modDrumfell.mono-enable", wanted.isMono ? "1" : "0");
        expectShown("modDrumfell.drymix", "0");
        expectShown("modDrumfell.lf-mon", "0");
        expectShown("modOutGain.gain", "0");
        EXPECT_EQ(numbersOf(param("io-params.in-routing")), (Numbers{1, 2, 0, 0, 0, 0, 0, 0}));
    }
    CAudioPresetBank list(CApplicationData& store, const char* name) const
    {
        CByteBuffer body;
        store.loadAppData(name, body, CAudioPresetBank::kListChunkId);
        CMemoryReader reader(body.bytes());
        CAudioPresetBank presets;
        requireOk(presets.loadList(reader));
        return presets;
    }
    void activate(CAudioParamRegistry& registry, const CAudioPreset& preset)
    {
        const Bytes body = bodyOf(preset);
        CMemoryReader reader(body);
        requireOk(registry.activatePreset(reader, false));
    }

    TestHost host_;
};

TEST_F(FactoryPresets, AreThePrograms)
{
    ASSERT_EQ(master().getProgramCount(), 13);
    // Backwards, so that what the default would show is not there by itself.
    for (std::int32_t i = 12; i >= 0; --i) {
        const Program& wanted = kPrograms[i];
        SCOPED_TRACE(wanted.name);
        ASSERT_OK(master().setProgram(i));
        EXPECT_EQ(master().getProgramName(i), wanted.name);
        EXPECT_EQ(param("preset-name").getString(0, 0), wanted.name);
        expectProgram(wanted);
        master().masterReset();
        ASSERT_OK(master().activateROMPreset(i));
        expectProgram(wanted);
    }
}

TEST_F(FactoryPresets, SetOversamplingByWhicheverKeyTheyHave)
{
    const Bytes body =
        bytesOf([&](COutputStream& stream) { return master().acquireBank(true, stream, false); });
    CMemoryReader reader(body);
    CAudioPresetBank rom;
    ASSERT_OK(rom.load(reader));
    EXPECT_EQ(rom.getName(), "Factory ROM");
    for (std::int32_t i = 0; i < rom.getCount(); ++i) {
        const CAudioPreset& preset = rom.get(i);
        SCOPED_TRACE(preset.getTitle().toUtf8());
        const bool isNew = preset.getTitle() == "Edgy Kicker";
        const bool hasNone = preset.getTitle() == "Extra Sub";
        EXPECT_GE(preset.getEntries().size(), 28u);
        EXPECT_LE(preset.getEntries().size(), 32u);
        EXPECT_EQ(preset.findEntry("oversampling") != nullptr, isNew);
        EXPECT_EQ(preset.findEntry("modDrumfell.xover-type") != nullptr, isNew);
        EXPECT_EQ(preset.findEntry("io-params.oversampling") != nullptr, !isNew && !hasNone);

        host_.set("oversampling", 3.0);
        host_.set("modDrumfell.xover-type", 0.0);
        ASSERT_OK(master().activateROMPreset(i));
        EXPECT_EQ(host_.get("oversampling"), hasNone ? 3.0 : 1.0);
        EXPECT_EQ(host_.get("modDrumfell.xover-type"), 2.0); // by default where the preset has none
    }
    EXPECT_FALSE(param("io-params.oversampling").hasInfo());
}

TEST_F(FactoryPresets, OfTheDCFilterAreInItsStore)
{
    const CAudioPresetBank presets =
        list(CApplication::get()->getLocalData(), "AppDataLocal_dcfilter-presets");
    const std::tuple<const char*, double, double> wanted[] = {
        {"3 Hz -6", 3, 0},    {"10 Hz -6", 10, 0},  {"20 Hz -6", 20, 0},  {"10 Hz -18", 10, 3},
        {"20 Hz -18", 20, 3}, {"10 Hz -36", 10, 9}, {"20 Hz -36", 20, 9},
    };
    ASSERT_EQ(presets.getCount(), 7);
    for (std::int32_t i = 0; i < 7; ++i) {
        const auto& [name, freq, type] = wanted[i];
        EXPECT_EQ(presets.get(i).getName(), CString("7qtzA:") + name);
        activate(registryOf(host_, "param-registry-dcfilter"), presets.get(i));
        EXPECT_EQ(host_.get("modDrumfell.dcfilter-params.freq"), freq) << name;
        EXPECT_EQ(host_.get("modDrumfell.dcfilter-params.type"), type) << name;
        // What is stored under the key of the name is older than the preset's own.
        EXPECT_EQ(param("modDrumfell.dcfilter-params.name").getString(0, 0), name);
    }
}

TEST_F(FactoryPresets, OfTheRoutingAreInItsStoreAndKeepTheirInertKeysToThemselves)
{
    struct Routing
    {
        const char* name;
        Numbers in;
        Numbers out;
        Numbers grouping;
        Texts groups;   // the first ones
        Texts channels; // the first ones
        std::size_t channelCount = 16;
        bool hasSideChain = false;
    };
    const Numbers pairs = {0, 0, 1, 1, 2, 2, 3, 3};
    const Numbers stereo = {1, 2, 0, 0, 0, 0, 0, 0};
    const Numbers mono = {1, 0, 0, 0, 0, 0, 0, 0};
    const Numbers apart = {0, 1, 1, 1, 1, 1, 1, 1};
    const Numbers surround = {1, 2, 3, 4, 5, 6, 0, 0};
    const Routing wanted[] = {
        {"Default Stereo", stereo, stereo, pairs, {"1", "2"}, {"L", "R", "IN3"}},
        {"2.1 Stereo",
         {1, 2, 3, 0, 0, 0, 0, 0},
         stereo,
         {0, 0, 1, 1, 1, 1, 1, 1},
         {"Front", "LFE", "3"},
         {"L", "R", "C", "IN4"}},
        {"5.1 Surround",
         surround,
         surround,
         {0, 0, 1, 2, 3, 3, 3, 3},
         {"Front", "Cntr", "LFE", "Side", "5"},
         {"L", "R", "C", "Lfe", "Ls", "Rs"},
         6},
        {"Dual Mono", stereo, stereo, apart, {"Left", "Right", "3"}, {"L", "R", "IN3"}},
        {"Mid-Side Stereo", stereo, stereo, apart, {"Mid", "Side", "3"}, {"L", "R", "IN3"}},
        {"Mono To Stereo", mono, {1, 1, 0, 0, 0, 0, 0, 0}, pairs, {"1"}, {"L", "R"}},
        {"Stereo Side-Chain",
         {1, 2, 3, 4, 0, 0, 0, 0},
         stereo,
         pairs,
         {"1"},
         {"L", "R", "scL", "scR", "IN5"},
         8,
         true},
        {"Mono Side-Chain", stereo, mono, pairs, {"1"}, {"L", "scL", "IN3"}, 8, true},
        {"Force Mono", mono, mono, pairs, {"1"}, {"L", "R"}, 16, true},
    };
    const CAudioPresetBank presets =
        list(CApplication::get()->getGlobalData(), "../routing-presets|AppDataGlobal_routing-presets");
    CAudioParamRegistry& routing = registryOf(host_, "param-registry-io");
    const auto expectBeginning = [](Texts texts, const Texts& beginning) {
        texts.resize(std::min(texts.size(), beginning.size()));
        EXPECT_EQ(texts, beginning);
    };
    ASSERT_EQ(presets.getCount(), 9);
    host_.set("modDrumfell.lf-gain", 2.0);
    for (std::int32_t i = 0; i < 9; ++i) {
        const Routing& each = wanted[i];
        SCOPED_TRACE(each.name);
        const CAudioPreset& preset = presets.get(i);
        EXPECT_EQ(preset.getName(), CString("QLIO:") + each.name);
        EXPECT_EQ(preset.findEntry("sidechain") != nullptr, each.hasSideChain);
        EXPECT_EQ(preset.findEntry("sidechain-mute") != nullptr, each.hasSideChain);
        activate(routing, preset);
        EXPECT_EQ(numbersOf(param("io-params.in-routing")), each.in);
        EXPECT_EQ(numbersOf(param("io-params.out-routing")), each.out);
        EXPECT_EQ(numbersOf(param("io-params.grouping")), each.grouping);
        const double paired = each.name == std::string("Mid-Side Stereo") ? 1.0 : 0.0;
        EXPECT_EQ(numbersOf(param("io-params.ms-pairs")), (Numbers{paired, paired, 0, 0, 0, 0, 0, 0}));
        EXPECT_EQ(textsOf(param("io-params.group-names")).size(), 8u);
        expectBeginning(textsOf(param("io-params.group-names")), each.groups);
        EXPECT_EQ(textsOf(param("io-params.in-channel-names")).size(), each.channelCount);
        expectBeginning(textsOf(param("io-params.in-channel-names")), each.channels);
    }
    EXPECT_EQ(host_.get("modDrumfell.lf-gain"), 2.0); // no business of the routing
    for (const char* key : {"sidechain", "sidechain-mute", "oversampling"}) {
        EXPECT_FALSE(param(std::string("io-params.") + key).hasInfo()) << key;
    }
}

} // namespace
} // namespace qel::test
