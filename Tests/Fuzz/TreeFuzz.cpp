// Fuzz target: a compiled tree file, from its chunk to an instantiated template.
#include "CObject.h"
#include "FuzzTarget.h"
#include "Streams/CMemoryReader.h"
#include "Streams/CMemoryWriteBuffer.h"
#include "TreeBytes.h"

#include "CNodeCursor.h"

namespace qel {
namespace {

constexpr std::uint32_t kTreeChunkId = 0x6C6D7863;

void loadTree(std::span<const std::uint8_t> payload)
{
    auto* shared = new CObject();
    CObject::setSharedObject(shared);
    CNodeCursor cursor(payload);
    releaseError(shared->loadNode(cursor, true, true, false, false));
    CObject* instance = nullptr;
    releaseError(shared->createChild(instance, "t", "instance"));
    if (instance) {
        releaseError(instance->setAttribute("x", "{a}{/^ b}{*t c}", true));
        (void)instance->findObject(instance->getAttrString("path"));
    }
    CObject::releaseObject(shared);
    CObject::setSharedObject(nullptr);
}

} // namespace

// The input is tried both as a whole file and as what a file unpacks to, since a mutation rarely survives the
// compression.
void fuzzOne(std::span<const std::uint8_t> input)
{
    CByteBuffer payload;
    CMemoryReader reader(input.data(), static_cast<std::int32_t>(input.size()));
    if (CError error = reader.readCompressedData(payload, kTreeChunkId); !error) {
        loadTree(payload.bytes());
    }
    loadTree(input);
}

std::vector<std::vector<std::uint8_t>> fuzzSeeds()
{
    using test::TreeNode;
    TreeNode leaf("core:object", "leaf");
    leaf.attr("a", "{b}{c} {/^ x}").attr("b", "{*leaf c}").attr("eq", "{}").attr("path", "$a.^leaf#+1");
    TreeNode body("core:object");
    body.attr("a", "1").child(leaf);
    TreeNode root;
    root.attr("who", "root").child(TreeNode::templateOf("t", body)).child(leaf).child(leaf);

    const std::vector<std::uint8_t> payload = root.bytes();
    CMemoryWriteBuffer file;
    releaseError(file.writeCompressedData(CByteBuffer(payload), kTreeChunkId));
    CByteBuffer chunk;
    file.copyTo(chunk);
    return {payload, {chunk.bytes().begin(), chunk.bytes().end()}};
}

} // namespace qel
