// Records of the audio/UI interface as bytes.
#include "CAudioInterfaceRecords.h"
#include "TestTree.h"

namespace qel {
namespace {

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
