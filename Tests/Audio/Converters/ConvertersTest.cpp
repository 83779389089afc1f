// Values, positions and texts of every kind of converter.
#include "ConverterFixture.h"

#include <cmath>

namespace qel {
namespace {

using Mode = CAudioParamConverter::TextMode;
using test::ConverterFixture;
using test::TreeNode;

class ConvertersTest : public ConverterFixture
{
protected:
    static double parse(const CAudioParamInfo& info, const char* text)
    {
        bool ok = false;
        const double value = info.converters[0]->textToValue(info, 0, text, &ok);
        EXPECT_TRUE(ok) << text;
        return value;
    }
    static double parseClamped(const CAudioParamInfo& info, const char* text)
    {
        bool ok = false;
        const double value = info.converters[0]->textToValueClamped(info, 0, text, &ok);
        EXPECT_TRUE(ok) << text;
        return value;
    }
    // The text must be refused by both forms, which give these values instead.
    static void expectUnusable(const CAudioParamInfo& info, const char* text, double value, double clamped)
    {
        bool ok = true;
        EXPECT_EQ(info.converters[0]->textToValue(info, 0, text, &ok), value) << text;
        EXPECT_FALSE(ok) << text;
        ok = true;
        EXPECT_EQ(info.converters[0]->textToValueClamped(info, 0, text, &ok), clamped) << text;
        EXPECT_FALSE(ok) << text;
        EXPECT_EQ(info.converters[0]->textToValue(info, 0, text, nullptr), value) << "without a flag";
    }
    static std::string textOf(const CAudioParamInfo& info, double value, Mode mode = Mode::kNormal)
    {
        return info.converters[0]->valueToText(info, 0, value, nullptr, mode).toUtf8();
    }
    static double valueAt(const CAudioParamInfo& info, double norm)
    {
        return info.converters[0]->normToValue(info, 0, norm);
    }
    static double normOf(const CAudioParamInfo& info, double value)
    {
        return info.converters[0]->valueToNorm(info, 0, value);
    }
};

struct TextCase
{
    double value;
    const char* normal;
    const char* compact;
};

TEST_F(ConvertersTest, FrequencyTextKeepsThreeDigitsOrSo)
{
    const CAudioParamInfo info = infoOf("freq", "20", "20k");
    EXPECT_EQ(info.maxValues[0], 20000.0);
    EXPECT_EQ(parse(info, "1k"), 1000.0);
    EXPECT_EQ(parse(info, "1,5K"), 1500.0);
    EXPECT_EQ(parseClamped(info, "100k"), 20000.0);
    for (const char* text : {"k", "1kk", "k1", "1m", "1 k k", "Hz"}) {
        expectUnusable(info, text, 20.0, 20.0);
    }
    const TextCase cases[] = {
        {20.0, "20.0", "20"},         {99.94, "99.9", "100"},      {99.95, "100", "100"},
        {99.96, "100", "100"},        {999.4, "999", "999"},       {999.6, "1.00k", "1000"},
        {999.96, "1.00k", "1.0k"},    {1500.0, "1.50k", "1.5k"},   {9994.0, "9.99k", "10.0k"},
        {9996.0, "10.0k", "10.0k"},   {15000.0, "15.0k", "15.0k"}, {99999.4, "100.0k", "100.0k"},
        {150000.0, "150.0k", "150k"},
    };
    for (const TextCase& c : cases) {
        EXPECT_EQ(textOf(info, c.value), c.normal) << c.value;
        EXPECT_EQ(textOf(info, c.value, Mode::kCompact), c.compact) << c.value;
    }
    EXPECT_NEAR(valueAt(info, 0.5), std::sqrt(20.0 * 20000.0), 1e-10) << "positions are logarithmic";
}

TEST_F(ConvertersTest, TypedTextMayCarryItsUnitAndASign)
{
    const struct
    {
        const char* converter;
        const char* text;
        const char* plain;
    } cases[] = {
        {"gain", "3 dB", "3"},     {"gain", "+3", "3"},         {"gain", "-6.5DB", "-6.5"},
        {"freq", "150 Hz", "150"}, {"freq", "1.2 kHz", "1200"}, {"freq", " 1,2 K ", "1200"},
        {"percent", "50 %", "50"}, {"percent", "+50%", "50"},   {"time", "20 ms", "20"},
        {"ratio", "4 : 1", "4:1"},
    };
    for (const auto& c : cases) {
        const bool isRatio = CString(c.converter) == "ratio";
        const CAudioParamInfo info = infoOf(c.converter, isRatio ? "1:1" : "1", isRatio ? "20:1" : "20");
        EXPECT_EQ(parse(info, c.text), parse(info, c.plain)) << c.text;
    }
    const CAudioParamInfo gain = infoOf("gain", "-12", "12");
    for (const char* text : {"3 Hz", "dB", "+-3", "++3", "3 dB dB", "3 d B"}) {
        expectUnusable(gain, text, gain.minValues[0], gain.minValues[0]);
    }
}

// A position survives the way through the value, in every class, upside down and beyond the range.
TEST_F(ConvertersTest, PositionsAndValuesInvertEachOther)
{
    const struct
    {
        const char* name;
        const char* min;
        const char* max;
    } ranges[] = {
        {"gain", "-24", "24"},  {"gain", "24", "-24"},   {"freq", "20", "20000"}, {"freq", "5k", "1"},
        {"time", "1", "1000"},  {"time", "1000", "0"},   {"timelog", "1", "100"}, {"time-exact", "0", "10"},
        {"real", "-1", "1000"}, {"percent", "0", "100"}, {"bw", "0.01", "7"},     {"ratio", "1:1", "20:1"},
    };
    for (const auto& range : ranges) {
        const CAudioParamInfo info = infoOf(range.name, range.min, range.max);
        const double size = std::abs(info.maxValues[0] - info.minValues[0]);
        for (int step = 0; step <= 100; ++step) {
            const double norm = step / 100.0;
            const double value = valueAt(info, norm);
            // Near the minimum the square root magnifies what the value has lost.
            EXPECT_NEAR(normOf(info, value), norm, 2e-8) << range.name << " at " << norm;
            EXPECT_NEAR(valueAt(info, normOf(info, value)), value, 1e-14 * (size + std::abs(value)))
                << range.name << " at " << norm;
        }
        EXPECT_NEAR(valueAt(info, 0.0), info.minValues[0], 1e-14 * size) << range.name;
        EXPECT_NEAR(valueAt(info, 1.0), info.maxValues[0], 1e-14 * size) << range.name;
    }
}

} // namespace
} // namespace qel
