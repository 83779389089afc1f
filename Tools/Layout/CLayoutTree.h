// Lays a tree of plain views out, without a window.
#pragma once

#include "CRect.h"
#include "CViewBasePlacement.h"
#include "TreeCompiler/CTreeNode.h"

#include <filesystem>
#include <string>
#include <vector>

namespace qel::tools {

// Loads a compiled tree whose "ui:view" nodes become views, and solves the layout of each root view in it.
// One at a time in a process, since it owns the creator registry and the shared tree. For tools, tests and
// benchmarks; throws CToolError with what the tree or the layout reports.
class CLayoutTree
{
public:
    struct View
    {
        std::string path; // "root.panel.button"
        CRect rect;       // window pixels, not clipped; all zeros while the view is hidden or has no size
    };

    CLayoutTree(const CTreeNode& tree, double scale);
    ~CLayoutTree();
    CLayoutTree(const CLayoutTree&) = delete;
    CLayoutTree& operator=(const CLayoutTree&) = delete;

    // All views in the order of the tree.
    std::vector<View> views() const;
    // The view at a path; throws if there is none.
    CViewBasePlacement& view(const std::string& path) const;
    // Sets an attribute of a view, without solving.
    void set(const std::string& path, const std::string& attribute, const std::string& value);
    void solve();

private:
    CLayoutTree() = default;

    CObject* shared_ = nullptr;
    CObject* root_ = nullptr;
};

// Compiles an XML file whose root element is <tree>, or itself the one root view. Throws CToolError with all
// diagnostics.
CTreeNode compileLayout(const std::filesystem::path& file);

} // namespace qel::tools
