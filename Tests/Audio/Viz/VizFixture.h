// An instance with a visual collector.
#pragma once

#include "../Converters/ConverterFixture.h"
#include "../ParamFixture.h"
#include "CAudioParamDef.h"
#include "CAudioVizCollector.h"

namespace qel::test {

class VizFixture : public ParamFixture
{
protected:
    VizFixture()
    {
        EXPECT_OK(registerConverters());
        const CCreatorRow rows[] = {
            creatorRow<CAudioParamDef>("audio:param"),
            creatorRow<CAudioVizCollector>("audio:viz-collector"),
            {},
        };
        EXPECT_OK(registerCreators(rows));
        EXPECT_OK(
            shared_.load(TreeNode().child(converterNode().child(TreeNode("audio:param", "param-enable-viz")
                                                                    .attr("is-global", "true")
                                                                    .attr("converter", "enum")
                                                                    .attr("min-values", "0")
                                                                    .attr("max-values", "1")
                                                                    .attr("def-values", "0")))));
        const CAttrMap attributes{{"env", CAttrValue("^audio-env")},
                                  {"param-collector", CAttrValue("^param-collector")}};
        EXPECT_OK(
            root_->createChild(viz_, "audio:viz-collector", "viz-collector", false, nullptr, &attributes));
    }

    static CAudioVizDataMeter meterData(double timeSec)
    {
        CAudioVizDataMeter data;
        data.id = 1;
        data.element = 2;
        data.timeSec = timeSec;
        return data;
    }

    CAudioVizCollector* viz_ = nullptr;
};

} // namespace qel::test
