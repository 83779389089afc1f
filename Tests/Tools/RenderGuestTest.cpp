// Parameters and states of a guest.
#include "RenderTestSupport.h"

#include "Render/CParameterSetter.h"
#include "Render/DisplayNumber.h"
#include "Render/GuestState.h"
#include "Render/HostStateFile.h"

#include <limits>

namespace qel::tools {

namespace {

constexpr int kGain = 0;
constexpr int kBend = 3;

std::vector<float> valuesOf(CGuestPlugin& guest)
{
    std::vector<float> values;
    for (int i = 0; i < guest.parameterCount(); ++i) {
        values.push_back(guest.parameter(i));
    }
    return values;
}

std::string readText(const std::filesystem::path& path)
{
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
}

} // namespace

using RenderGuest = CRenderTest;

TEST_F(RenderGuest, FindsThePositionOfADisplayedValueHoweverTheEffectAnswers)
{
    struct CCase
    {
        const char* assignment;
        const char* shown;
        float norm;
    };
    const std::vector<CCase> cases{{"Gain=+12", "+12.0", 0.75f},    {"gain=-7.3 dB", "-7.3", 0.34792f},
                                   {"0=-24", "-24.0", 0.0f},        {"Gain=0.25n", "-12.0", 0.25f},
                                   {"Delay=1k", "1000", 1.0f},      {"de=123", "123", 0.123f},
                                   {"Mode=pump", "Pumping", 1.0f},  {"Mode=Hard", "Hard", 0.5f},
                                   {"Bend=25", "25.000000", 0.25f}, {"Bend=10.1", nullptr, 0.3411f}};
    for (const char* words : {"", "reads", "lies", "extension"}) {
        behave(words);
        CGuestPlugin guest(library(), {});
        CParameterSetter setter(guest);
        for (const CCase& one : cases) {
            setter.set(one.assignment);
            const int index =
                setter.find(std::string(one.assignment).substr(0, std::string(one.assignment).find('=')));
            if (one.shown) {
                EXPECT_EQ(guest.parameterDisplay(index), one.shown) << one.assignment << " " << words;
            }
            EXPECT_NEAR(guest.parameter(index), one.norm, 2e-4) << one.assignment << " " << words;
        }
        const std::vector<float> before = valuesOf(guest);
        EXPECT_NEAR(setter.normFor(kGain, "3.14"), (3.1 + 24.0) / 48.0, 1e-3);
        for (const char* bad :
             {"Gain=+25", "Gain=loud", "Gain", "None=1", "Mode=", "Mode=x", "9=1", "Delay=1.5n"}) {
            EXPECT_EQ(codeOf([&] { setter.set(bad); }), CExitCode::kSetting) << bad;
        }
        EXPECT_EQ(valuesOf(guest), before) << "asking moves nothing";
    }
}

TEST_F(RenderGuest, ReadsNumbersAsPeopleWriteThem)
{
    EXPECT_EQ(parseDisplayNumber(" +12.5 dB", "dB"), 12.5);
    EXPECT_EQ(parseDisplayNumber("1.2 kHz", "Hz"), 1200.0);
    EXPECT_EQ(parseDisplayNumber("-inf"), -std::numeric_limits<double>::infinity());
    EXPECT_FALSE(parseDisplayNumber("12 dB", "Hz"));
    EXPECT_FALSE(parseDisplayNumber("off"));
    EXPECT_FALSE(parseDisplayNumber("+-3"));
}

TEST_F(RenderGuest, BringsItsStateThroughEveryKindOfFile)
{
    for (const char* words : {"", "plain"}) {
        behave(words);
        for (const char* name : {"a.fxp", "a.fxb"}) {
            const auto path = folder_ / name;
            CGuestPlugin first(library(), {});
            first.setProgram(1);
            first.setParameter(kBend, 0.7f);
            saveState(first, path);
            CGuestPlugin second(library(), {});
            second.setProgram(1);
            loadState(second, path);
            EXPECT_EQ(second.program(), 1);
            EXPECT_EQ(valuesOf(second), valuesOf(first)) << name << " " << words;
            EXPECT_EQ(second.programName(2), "Late");
            const std::string again = std::string("b") + name;
            saveState(second, folder_ / again);
            EXPECT_EQ(readText(path), readText(folder_ / again));
        }
    }
    CGuestPlugin guest(library(), {});
    EXPECT_EQ(codeOf([&] { saveState(guest, folder_ / "a.cpf"); }), CExitCode::kSetting);
    EXPECT_EQ(codeOf([&] { loadState(guest, write("x.cpf", "aprs and more")); }), CExitCode::kSetting);
    EXPECT_EQ(codeOf([&] { loadState(guest, write("x.fxp", "no state")); }), CExitCode::kInput);
}

TEST_F(RenderGuest, RefusesStatesThatAreCutAlteredOrForeign)
{
    const CHostProgram plain{"Name", std::vector<float>{0.25f, 1.0f}};
    const CHostProgram chunk{"Other", CBytes{1, 2, 3}};
    const std::vector<CHostState> states{{5, 1, plain},
                                         {5, 1, chunk},
                                         {5, 1, CHostBank{1, std::vector<CHostProgram>{plain, plain}, 2}},
                                         {5, 1, CHostBank{1, CBytes{9, 8}, 4}}};
    for (const CHostState& state : states) {
        const CBytes bytes = encodeHostState(state);
        EXPECT_EQ(decodeHostState(bytes), state);
        for (std::size_t size = 0; size < bytes.size(); ++size) {
            EXPECT_THROW(decodeHostState(std::span(bytes).first(size)), CRenderError);
        }
        // Cut short with the length put right.
        for (std::size_t size = 8; size < bytes.size(); ++size) {
            CBytes cut(bytes.begin(), bytes.begin() + static_cast<std::ptrdiff_t>(size));
            cut[6] = static_cast<std::uint8_t>((size - 8) >> 8);
            cut[7] = static_cast<std::uint8_t>(size - 8);
            EXPECT_THROW(decodeHostState(cut), CRenderError);
        }
    }
    EXPECT_EQ(encodeHostState(states[0]).size(), 28U + 28U + 8U);
    EXPECT_EQ(encodeHostState(states[3]).size(), 28U + 128U + 4U + 2U);
    CGuestPlugin guest(library(), {});
    const CBytes foreign = encodeHostState(states[0]);
    const auto path = write("f.fxp", std::string(foreign.begin(), foreign.end()));
    EXPECT_EQ(codeOf([&] { loadState(guest, path); }), CExitCode::kSetting);
}

} // namespace qel::tools
