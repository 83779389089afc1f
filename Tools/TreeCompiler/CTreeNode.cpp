// A compiled tree in memory, and its encoding.
#include "TreeCompiler/CTreeNode.h"

#include "CNodeCursor.h"
#include "Streams/CFileReader.h"
#include "Streams/CFileWriter.h"
#include "TreeCompiler/ToolError.h"

#include <filesystem>
#include <limits>

namespace qel::tools {

namespace {

using Payload = std::vector<std::uint8_t>;

void require(CError error)
{
    if (error) {
        throw CToolError(error.text());
    }
}

void appendU32(Payload& out, std::size_t value)
{
    if (value > std::numeric_limits<std::uint32_t>::max()) {
        throw CToolError("the tree is too large for its file format");
    }
    for (unsigned shift = 0; shift < 32; shift += 8) {
        out.push_back(static_cast<std::uint8_t>(value >> shift));
    }
}

void appendString(Payload& out, const std::string& text)
{
    appendU32(out, text.size());
    out.insert(out.end(), text.begin(), text.end());
}

void appendNode(Payload& out, const CTreeNode& node)
{
    appendString(out, node.tag);
    appendString(out, node.name);
    appendU32(out, node.templateFlag);
    if (node.isTemplate()) {
        appendString(out, node.contentTag);
        Payload body;
        appendNode(body, node.children.at(0));
        appendU32(out, body.size());
        out.insert(out.end(), body.begin(), body.end());
        return;
    }
    appendU32(out, node.attributes.size());
    for (const auto& [key, value] : node.attributes) {
        appendString(out, key);
        appendString(out, value);
    }
    appendU32(out, node.children.size());
    for (const CTreeNode& child : node.children) {
        appendNode(out, child);
    }
}

std::uint32_t readU32(CNodeCursor& cursor)
{
    std::uint32_t value = 0;
    require(cursor.readU32(value));
    return value;
}

std::string readString(CNodeCursor& cursor)
{
    std::string_view bytes;
    require(cursor.readBytes(bytes));
    return std::string(bytes);
}

// The loader takes counts as signed and a negative one as none, which nobody can have meant.
std::uint32_t readCount(CNodeCursor& cursor)
{
    const std::uint32_t count = readU32(cursor);
    if (count > std::numeric_limits<std::int32_t>::max()) {
        throw CToolError("negative count at byte " + std::to_string(cursor.position()) + " of the payload");
    }
    return count;
}

CTreeNode decodeNode(CNodeCursor& cursor, int depth);

CTreeNode decodeWhole(std::span<const std::uint8_t> payload, int depth)
{
    CNodeCursor cursor(payload);
    CTreeNode node = decodeNode(cursor, depth);
    if (!cursor.isAtEnd()) {
        throw CToolError("more bytes than one node takes");
    }
    return node;
}

CTreeNode decodeNode(CNodeCursor& cursor, int depth)
{
    if (depth > CNodeCursor::kMaxDepth) {
        throw CToolError("nested deeper than " + std::to_string(CNodeCursor::kMaxDepth) + " nodes");
    }
    CTreeNode node;
    node.tag = readString(cursor);
    node.name = readString(cursor);
    node.templateFlag = readU32(cursor);
    if (node.isTemplate()) {
        node.contentTag = readString(cursor);
        std::string_view body;
        require(cursor.readBytes(body));
        node.children.push_back(
            decodeWhole({reinterpret_cast<const std::uint8_t*>(body.data()), body.size()}, depth + 1));
        return node;
    }
    // No room is made ahead: the counts are not to be trusted.
    for (std::uint32_t count = readCount(cursor); count > 0; --count) {
        std::string key = readString(cursor);
        node.attributes.emplace_back(std::move(key), readString(cursor));
    }
    for (std::uint32_t count = readCount(cursor); count > 0; --count) {
        node.children.push_back(decodeNode(cursor, depth + 1));
    }
    return node;
}

} // namespace

std::vector<std::uint8_t> encodeTree(const CTreeNode& root)
{
    Payload payload;
    appendNode(payload, root);
    return payload;
}

CTreeNode decodeTree(std::span<const std::uint8_t> payload)
{
    return decodeWhole(payload, 1);
}

CTreeNode readCompiledTree(const std::string& path)
{
    CFileReader reader;
    CByteBuffer payload;
    require(reader.open(CString::fromUtf8(path), 0));
    require(reader.readCompressedData(payload, kCompiledTreeId));
    try {
        return decodeTree(payload.bytes());
    } catch (const CToolError& error) {
        throw CToolError(path + ": " + error.what());
    }
}

void writeCompiledTree(const CTreeNode& root, const std::string& path)
{
    const std::vector<std::uint8_t> payload = encodeTree(root);
    const std::string unfinished = path + ".part";
    CFileWriter writer;
    require(writer.open(CString::fromUtf8(unfinished), 0, false));
    require(writer.writeCompressedData(CByteBuffer(payload), kCompiledTreeId));
    require(writer.close());
    std::filesystem::rename(unfinished, path);
}

} // namespace qel::tools
