// Declarations of parameters in the tree.
#include "CAudioParamDef.h"
#include "CAudioParamFilterDef.h"
#include "Converters/ConverterTree.h"
#include "Definitions/CAudioParamAllocDef.h"
#include "Definitions/CAudioParamRemapDef.h"

namespace qel {
namespace {

using test::ConverterTest;
using test::TreeNode;

class CTestFilterDef : public CAudioParamFilterDef
{
public:
    CAudioParamFilter* createFilter() const override { return nullptr; }
};

class ParamDefTest : public ConverterTest
{
public:
    static void SetUpTestSuite()
    {
        ConverterTest::SetUpTestSuite();
        const CCreatorRow rows[] = {
            test::creatorRow<CAudioParamDef>("audio:param"),
            test::creatorRow<CAudioParamAllocDef>("audio:param-alloc"),
            test::creatorRow<CAudioParamRemapDef>("audio:param-remap"),
            test::creatorRow<CTestFilterDef>("test:param-filter"),
            {},
        };
        ASSERT_OK(registerCreators(rows));
    }

protected:
    using Attributes = std::vector<std::pair<std::string, std::string>>;

    // Creates a node with these attributes, which win over those of `base`.
    template <class Def>
    CError create(Def*& def, const char* tag, const Attributes& attributes, const Attributes& base = {})
    {
        CAttrMap map;
        for (const Attributes* source : {&base, &attributes}) {
            for (const auto& [key, value] : *source) {
                map[CString(key)] = CAttrValue(CString(value));
            }
        }
        return root_->createChild(def, tag, "def", false, nullptr, &map);
    }
    // A valid parameter but for what `attributes` change.
    CError createParam(CAudioParamDef*& def, const Attributes& attributes)
    {
        return create(
            def, "audio:param", attributes,
            {{"converter", "real"}, {"min-values", "0"}, {"max-values", "10"}, {"def-values", "5"}});
    }
    CError tryParam(const Attributes& attributes)
    {
        CAudioParamDef* def = nullptr;
        return createParam(def, attributes);
    }
    CAudioParamInfo infoFor(const Attributes& attributes)
    {
        CAudioParamDef* def = nullptr;
        EXPECT_OK(createParam(def, attributes));
        return def ? def->getInfo() : CAudioParamInfo();
    }
};

using Defaults = std::vector<std::vector<double>>;

TEST_F(ParamDefTest, SavedParametersAreGlobalAndPersistentOnesAreInNoPreset)
{
    const struct
    {
        Attributes attributes;
        bool isGlobal, isStorable, isPersistent;
    } cases[] = {
        {{}, false, false, false},
        {{{"is-global", "true"}}, true, false, false},
        {{{"is-global", ""}}, false, false, false},
        {{{"is-global", "yes"}}, false, false, false},
        {{{"is-storable", "true"}, {"is-global", "false"}}, true, true, false},
        {{{"is-storable", "1"}, {"is-global", ""}}, true, true, false},
        {{{"is-persistent", "true"}, {"is-storable", "true"}}, true, false, true},
    };
    for (const auto& c : cases) {
        const CAudioParamInfo info = infoFor(c.attributes);
        EXPECT_EQ(info.isGlobal, c.isGlobal);
        EXPECT_EQ(info.isStorable, c.isStorable);
        EXPECT_EQ(info.isPersistent, c.isPersistent);
    }
}

TEST_F(ParamDefTest, CarriesItsNamesAndMarks)
{
    const CAudioParamInfo info = infoFor({{"visual-name", "LF gain"},
                                          {"param-registry", "main"},
                                          {"is-discrete", "true"},
                                          {"is-single-group", "true"}});
    EXPECT_TRUE(info.valid);
    EXPECT_EQ(info.name, "def");
    EXPECT_EQ(info.visualName, "LF gain");
    EXPECT_EQ(info.paramRegistry, "main");
    EXPECT_TRUE(info.isDiscrete);
    EXPECT_TRUE(info.isSingleGroup);
}

TEST_F(ParamDefTest, RangesAndDefaultsGoThroughTheConverterOfTheirElement)
{
    const CAudioParamInfo info = infoFor({{"element-size", "3"},
                                          {"converter", "time  /audio.paramcvt.percent freq"},
                                          {"min-values", " 1 100  20"},
                                          {"max-values", "5000 0 20k"},
                                          {"def-values", "25*50*1k,30*0*2k;1*100*20"}});
    EXPECT_EQ(info.minValues, (std::vector<double>{0.001, 1.0, 20.0}));
    EXPECT_EQ(info.maxValues, (std::vector<double>{5.0, 0.0, 20000.0})) << "a range may be inverted";
    EXPECT_EQ(info.defaults, (Defaults{{0.025, 0.5, 1000.0, 0.03, 0.0, 2000.0}, {0.001, 1.0, 20.0}}));
}

TEST_F(ParamDefTest, DefaultsSplitIntoElementsEntriesAndGroups)
{
    EXPECT_EQ(infoFor({{"def-values", "1,2,0,0,0,0,0,0"}}).defaults, (Defaults{{1, 2, 0, 0, 0, 0, 0, 0}}));
    EXPECT_EQ(infoFor({{"def-values", "1;2"}}).defaults, (Defaults{{1}, {2}}));

    const Attributes pairs = {
        {"element-size", "2"}, {"converter", "real real"}, {"min-values", "0 0"}, {"max-values", "9 9"}};
    const auto withDefaults = [&pairs](const char* text) {
        Attributes attributes = pairs;
        attributes.emplace_back("def-values", text);
        return attributes;
    };
    EXPECT_EQ(infoFor(withDefaults("1*2,3*4")).defaults, (Defaults{{1, 2, 3, 4}}));
    const struct
    {
        const char* text;
        const char* message;
    } faults[] = {
        {"1,3*4", "Not enough default elements at pos 1."},
        {"1*2,34", "Not enough default elements at pos 6."},
        {"1*2;3;4*5", "Not enough default elements at pos 5."},
        {"1*2*3", "Default values parsing error."},
        {"", "Default values parsing error."},
        {"1*2,", "Default values parsing error."},
        {"1*2;", "Default values parsing error."},
        {"1*,2*3", "Default values parsing error."},
        {"1*x", "Default values parsing error."},
        {"1*2, 3*4", "Default values parsing error."},
    };
    for (const auto& fault : faults) {
        EXPECT_FAILS(tryParam(withDefaults(fault.text)), fault.message);
    }
    EXPECT_FAILS(tryParam({{"def-values", "1*2"}}), "Default values parsing error.");
}

TEST_F(ParamDefTest, StringDefaultsLiveInThePool)
{
    for (const char* type : {"string", "str", "1"}) {
        const CAudioParamInfo info = infoFor({{"data-type", type},
                                              {"converter", "text"},
                                              {"min-values", ""},
                                              {"max-values", ""},
                                              {"def-values", "L,R;3 Hz -6"}});
        ASSERT_TRUE(info.isString()) << type;
        EXPECT_EQ(info.minValues, std::vector<double>{0.0});
        EXPECT_EQ(info.maxValues, std::vector<double>{8388608.0});
        ASSERT_EQ(info.defaults.size(), 2u);
        ASSERT_EQ(info.defaults[0].size(), 2u);
        EXPECT_EQ(info.pool.getString(info.defaults[0][1]), "R");
        EXPECT_EQ(info.pool.getString(info.defaults[1][0]), "3 Hz -6");

        const CAudioParamInfo copy = info;
        EXPECT_EQ(copy.pool.getString(copy.defaults[0][0]), "L") << "a copy keeps the strings";
    }
    EXPECT_FALSE(infoFor({{"data-type", "0"}}).isString());
    EXPECT_FALSE(infoFor({{"data-type", "String"}}).isString());
}

TEST_F(ParamDefTest, RefusesFaultyDeclarationsWithTheirMessage)
{
    const struct
    {
        Attributes attributes;
        const char* message;
    } cases[] = {
        {{{"element-size", "0"}}, "Invalid element size 0 specified."},
        {{{"element-size", "-3"}}, "Invalid element size -3 specified."},
        {{{"element-size", "2"}, {"data-type", "str"}},
         "Invalid element size 2 for non-float data specified."},
        {{{"converter", "nothing"}}, "Audio parameter converter 'nothing' not found."},
        {{{"converter", "/audio.paramcvt"}}, "Audio parameter converter '/audio.paramcvt' not found."},
        {{{"converter", "real x"}}, "Audio parameter converter 'x' not found."},
        {{{"converter", ""}}, "Not enough converters defined 0 (should be 1)."},
        {{{"element-size", "2000000000"}}, "Not enough converters defined 1 (should be 2000000000)."},
        {{{"min-values", " "}}, "Not enough minimum values defined 0 (should be 1)."},
        {{{"max-values", ""}}, "Not enough maximum values defined 0 (should be 1)."},
        {{{"max-values", "0"}}, "Zero default min-max values difference detected in element 0."},
        {{{"max-values", "x"}}, "Zero default min-max values difference detected in element 0."},
        {{{"element-size", "2"},
          {"converter", "real real"},
          {"min-values", "0 7"},
          {"max-values", "1 7"},
          {"def-values", "0*7"}},
         "Zero default min-max values difference detected in element 1."},
    };
    for (const auto& c : cases) {
        EXPECT_FAILS(tryParam(c.attributes), c.message);
    }
}

TEST_F(ParamDefTest, SlotsRemapsAndFiltersNeedTheirNames)
{
    CAudioParamAllocDef* slot = nullptr;
    EXPECT_FAILS(create(slot, "audio:param-alloc", {{"index", "0"}}), "Invalid parameter name specified.");
    EXPECT_FAILS(create(slot, "audio:param-alloc", {{"param-name", "gain"}}),
                 "Invalid index value '' specified.");
    EXPECT_FAILS(create(slot, "audio:param-alloc", {{"param-name", "gain"}, {"index", "-2"}}),
                 "Invalid index value '-2' specified.");
    ASSERT_OK(create(slot, "audio:param-alloc", {{"param-name", "gain"}, {"index", "2"}}));
    EXPECT_EQ(slot->getParamName(), "gain");
    EXPECT_EQ(slot->getIndex(), 2);

    CAudioParamRemapDef* remap = nullptr;
    EXPECT_FAILS(create(remap, "audio:param-remap", {{"new", "b"}}),
                 "Invalid orignal parameter name specified.");
    EXPECT_FAILS(create(remap, "audio:param-remap", {{"orig", "a"}}),
                 "Invalid new parameter name specified.");
    ASSERT_OK(create(remap, "audio:param-remap", {{"orig", "modSat.drive"}, {"new", "^drive"}}));
    EXPECT_EQ(remap->getOrigName(), "modSat.drive");
    EXPECT_EQ(remap->getNewName(), "^drive");

    CAudioParamFilterDef* filter = nullptr;
    EXPECT_FAILS(create(filter, "test:param-filter", {{"dst", "b"}}), "No source parameters defined.");
    EXPECT_FAILS(create(filter, "test:param-filter", {{"src", "a"}, {"dst", " , "}}),
                 "No destination parameters defined.");
    ASSERT_OK(create(filter, "test:param-filter", {{"src", "a, mod.b,"}, {"dst", "c"}}));
    EXPECT_EQ(filter->getSourceNames(), (std::vector<CString>{"a", "mod.b"}));
    EXPECT_EQ(filter->getDestinationNames(), (std::vector<CString>{"c"}));
}

} // namespace
} // namespace qel
