// Presets as XML: what is refused, and that nothing is lost on the way to XML and back.
#include "FolderFixture.h"

#include "CAudioParamConverter.h"
#include "PresetCompiler/CPresetCompiler.h"
#include "PresetCompiler/PresetDecompiler.h"
#include "TreeCompiler/ToolError.h"

#include <iterator>
#include <memory>

namespace qel::tools {

class PresetCompiler : public FolderFixture
{
protected:
    static void SetUpTestSuite()
    {
        CTreeCompiler trees;
        ASSERT_TRUE(trees.compile(DRUMFELL_DATA "/SharedData.xml"));
        instance_ = std::make_unique<CPresetInstance>(trees.root());
    }
    static void TearDownTestSuite() { instance_.reset(); }

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

} // namespace qel::tools
