#include "StreamTestSupport.h"

#include <cmath>
#include <limits>
#include <string_view>

namespace qel {

using namespace std::string_view_literals;

namespace {

std::string readBack(const Bytes& bytes, CString& out)
{
    CMemoryReader reader(bytes);
    return message(reader.readString(out));
}

Bytes withLength(std::uint32_t length, std::string_view text)
{
    CMemoryWriteBuffer buffer;
    EXPECT_TRUE(succeeded(buffer.writeU32(length)));
    EXPECT_TRUE(succeeded(buffer.write(text.data(), text.size())));
    return contentsOf(buffer);
}

} // namespace

TEST(WirePrimitives, AreLittleEndian)
{
    CMemoryWriteBuffer buffer;
    ASSERT_TRUE(succeeded(buffer.writeU32(0x89ABCDEF)));
    ASSERT_TRUE(succeeded(buffer.writeI32(-2)));
    ASSERT_TRUE(succeeded(buffer.writeU8(0xFE)));
    ASSERT_TRUE(succeeded(buffer.writeBool(true)));
    ASSERT_TRUE(succeeded(buffer.writeF32(-1.5f)));
    ASSERT_TRUE(succeeded(buffer.writeF64(1.0)));
    ASSERT_TRUE(succeeded(buffer.writeString(u"A\u00E9"sv)));
    const Bytes expected = {0xEF, 0xCD, 0xAB, 0x89, 0xFE, 0xFF, 0xFF, 0xFF, 0xFE, 0x01,
                            0x00, 0x00, 0xC0, 0xBF, 0,    0,    0,    0,    0,    0,
                            0xF0, 0x3F, 3,    0,    0,    0,    'A',  0xC3, 0xA9};
    EXPECT_EQ(contentsOf(buffer), expected);
}

TEST(WirePrimitives, RoundTripAtTheEdgesOfTheirRanges)
{
    CMemoryWriteBuffer buffer;
    const float negativeZero = -0.0f;
    const double denormal = std::numeric_limits<double>::denorm_min();
    ASSERT_TRUE(succeeded(buffer.writeU32(0xFFFFFFFF)));
    ASSERT_TRUE(succeeded(buffer.writeI32(std::numeric_limits<std::int32_t>::min())));
    ASSERT_TRUE(succeeded(buffer.writeF32(negativeZero)));
    ASSERT_TRUE(succeeded(buffer.writeF64(denormal)));
    ASSERT_TRUE(succeeded(buffer.writeU8(2)));

    const Bytes bytes = contentsOf(buffer);
    CMemoryReader reader(bytes);
    std::uint32_t u = 0;
    std::int32_t i = 0;
    float f = 1;
    double d = 0;
    bool b = false;
    ASSERT_TRUE(succeeded(reader.readU32(u)));
    ASSERT_TRUE(succeeded(reader.readI32(i)));
    ASSERT_TRUE(succeeded(reader.readF32(f)));
    ASSERT_TRUE(succeeded(reader.readF64(d)));
    ASSERT_TRUE(succeeded(reader.readBool(b)));
    EXPECT_EQ(u, 0xFFFFFFFF);
    EXPECT_EQ(i, std::numeric_limits<std::int32_t>::min());
    EXPECT_TRUE(f == 0 && std::signbit(f));
    EXPECT_EQ(d, denormal);
    EXPECT_TRUE(b) << "any byte but 0 is true";
}

TEST(WirePrimitives, StringsKeepTheirWidth)
{
    const struct
    {
        CString written;
        CString read;
        bool wide;
    } cases[] = {
        {u""sv, u""sv, false},
        {"\xE9t\xE9", "\xE9t\xE9", false},
        {u"5 \u20AC"sv, u"5 \u20AC"sv, true},
        {u"\u07FF\u0800\uFFFF"sv, u"\u07FF\u0800\uFFFF"sv, true},
        {u"a\xD800z\u0100"sv, u"az\u0100"sv, true},
        {std::string_view("ab\0cd", 5), "ab", false},
    };
    for (const auto& item : cases) {
        CMemoryWriteBuffer buffer;
        ASSERT_TRUE(succeeded(buffer.writeString(item.written)));
        CString result = "old";
        EXPECT_EQ(readBack(contentsOf(buffer), result), "");
        EXPECT_EQ(result, item.read);
        EXPECT_EQ(result.isWide(), item.wide) << item.read.toUtf8();
    }
}

TEST(WirePrimitives, StringLengthsAreJudgedBeforeAnythingIsRead)
{
    CString result;
    const std::string longest(61440, 'x');
    EXPECT_EQ(readBack(withLength(61440, longest), result), "");
    EXPECT_EQ(result.length(), 61440u);
    CMemoryWriteBuffer buffer; // what could not be read is not written either
    EXPECT_TRUE(succeeded(buffer.writeString(CString(longest))));
    EXPECT_EQ(message(buffer.writeString(CString(longest + "x"))),
              "String length 61441 too long in writeString().");
    EXPECT_EQ(readBack(withLength(61441, longest + "x"), result),
              "String length 61441 too long in readString().");
    EXPECT_TRUE(result.isEmpty());
    EXPECT_EQ(readBack(withLength(0x7FFFFFFF, ""), result),
              "String length 2147483647 too long in readString().");
    result = "old";
    EXPECT_EQ(readBack(withLength(0xFFFFFFFF, ""), result), "") << "a negative length is the empty string";
    EXPECT_TRUE(result.isEmpty());
    EXPECT_EQ(readBack(withLength(3, "ab"), result),
              "Premature end of memory resource while reading (pos 4, count 3, size 6).");
}

TEST(WirePrimitives, DamagedUtf8IsReadLeniently)
{
    CString result;
    EXPECT_EQ(readBack(withLength(4, "a\x80\xFFz"), result), "");
    EXPECT_EQ(result, "az");
    EXPECT_EQ(readBack(withLength(3, "ab\xC3"), result), "");
    EXPECT_EQ(result, "ab");
}

TEST(WirePrimitives, ARecordCutAnywhereIsRefused)
{
    CMemoryWriteBuffer buffer;
    ASSERT_TRUE(succeeded(buffer.writeF64(3.25)));
    ASSERT_TRUE(succeeded(buffer.writeString("name")));
    ASSERT_TRUE(succeeded(buffer.writeBool(false)));
    const Bytes whole = contentsOf(buffer);
    const auto readAll = [](const Bytes& bytes) -> CError {
        CMemoryReader reader(bytes);
        double number = 0;
        CString text;
        bool flag = true;
        QEL_TRY(reader.readF64(number), {});
        QEL_TRY(reader.readString(text), {});
        return reader.readBool(flag);
    };
    EXPECT_TRUE(succeeded(readAll(whole)));
    for (std::size_t length = 0; length < whole.size(); ++length) {
        EXPECT_FALSE(succeeded(readAll(Bytes(whole.begin(), whole.begin() + static_cast<long>(length)))))
            << length;
    }
}

} // namespace qel
