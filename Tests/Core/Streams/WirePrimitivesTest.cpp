#include "StreamRig.h"

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

} // namespace qel
