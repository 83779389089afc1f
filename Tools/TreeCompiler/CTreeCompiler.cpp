// From authored XML to a compiled tree.
#include "TreeCompiler/CTreeCompiler.h"

#include "CNodeCursor.h"
#include "TreeCompiler/ToolError.h"
#include "TreeCompiler/TreeText.h"

#include <algorithm>
#include <set>

namespace qel::tools {

namespace {

std::string inQuotes(std::string_view text)
{
    return "'" + std::string(text) + "'";
}

// Levels of nodes, this one included.
int heightOf(const CTreeNode& node)
{
    int height = 0;
    for (const CTreeNode& child : node.children) {
        height = std::max(height, heightOf(child));
    }
    return height + 1;
}

// The node at a dotted path of names, or null.
CTreeNode* findNode(CTreeNode& node, std::string_view path)
{
    const std::size_t dot = path.find('.');
    const auto child = std::ranges::find(node.children, path.substr(0, dot), &CTreeNode::name);
    if (child == node.children.end() || child->isTemplate()) {
        return nullptr;
    }
    return dot == path.npos ? &*child : findNode(*child, path.substr(dot + 1));
}

using Attributes = std::vector<std::pair<std::string, std::string>>;

// Own attributes over those of a definition, in the order that CTreeCompiler promises.
Attributes merged(const Attributes& own, const Attributes& inherited)
{
    const auto buildsOn = [](const auto& attribute) {
        return attribute.second.find("{}") != std::string::npos;
    };
    Attributes result;
    std::set<std::string_view> replaced;
    for (const auto& attribute : own) {
        if (!buildsOn(attribute)) {
            result.push_back(attribute);
            replaced.insert(attribute.first);
        }
    }
    std::ranges::copy_if(inherited, std::back_inserter(result),
                         [&](const auto& attribute) { return !replaced.contains(attribute.first); });
    std::ranges::copy_if(own, std::back_inserter(result), buildsOn);
    return result;
}

void reportDepth(CXmlSource& source, pugi::xml_node element)
{
    source.report(element, "nested deeper than the " + std::to_string(CNodeCursor::kMaxDepth) +
                               " nodes that the loader allows");
}

bool isElement(pugi::xml_node node, std::string_view name)
{
    return node.type() == pugi::node_element && node.name() == name;
}

} // namespace

bool CTreeCompiler::compile(const std::filesystem::path& file, Root expected)
{
    try {
        CXmlSource source(file, file.string(), diagnostics_);
        files_.push_back(file);
        openFiles_.push_back(std::filesystem::weakly_canonical(file));
        const pugi::xml_node element = rootElement(source, expected);
        if (element && !isElement(element, "tree")) {
            compileElement(source, element, root_, 2);
        } else if (element) {
            if (const auto name = element.attribute("name")) {
                source.report(name, "the root has no name; an attribute called 'name' is an <attr>");
            }
            compileAttributes(source, element, root_, {"name"});
            compileContent(source, element, {root_}, 1);
        }
        openFiles_.pop_back();
    } catch (const CToolError& error) {
        diagnostics_.push_back({file.string(), 0, 0, error.what()});
    }
    return diagnostics_.empty();
}

pugi::xml_node CTreeCompiler::rootElement(CXmlSource& source, Root expected)
{
    if (!source.isGood()) {
        return {};
    }
    pugi::xml_node root;
    for (const pugi::xml_node node : source.document()) {
        if (node.type() != pugi::node_element) {
            source.report(node, "text outside the root element");
        } else if (root) {
            source.report(node, "a second root element");
        } else if (expected == Root::kTree && !isElement(node, "tree")) {
            source.report(node, "the root element must be <tree>, not <" + std::string(node.name()) + ">");
            return {};
        } else {
            root = node;
        }
    }
    if (!root) {
        diagnostics_.push_back({source.shownName(), 1, 1,
                                expected == Root::kTree ? "no root element <tree>" : "no root element"});
    }
    return root;
}

void CTreeCompiler::compileContent(CXmlSource& source, pugi::xml_node element, Target target, int depth)
{
    for (const pugi::xml_node child : element.children()) {
        if (child.type() != pugi::node_element) {
            source.report(child, "text is not part of a tree; values are attributes");
        } else if (isElement(child, "attr")) {
            compileExtraAttribute(source, child, target);
        } else if (isElement(child, "include")) {
            compileInclude(source, child, target, depth);
        } else if (isElement(child, "define")) {
            compileDefinition(source, child, depth);
        } else if (isElement(child, "extend")) {
            compileExtension(source, child, target, depth);
        } else {
            compileElement(source, child, target.node, depth + 1);
        }
    }
}

void CTreeCompiler::compileElement(CXmlSource& source, pugi::xml_node element, CTreeNode& parent, int depth)
{
    if (depth > CNodeCursor::kMaxDepth) {
        reportDepth(source, element);
        return;
    }
    if (isElement(element, "template")) {
        parent.children.push_back(compileTemplate(source, element, depth));
        return;
    }
    CTreeNode node;
    Reserved reserved = {"name"};
    if (isElement(element, "tree")) {
        source.report(element, "<tree> is the root; a node with this tag is written as <node tag=\"tree\">");
    } else if (isElement(element, "node")) {
        reserved.push_back("tag");
        if (!element.attribute("tag")) {
            source.report(element, "<node> needs the attribute 'tag'");
        }
        node.tag = rawText(source, element.attribute("tag"));
    } else if (const auto tag = latin1FromUtf8(element.name())) {
        node = instance(source, element, *tag, depth);
    } else {
        source.report(element, "tag " + inQuotes(element.name()) + " has a character outside Latin-1");
    }
    node.name = rawText(source, element.attribute("name"));
    addContent(source, element, reserved, node, depth);
    parent.children.push_back(std::move(node));
}

CTreeNode CTreeCompiler::instance(CXmlSource& source, pugi::xml_node element, const std::string& name,
                                  int depth)
{
    const auto found = definitions_.find(name);
    if (found == definitions_.end()) {
        CTreeNode plain;
        plain.tag = name;
        return plain;
    }
    if (depth - 1 + heightOf(found->second) > CNodeCursor::kMaxDepth) {
        reportDepth(source, element);
    }
    return found->second;
}

// The element's attributes and children, added to what the node has.
void CTreeCompiler::addContent(CXmlSource& source, pugi::xml_node element, const Reserved& reserved,
                               CTreeNode& target, int depth)
{
    const Attributes inherited = std::exchange(target.attributes, {});
    const std::size_t inheritedChildren = target.children.size();
    compileAttributes(source, element, target, reserved);
    compileContent(source, element, {target, inheritedChildren}, depth);
    if (!inherited.empty()) {
        target.attributes = merged(target.attributes, inherited);
    }
}

CTreeNode CTreeCompiler::compileTemplate(CXmlSource& source, pugi::xml_node element, int depth)
{
    CTreeNode holder;
    holder.tag = "template";
    holder.templateFlag = CTreeNode::kTemplateFlag;
    const pugi::xml_attribute like = element.attribute("like");
    for (const char* needed : {"name", like ? "like" : "content-tag"}) {
        if (!element.attribute(needed)) {
            source.report(element, "<template> needs the attribute '" + std::string(needed) + "'");
        }
    }
    holder.name = rawText(source, element.attribute("name"));
    // The body is a node of its own below the holder.
    CTreeNode body;
    if (like) {
        body = instance(source, element, rawText(source, like), depth + 1);
        addContent(source, element, {"name", "like"}, body, depth + 1);
    } else {
        body.tag = rawText(source, element.attribute("content-tag"));
        addContent(source, element, {"name", "content-tag"}, body, depth + 1);
    }
    holder.contentTag = body.tag;
    holder.children.push_back(std::move(body));
    return holder;
}

void CTreeCompiler::compileDefinition(CXmlSource& source, pugi::xml_node element, int depth)
{
    const std::string name = rawText(source, element.attribute("name"));
    if (name.empty() || isReservedElement(name)) {
        source.report(element, "<define> needs a 'name' that is no element of its own");
    }
    const pugi::xml_attribute base = element.attribute("base");
    const pugi::xml_attribute tag = element.attribute("tag");
    CTreeNode node = base ? instance(source, element, rawText(source, base), depth) : CTreeNode();
    if (tag || !base) {
        node.tag = tag ? rawText(source, tag) : name;
    }
    // How deep it lies is seen where it is used.
    addContent(source, element, {"name", "base", "tag"}, node, 1);
    if (!definitions_.emplace(name, std::move(node)).second) {
        source.report(element, inQuotes(name) + " is defined already");
    }
}

void CTreeCompiler::compileExtension(CXmlSource& source, pugi::xml_node element, Target target, int depth)
{
    const std::string path = rawText(source, element.attribute("child"));
    CTreeNode* const node = findNode(target.node, path);
    if (!node) {
        source.report(element, "<extend>: there is no child " + inQuotes(path) + " to extend");
        return;
    }
    addContent(source, element, {"child"}, *node,
               depth + 1 + static_cast<int>(std::ranges::count(path, '.')));
}

void CTreeCompiler::compileAttributes(CXmlSource& source, pugi::xml_node element, CTreeNode& target,
                                      const Reserved& reserved)
{
    std::set<std::string_view> seen;
    for (const pugi::xml_attribute attribute : element.attributes()) {
        const std::string_view key = attribute.name();
        if (!seen.insert(key).second) {
            source.report(attribute, "attribute " + inQuotes(key) +
                                         " stands twice; repeat it as <attr key=\"" + std::string(key) +
                                         "\" value=\"...\"/>");
        } else if (std::ranges::find(reserved, key) == reserved.end()) {
            if (const auto raw = latin1FromUtf8(key)) {
                addAttribute(source, attribute, *raw, target);
            } else {
                source.report(attribute,
                              "attribute key " + inQuotes(key) + " has a character outside Latin-1");
            }
        }
    }
}

void CTreeCompiler::compileExtraAttribute(CXmlSource& source, pugi::xml_node element, Target target)
{
    const pugi::xml_attribute key = element.attribute("key");
    const pugi::xml_attribute value = element.attribute("value");
    const auto count = std::distance(element.attributes_begin(), element.attributes_end());
    if (!key || !value || count != 2 || element.first_child()) {
        source.report(element, "<attr> has the attributes 'key' and 'value' and nothing else");
        return;
    }
    if (target.node.children.size() > target.inheritedChildren) {
        source.report(element,
                      "<attr> must stand before the child nodes, since it is applied before they are made");
        return;
    }
    addAttribute(source, value, rawText(source, key), target.node);
}

void CTreeCompiler::compileInclude(CXmlSource& source, pugi::xml_node element, Target target, int depth)
{
    const pugi::xml_attribute file = element.attribute("file");
    if (!file || file.next_attribute() || file.previous_attribute() || element.first_child()) {
        source.report(element, "<include> has the attribute 'file' and nothing else");
        return;
    }
    const std::filesystem::path path = source.path().parent_path() / file.value();
    const auto canonical = std::filesystem::weakly_canonical(path);
    if (std::ranges::find(openFiles_, canonical) != openFiles_.end()) {
        source.report(file, inQuotes(file.value()) + " includes itself");
        return;
    }
    try {
        CXmlSource included(path, path.string(), diagnostics_);
        if (std::ranges::find(files_, path) == files_.end()) {
            files_.push_back(path);
        }
        openFiles_.push_back(canonical);
        if (const pugi::xml_node root = rootElement(included, Root::kTree)) {
            if (const auto attribute = root.first_attribute()) {
                included.report(attribute,
                                "the root of an included file has no attributes; they would be lost");
            }
            compileContent(included, root, target, depth);
        }
        openFiles_.pop_back();
    } catch (const CToolError& error) {
        source.report(file, error.what());
    }
}

std::string CTreeCompiler::rawText(CXmlSource& source, pugi::xml_attribute attribute)
{
    if (!attribute) {
        return "";
    }
    const auto raw = latin1FromUtf8(attribute.value());
    if (!raw) {
        source.report(attribute,
                      "attribute " + inQuotes(attribute.name()) + " has a character outside Latin-1");
        return "";
    }
    return *raw;
}

void CTreeCompiler::addAttribute(CXmlSource& source, pugi::xml_attribute place, std::string key,
                                 CTreeNode& target)
{
    std::string value = place.value();
    if (const std::string problem = valueProblem(value); !problem.empty()) {
        source.report(place, "the value of " + inQuotes(utf8FromLatin1(key)) + " " + problem);
    }
    target.attributes.emplace_back(std::move(key), std::move(value));
}

} // namespace qel::tools
