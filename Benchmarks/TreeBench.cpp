// Time to load and release object trees of the product's size, and to instantiate templates.
#include "CNodeCursor.h"
#include "CObject.h"
#include "Streams/CMemoryWriteBuffer.h"
#include "Streams/ResourceMap.h"
#include "TreeBytes.h"

#include <benchmark/benchmark.h>

#include <ctime>
#include <stdexcept>

namespace qel {
namespace {

using test::TreeNode;

// A node with as many attributes as the nodes of the product's trees have on average.
TreeNode typicalNode(int index)
{
    TreeNode node("core:object", "node" + std::to_string(index));
    node.attr("visual-name", "Parameter " + std::to_string(index))
        .attr("min-values", "-24")
        .attr("max-values", "24");
    node.attr("def-values", "0")
        .attr("converter", "gain")
        .attr("is-storable", "true")
        .attr("label", "{name} dB");
    return node;
}

TreeNode branch(int nodes)
{
    TreeNode node("core:object", "branch");
    for (int i = 0; i < nodes; ++i) {
        node.child(typicalNode(i));
    }
    return node;
}

// Plain nodes up to `plainBytes`, templates for the rest: nearly all of the interface tree is templates.
std::vector<std::uint8_t> treeOfSize(std::size_t wantedBytes, std::size_t plainBytes)
{
    const std::size_t branchBytes = branch(20).bytes().size();
    TreeNode root;
    std::size_t bytes = 0;
    for (; bytes < plainBytes; bytes += branchBytes) {
        root.child(branch(20));
    }
    for (int i = 0; bytes < wantedBytes; bytes += branchBytes, ++i) {
        TreeNode body = branch(20);
        root.child(TreeNode::templateOf("ui:template" + std::to_string(i), TreeNode(body)));
    }
    return root.bytes();
}

void requireSuccess(CError error)
{
    if (error) {
        throw std::runtime_error(error.text());
    }
}

// The counter is the load alone.
void loadAndRelease(benchmark::State& state, std::size_t bytes, std::size_t plainBytes)
{
    const std::vector<std::uint8_t> payload = treeOfSize(bytes, plainBytes);
    CMemoryWriteBuffer file;
    requireSuccess(file.writeCompressedData(CByteBuffer(payload), 0x6C6D7863));
    CByteBuffer chunk;
    file.copyTo(chunk);
    registerResource("bench.xml", chunk.bytes());
    std::clock_t loading = 0;
    for (auto _ : state) {
        const std::clock_t start = std::clock();
        auto* root = new CObject();
        CObject::setSharedObject(root);
        requireSuccess(root->loadCompiled("bench.xml", true));
        loading += std::clock() - start;
        CObject::setSharedObject(nullptr);
        CObject::releaseObject(root);
    }
    registerResource("bench.xml", {});
    state.counters["bytes"] = static_cast<double>(payload.size());
    state.counters["load ms"] =
        1e3 * static_cast<double>(loading) / CLOCKS_PER_SEC / static_cast<double>(state.iterations());
}

void instantiateTemplate(benchmark::State& state)
{
    constexpr int kChildren = 99;
    TreeNode root;
    root.child(TreeNode::templateOf("ui:template", branch(kChildren)));
    const std::vector<std::uint8_t> payload = root.bytes();
    auto* shared = new CObject();
    CObject::setSharedObject(shared);
    CNodeCursor cursor(payload);
    requireSuccess(shared->loadNode(cursor, true, true, false, false));
    auto* tree = new CObject();
    for (auto _ : state) {
        CObject* instance = nullptr;
        requireSuccess(tree->createChild(instance, "ui:template", "instance", true));
        CObject::releaseObject(instance);
    }
    CObject::releaseObject(tree);
    CObject::setSharedObject(nullptr);
    CObject::releaseObject(shared);
    state.counters["nodes/s"] = benchmark::Counter(static_cast<double>(state.iterations()) * (kChildren + 1),
                                                   benchmark::Counter::kIsRate);
}

BENCHMARK_CAPTURE(loadAndRelease, sharedData, 87166, 60000)->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(loadAndRelease, userInterface, 830149, 80000)->Unit(benchmark::kMillisecond);
BENCHMARK(instantiateTemplate)->Unit(benchmark::kMicrosecond);

} // namespace
} // namespace qel
