// An instance with converters, host parameters and a host that writes down what it is told.
#pragma once

#include "../Converters/ConverterFixture.h"
#include "../ParamFixture.h"
#include "CAudioCCTable.h"
#include "CAudioExtParamHostBridge.h"
#include "CAudioExtParamList.h"

#include <mutex>

namespace qel::test {

class RecordingHost : public CAudioExtParamHostBridge
{
public:
    using Calls = std::vector<std::pair<std::int32_t, double>>;

    void setParameterAutomated(std::int32_t index, double norm) override
    {
        const std::lock_guard lock(mutex_);
        calls_.emplace_back(index, norm);
    }
    // What came since the last call.
    Calls take()
    {
        const std::lock_guard lock(mutex_);
        return std::exchange(calls_, {});
    }

private:
    std::mutex mutex_;
    Calls calls_;
};

class HostParamFixture : public ParamFixture
{
protected:
    HostParamFixture()
    {
        EXPECT_OK(registerConverters());
        const CCreatorRow rows[] = {
            creatorRow<CAudioExtParam>("audio:ext-param"),
            creatorRow<CAudioExtParamList>("audio:ext-param-list"),
            creatorRow<CAudioCCTable>("audio:cctable"),
            {},
        };
        EXPECT_OK(registerCreators(rows));
        EXPECT_OK(shared_.load(TreeNode().child(converterNode())));
        EXPECT_OK(root_->createChild(list_, "audio:ext-param-list", "ext-param-list"));
    }

    CError tryAdd(CAudioExtParam*& out, const char* extName, const char* paramName, const char* group = "0")
    {
        const CAttrMap attributes{{"param-collector", CAttrValue("param-collector")},
                                  {"ext-name", CAttrValue(extName)},
                                  {"param-name", CAttrValue(paramName)},
                                  {"element-index", CAttrValue("0")},
                                  {"group", CAttrValue(group)}};
        return list_->createChild(out, "audio:ext-param", extName, false, nullptr, &attributes);
    }
    CAudioExtParam& add(const char* extName, const char* paramName)
    {
        CAudioExtParam* param = nullptr;
        EXPECT_OK(tryAdd(param, extName, paramName));
        list_->setHostBridge(&host_);
        return *param;
    }
    CAudioParam& declare(const char* fullName, const char* converter, const char* min, const char* max,
                         const char* defaults)
    {
        CAudioParamInfo info;
        info.valid = info.isGlobal = info.isStorable = true;
        info.name = fullName;
        info.visualName = "Visual";
        info.converterNames = {converter};
        EXPECT_OK(info.parseConverterNames());
        EXPECT_OK(info.convertMinMaxValues(min, max));
        EXPECT_OK(info.parseDefValues(defaults));
        return addParam(fullName, info);
    }

    // Before anything that could still tell it.
    RecordingHost host_;
    CAudioExtParamList* list_ = nullptr;
};

} // namespace qel::test
