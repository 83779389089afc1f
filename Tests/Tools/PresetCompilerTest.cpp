// Presets as XML: what is refused, and that nothing is lost on the way to XML and back.
#include "ToolTestSupport.h"

#include "CAudioParamConverter.h"
#include "PresetCompiler/CPresetCompiler.h"
#include "PresetCompiler/PresetDecompiler.h"
#include "TreeCompiler/ToolError.h"

#include <iterator>
#include <memory>

namespace qel::tools {

class PresetCompiler : public CFolderTest
{
protected:
    static void SetUpTestSuite()
    {
        CTreeCompiler trees;
        ASSERT_TRUE(trees.compile(DRUMFELL_DATA "/SharedData.xml"));
        instance_ = std::make_unique<CPresetInstance>(trees.root());
    }
    static void TearDownTestSuite() { instance_.reset(); }

    // All messages, one a line, without the file's name.
    std::string faults(const std::string& xml) const
    {
        const std::string path = write("in.xml", xml);
        CPresetCompiler compiler(*instance_);
        compiler.compile(path);
        std::string text;
        for (const CDiagnostic& diagnostic : compiler.diagnostics()) {
            text += diagnostic.text().substr(path.size() + 1) + "\n";
        }
        return text;
    }
    static CPresetFile compiledFile(const std::string& path)
    {
        CPresetCompiler compiler(*instance_);
        EXPECT_TRUE(compiler.compile(path)) << compiler.diagnostics().front().text();
        return compiler.presets();
    }
    CPresetFile compiledText(const std::string& xml) const { return compiledFile(write("in.xml", xml)); }
    static std::string readText(const std::string& path)
    {
        std::ifstream file(path, std::ios::binary);
        return {std::istreambuf_iterator<char>(file), {}};
    }

    static inline std::unique_ptr<CPresetInstance> instance_;
};

TEST_F(PresetCompiler, TheDeliveredPresetsAreWrittenAsTheyAreDecompiled)
{
    for (const char* name : {"FactoryROM", "dcfilter-presets", "routing-presets"}) {
        SCOPED_TRACE(name);
        const std::string path = std::string(DRUMFELL_DATA "/presets/") + name + ".xml";
        const CPresetFile file = compiledFile(path);
        const std::string text = decompilePresets(file, *instance_);
        EXPECT_TRUE(compiledText(text) == file);
        std::string source = readText(path);
        for (std::size_t at = source.find("<!--"); at != source.npos; at = source.find("<!--")) {
            source.erase(at, source.find("-->\n", at) + 4 - at);
        }
        EXPECT_EQ(text, source);

        const std::string binary = (folder_ / "file").string();
        writePresetFile(file, binary);
        EXPECT_TRUE(readPresetFile(binary) == file);
    }
}

TEST_F(PresetCompiler, WhatUsersSaveComesBackToTheLastBit)
{
    constexpr const char* kTexts[] = {"",    "plain",      " blanks ",    "a,b;c*d\\e",
                                      "\\e", "<&\">'\n\t", "\xE2\x99\xA5"};
    constexpr const char* kNumbers[] = {"xover-freq", "xover-type", "sat-drive", "sat-mode",
                                        "sat-hpf",    "drymix",     "mix-gain",  "dcfilter-params.type"};
    std::mt19937 random(7);
    std::uniform_real_distribution<double> position(0.0, 1.0);
    const CAudioParamRegistry& registry = *instance_->findRegistry("param-registry");
    CPresetFile file{CPresetFile::Kind::kPreset, {}};
    for (int round = 0; round < 100; ++round) {
        CAudioPreset preset("7qtz:A \"name\" & more");
        for (const char* name : kNumbers) {
            const CString key = CString("modDrumfell.") + name;
            const CAudioParam& param = *instance_->findParam(registry, key);
            const CAudioParamInfo& info = param.getInfo();
            CAudioParamStorage values;
            values.format(1, CAudioParamStorage::kFloat);
            // Some groups stay empty, and some presets hold none at all.
            for (std::int32_t group = 0; group < static_cast<std::int32_t>(random() % 4); ++group) {
                const double value = info.converters[0]->normToValue(info, 0, position(random));
                values.write(
                    {.group = group, .count = static_cast<std::int32_t>(random() % 2), .values = &value});
            }
            ASSERT_FALSE(preset.setValues(key, param.getDefPath(), values));
        }
        const CString key = "io-params.group-names";
        CAudioParamStorage names;
        names.format(1, CAudioParamStorage::kString);
        std::vector<double> ids;
        CAudioParamData pool;
        for (std::size_t i = 0; i < 1 + random() % 8; ++i) {
            ids.push_back(pool.addString(CString::fromUtf8(kTexts[random() % std::size(kTexts)])));
        }
        names.write({.count = static_cast<std::int32_t>(ids.size()),
                     .dtype = CAudioParamStorage::kString,
                     .values = ids.data(),
                     .pool = &pool});
        ASSERT_FALSE(preset.setValues(key, instance_->findParam(registry, key)->getDefPath(), names));
        ASSERT_FALSE(preset.setValues("gone", "audio.modMain.gone", names));

        file.presets.clear();
        file.presets.add(preset);
        const std::string text = decompilePresets(file, *instance_);
        ASSERT_EQ(encodePresets(compiledText(text)), encodePresets(file)) << text;
    }
}

TEST_F(PresetCompiler, TakesUnitsAndStatesHoweverTheyAreWritten)
{
    const auto bodyWith = [this](const std::string& key, const std::string& value) {
        return encodePresets(compiledText("<preset registry='param-registry' name='P'><param name='" + key +
                                          "' value='" + value + "'/></preset>"));
    };
    const std::tuple<const char*, const char*, const char*> same[] = {
        {"modDrumfell.sat-drive", "+6.5 dB", " 6.5dB "}, {"modDrumfell.sat-lpf", "1500 Hz", "1.5k"},
        {"modDrumfell.sat-mode", "Pumping", "1"},        {"modDrumfell.xover-type", "-24", "2"},
        {"modDrumfell.drymix", "25 %", "=0.25"},         {"oversampling", "Auto", "0"},
    };
    for (const auto& [key, one, other] : same) {
        EXPECT_EQ(bodyWith(key, one), bodyWith(key, other)) << key;
    }
}

TEST_F(PresetCompiler, TellsWhereAFaultIs)
{
    EXPECT_EQ(faults("<bank registry='param-registry' name='x'>\n"
                     "  <preset name='P'>\n"
                     "    <param name='nope' value='1'/>\n"
                     "    <param name='modDrumfell.sat-drive' value='60 dB'/>\n"
                     "    <param name='modDrumfell.sat-mode' value='Loud'/>\n"
                     "    <param name='modDrumfell.drymix' value='1,2 %,'/>\n"
                     "    <param name='modDrumfell.lf-gain' value='1*2'/>\n"
                     "    <param name='modDrumfell.mix-gain' value='=nan'/>\n"
                     "    <param name='oversampling' value='1x;1x'/>\n"
                     "    <param name='modOutGain.gain' value='0'/>\n"
                     "    <param name='modOutGain.gain' valeu='0'/>\n"
                     "    <param name='preset-name' value='x'/>\n"
                     "    <param name='io-params.group-names' value='a,'/>\n"
                     "    <inert name='oversampling' definition='audio.modMain.oversampling' value='1'/>\n"
                     "    <inert name='gone' value='1'/>\n"
                     "  </preset>\n"
                     "  text\n"
                     "</bank>"),
              "3:12: no parameter 'nope'; a key that is kept without one is an <inert>\n"
              "4:41: '60 dB' is out of range, which is -20 dB to +50 dB\n"
              "5:40: 'Loud' is no value of this parameter\n"
              "6:38: '' is no value of this parameter\n"
              "7:39: an entry has 1 elements, not 2\n"
              "8:40: '=nan' is out of range, which is -24 dB to +24 dB\n"
              "9:32: the parameter 'oversampling' has one group for the whole instance\n"
              "11:35: <param> has no attribute 'valeu'\n"
              "11:12: a second entry 'modOutGain.gain'\n"
              "12:12: the parameter 'preset-name' is not kept in presets\n"
              "13:41: an empty string is written as \\e\n"
              "14:12: there is a parameter 'oversampling': it is no inert key\n"
              "14:32: 'audio.modMain.oversampling' declares a parameter, so the key would bring it to life\n"
              "15:5: <inert> needs the attribute 'definition'\n"
              "17:3: only <preset> elements stand here\n");
    EXPECT_EQ(faults("<bank registry='no-registry'/>"), "1:7: no registry 'no-registry' in the plug-in\n");
    EXPECT_EQ(faults("<rom registry='param-registry'/>"),
              "1:1: the root element must be <bank>, <list> or <preset>, not <rom>\n");
    EXPECT_EQ(faults("<bank registry='param-registry'><preset/></bank>"),
              "1:33: <preset> needs the attribute 'name'\n");
}

TEST_F(PresetCompiler, WillNotTakeApartWhatIsNoneOfItsOwn)
{
    CPresetFile file;
    EXPECT_THROW(decompilePresets(file, *instance_), CToolError); // empty
    file.presets.add(CAudioPreset("5xyz:Other"));
    EXPECT_THROW(decompilePresets(file, *instance_), CToolError);
    file.presets.insert(0, CAudioPreset("7qtz:Ours"));
    EXPECT_THROW(decompilePresets(file, *instance_), CToolError);
    file.presets.remove(1);
    const std::uint8_t damaged[] = {0, 0, 0, 0, 1};
    file.presets.get(0).setEntry("oversampling", CByteBuffer(damaged));
    EXPECT_THROW(decompilePresets(file, *instance_), CToolError);
    EXPECT_THROW(readPresetFile(write("no.cbf", "cxml0123456789ab")), CToolError);
}

} // namespace qel::tools
