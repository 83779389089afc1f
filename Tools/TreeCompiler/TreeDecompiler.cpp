// From a compiled tree back to XML.
#include "TreeCompiler/TreeDecompiler.h"

#include "TreeCompiler/ToolError.h"
#include "TreeCompiler/TreeText.h"

#include <algorithm>
#include <cstdio>
#include <string_view>

namespace qel::tools {

namespace {

constexpr std::size_t kMaxColumns = 110;
constexpr std::size_t kIndent = 4;

// Line breaks and tabs survive the white space rules of attributes only as references.
std::string escaped(std::string_view utf8)
{
    std::string text;
    for (const char c : utf8) {
        const auto byte = static_cast<std::uint8_t>(c);
        if (c == '&') {
            text += "&amp;";
        } else if (c == '<') {
            text += "&lt;";
        } else if (c == '>') {
            text += "&gt;";
        } else if (c == '"') {
            text += "&quot;";
        } else if (byte < 0x20) {
            text += "&#" + std::to_string(byte) + ";";
        } else {
            text += c;
        }
    }
    return text;
}

std::string pair(std::string_view key, std::string_view utf8)
{
    return std::string(key) + "=\"" + escaped(utf8) + "\"";
}

class CWriter
{
public:
    std::string take() { return std::move(out_); }

    void writeRoot(const CTreeNode& root)
    {
        if (!root.tag.empty() || !root.name.empty() || root.isTemplate()) {
            fail(root, "the root must be a plain node without tag and name");
        }
        out_ = "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n";
        writeElement("tree", {}, root, {"name"}, 0);
    }

private:
    using Reserved = std::vector<std::string_view>;

    [[noreturn]] static void fail(const CTreeNode& node, const std::string& problem)
    {
        throw CToolError("node '" + utf8FromLatin1(node.name) + "' (tag '" + utf8FromLatin1(node.tag) +
                         "') has no XML form: " + problem);
    }

    static std::string rawText(const CTreeNode& node, const std::string& latin1)
    {
        if (latin1.find('\0') != latin1.npos) {
            fail(node, "a tag, name or key holds a NUL character");
        }
        return utf8FromLatin1(latin1);
    }

    void writeNode(const CTreeNode& node, std::size_t depth)
    {
        if (node.isTemplate()) {
            writeTemplate(node, depth);
            return;
        }
        const bool plain = isPlainXmlName(node.tag) && !isReservedElement(node.tag);
        std::vector<std::string> head;
        Reserved reserved = {"name"};
        if (!plain) {
            head.push_back(pair("tag", rawText(node, node.tag)));
            reserved.push_back("tag");
        }
        if (!node.name.empty()) {
            head.push_back(pair("name", rawText(node, node.name)));
        }
        writeElement(plain ? node.tag : "node", std::move(head), node, reserved, depth);
    }

    void writeTemplate(const CTreeNode& node, std::size_t depth)
    {
        const CTreeNode& body = node.children.at(0);
        if (node.tag != "template" || node.templateFlag != CTreeNode::kTemplateFlag || body.isTemplate() ||
            body.tag != node.contentTag || !body.name.empty()) {
            fail(node, "its tag, flag, content tag and body do not agree as in a template");
        }
        std::vector<std::string> head = {pair("name", rawText(node, node.name)),
                                         pair("content-tag", rawText(node, node.contentTag))};
        writeElement("template", std::move(head), body, {"name", "content-tag", "like"}, depth);
    }

    // The attributes up to the first one that XML cannot hold go into the tag, the rest into <attr> elements:
    // so their order survives.
    void writeElement(const std::string& element, std::vector<std::string> head, const CTreeNode& node,
                      Reserved taken, std::size_t depth)
    {
        std::vector<std::string> extra;
        for (const auto& [key, value] : node.attributes) {
            if (const std::string problem = valueProblem(value); !problem.empty()) {
                fail(node, "the value of '" + utf8FromLatin1(key) + "' " + problem);
            }
            const bool fits = isPlainXmlName(key) && std::ranges::find(taken, key) == taken.end();
            if (fits && extra.empty()) {
                head.push_back(pair(key, value));
                taken.push_back(key);
            } else {
                extra.push_back(pair("key", rawText(node, key)) + " " + pair("value", value));
            }
        }
        writeTag(element, head, depth);
        if (extra.empty() && node.children.empty()) {
            out_ += "/>\n";
            return;
        }
        out_ += ">\n";
        for (const std::string& attribute : extra) {
            out_ += std::string((depth + 1) * kIndent, ' ') + "<attr " + attribute + "/>\n";
        }
        for (const CTreeNode& child : node.children) {
            writeNode(child, depth + 1);
        }
        out_ += std::string(depth * kIndent, ' ') + "</" + element + ">\n";
    }

    void writeTag(const std::string& element, const std::vector<std::string>& attributes, std::size_t depth)
    {
        const std::size_t indent = depth * kIndent;
        out_ += std::string(indent, ' ') + "<" + element;
        std::size_t column = indent + 1 + element.size();
        for (const std::string& attribute : attributes) {
            if (column + 1 + attribute.size() > kMaxColumns && column > indent + 1 + element.size()) {
                out_ += "\n" + std::string(indent + kIndent, ' ');
                column = indent + kIndent;
            } else {
                out_ += " ";
                ++column;
            }
            out_ += attribute;
            column += attribute.size();
        }
    }

    std::string out_;
};

} // namespace

std::string decompileTree(const CTreeNode& root)
{
    CWriter writer;
    writer.writeRoot(root);
    return writer.take();
}

} // namespace qel::tools
