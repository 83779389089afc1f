// Prints compiled trees.
#include "Inspect/FileKinds.h"
#include "TreeCompiler/CTreeNode.h"
#include "TreeCompiler/TreeText.h"

#include <ostream>

namespace qel::tools {

namespace {

struct Totals
{
    std::size_t nodes = 0;
    std::size_t templates = 0;
    std::size_t attributes = 0;
};

void count(const CTreeNode& node, Totals& totals)
{
    ++totals.nodes;
    totals.templates += node.isTemplate() ? 1 : 0;
    totals.attributes += node.attributes.size();
    for (const CTreeNode& child : node.children) {
        count(child, totals);
    }
}

// A line for the node, one for each attribute behind it, then the children, one step to the right.
void printNode(const CTreeNode& node, std::size_t depth, std::ostream& out)
{
    const std::string indent(2 * depth, ' ');
    out << indent << (node.tag.empty() ? "(no tag)" : utf8FromLatin1(node.tag));
    if (!node.name.empty()) {
        out << ' ' << printable(utf8FromLatin1(node.name));
    }
    if (node.isTemplate()) {
        out << " [template of " << utf8FromLatin1(node.contentTag) << ", flag " << node.templateFlag << ']';
    }
    out << '\n';
    for (const auto& [key, value] : node.attributes) {
        out << indent << "  ." << utf8FromLatin1(key) << " = " << printable(value) << '\n';
    }
    for (const CTreeNode& child : node.children) {
        printNode(child, depth + 1, out);
    }
}

} // namespace

void printTree(std::span<const std::uint8_t> payload, std::ostream& out)
{
    const CTreeNode root = decodeTree(payload);
    Totals totals;
    count(root, totals);
    out << totals.nodes << " nodes, " << totals.templates << " templates, " << totals.attributes
        << " attributes\n";
    printNode(root, 0, out);
}

} // namespace qel::tools
