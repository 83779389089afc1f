// The forms of presets, banks and lists in memory and in files.
#include "PresetInstance.h"
#include "TemporaryFolder.h"
#include "WholeFile.h"

namespace qel::test {
namespace {

// Written out by hand: name, count, then key, block size and block of each entry.
const Bytes kGoldenPreset = {
    12, 0, 0, 0, '7', 'q', 't', 'z', ':', 'H', 'e', 'a', 'v', 'y', 0xC3, 0xA9, //
    2, 0, 0, 0,                                                                //
    4, 0, 0, 0, 'g', 'a', 'i', 'n',                                            //
    42, 0, 0, 0,                                                               // block size
    10, 0, 0, 0, 'a', 'u', 'd', 'i', 'o', '.', 'g', 'a', 'i', 'n',             // definition
    1, 0, 0, 0, 1, 0, 0, 0, 0, 0, 0, 0, 1, 0, 0, 0,                            // version, esize, dtype,
                                                                               // groups
    1, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0xF8, 0x3F,                                  // one entry: 1.5
    4, 0, 0, 0, 'n', 'a', 'm', 'e',                                            //
    54, 0, 0, 0,                                                               //
    6, 0, 0, 0, 'a', '.', 'n', 'a', 'm', 'e',                                  //
    1, 0, 0, 0, 1, 0, 0, 0, 1, 0, 0, 0, 1, 0, 0, 0,                            //
    1, 0, 0, 0, 1, 0, 0, 0, 1, 0, 0, 0, 4, 0, 0, 0, 'U', 's', 'e', 'r',        // pool: 1 = "User"
    1, 0, 0, 0, 1, 0, 0, 0,                                                    // one entry: string 1
};

CAudioPreset goldenPreset()
{
    CAudioPreset preset(CString::fromUtf8("7qtz:Heavy\xC3\xA9"));
    CAudioParamStorage name;
    name.format(1, CAudioParamStorage::kString);
    CAudioParamData pool;
    const double id = pool.addString("User");
    name.write({.count = 1, .dtype = CAudioParamStorage::kString, .values = &id, .pool = &pool});
    EXPECT_OK(preset.setValues("name", "a.name", name));
    EXPECT_OK(preset.setValues("gain", "audio.gain", valueRecord(1.5)));
    return preset;
}

CAudioPresetBank goldenBank()
{
    CAudioPresetBank bank;
    bank.setName("My");
    bank.add(goldenPreset());
    bank.add(CAudioPreset("7qtz:Empty"));
    return bank;
}

// Every beginning of `bytes` is refused and leaves `loaded` alone.
template <class T>
void expectCutsRefused(const Bytes& bytes, CError (T::*load)(CInputStream&))
{
    T kept;
    kept.setName("kept");
    for (std::size_t size = 0; size < bytes.size(); ++size) {
        T loaded = kept;
        CMemoryReader reader(firstOf(bytes, size));
        ASSERT_TRUE((loaded.*load)(reader)) << "cut to " << size;
        ASSERT_TRUE(loaded == kept) << "cut to " << size;
    }
}

TEST(PresetFormat, PresetBodyHasTheDocumentedBytes)
{
    EXPECT_EQ(bodyOf(goldenPreset()), kGoldenPreset);

    CMemoryReader reader(kGoldenPreset);
    CAudioPreset loaded;
    ASSERT_OK(loaded.load(reader));
    EXPECT_EQ(loaded, goldenPreset());
    EXPECT_EQ(loaded.getId(), "7qtz");
    EXPECT_EQ(loaded.getTitle(), CString::fromUtf8("Heavy\xC3\xA9"));
    CAudioParamStorage gain;
    gain.format(1, CAudioParamStorage::kFloat);
    CString definition;
    ASSERT_OK(loaded.readValues("gain", definition, gain));
    EXPECT_EQ(definition, "audio.gain");
    EXPECT_EQ(gain.get(0, 0), 1.5);
}

TEST(PresetFormat, FilesComeBackAndDamagedOnesChangeNothing)
{
    const TemporaryFolder folder;
    const std::string presetPath = folder.path("a.cpf");
    const std::string bankPath = folder.path("a.cbf");
    ASSERT_OK(CAudioPreset("7qtz:Old").saveFile(presetPath)); // is replaced
    ASSERT_OK(goldenPreset().saveFile(presetPath));
    ASSERT_OK(goldenBank().saveFile(bankPath));
    EXPECT_EQ(readWhole(presetPath).substr(0, 4), "aprs");
    EXPECT_EQ(readWhole(bankPath).substr(0, 4), "abnk");

    CAudioPreset preset;
    ASSERT_OK(preset.loadFile(presetPath));
    EXPECT_EQ(preset, goldenPreset());
    CAudioPresetBank bank;
    ASSERT_OK(bank.loadFile(bankPath));
    EXPECT_EQ(bank, goldenBank());

    EXPECT_FAILS(bank.loadFile(presetPath), "Invalid ID encountered");
    const std::string whole = readWhole(bankPath);
    for (std::size_t size = 0; size < whole.size(); ++size) {
        writeWhole(bankPath, whole.substr(0, size));
        ASSERT_TRUE(bank.loadFile(bankPath)) << "cut to " << size;
    }
    EXPECT_EQ(bank, goldenBank());
    EXPECT_TRUE(goldenBank().saveFile(folder.path("missing/a.cbf")));
}

} // namespace
} // namespace qel::test
