// The factory bank as it is delivered.
#include "ProductFixture.h"

namespace qel::test {
namespace {

class FactoryPresets : public ProductFixture
{
protected:
    FactoryPresets() { bringUp(host_); }

    CAudioParamRegistry& master() { return host_.getRegistry(); }
    CAudioParam& param(const std::string& name) { return paramOf(host_, name); }

    TestHost host_;
};

TEST_F(FactoryPresets, SetOversamplingByWhicheverKeyTheyHave)
{
    const Bytes body =
        bytesOf([&](COutputStream& stream) { return master().acquireBank(true, stream, false); });
    CMemoryReader reader(body);
    CAudioPresetBank rom;
    ASSERT_OK(rom.load(reader));
    EXPECT_EQ(rom.getName(), "Factory ROM");
    for (std::int32_t i = 0; i < rom.getCount(); ++i) {
        const CAudioPreset& preset = rom.get(i);
        SCOPED_TRACE(preset.getTitle().toUtf8());
        const bool isNew = preset.getTitle() == "Edgy Kicker";
        const bool hasNone = preset.getTitle() == "Extra Sub";
        EXPECT_GE(preset.getEntries().size(), 28u);
        EXPECT_LE(preset.getEntries().size(), 32u);
        EXPECT_EQ(preset.findEntry("oversampling") != nullptr, isNew);
        EXPECT_EQ(preset.findEntry("modDrumfell.xover-type") != nullptr, isNew);
        EXPECT_EQ(preset.findEntry("io-params.oversampling") != nullptr, !isNew && !hasNone);

        host_.set("oversampling", 3.0);
        host_.set("modDrumfell.xover-type", 0.0);
        ASSERT_OK(master().activateROMPreset(i));
        EXPECT_EQ(host_.get("oversampling"), hasNone ? 3.0 : 1.0);
        EXPECT_EQ(host_.get("modDrumfell.xover-type"), 2.0); // by default where the preset has none
    }
    EXPECT_FALSE(param("io-params.oversampling").hasInfo());
}

} // namespace
} // namespace qel::test
