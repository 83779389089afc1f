// From authored XML to a compiled tree.
#pragma once

#include "TreeCompiler/CTreeNode.h"
#include "TreeCompiler/CXmlSource.h"

#include <filesystem>
#include <map>
#include <string>
#include <vector>

namespace qel::tools {

// The XML form. The root element is <tree>. An element's name is the node's tag, its attribute `name` the
// node's name, all other attributes are the node's, in order. Besides:
//
//   <template name="ui:label" content-tag="ui:textview" ...>
//       a template; its other attributes and its children are those of each instance
//   <template name="ui:label" like="caption" ...>
//       the same, with all that an element <caption> stands for
//   <attr key="eq" value="..."/>
//       one more attribute behind those of the element: a repeated key, a key that XML does not allow, or one
//       that means something else here (`name`)
//   <node tag="..." name="...">
//       a node whose tag cannot be an element's name
//   <include file="other.xml"/>
//       the children of that file's root; the path is relative to this file
//   <define name="caption" base="ui:textview" tag="..." ...>
//       makes no node: from there on an element <caption> stands for what an element of the name `base`
//       would, with these attributes and children added. `base` may be a definition or a tag; without it the
//       name itself is the tag, so that a class gets defaults; `tag` takes the place of the base's tag
//   <extend child="c.label" ...>
//       adds attributes and children to a node that the definition of the element around it has made
//
// Where attributes are added to those of a definition, the added ones come first, so that values of the
// definition can refer to them, and take the place of those of the same name; but a value that builds on
// the former one ("{}") comes last.
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

    // A node that is being filled, with what a definition has put into it already.
    struct Target
    {
        CTreeNode& node;
        std::size_t inheritedChildren = 0;
    };

    pugi::xml_node rootElement(CXmlSource& source, Root expected);
    void compileContent(CXmlSource& source, pugi::xml_node element, Target target, int depth);
    void compileElement(CXmlSource& source, pugi::xml_node element, CTreeNode& parent, int depth);
    CTreeNode compileTemplate(CXmlSource& source, pugi::xml_node element, int depth);
    void compileDefinition(CXmlSource& source, pugi::xml_node element, int depth);
    void compileExtension(CXmlSource& source, pugi::xml_node element, Target target, int depth);
    // What an element of this name stands for before its own attributes and children are added.
    CTreeNode instance(CXmlSource& source, pugi::xml_node element, const std::string& name, int depth);
    void addContent(CXmlSource& source, pugi::xml_node element, const Reserved& reserved, CTreeNode& target,
                    int depth);
    void compileAttributes(CXmlSource& source, pugi::xml_node element, CTreeNode& target,
                           const Reserved& reserved);
    void compileExtraAttribute(CXmlSource& source, pugi::xml_node element, Target target);
    void compileInclude(CXmlSource& source, pugi::xml_node element, Target target, int depth);
    // The value of an attribute that becomes a tag, name or key.
    std::string rawText(CXmlSource& source, pugi::xml_attribute attribute);
    void addAttribute(CXmlSource& source, pugi::xml_attribute place, std::string key, CTreeNode& target);

    CTreeNode root_;
    std::map<std::string, CTreeNode, std::less<>> definitions_;
    std::vector<CDiagnostic> diagnostics_;
    std::vector<std::filesystem::path> files_;
    std::vector<std::filesystem::path> openFiles_;
};

} // namespace qel::tools
