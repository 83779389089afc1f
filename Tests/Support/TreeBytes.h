// Encodes object trees for tests, in the form the loader reads.
#pragma once

#include <cstdint>
#include <span>
#include <string>
#include <utility>
#include <vector>

namespace qel::test {

// One node: TreeNode("tag", "name").attr("key", "value").child(...). A node made by templateOf() is a
// template holder whose body is that node.
class TreeNode
{
public:
    explicit TreeNode(std::string tag = {}, std::string name = {})
        : tag_(std::move(tag)), name_(std::move(name))
    {}

    static TreeNode templateOf(std::string name, TreeNode body)
    {
        TreeNode node("template", std::move(name));
        node.isTemplate_ = true;
        node.children_.push_back(std::move(body));
        return node;
    }

    TreeNode& attr(std::string key, std::string value)
    {
        attributes_.emplace_back(std::move(key), std::move(value));
        return *this;
    }
    TreeNode& child(TreeNode node)
    {
        children_.push_back(std::move(node));
        return *this;
    }

    std::vector<std::uint8_t> bytes() const
    {
        std::string out;
        write(out);
        return {out.begin(), out.end()};
    }

private:
    static void writeU32(std::string& out, std::size_t value)
    {
        for (unsigned shift = 0; shift < 32; shift += 8) {
            out.push_back(static_cast<char>((value >> shift) & 0xFF));
        }
    }
    static void writeString(std::string& out, const std::string& text)
    {
        writeU32(out, text.size());
        out += text;
    }
    void write(std::string& out) const
    {
        writeString(out, tag_);
        writeString(out, name_);
        writeU32(out, isTemplate_ ? 1 : 0);
        if (isTemplate_) {
            std::string body;
            children_.front().write(body);
            writeString(out, children_.front().tag_);
            writeString(out, body);
            return;
        }
        writeU32(out, attributes_.size());
        for (const auto& [key, value] : attributes_) {
            writeString(out, key);
            writeString(out, value);
        }
        writeU32(out, children_.size());
        for (const TreeNode& node : children_) {
            node.write(out);
        }
    }

    std::string tag_;
    std::string name_;
    bool isTemplate_ = false;
    std::vector<std::pair<std::string, std::string>> attributes_;
    std::vector<TreeNode> children_;
};

} // namespace qel::test
