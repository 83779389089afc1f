// What a host learns about the effect.
#include "HostRig.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <limits>

using namespace vst24;

namespace qel::test {
namespace {

TEST(Description, TellsWhatItIsThroughBothEntries)
{
    Host host;
    EXPECT_EQ(host->magic, kMagic);
    EXPECT_EQ(host->flags, kHasEditor | kCanReplace | kProgramChunks | kCanDoubleReplace);
    EXPECT_EQ(host->uniqueID, 0x3771747A);
    EXPECT_EQ(host->numParams, 24);
    EXPECT_GE(host->numPrograms, 1);
    EXPECT_EQ(host->ioRatio, 1.0f);
    EXPECT_EQ(host.call(kEffectIdentify), kIdentify);
    EXPECT_EQ(host.call(kGetVstVersion), 2400);
    EXPECT_EQ(host.call(kGetPlugCategory), 1);
    EXPECT_EQ(host.call(kGetVendorVersion), 0x010100);
    EXPECT_EQ(host.text(kGetEffectName, 32), "Drumfell");
    EXPECT_EQ(host.text(kGetVendorString, 64), "Brintal");
    EXPECT_EQ(host.text(kGetProductString, 64), "Drumfell 1.1");

    const auto noHost = [](AEffect*, std::int32_t, std::int32_t, std::intptr_t, void*,
                           float) -> std::intptr_t { return 0; };
    for (const char* name : {"VSTPluginMain", "main"}) {
        EXPECT_EQ(loadEntry(name)(nullptr), nullptr);
        EXPECT_EQ(loadEntry(name)(noHost), nullptr) << "a host without a version";
    }
}

TEST(Description, OffersAsManyChannelsAsTheHostCanTake)
{
    const std::pair<HostTraits, int> cases[] = {
        {{2400, "Maker", "Host"}, 8},
        {{2300, "", ""}, 8},
        {{2299, "", "Host"}, 2},
        {{2, "", ""}, 2},
        {{2400, "", "Sony ACID Pro"}, 2},
        {{2400, "", "Sony ACID Pro 7"}, 8},
        {{2400, "Steinberg", "WaveLab 6"}, 8},
    };
    for (const auto& [traits, channels] : cases) {
        Host host(traits);
        EXPECT_EQ(host->numInputs, channels) << traits.product;
        EXPECT_EQ(host->numOutputs, channels) << traits.product;
        host.start();
        host.run(drums<float>(700, 2), {300});
    }
}

TEST(Description, ClaimsNothingElse)
{
    Host host;
    const auto canDo = [&](std::string text) { return host.call(kCanDo, 0, 0, text.data()); };
    EXPECT_EQ(canDo("hasCockosExtensions"), 0xBEEF0000);
    EXPECT_EQ(canDo("receiveVstMidiEvent"), 1);
    EXPECT_EQ(canDo("receiveVstTimeInfo"), 1);
    for (const char* other : {"sendVstMidiEvent", "bypass", "receiveVstEvents", "", "receiveVstMidiEvents"}) {
        EXPECT_EQ(canDo(other), 0) << other;
    }
    EXPECT_EQ(canDo(std::string(5000, 'x')), 0);
    for (const int opcode :
         {+kSetBypass, +kGetTailSize, +kShellGetNextPlugin, +kEditOpen, +kEditIdle, 20, 9999, -1}) {
        EXPECT_EQ(host.call(opcode, 1, 1), 0) << opcode;
    }
}

// Over the whole range of each: what is set can be read back, its text set again gives the same text.
TEST(Description, ParametersReadBackAndUnderstandTheirOwnText)
{
    Host host;
    for (std::int32_t i = 0; i < host->numParams; ++i) {
        const std::string name = host.text(kGetParamName, 8, i);
        EXPECT_FALSE(name.empty());
        host.text(kGetParamLabel, 8, i);
        EXPECT_EQ(host.call(kCanBeAutomated, i), 1);
        EXPECT_EQ(host.call(kString2Parameter, i), 1);
        VstParameterProperties properties;
        EXPECT_EQ(host.call(kGetParameterProperties, i, 0, &properties), 1);
        EXPECT_EQ(properties.shortLabel, name);
        if (i == 0 || std::string(name) == "Oversmp") { // a switch, and five states
            EXPECT_EQ(properties.flags,
                      i == 0 ? kParameterIsSwitch : kParameterHasIntegerRange | kParameterHasFloatSteps);
            EXPECT_EQ(properties.maxInteger, i == 0 ? 0 : 4);
            EXPECT_EQ(properties.stepFloat, i == 0 ? 0.0f : 0.25f);
        } else if (std::string(name).find("Gain") != std::string::npos) {
            EXPECT_EQ(properties.flags, 0) << name;
        }
        for (int step = 0; step <= 20; ++step) {
            host.set(i, static_cast<float>(step) / 20.0f);
            const float value = host.get(i);
            std::string display = host.text(kGetParamDisplay, 8, i);
            ASSERT_FALSE(display.empty()) << name;
            host.set(i, value);
            EXPECT_EQ(host.get(i), value) << name;
            char shown[256] = {};
            EXPECT_EQ(host.call(kVendorSpecific, 7, i, shown, value), 0xBEEF);
            EXPECT_EQ(shown, display) << name;
            ASSERT_EQ(host.call(kString2Parameter, i, 0, display.data()), 1) << name << ' ' << display;
            EXPECT_EQ(host.text(kGetParamDisplay, 8, i), display) << name;
            if (display != "Reserve") { // several states without a name
                EXPECT_NEAR(host.get(i), value, 0.02) << name << ' ' << display;
            }
        }
    }
}

TEST(Description, NumbersOutsideTheRangeAreHarmless)
{
    Host host;
    constexpr float kNaN = std::numeric_limits<float>::quiet_NaN();
    constexpr float kInfinity = std::numeric_limits<float>::infinity();
    const std::vector<float> before = host.getAll();
    for (const std::int32_t index : {-1, host->numParams, std::numeric_limits<std::int32_t>::min(),
                                     std::numeric_limits<std::int32_t>::max()}) {
        host.set(index, 0.7f);
        EXPECT_EQ(host.get(index), 0.0f);
        EXPECT_EQ(host.text(kGetParamName, 8, index), "");
        EXPECT_EQ(host.text(kGetParamDisplay, 8, index), "");
        EXPECT_EQ(host.text(kGetParamLabel, 8, index), "");
        EXPECT_EQ(host.text(kGetProgramNameIndexed, 24, index, -1), "");
        std::vector<char> record(256);
        for (const std::int32_t opcode : {kGetParameterProperties, kGetInputProperties, kGetOutputProperties,
                                          kCanBeAutomated, kString2Parameter}) {
            EXPECT_EQ(host.call(opcode, index, 0, record.data()), 0) << opcode;
        }
        EXPECT_EQ(host.call(kVendorSpecific, 7, index, record.data(), 0.5f), 0);
        const std::intptr_t program = host.call(kGetProgram);
        host.call(kSetProgram, 0, index);
        host.call(kSetProgram, 0, std::intptr_t{1} << 32);
        EXPECT_EQ(host.call(kGetProgram), program);
    }
    EXPECT_EQ(host.getAll(), before);
    for (std::int32_t i = 0; i < host->numParams; ++i) {
        host.set(i, 7.0f);
        EXPECT_EQ(host.get(i), 1.0f);
        host.set(i, kNaN);
        EXPECT_EQ(host.get(i), 1.0f);
        host.set(i, -kInfinity);
        EXPECT_EQ(host.get(i), 0.0f);
    }
    EXPECT_EQ(host.call(kVendorSpecific, 7, 0, nullptr), 0);
    EXPECT_EQ(host.call(kVendorSpecific, 0x73744341, 0x57686565), 0) << "no editor to wheel";
}

TEST(Description, ProgramsKeepNamesAndValues)
{
    Host host;
    char name[] = "A very long name of a program, longer than the field";
    host.call(kSetProgramName, 0, 0, name);
    const std::string kept = host.text(kGetProgramName, 24);
    EXPECT_EQ(kept, std::string(name).substr(0, 23));
    EXPECT_EQ(host.text(kGetProgramNameIndexed, 24, static_cast<std::int32_t>(host.call(kGetProgram)), -1),
              kept);
    host.automations = 0;
    const std::vector<float> first = host.getAll();
    for (std::int32_t program = host->numPrograms - 1; program >= 0; --program) {
        host.call(kSetProgram, 0, program);
        EXPECT_EQ(host.call(kGetProgram), program);
    }
    EXPECT_EQ(host.getAll(), first);
    EXPECT_EQ(host.automations, 0) << "the host's own doing is no automation";
}

TEST(Description, ArrangementsAreKeptWithinTheChannels)
{
    Host host;
    VstSpeakerArrangement* in = nullptr;
    VstSpeakerArrangement* out = nullptr;
    const auto inAddress = reinterpret_cast<std::intptr_t>(&in);
    EXPECT_EQ(host.call(kGetSpeakerArrangement, 0, inAddress, &out), 0);
    for (const std::int32_t count : {2, 6, 0, -5, 1, 40, 8}) {
        VstSpeakerArrangement wanted{};
        wanted.type = 7;
        wanted.numChannels = count;
        std::strcpy(wanted.speakers[0].name, "Left");
        EXPECT_EQ(host.call(kSetSpeakerArrangement, 0, reinterpret_cast<std::intptr_t>(&wanted), &wanted), 1);
        EXPECT_EQ(host.call(kGetSpeakerArrangement, 0, inAddress, &out), 1);
        EXPECT_EQ(in->numChannels, std::clamp(count, 0, 8));
        EXPECT_EQ(out->type, 7);
        host.start();
        host.run(drums<float>(600), {600});
    }
    EXPECT_EQ(host.call(kSetSpeakerArrangement, 0, 0, nullptr), 0);
    VstPinProperties pin{};
    EXPECT_EQ(host.call(kGetInputProperties, 0, 0, &pin), 1);
    EXPECT_STREQ(pin.label, "L");
    EXPECT_EQ(host.call(kGetOutputProperties, 7, 0, &pin), 1);
    EXPECT_STREQ(pin.label, "Out 8");
    EXPECT_EQ(pin.flags, kPinActive | kPinStereo);
}

} // namespace
} // namespace qel::test
