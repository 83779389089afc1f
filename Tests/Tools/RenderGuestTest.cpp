// Parameters and states of a guest.
#include "RenderFixture.h"

#include "Render/CParameterSetter.h"
#include "Render/DisplayNumber.h"
#include "Render/GuestState.h"

namespace qel::tools {

namespace {

constexpr int kGain = 0;

std::vector<float> valuesOf(CGuestPlugin& guest)
{
    std::vector<float> values;
    for (int i = 0; i < guest.parameterCount(); ++i) {
        values.push_back(guest.parameter(i));
    }
    return values;
}

} // namespace

using RenderGuest = RenderFixture;

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
    for (const char* words : {"", "reads", "lies"}) {
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
            EXPECT_NEAR(guest.parameter(index), one.norm, 1.0 / 512.0) << one.assignment << " " << words;
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

} // namespace qel::tools
