// Lays a tree of plain views out, without a window.
#include "Layout/CLayoutTree.h"

#include "CInterfaceScale.h"
#include "CNodeCursor.h"
#include "CreatorRegistry.h"
#include "TreeCompiler/CTreeCompiler.h"
#include "TreeCompiler/ToolError.h"

#include <functional>

namespace qel::tools {

namespace {

template <class Class>
constexpr CCreatorRow row(const char* tag)
{
    return {tag, &newObject<Class>, &Class::buildClassInfo};
}

constexpr CCreatorRow kTags[] = {
    row<CObject>("core:object"),
    row<CViewBasePlacement>("ui:view"),
    {nullptr, nullptr, nullptr},
};

void require(CError error)
{
    if (error) {
        throw CToolError(error.text());
    }
}

void visitViews(CObject& object, const std::function<void(CViewBasePlacement&)>& visit)
{
    if (auto* view = dynamic_cast<CViewBasePlacement*>(&object)) {
        visit(*view);
    }
    for (std::size_t i = 0; i < object.getChildCount(); ++i) {
        visitViews(*object.getChild(i), visit);
    }
}

} // namespace

// Delegates, so that the destructor cleans up behind what throws.
CLayoutTree::CLayoutTree(const CTreeNode& tree, double scale) : CLayoutTree()
{
    CInterfaceScale::set(scale);
    require(registerCreators(kTags));
    shared_ = new CObject();
    CObject::setSharedObject(shared_);
    root_ = new CObject();
    const std::vector<std::uint8_t> payload = encodeTree(tree);
    CNodeCursor cursor(payload);
    require(root_->loadNode(cursor, true, true, false, false));
    solve();
}

CLayoutTree::~CLayoutTree()
{
    CObject::releaseObject(root_);
    CObject::setSharedObject(nullptr);
    CObject::releaseObject(shared_);
    clearCreators();
    CInterfaceScale::set(1.0);
}

std::vector<CLayoutTree::View> CLayoutTree::views() const
{
    std::vector<View> found;
    visitViews(*root_, [&](const CViewBasePlacement& view) {
        found.push_back({view.getFullName().toUtf8(), view.getViewArea().getRect()});
    });
    return found;
}

CViewBasePlacement& CLayoutTree::view(const std::string& path) const
{
    auto* view = dynamic_cast<CViewBasePlacement*>(root_->findObject(CString::fromUtf8(path)));
    if (!view) {
        throw CToolError("no view '" + path + "'");
    }
    return *view;
}

void CLayoutTree::set(const std::string& path, const std::string& attribute, const std::string& value)
{
    require(view(path).setAttribute(CString(attribute), CString::fromUtf8(value), true));
}

void CLayoutTree::solve()
{
    visitViews(*root_, [](CViewBasePlacement& view) {
        if (view.isRootView()) {
            require(view.solveLayout());
        }
    });
}

CTreeNode compileLayout(const std::filesystem::path& file)
{
    CTreeCompiler compiler;
    if (!compiler.compile(file, CTreeCompiler::Root::kAnyElement)) {
        std::string text;
        for (const CDiagnostic& diagnostic : compiler.diagnostics()) {
            text += (text.empty() ? "" : "\n") + diagnostic.text();
        }
        throw CToolError(text);
    }
    return compiler.root();
}

} // namespace qel::tools
