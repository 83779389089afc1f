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
    };
    for (const auto& fault : faults) {
        EXPECT_FAILS(tryParam(withDefaults(fault.text)), fault.message);
    }
    EXPECT_FAILS(tryParam({{"def-values", "1*2"}}), "Default values parsing error.");
}

} // namespace
} // namespace qel
