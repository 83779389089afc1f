// A shared tree with converters, and declarations of one element, for tests of what works on parameters.
#pragma once

#include "CAudioParamConverterBW.h"
#include "CAudioParamConverterEnum.h"
#include "CAudioParamConverterFreq.h"
#include "CAudioParamConverterGain.h"
#include "CAudioParamConverterPercent.h"
#include "CAudioParamConverterRatio.h"
#include "CAudioParamConverterReal.h"
#include "CAudioParamConverterText.h"
#include "CAudioParamConverterTime.h"
#include "CAudioParamInfo.h"
#include "CreatorRegistry.h"
#include "TreeFixture.h"

namespace qel::test {

template <class Class>
CCreatorRow creatorRow(const char* tag)
{
    return {tag, &newObject<Class>, &Class::buildClassInfo};
}

inline CError registerConverters()
{
    const CCreatorRow rows[] = {
        creatorRow<CAudioParamConverterBW>("audio:cvt-bw"),
        creatorRow<CAudioParamConverterEnum>("audio:cvt-enum"),
        creatorRow<CAudioParamConverterFreq>("audio:cvt-freq"),
        creatorRow<CAudioParamConverterGain>("audio:cvt-gain"),
        creatorRow<CAudioParamConverterPercent>("audio:cvt-percent"),
        creatorRow<CAudioParamConverterRatio>("audio:cvt-ratio"),
        creatorRow<CAudioParamConverterReal>("audio:cvt-real"),
        creatorRow<CAudioParamConverterText>("audio:cvt-text"),
        creatorRow<CAudioParamConverterTime>("audio:cvt-time"),
        {},
    };
    return registerCreators(rows);
}

// The converters most parameters use, where parameters look for them.
inline TreeNode converterNode()
{
    TreeNode converters("core:object", "paramcvt");
    converters.child(TreeNode("audio:cvt-gain", "gain").attr("label", "dB"))
        .child(TreeNode("audio:cvt-freq", "freq").attr("label", "Hz"))
        .child(TreeNode("audio:cvt-real", "real").attr("decimals", "2"))
        .child(TreeNode("audio:cvt-enum", "enum"));
    return TreeNode("core:object", "audio").child(converters);
}

// The shared tree holds converters while the test runs. Other classes register in the derived suite.
class ConverterFixture : public TreeFixture
{
public:
    static void SetUpTestSuite() { ASSERT_OK(registerConverters()); }
    static void TearDownTestSuite() { clearCreators(); }

protected:
    ConverterFixture() { EXPECT_OK(shared_.load(TreeNode().child(converterNode()))); }

    // A declaration with this converter and this range in display units.
    static CAudioParamInfo infoOf(const char* converter, const char* min, const char* max)
    {
        CAudioParamInfo info;
        info.converterNames = {converter};
        EXPECT_OK(info.parseConverterNames());
        EXPECT_OK(info.convertMinMaxValues(min, max));
        return info;
    }
};

} // namespace qel::test
