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

} // namespace
} // namespace qel
