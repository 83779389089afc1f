// A collector with its environment, parameters with info, and slots as a module would hold them.
#pragma once

#include "CAudioParamCollector.h"
#include "CAudioParamEventQueue.h"
#include "CreatorRegistry.h"
#include "TreeFixture.h"

#include <memory>
#include <vector>

namespace qel::test {

inline CAudioParamInfo floatInfo(const char* name, std::vector<double> defaults, double low = -1e6,
                                 double high = 1e6)
{
    CAudioParamInfo info;
    info.valid = true;
    info.name = name;
    info.isGlobal = true;
    info.isStorable = true;
    info.minValues = {low};
    info.maxValues = {high};
    info.defaults = {std::move(defaults)};
    return info;
}

inline CAudioParamInfo stringInfo(const char* name, const std::vector<const char*>& defaults)
{
    CAudioParamInfo info = floatInfo(name, {}, 0.0, CAudioParamInfo::kMaxStringId);
    info.dtype = CAudioParamInfo::kTypeString;
    info.defaults = {{}};
    for (const char* text : defaults) {
        info.defaults[0].push_back(info.pool.addString(text));
    }
    return info;
}

// One slot of a module, with a queue of its own. Its parameter must outlive it.
struct Slot
{
    explicit Slot(CAudioParam& param, std::int32_t group = -1, std::int32_t entry = -1)
    {
        binding.queue = &queue;
        binding.storage = &storage;
        binding.mark = &mark;
        binding.group = group;
        binding.entry = entry;
        isBound = param.audioSide().prepare(binding);
        if (isBound) {
            param.audioSide().bind(binding);
        }
    }
    ~Slot()
    {
        if (binding.param) {
            binding.param->audioSide().unbind(binding);
        }
    }
    Slot(const Slot&) = delete;
    Slot& operator=(const Slot&) = delete;

    // What a module does at the start of its block. Gives the number of events taken.
    int drain(double limitSec = 1e300)
    {
        int events = 0;
        queue.applyUntil(limitSec, [&events](CAudioParamBinding&, const CAudioParamEvent&) { ++events; });
        if (queue.isEmpty()) {
            mark.lower();
        }
        return events;
    }

    CAudioParamEventQueue queue;
    CAudioParamStorage storage;
    CAudioParamMark mark;
    CAudioParamBinding binding;
    bool isBound = false;
};

class ParamFixture : public TreeFixture
{
protected:
    ParamFixture()
    {
        releaseError(registerCreator({"audio:audio-env", &newObject<CAudioEnv>, &CAudioEnv::buildClassInfo}));
        releaseError(registerCreator({"audio:param-collector", &newObject<CAudioParamCollector>,
                                      &CAudioParamCollector::buildClassInfo}));
        EXPECT_OK(root_.load(
            TreeNode("", "root")
                .child(TreeNode("audio:audio-env", "audio-env"))
                .child(TreeNode("audio:param-collector", "param-collector").attr("env", "^audio-env"))));
        env_ = dynamic_cast<CAudioEnv*>(root_->findObject("audio-env"));
        collector_ = dynamic_cast<CAudioParamCollector*>(root_->findObject("param-collector"));
    }
    // Creators go last, behind the trees; slots of a test go before it.
    ~ParamFixture() override { clearCreators(); }

    CAudioParam& addParam(const char* fullName, const CAudioParamInfo& info)
    {
        CAudioParam& param = collector_->getParam(fullName);
        param.setInfo(std::make_shared<CAudioParamInfo>(info), CString("audio.") + info.name);
        return param;
    }
    // One processing call, without the processes.
    void callAudio(double seconds = 0.01)
    {
        env_->setInProcess(true);
        collector_->applyPending(env_->getPositionSec());
        env_->advance(seconds);
        env_->setInProcess(false);
    }

    CAudioEnv* env_ = nullptr;
    CAudioParamCollector* collector_ = nullptr;
    CAudioParamContext context_;
};

} // namespace qel::test
