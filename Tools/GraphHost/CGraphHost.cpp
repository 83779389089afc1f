// Runs the signal graph of a compiled tree without a host around it.
#include "GraphHost/CGraphHost.h"

#include "CAudioParam.h"
#include "CAudioVizCollector.h"
#include "CDCDAWContextObject.h"
#include "CKernelContext.h"
#include "CNodeCursor.h"
#include "CreatorTable.h"
#include "Definitions/CAudioProcessDefBase.h"

#include <algorithm>
#include <stdexcept>

namespace qel::tools {

namespace {

void require(CError error)
{
    if (error) {
        throw std::runtime_error(error.text());
    }
}

void load(CObject& object, const CTreeNode& node)
{
    const std::vector<std::uint8_t> payload = encodeTree(node);
    CNodeCursor cursor(payload);
    require(object.loadNode(cursor, true, true, false, false));
}

CTreeNode node(const char* tag, const char* name, std::vector<CTreeNode> children = {})
{
    CTreeNode made;
    made.tag = tag;
    made.name = name;
    made.children = std::move(children);
    return made;
}

// What a graph needs of an instance.
CTreeNode bareInstance()
{
    CTreeNode collector = node("audio:param-collector", "param-collector");
    collector.attributes.emplace_back("env", "^audio-env");
    return node("", "",
                {node("core:object", "plugin",
                      {node("audio:dcdaw-context", "dcdaw-context"), node("audio:audio-env", "audio-env"),
                       std::move(collector)})});
}

} // namespace

CGraphHost::CGraphHost(const CTreeNode& sharedTree, const Options& options) : CGraphHost()
{
    rateHz_ = options.rateHz;
    formatOf = [this](int) { return CAudioStreamFormat{rateHz_, 0.0, 0}; };
    require(registerCreators(kCreatorTable));
    shared_ = new CObject();
    CObject::setSharedObject(shared_);
    load(*shared_, sharedTree);
    makeInstance();
    auto* visual = dynamic_cast<CAudioVizCollector*>(instance_->findObject("plugin.viz-collector"));
    graph_.reset(new CAudioGraph{kernels(), params(), visual});
    const auto* def = dynamic_cast<const CAudioProcessDefBase*>(shared_->findObject(options.definition));
    if (!def) {
        throw std::runtime_error("The tree has no process definition '" + options.definition + "'.");
    }
    require(tree_.build(*graph_, *def, options.processName));
    tree_.root()->prepareGroups(0xFF);
    params().finalize();
    connect();
}

CGraphHost::~CGraphHost()
{
    if (drainLink_) {
        drainLink_->disconnect();
    }
    feed_.reset();
    tree_.release();
    drainLink_.reset();
    graph_.reset();
    CObject::releaseObject(instance_);
    CObject::setSharedObject(nullptr);
    CObject::releaseObject(shared_);
    clearCreators();
}

void CGraphHost::makeInstance()
{
    instance_ = new CObject();
    if (instance_->hasTemplate("plugin")) {
        CObject* plugin = nullptr;
        require(instance_->createChild(plugin, "plugin", "plugin", true));
    } else {
        load(*instance_, bareInstance());
    }
    kernels_ = dynamic_cast<CDCDAWContextObject&>(*instance_->findObject("plugin.dcdaw-context")).context();
    params_ = &dynamic_cast<CAudioParamCollector&>(*instance_->findObject("plugin.param-collector"));
}

void CGraphHost::connect()
{
    feed_ = std::make_unique<CAudioFeed>(*graph_, root(), 0);
    drainLink_ = std::make_unique<CAudioLink>(*graph_, root().output(0));
    drainLink_->connect();
}

bool CGraphHost::set(const std::string& name, double value, int group)
{
    CAudioParam& param = params().resolveParam(root().fullName() + "." + CString(name));
    CAudioParamContext context;
    CAudioParamChange change;
    change.group = group;
    change.count = 1;
    change.values = &value;
    return param.hasInfo() && param.change(change, context);
}

CChannels CGraphHost::run(const CChannels& input, const std::vector<int>& blockSizes,
                          const std::function<void(std::size_t)>& beforeBlock)
{
    CChannels output(kMaxChannels);
    const std::size_t total = input.empty() ? 0 : input[0].size();
    std::size_t block = 0;
    for (std::size_t start = 0; start < total;) {
        const auto size = static_cast<std::size_t>(blockSizes[block++ % blockSizes.size()]);
        const std::size_t count = std::min(size, total - start);
        if (beforeBlock) {
            beforeBlock(start);
        }
        runBlock(input, start, static_cast<int>(count));
        collect(output);
        start += count;
    }
    output.resize(input.size());
    return output;
}

void CGraphHost::runBlock(const CChannels& input, std::size_t start, int count)
{
    CAudioEnv& env = params().getEnv();
    env.setInProcess(true);
    params().applyPending(env.getPositionSec());
    feed_->setChannelCount(static_cast<int>(input.size()));
    for (std::size_t channel = 0; channel < input.size(); ++channel) {
        const auto number = static_cast<int>(channel);
        std::copy_n(input[channel].begin() + static_cast<std::ptrdiff_t>(start), count,
                    feed_->append(number, count, formatOf(number)));
    }
    graph_->positionSec = env.getPositionSec();
    root().process();
    env.advance(count / rateHz_);
    env.setInProcess(false);
}

void CGraphHost::collect(CChannels& output)
{
    for (int channel = 0; channel < kMaxChannels; ++channel) {
        while (const CAudioChunk* chunk = drainLink_->head(channel)) {
            const double* samples = kernels().samples(chunk->buffer);
            auto& target = output[static_cast<std::size_t>(channel)];
            target.insert(target.end(), samples, samples + chunk->count);
            drainLink_->consume(channel, chunk->count);
        }
    }
}

} // namespace qel::tools
