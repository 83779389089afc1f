// Runs the signal graph of a compiled tree without a host around it.
#pragma once

#include "CAudioFeed.h"
#include "CAudioParamCollector.h"
#include "CAudioProcessTree.h"
#include "CObject.h"
#include "TreeCompiler/CTreeNode.h"

#include <functional>
#include <memory>
#include <string>
#include <vector>

namespace qel::tools {

using CChannels = std::vector<std::vector<double>>; // [channel][sample]

// Loads a shared tree, makes one instance (from its template "plugin", or of the bare necessities where it
// has none), builds a process from one definition and streams samples through it. One at a time in a process,
// since it owns the creator registry and the shared tree. For tools, tests and benchmarks; throws what the
// build reports.
class CGraphHost
{
public:
    struct Options
    {
        std::string definition = "audio.modMain"; // path in the shared tree
        std::string processName = "plugin.modMain";
        double rateHz = 48000.0;
    };

    CGraphHost(const CTreeNode& sharedTree, const Options& options);
    ~CGraphHost();
    CGraphHost(const CGraphHost&) = delete;
    CGraphHost& operator=(const CGraphHost&) = delete;

    CAudioProcessBase& root() { return *tree_.root(); }
    CAudioGraph& graph() { return *graph_; }
    CKernelContext& kernels() { return *kernels_; }
    CAudioParamCollector& params() { return *params_; }
    // The instance, from the root of its tree: its object "plugin".
    CObject& instance() { return *instance_->findObject("plugin"); }

    // Writes one value of the parameter "<process>.<name>", as the interface would. False if there is no such
    // parameter.
    bool set(const std::string& name, double value, int group = 0);

    // The format in which a channel is fed; by default all channels are in group 0.
    std::function<CAudioStreamFormat(int channel)> formatOf;

    // Streams `input` in blocks of the given sizes, over and over, and gives what came out; `beforeBlock` is
    // called with the position of each block.
    CChannels run(const CChannels& input, const std::vector<int>& blockSizes,
                  const std::function<void(std::size_t)>& beforeBlock = {});
    // One processing call on `count` samples from `start` on.
    void runBlock(const CChannels& input, std::size_t start, int count);
    // Moves what has come out to the ends of `output`, or drops it.
    void collect(CChannels& output);
    void discard() { drainLink_->clear(); }

private:
    // Delegated to, so that the destructor cleans up behind a constructor that throws.
    CGraphHost() = default;
    void makeInstance();
    void connect();

    double rateHz_ = 48000.0;
    CObject* shared_ = nullptr;
    CObject* instance_ = nullptr;
    CKernelContext* kernels_ = nullptr;
    CAudioParamCollector* params_ = nullptr;
    std::unique_ptr<CAudioGraph> graph_;
    CAudioProcessTree tree_;
    std::unique_ptr<CAudioFeed> feed_;
    std::unique_ptr<CAudioLink> drainLink_;
};

} // namespace qel::tools
