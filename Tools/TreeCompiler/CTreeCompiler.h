// From authored XML to a compiled tree.
#pragma once

#include "TreeCompiler/CTreeNode.h"
#include "TreeCompiler/CXmlSource.h"

#include <filesystem>
#include <string>
#include <vector>

namespace qel::tools {

// The XML form. The root element is <tree>. An element's name is the node's tag, its attribute `name` the
// node's name, all other attributes are the node's, in order. Besides:
//
//   <template name="ui:label" content-tag="ui:textview" ...>   a template; its other attributes and its
//   children are
//                                                              those of each instance
//   <attr key="eq" value="..."/>      one more attribute behind those of the element: a repeated key, a key
//   that XML
//                                     does not allow, or one that means something else here (`name`)
//   <node tag="..." name="...">       a node whose tag cannot be an element's name
//   <include file="other.xml"/>       the children of that file's root; the path is relative to this file
//
// Everything the loader would read differently from what stands there is refused. All faults of all files are
// collected; a compiler object serves one compile().
class CTreeCompiler
{
public:
    enum class Root
    {
        kTree,      // the root element is <tree>
        kAnyElement // any other root element is the only node of the tree
    };

    // False if there are diagnostics.
    bool compile(const std::filesystem::path& file, Root expected = Root::kTree);

    const CTreeNode& root() const { return root_; }
    const std::vector<CDiagnostic>& diagnostics() const { return diagnostics_; }
    // All files read, for dependency lists.
    const std::vector<std::filesystem::path>& files() const { return files_; }

private:
    using Reserved = std::vector<std::string_view>;

    pugi::xml_node rootElement(CXmlSource& source, Root expected);
    void compileContent(CXmlSource& source, pugi::xml_node element, CTreeNode& target, int depth);
    void compileElement(CXmlSource& source, pugi::xml_node element, CTreeNode& parent, int depth);
    CTreeNode compileTemplate(CXmlSource& source, pugi::xml_node element, int depth);
    void compileAttributes(CXmlSource& source, pugi::xml_node element, CTreeNode& target,
                           const Reserved& reserved);
    void compileExtraAttribute(CXmlSource& source, pugi::xml_node element, CTreeNode& target);
    void compileInclude(CXmlSource& source, pugi::xml_node element, CTreeNode& target, int depth);
    // The value of an attribute that becomes a tag, name or key.
    std::string rawText(CXmlSource& source, pugi::xml_attribute attribute);
    void addAttribute(CXmlSource& source, pugi::xml_attribute place, std::string key, CTreeNode& target);

    CTreeNode root_;
    std::vector<CDiagnostic> diagnostics_;
    std::vector<std::filesystem::path> files_;
    std::vector<std::filesystem::path> openFiles_;
};

} // namespace qel::tools
