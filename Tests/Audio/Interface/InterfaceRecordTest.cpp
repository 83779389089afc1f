// Records of the audio/UI interface as bytes.
#include "CAudioInterfaceRecords.h"
#include "TestTree.h"

namespace qel {
namespace {

CByteBuffer someBytes()
{
    const std::uint8_t bytes[] = {1, 2, 3, 0, 255};
    return CByteBuffer(bytes);
}

// The record comes back byte for byte; cut short anywhere, or with a byte too many, it is refused and leaves
// what was there.
template <class Record>
void expectRoundTrip(const Record& record)
{
    const CByteBuffer bytes = encodeRecord(record);
    Record back;
    ASSERT_OK(decodeRecord(bytes, back));
    EXPECT_TRUE(encodeRecord(back) == bytes);

    for (std::size_t size = 0; size < bytes.size(); ++size) {
        CError error = decodeRecord(CByteBuffer(bytes.bytes().first(size)), back);
        ASSERT_TRUE(error) << "type " << static_cast<std::uint32_t>(Record::kType) << ", " << size
                           << " bytes";
        ASSERT_TRUE(encodeRecord(back) == bytes);
    }
    CByteBuffer longer;
    longer.allocate(bytes.size() + 1);
    std::copy(bytes.data(), bytes.data() + bytes.size(), longer.data());
    longer.data()[bytes.size()] = 0;
    EXPECT_FAILS(decodeRecord(longer, back), "behind the end of a record");
    EXPECT_TRUE(encodeRecord(back) == bytes);
}

TEST(InterfaceRecord, ComesBackWholeOrNotAtAll)
{
    using namespace record;
    const std::vector<CString> texts{"a", CString(), CString::fromUtf8("\xE2\x82\xAC")};
    expectRoundTrip(CGetState{});
    expectRoundTrip(CGetParam{"p.q"});
    const CParamWrite floats{"p.a", 3, 1, true, {1.5, -2.0}, {}};
    const CParamWrite strings{"p.b", 9999, 0, false, {}, texts};
    expectRoundTrip(CChangeParams{"LF gain (2) change", 7, true, {floats, strings}});
    expectRoundTrip(CResetParams{"reset", texts, 2, -1, true});
    expectRoundTrip(CEdit{"p.a", 1, 2, false});
    expectRoundTrip(CGetRegistry{"plugin.param-registry"});
    expectRoundTrip(CRegistryCommand{"r", CRegistryCommand::kABSwap, 4});
    expectRoundTrip(CSetProgramName{"r", 3, "name"});
    expectRoundTrip(CActivateData{"r", true, 1, someBytes()});
    expectRoundTrip(CAcquireData{"r", 11, true, true, 5, 1, true});
    expectRoundTrip(CMoveHistory{31});
    expectRoundTrip(CListenViz{"plugin.modMain.modMeterOut", false});
    expectRoundTrip(CGetViz{});
    expectRoundTrip(CImportChannelLabels{});
    expectRoundTrip(CHistoryState{2, texts});
    expectRoundTrip(CParamState{"p", someBytes(), someBytes()});
    expectRoundTrip(CParamValues{"p", someBytes()});
    expectRoundTrip(CRegistryState{"r", true, 1, texts, texts});
    expectRoundTrip(CRegistryData{"r", 4, false, someBytes()});
    expectRoundTrip(CVizSource{"s", 2});
    expectRoundTrip(CVizData{1, someBytes()});
    expectRoundTrip(CEnvironment{96000.0, 2, 4, 8, 8});
    expectRoundTrip(CClear{});
}

TEST(InterfaceRecord, OfTheHistoryHasTheLayoutThatIsFixed)
{
    const CByteBuffer bytes = encodeRecord(record::CHistoryState{1, {"ab"}});
    const std::uint8_t expected[] = {29, 0, 0, 0, 1, 0, 0, 0, 1, 0, 0, 0, 2, 0, 0, 0, 'a', 'b'};
    EXPECT_TRUE(bytes == CByteBuffer(expected));
}

TEST(InterfaceRecord, IsRefusedWhenItsCountsPromiseWhatIsNotThere)
{
    record::CParamValues values;
    const std::uint8_t block[] = {31, 0, 0, 0, 0, 0, 0, 0, 255, 255, 255, 255, 1};
    EXPECT_FAILS(decodeRecord(CByteBuffer(block), values), "Premature end");
    record::CHistoryState history;
    const std::uint8_t list[] = {29, 0, 0, 0, 0, 0, 0, 0, 255, 255, 255, 255, 0, 0, 0, 0};
    EXPECT_FAILS(decodeRecord(CByteBuffer(list), history), "Premature end");
    EXPECT_FAILS(decodeRecord(CByteBuffer(list), values), "Invalid data type 29.");
}

} // namespace
} // namespace qel
