// A compiled tree in memory, and its encoding.
#pragma once

#include <cstdint>
#include <span>
#include <string>
#include <utility>
#include <vector>

namespace qel::tools {

// One node as the file holds it. Tag, name and keys are raw bytes, one byte a character (Latin-1); attribute
// values are UTF-8. Attributes stay in file order and keys may repeat, since the loader applies them one
// after another.
//
// A node whose template flag is not 0 is a template: it has a content tag, no attributes, and exactly one
// child, the body. A file's root has neither tag nor name.
struct CTreeNode
{
    static constexpr std::uint32_t kTemplateFlag = 1;

    std::string tag;
    std::string name;
    std::uint32_t templateFlag = 0;
    std::string contentTag;
    std::vector<std::pair<std::string, std::string>> attributes;
    std::vector<CTreeNode> children;

    bool isTemplate() const { return templateFlag != 0; }
    bool operator==(const CTreeNode&) const = default;
};

// The payload of a compiled tree file.
std::vector<std::uint8_t> encodeTree(const CTreeNode& root);
// Throws CToolError when the payload ends early, holds more than one node, or is nested too deep.
CTreeNode decodeTree(std::span<const std::uint8_t> payload);

// The same with the file around it. Reading throws when the file is no compiled tree. Writing replaces a file
// only once the new one is complete.
CTreeNode readCompiledTree(const std::string& path);
void writeCompiledTree(const CTreeNode& root, const std::string& path);

constexpr std::uint32_t kCompiledTreeId = 0x6C6D7863; // "cxml"

} // namespace qel::tools
