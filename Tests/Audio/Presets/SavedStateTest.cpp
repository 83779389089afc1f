// States that leave an instance and come back, into another one, and into later versions of the program.
#include "ProductFixture.h"

#include <cmath>
#include <fstream>
#include <iterator>

namespace qel::test {
namespace {

const std::string kGoldenFolder = DRUMFELL_DATA "/../Tests/Audio/Presets/Golden/";

class SavedState : public ProductFixture
{
protected:
    static void expectFurnished(TestHost& host)
    {
        EXPECT_EQ(host.getRegistry().getCurrentProgramName(), CString::fromUtf8("Kick \xE2\x99\xA5"));
        const CAudioParam& crossover = paramOf(host, "modDrumfell.xover-freq");
        EXPECT_EQ(crossover.getValue(0, 0), 77.25);
        EXPECT_EQ(crossover.getValue(1, 0), 100.0);
        EXPECT_EQ(crossover.getCurrent().getCount(1), 0);
        EXPECT_EQ(crossover.getValue(2, 0), 222.5);
        EXPECT_EQ(paramOf(host, "modDrumfell.dcfilter-params.name").getString(1, 0), "Mine");
        EXPECT_EQ(paramOf(host, "io-params.in-routing").getValue(0, 7), 16.0);
        EXPECT_EQ(paramOf(host, "io-params.group-names").getString(0, 1), "Snare; \"tight\", dry");
        EXPECT_EQ(host.get("modDrumfell.drymix"), 0.375);
        EXPECT_EQ(host.get("modDrumfell.punch-enable"), 1.0); // of the factory preset beneath
        EXPECT_NEAR(host.get("modDrumfell.punch-gain"), std::pow(10.0, 12.0 / 20.0), 1e-9);
        EXPECT_EQ(host.get("modDrumfell.mono-enable"), 1.0);
    }
    static CByteBuffer golden(const char* name)
    {
        std::ifstream file(kGoldenFolder + name, std::ios::binary);
        const Bytes bytes{std::istreambuf_iterator<char>(file), {}};
        EXPECT_FALSE(bytes.empty()) << name;
        return CByteBuffer(bytes);
    }
};

// Files that version 1.1 has saved of the state that is expected here. What users have on their disks must
// stay readable, so these files stay as they are; a new format gets new ones beside them.
TEST_F(SavedState, OfEarlierVersionsStaysReadable)
{
    TestHost host;
    bringUp(host);
    ASSERT_OK(host.getRegistry().setProgram(3));
    ASSERT_OK(host.loadChunk(golden("bank-1.1.chunk").bytes(), false, true));
    EXPECT_EQ(host.getRegistry().getProgramCount(), 13);
    expectFurnished(host);
    EXPECT_EQ(paramOf(host, "instance-name").getString(0, 0), "Drum bus");
    ASSERT_OK(host.getRegistry().setProgram(0));
    EXPECT_EQ(host.getRegistry().getCurrentProgramName(), "Default");
    EXPECT_EQ(host.get("modDrumfell.lf-gain"), 0.5);
    EXPECT_EQ(host.get("oversampling"), 2.0);

    CAudioPreset preset;
    ASSERT_OK(preset.loadFile(kGoldenFolder + "preset-1.1.cpf"));
    const Bytes body = bodyOf(preset);
    CMemoryReader reader(body);
    host.getRegistry().masterReset();
    ASSERT_OK(host.getRegistry().activatePreset(reader, false));
    expectFurnished(host);

    // The bank that the first builds carried, from before oversampling was a parameter of its own.
    CAudioPresetBank bank;
    ASSERT_OK(bank.loadFile(kGoldenFolder + "factory-1.1.cbf"));
    ASSERT_EQ(bank.getCount(), 13);
    const Bytes bankBody = bodyOf(bank);
    CMemoryReader bankReader(bankBody);
    ASSERT_OK(host.getRegistry().activateBank(bankReader, false));
    ASSERT_OK(host.getRegistry().setProgram(12));
    EXPECT_EQ(host.getRegistry().getCurrentProgramName(), "Saturated Bass");
    EXPECT_EQ(host.get("modDrumfell.xover-freq"), 138.3);
    EXPECT_EQ(host.get("oversampling"), 1.0);
}

} // namespace
} // namespace qel::test
