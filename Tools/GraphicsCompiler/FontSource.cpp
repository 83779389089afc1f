// Fonts, from an installed face.
#include "GraphicsCompiler/FontSource.h"

#include "GraphicsCompiler/CGlyphRenderer.h"
#include "GraphicsCompiler/CSourceElement.h"
#include "GraphicsCompiler/RasterCode.h"
#include "TreeCompiler/ToolError.h"
#include "TreeCompiler/TreeText.h"

#include <algorithm>
#include <cmath>
#include <set>

namespace qel::tools {

namespace {

namespace fs = std::filesystem;

constexpr const char* kFontFolders[] = {"/usr/local/share/fonts", "/usr/share/fonts"};

// Empty if there is none.
fs::path findFace(const std::string& name)
{
    for (const char* folder : kFontFolders) {
        std::error_code error;
        for (const auto& entry : fs::recursive_directory_iterator(folder, error)) {
            if (entry.path().filename() == name) {
                return entry.path();
            }
        }
    }
    return {};
}

void addCharacter(CSourceElement& element, std::set<char32_t>& characters, char32_t character)
{
    if (!characters.insert(character).second) {
        element.report("character " + std::to_string(static_cast<std::uint32_t>(character)) +
                       " stands there twice");
    }
}

void readCharacters(CSourceElement element, std::set<char32_t>& characters)
{
    if (element.name() == "range") {
        const std::uint32_t first = element.count("first", 32, 0x10FFFF);
        const std::uint32_t last = element.count("last", first, 0x10FFFF);
        for (char32_t character = first; character <= last; ++character) {
            addCharacter(element, characters, character);
        }
    } else if (element.name() == "list") {
        const std::string text = element.text("text");
        for (std::size_t at = 0; at < text.size();) {
            addCharacter(element, characters, nextCodePoint(text, at).value_or(U' '));
        }
    } else {
        element.report("<characters> holds no <" + element.name() + ">");
        return;
    }
    element.close();
}

std::set<char32_t> readCharacterFile(CSourceElement& font, CXmlSource& source, std::vector<fs::path>& files)
{
    std::set<char32_t> characters;
    const std::string name = font.text("characters");
    const fs::path path = source.path().parent_path() / name;
    if (name.empty() || !fs::is_regular_file(path)) {
        font.report("characters", "there is no file '" + name + "'");
        return characters;
    }
    files.push_back(path);
    CXmlSource file(path, (fs::path(source.shownName()).parent_path() / name).string(), source.diagnostics());
    if (auto root = rootElement(file, "characters")) {
        for (CSourceElement& element : root->children()) {
            readCharacters(element, characters);
        }
    }
    return characters;
}

// Between small letters on whole pixels a narrower blank gets lost.
constexpr double kLeastBlankPx = 3.0;

CImageVariant renderVariant(CGlyphRenderer& renderer, char32_t character, double scale, double tracking)
{
    CImageVariant variant = renderer.render(character);
    variant.scale = scale;
    variant.advance = std::max(character == U' ' ? kLeastBlankPx : 0.0, variant.advance + tracking * scale);
    trimMargins(variant);
    variant.width = static_cast<int>(std::ceil(variant.advance));
    variant.height = variant.raster.height;
    return variant;
}

} // namespace

CFontFile compileFont(CXmlSource& source, std::vector<fs::path>& files)
{
    CFontFile result;
    auto root = rootElement(source, "font");
    if (!root) {
        return result;
    }
    const std::string face = root->text("face");
    const double size = root->number("size", 4.0, 200.0);
    const std::string digits = root->text("digits", "");
    const double tracking = root->number("tracking", -10.0, 10.0, 0.0);
    result.lineHeight = root->count("line-height", 1, 1000);
    result.ascentGap = root->count("ascent-gap", 0, 1000);
    result.descentGap = root->count("descent-gap", 0, 1000);
    const std::set<char32_t> characters = readCharacterFile(*root, source, files);
    root->close();
    const fs::path facePath = findFace(face);
    if (facePath.empty()) {
        root->report("face", "the face '" + face + "' is not installed");
        return result;
    }
    files.push_back(facePath);
    CGlyphRenderer renderer(facePath, digits);
    for (const char32_t character : characters) {
        if (!renderer.has(character)) {
            root->report("face", "the face '" + face + "' has no character " +
                                     std::to_string(static_cast<std::uint32_t>(character)));
            return result;
        }
        result.glyphs.images.push_back({character, {{0, 1, {}}}});
    }
    for (const double scale : kGraphicsScales) {
        renderer.setPixelSize(size * scale);
        for (CImage& glyph : result.glyphs.images) {
            glyph.layers[0].variants.push_back(renderVariant(renderer, glyph.id, scale, tracking));
        }
    }
    return result;
}

} // namespace qel::tools
