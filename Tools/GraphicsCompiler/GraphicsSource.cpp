// From one source of graphics to what its file holds.
#include "GraphicsCompiler/GraphicsSource.h"

#include "GraphicsCompiler/BrushSource.h"
#include "GraphicsCompiler/FontSource.h"
#include "GraphicsCompiler/ImageSetSource.h"
#include "GraphicsCompiler/PaletteSource.h"

#include <algorithm>
#include <string_view>

namespace qel::tools {

namespace {

struct SourceKind
{
    std::string_view rootElement;
    CGraphicsFile (*compile)(CXmlSource& source, std::vector<std::filesystem::path>& files);
};

template <auto compile>
CGraphicsFile compileKind(CXmlSource& source, std::vector<std::filesystem::path>& files)
{
    return compile(source, files);
}

constexpr SourceKind kKinds[] = {
    {"brush-set", compileKind<compileBrushSet>},
    {"font", compileKind<compileFont>},
    {"image-set", compileKind<compileImageSet>},
    {"palette", compileKind<compilePalette>},
};

} // namespace

CGraphicsSource compileGraphics(const std::filesystem::path& path)
{
    CGraphicsSource result;
    result.files.push_back(path);
    CXmlSource source(path, path.string(), result.diagnostics);
    if (!source.isGood()) {
        return result;
    }
    const pugi::xml_node root = source.document().first_child();
    const auto kind = std::ranges::find(kKinds, root.name(), &SourceKind::rootElement);
    if (kind == std::end(kKinds)) {
        source.report(root, "the root element is none of <brush-set>, <font>, <image-set> and <palette>");
        return result;
    }
    result.result = kind->compile(source, result.files);
    return result;
}

} // namespace qel::tools
