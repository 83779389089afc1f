// Glyphs of one face as rasters.
#include "GraphicsCompiler/CGlyphRenderer.h"

#include "TreeCompiler/ToolError.h"

#include <ft2build.h>
#include FT_FREETYPE_H
#include FT_OUTLINE_H

#include <algorithm>
#include <cmath>

namespace qel::tools {

namespace {

constexpr double kFixed6 = 64.0;     // 26.6 fixed point: outlines, sizes
constexpr double kFixed16 = 65536.0; // 16.16 fixed point: unhinted advances
constexpr unsigned kPointsPerInch = 72;
constexpr FT_Int32 kLoadFlags = FT_LOAD_TARGET_LIGHT | FT_LOAD_NO_BITMAP;

bool isDigit(char32_t character)
{
    return character >= U'0' && character <= U'9';
}

// The interface blends bytes as they are, not light: half of a bright ink on a dark ground looks like a fifth
// of its light, and thin strokes would fade. A power of the coverage gives them back their weight.
std::uint8_t alphaOf(std::uint8_t coverage)
{
    constexpr double kPower = 1.0 / 1.3;
    return static_cast<std::uint8_t>(std::lround(255.0 * std::pow(coverage / 255.0, kPower)));
}

void require(FT_Error error, const char* what)
{
    if (error) {
        throw CToolError(std::string(what) + " failed with FreeType's error " + std::to_string(error));
    }
}

} // namespace

struct CGlyphRenderer::Face
{
    FT_Library library = nullptr;
    FT_Face face = nullptr;

    ~Face()
    {
        FT_Done_Face(face);
        FT_Done_FreeType(library);
    }
};

CGlyphRenderer::CGlyphRenderer(const std::filesystem::path& face, std::string digitSuffix)
    : face_(std::make_unique<Face>()), digitSuffix_(std::move(digitSuffix))
{
    require(FT_Init_FreeType(&face_->library), "starting FreeType");
    require(FT_New_Face(face_->library, face.c_str(), 0, &face_->face), "reading a face");
}

CGlyphRenderer::~CGlyphRenderer() = default;

unsigned CGlyphRenderer::glyphOf(char32_t character) const
{
    const unsigned plain = FT_Get_Char_Index(face_->face, character);
    if (digitSuffix_.empty() || !isDigit(character)) {
        return plain;
    }
    char name[64] = {};
    if (FT_Get_Glyph_Name(face_->face, plain, name, sizeof name)) {
        return plain;
    }
    const std::string equallyWide = name + digitSuffix_;
    const unsigned found = FT_Get_Name_Index(face_->face, equallyWide.c_str());
    return found ? found : plain;
}

bool CGlyphRenderer::has(char32_t character) const
{
    return glyphOf(character) != 0;
}

void CGlyphRenderer::setPixelSize(double pixels)
{
    const auto size = static_cast<FT_F26Dot6>(std::lround(pixels * kFixed6));
    require(FT_Set_Char_Size(face_->face, 0, size, kPointsPerInch, kPointsPerInch), "setting the size");
    digitAdvance_ = 0.0;
    for (char32_t digit = U'0'; digit <= U'9'; ++digit) {
        load(digit);
        digitAdvance_ = std::max(digitAdvance_, unroundedAdvance());
    }
}

void CGlyphRenderer::load(char32_t character)
{
    require(FT_Load_Glyph(face_->face, glyphOf(character), kLoadFlags), "loading a glyph");
}

double CGlyphRenderer::unroundedAdvance() const
{
    return static_cast<double>(face_->face->glyph->linearHoriAdvance) / kFixed16;
}

CImageVariant CGlyphRenderer::render(char32_t character)
{
    load(character);
    const FT_GlyphSlot glyph = face_->face->glyph;
    const double natural = unroundedAdvance();
    CImageVariant variant;
    variant.advance = isDigit(character) ? digitAdvance_ : natural;
    const double shift = (variant.advance - natural) / 2;
    FT_Outline_Translate(&glyph->outline, std::lround(shift * kFixed6), 0);
    require(FT_Render_Glyph(glyph, FT_RENDER_MODE_NORMAL), "rendering a glyph");
    const FT_Bitmap& bitmap = glyph->bitmap;
    variant.originX = glyph->bitmap_left;
    variant.originY = -glyph->bitmap_top;
    variant.raster = CRaster(static_cast<int>(bitmap.width), static_cast<int>(bitmap.rows), 1);
    for (int y = 0; y < variant.raster.height; ++y) {
        std::transform(bitmap.buffer + y * bitmap.pitch, bitmap.buffer + y * bitmap.pitch + bitmap.width,
                       variant.raster.at(0, y), alphaOf);
    }
    return variant;
}

} // namespace qel::tools
