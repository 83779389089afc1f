// The declaration of a parameter on its way across the audio/UI boundary.
#include "Converters/ConverterTree.h"
#include "Streams/CMemoryReader.h"
#include "Streams/CMemoryWriteBuffer.h"

namespace qel {
namespace {

using Bytes = std::vector<std::uint8_t>;

class ParamDefWireTest : public test::ConverterTest
{
protected:
    static CAudioParamInfo floatInfo()
    {
        CAudioParamInfo info;
        info.esize = 2;
        info.isGlobal = info.isStorable = info.isSingleGroup = true;
        info.visualName = CString(u"Gr\u00F6\u00DFe \u03A9");
        info.name = "size";
        info.paramRegistry = "main";
        info.converterNames = {"gain", "/audio.paramcvt.freq"};
        EXPECT_OK(info.parseConverterNames());
        EXPECT_OK(info.convertMinMaxValues("-24 20", "24 20k"));
        EXPECT_OK(info.parseDefValues("0*100,-6*200;3*1k"));
        info.valid = true;
        return info;
    }
    static CAudioParamInfo stringInfo()
    {
        CAudioParamInfo info;
        info.dtype = CAudioParamInfo::kTypeString;
        info.isPersistent = info.isDiscrete = true;
        info.name = "names";
        info.converterNames = {"text"};
        EXPECT_OK(info.parseConverterNames());
        EXPECT_OK(info.convertMinMaxValues("", ""));
        EXPECT_OK(info.parseDefValues("L,R;IN3"));
        info.valid = true;
        return info;
    }
    static Bytes bytesOf(const CAudioParamInfo& info)
    {
        CMemoryWriteBuffer buffer;
        EXPECT_OK(info.save(buffer));
        CByteBuffer copy;
        buffer.copyTo(copy);
        return Bytes(copy.data(), copy.data() + copy.size());
    }
    static CError load(CAudioParamInfo& info, std::span<const std::uint8_t> bytes)
    {
        CMemoryReader reader(bytes);
        return info.load(reader);
    }
    // Puts a little-endian number at a position.
    static Bytes patched(Bytes bytes, std::size_t position, std::uint32_t value)
    {
        for (std::size_t i = 0; i < 4; ++i) {
            bytes[position + i] = static_cast<std::uint8_t>(value >> (8 * i));
        }
        return bytes;
    }
};

TEST_F(ParamDefWireTest, HasTheLayoutBothSidesAgreeOn)
{
    CAudioParamInfo info;
    info.isStorable = true;
    info.name = "p";
    info.converterNames = {"real"};
    ASSERT_OK(info.parseConverterNames());
    ASSERT_OK(info.convertMinMaxValues("0", "1"));
    ASSERT_OK(info.parseDefValues("1"));
    info.valid = true;
    const Bytes expected = {
        1, 0, 0, 0,                                                                 // version
        0, 0, 0, 0, 1,   0,   0,   0,   0,   0, 0, 0, 0, 0, 0,    0,    0, 0, 0, 0, // five flags
        0, 0, 0, 0, 1,   0,   0,   0,   'p', 0, 0, 0, 0,                            // three names
        1, 0, 0, 0, 0,   0,   0,   0,   0,   0, 0, 0,                               // format
        4, 0, 0, 0, 'r', 'e', 'a', 'l',                                 // the element's converter,
        0, 0, 0, 0, 0,   0,   0,   0,   0,   0, 0, 0, 0, 0, 0xF0, 0x3F, // minimum and maximum
        1, 0, 0, 0, 1,   0,   0,   0,   0,   0, 0, 0, 0, 0, 0xF0, 0x3F, // one group of one entry
    };
    EXPECT_EQ(bytesOf(info), expected);
}

TEST_F(ParamDefWireTest, ComesBackAsItWas)
{
    for (const CAudioParamInfo& info : {floatInfo(), stringInfo()}) {
        const Bytes bytes = bytesOf(info);
        CAudioParamInfo loaded;
        ASSERT_OK(load(loaded, bytes));
        EXPECT_TRUE(loaded.valid);
        EXPECT_EQ(loaded.visualName, info.visualName);
        EXPECT_TRUE(loaded.hasSameFormat(info));
        EXPECT_EQ(loaded.converters, info.converters);
        EXPECT_EQ(loaded.maxValues, info.maxValues);
        EXPECT_EQ(loaded.defaults, info.defaults);
        EXPECT_EQ(bytesOf(loaded), bytes);
        if (info.isString()) {
            EXPECT_EQ(loaded.pool.getString(loaded.defaults[1][0]), "IN3");
        }
    }
}

TEST_F(ParamDefWireTest, IsRefusedWhenCutShortAndChangesNothing)
{
    for (const CAudioParamInfo& info : {floatInfo(), stringInfo()}) {
        const Bytes bytes = bytesOf(info);
        CAudioParamInfo target = info.isString() ? floatInfo() : stringInfo();
        const Bytes before = bytesOf(target);
        for (std::size_t length = 0; length < bytes.size(); ++length) {
            EXPECT_TRUE(load(target, std::span(bytes).first(length))) << length;
            ASSERT_EQ(bytesOf(target), before) << length;
        }
    }
}

TEST_F(ParamDefWireTest, RefusesWhatItCannotHold)
{
    const Bytes floats = bytesOf(floatInfo());
    const Bytes strings = bytesOf(stringInfo());
    // "Größe Ω" has 10 bytes; the texts end behind "size" and "main".
    const std::size_t floatFormat = 24 + 14 + 8 + 8;
    const std::size_t stringFormat = 24 + 4 + 9 + 4;
    const struct
    {
        Bytes bytes;
        const char* message;
    } cases[] = {
        {patched(floats, 0, 2), "Unsupported data set version 2."},
        {patched(floats, floatFormat, 0), "Unsupported parameter format (esize=0, dtype=0)."},
        {patched(floats, floatFormat, 0x80000000u), "(esize=-2147483648, dtype=0)."},
        {patched(floats, floatFormat + 4, 1), "Unsupported parameter format (esize=2, dtype=1)."},
        {patched(strings, stringFormat + 4, 2), "Unsupported parameter format (esize=1, dtype=2)."},
        {patched(floats, floatFormat, 0x7FFFFFFFu), "too long"},
        {patched(floats, floatFormat + 12 + 4, 0x78787878u), "Audio parameter converter 'xxxx' not found."},
    };
    for (const auto& c : cases) {
        CAudioParamInfo target;
        EXPECT_FAILS(load(target, c.bytes), c.message);
        EXPECT_FALSE(target.valid);
    }
    CAudioParamInfo incomplete;
    CMemoryWriteBuffer buffer;
    EXPECT_FAILS(incomplete.save(buffer), "Incomplete parameter declaration.");
}

} // namespace
} // namespace qel
