// What the four kinds of graphics files hold: image sets, fonts, brush sets and palettes.
#pragma once

#include <array>
#include <cstdint>
#include <span>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

namespace qel::tools {

// The scales for which every image, glyph and brush is kept.
inline constexpr double kGraphicsScales[] = {0.8, 1.0, 1.25};

// An unpacked picture: rows from the top, without padding, pixels[(y * width + x) * bytesPerPixel]. A pixel
// is
//   1 byte   alpha
//   2 bytes  value, alpha; the value indexes a colour's three tables, and is not premultiplied
//   4 bytes  blue, green, red, alpha; not premultiplied
struct CRaster
{
    int width = 0;
    int height = 0;
    int bytesPerPixel = 2;
    std::vector<std::uint8_t> pixels;

    CRaster() = default;
    // All zero, that is, transparent.
    CRaster(int rasterWidth, int rasterHeight, int rasterBytesPerPixel);

    std::uint8_t* at(int x, int y) { return pixels.data() + offset(x, y); }
    const std::uint8_t* at(int x, int y) const { return pixels.data() + offset(x, y); }
    std::uint8_t alphaAt(int x, int y) const { return at(x, y)[bytesPerPixel - 1]; }

    bool operator==(const CRaster&) const = default;

private:
    std::size_t offset(int x, int y) const
    {
        return (static_cast<std::size_t>(y) * static_cast<std::size_t>(width) + static_cast<std::size_t>(x)) *
               static_cast<std::size_t>(bytesPerPixel);
    }
};

// A layer at one scale, in pixels of that scale. The raster's top left corner lies at (originX, originY) from
// the image's logical corner: negative where a shadow lies around the image. In a font, from the pen on the
// baseline (so that originY of most glyphs is negative).
struct CImageVariant
{
    double scale = 1.0;
    int width = 0;
    int height = 0;
    double advance = 0.0; // of a glyph: pen step, pixels of this scale; 0 in image sets
    int originX = 0;
    int originY = 0;
    CRaster raster;

    bool operator==(const CImageVariant&) const = default;
};

struct CImageLayer
{
    std::uint32_t slot = 0; // the view's colour slot that paints it
    std::uint32_t bytesPerPixel = 2;
    std::vector<CImageVariant> variants;

    bool operator==(const CImageLayer&) const = default;
};

struct CImage
{
    std::uint32_t id = 0;
    std::vector<CImageLayer> layers;

    bool operator==(const CImage&) const = default;
};

// A run of image ids, both ends included.
struct CImageRange
{
    std::string name;
    std::uint32_t first = 0;
    std::uint32_t last = 0;

    bool operator==(const CImageRange&) const = default;
};

struct CImageSetFile
{
    std::vector<CImageRange> ranges;
    std::vector<CImage> images;

    bool operator==(const CImageSetFile&) const = default;
};

// One image a character, id = code point, one layer of one byte per pixel. Heights in pixels at scale 1.0.
struct CFontFile
{
    CImageSetFile glyphs;
    std::uint32_t lineHeight = 0;
    std::uint32_t ascentGap = 0;
    std::uint32_t descentGap = 0;

    bool operator==(const CFontFile&) const = default;
};

// size x size coverage bytes for each of 2^oversampling x 2^oversampling fractional pen positions.
struct CBrushVariant
{
    double scale = 1.0;
    std::uint32_t size = 0;
    double radius = 0.0;
    std::vector<std::uint8_t> table;

    bool operator==(const CBrushVariant&) const = default;
};

struct CBrush
{
    double width = 0.0;
    std::uint32_t oversampling = 4;
    std::vector<CBrushVariant> variants;

    bool operator==(const CBrush&) const = default;
};

struct CBrushSetFile
{
    std::vector<CBrush> brushes;

    bool operator==(const CBrushSetFile&) const = default;
};

// Tables from an image's value to a channel; entry 255 is the colour itself for glyphs and fills.
struct CPaletteColour
{
    using Table = std::array<std::uint8_t, 256>;

    std::string name;
    double opacity = 1.0;
    Table red = {};
    Table green = {};
    Table blue = {};

    bool operator==(const CPaletteColour&) const = default;
};

// An animated colour: its pictures are the colours "name|0" to "name|frames - 1".
struct CFrameTable
{
    std::string name;
    std::uint32_t frames = 0;

    bool operator==(const CFrameTable&) const = default;
};

struct CPaletteFile
{
    std::vector<CPaletteColour> colours;
    std::vector<CFrameTable> frameTables;

    // Null if there is none of this name.
    const CPaletteColour* find(std::string_view name) const;

    bool operator==(const CPaletteFile&) const = default;
};

using CGraphicsFile = std::variant<CImageSetFile, CFontFile, CBrushSetFile, CPaletteFile>;

// The bytes of a file. Pixels are coded as encodeRaster (RasterCode.h) tells.
std::vector<std::uint8_t> encodeGraphics(const CGraphicsFile& file);

// What a file's suffix says: ".is", ".fnt", ".bs" or ".pal".
bool isGraphicsPath(std::string_view path);
// The reverse of encodeGraphics. The kind is told by the suffix of `path`, which also stands in front of the
// messages. Throws CToolError, with the offset, for anything that a reader could stumble over: data that end
// early or late, runs that do not fill their row, sizes that do not fit one another.
CGraphicsFile decodeGraphics(std::span<const std::uint8_t> bytes, const std::string& path);

CGraphicsFile readGraphicsFile(const std::string& path);
// Replaces a file only once the new one is complete.
void writeGraphicsFile(const CGraphicsFile& file, const std::string& path);

} // namespace qel::tools
