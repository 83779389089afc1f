// Layouts as the inspector shows them.
#include "Layout/PrintLayout.h"
#include "LayoutRig.h"
#include "TreeCompiler/ToolError.h"

#include <gtest/gtest.h>

#include <sstream>

namespace qel::tools {
namespace {

std::filesystem::path written(const test::TemporaryFolder& folder, const std::string& xml)
{
    std::ofstream(folder.path("views.xml")) << xml;
    return folder.path("views.xml");
}

TEST(PrintLayout, ShowsEachViewByItsPathInShortNumbers)
{
    const test::TemporaryFolder folder;
    // The root element may be the root view itself.
    const auto file =
        written(folder, R"(<ui:view name="root" is-root-view="1" placement="full" width="43" height="20">
        <ui:view name="a" width="43" height="7" outer-border="2"><core:object name="no-view"/></ui:view>
        <ui:view name="a" is-visible="0"/></ui:view>)");
    const std::vector<CLayoutTree::View> views = CLayoutTree(compileLayout(file), 0.8).views();
    std::ostringstream text;
    printLayoutText(views, text);
    EXPECT_EQ(text.str(), "root 0 0 34.4 16\nroot.a 2 2 34.4 5.6\nroot.a#1 0 0 0 0\n");
    std::ostringstream json;
    printLayoutJson({views[1]}, json);
    EXPECT_EQ(json.str(),
              "[\n  {\n    \"path\": \"root.a\",\n    \"x\": 2.0,\n    \"y\": 2.0,\n    \"width\": 34.4,\n"
              "    \"height\": 5.6\n  }\n]\n");
    drawLayout(views, folder.path("views.png"));
    EXPECT_GT(std::filesystem::file_size(folder.path("views.png")), 100u);
    EXPECT_THROW(drawLayout(views, folder.path("no/views.png")), CToolError);
}

TEST(PrintLayout, TellsWhereTheXmlIsWrong)
{
    const test::TemporaryFolder folder;
    try {
        compileLayout(written(folder, "<ui:view name='root'>\n  text\n</ui:view>"));
        ADD_FAILURE();
    } catch (const CToolError& error) {
        EXPECT_NE(std::string(error.what()).find("views.xml:"), std::string::npos) << error.what();
    }
}

} // namespace
} // namespace qel::tools
