// Banks that hosts bring: what belongs to the project.
#include "ProductFixture.h"

namespace qel::test {
namespace {

constexpr const char* kInstanceName = "instance-name";

class HostBank : public ProductFixture
{
protected:
    static Bytes chunkOf(TestHost& host)
    {
        CByteBuffer chunk;
        requireOk(host.saveChunk(chunk, false, false));
        return {chunk.bytes().begin(), chunk.bytes().end()};
    }
    static CAudioPresetBank bankOf(TestHost& host)
    {
        const Bytes chunk = chunkOf(host);
        CByteBuffer body;
        CMemoryReader reader(chunk);
        requireOk(reader.readCompressedData(body, CAudioPresetBank::kChunkId));
        CMemoryReader bodyReader(body.bytes());
        CAudioPresetBank bank;
        requireOk(bank.load(bodyReader));
        return bank;
    }
    static CError load(TestHost& host, const CAudioPresetBank& bank)
    {
        CMemoryWriteBuffer body;
        requireOk(bank.save(body));
        CByteBuffer bytes;
        body.copyTo(bytes);
        CMemoryWriteBuffer chunk;
        requireOk(chunk.writeCompressedData(bytes, CAudioPresetBank::kChunkId));
        chunk.copyTo(bytes);
        return host.loadChunk(bytes.bytes(), false, false);
    }
};

TEST_F(HostBank, BringsTheNameOfTheInstanceWhicheverProgramIsOn)
{
    TestHost host;
    bringUp(host);
    requireOk(host.activateProgram(5));
    CAudioParamContext context;
    paramOf(host, kInstanceName).setString(0, 0, "Kick", context);
    const CAudioPresetBank bank = bankOf(host);
    const Bytes chunk = chunkOf(host);

    TestHost fresh;
    bringUp(fresh);
    EXPECT_OK(load(fresh, bank));
    EXPECT_EQ(paramOf(fresh, kInstanceName).getString(0, 0), "Kick");
    EXPECT_OK(fresh.activateProgram(5));
    EXPECT_EQ(paramOf(fresh, kInstanceName).getString(0, 0), "Kick");
    EXPECT_EQ(chunkOf(fresh), chunk);

    // Presets do not tell it.
    CMemoryWriteBuffer stream;
    requireOk(fresh.getRegistry().acquirePreset(false, 3, CAudioParamRegistry::kAllGroups, stream, false));
    CByteBuffer body;
    stream.copyTo(body);
    CMemoryReader reader(body.bytes());
    CAudioPreset preset;
    requireOk(preset.load(reader));
    EXPECT_EQ(preset.findEntry(kInstanceName), nullptr);
    EXPECT_NE(preset.findEntry("modDrumfell.xover-freq"), nullptr);
}

} // namespace
} // namespace qel::test
