// What the four kinds of graphics files hold: image sets, fonts, brush sets and palettes.
#include "GraphicsCompiler/GraphicsFile.h"

#include "GraphicsCompiler/ByteStreams.h"
#include "GraphicsCompiler/RasterCode.h"

#include <algorithm>
#include <cmath>
#include <filesystem>
#include <fstream>
#include <iterator>

namespace qel::tools {

namespace {

constexpr std::uint32_t kVersion = 1;
// Far beyond any image, and no more memory than a damaged file may cost.
constexpr int kLargestVariant = 4096;

// --- image sets

void put(CByteWriter& writer, const CImageVariant& variant)
{
    writer.putI32(variant.width);
    writer.putI32(variant.height);
    writer.putF64(variant.advance);
    writer.putI32(variant.originX);
    writer.putI32(variant.originY);
    writer.putI32(variant.raster.width);
    writer.putI32(variant.raster.height);
    const auto blob = encodeRaster(variant.raster);
    writer.putU32(static_cast<std::uint32_t>(blob.size()));
    writer.put(blob);
}

void put(CByteWriter& writer, const CImageLayer& layer)
{
    writer.putU32(layer.slot);
    writer.putU32(layer.bytesPerPixel);
    writer.putU32(static_cast<std::uint32_t>(layer.variants.size()));
    for (const CImageVariant& variant : layer.variants) {
        writer.putF64(variant.scale);
    }
    for (const CImageVariant& variant : layer.variants) {
        put(writer, variant);
    }
}

void put(CByteWriter& writer, const CImageSetFile& file)
{
    writer.putU32(kVersion);
    writer.putU32(static_cast<std::uint32_t>(file.ranges.size()));
    for (const CImageRange& range : file.ranges) {
        writer.putString(range.name);
        writer.putU32(range.first);
        writer.putU32(range.last);
    }
    writer.putU32(static_cast<std::uint32_t>(file.images.size()));
    for (const CImage& image : file.images) {
        writer.putU32(image.id);
        writer.putU32(static_cast<std::uint32_t>(image.layers.size()));
        for (const CImageLayer& layer : image.layers) {
            put(writer, layer);
        }
    }
}

int getSide(CByteReader& reader)
{
    const std::int32_t side = reader.getI32();
    if (side < 0 || side > kLargestVariant) {
        reader.fail("a side of " + std::to_string(side) + " pixels");
    }
    return side;
}

double getScale(CByteReader& reader)
{
    const double scale = reader.getF64();
    if (!(scale > 0.0 && scale < 1000.0)) {
        reader.fail("a scale that is no scale");
    }
    return scale;
}

void get(CByteReader& reader, CImageVariant& variant, std::uint32_t bytesPerPixel)
{
    variant.width = getSide(reader);
    variant.height = getSide(reader);
    variant.advance = reader.getF64();
    if (!std::isfinite(variant.advance)) {
        reader.fail("an advance that is no number");
    }
    variant.originX = reader.getI32();
    variant.originY = reader.getI32();
    const int width = getSide(reader);
    const int height = getSide(reader);
    const auto blob = reader.get(reader.getU32());
    const std::size_t start = reader.position() - blob.size();
    try {
        variant.raster = decodeRaster(blob, width, height, static_cast<int>(bytesPerPixel));
    } catch (const CToolError& error) {
        throw CToolError("raster at offset " + std::to_string(start) + ", " + error.what());
    }
}

void get(CByteReader& reader, CImageLayer& layer)
{
    layer.slot = reader.getU32();
    layer.bytesPerPixel = reader.getU32();
    if (layer.bytesPerPixel != 1 && layer.bytesPerPixel != 2 && layer.bytesPerPixel != 4) {
        reader.fail(std::to_string(layer.bytesPerPixel) + " bytes per pixel");
    }
    layer.variants.resize(reader.getCount(8 + 36));
    for (CImageVariant& variant : layer.variants) {
        variant.scale = getScale(reader);
    }
    for (CImageVariant& variant : layer.variants) {
        get(reader, variant, layer.bytesPerPixel);
    }
}

void getVersion(CByteReader& reader)
{
    const std::uint32_t version = reader.getU32();
    if (version != kVersion) {
        reader.fail("version " + std::to_string(version) + " is unknown");
    }
}

void get(CByteReader& reader, CImageSetFile& file)
{
    getVersion(reader);
    file.ranges.resize(reader.getCount(12));
    for (CImageRange& range : file.ranges) {
        range.name = reader.getString();
        range.first = reader.getU32();
        range.last = reader.getU32();
    }
    file.images.resize(reader.getCount(8));
    for (CImage& image : file.images) {
        image.id = reader.getU32();
        image.layers.resize(reader.getCount(12));
        for (CImageLayer& layer : image.layers) {
            get(reader, layer);
        }
    }
}

// --- fonts

void put(CByteWriter& writer, const CFontFile& file)
{
    writer.putU32(kVersion);
    put(writer, file.glyphs);
    writer.putU32(file.lineHeight);
    writer.putU32(file.ascentGap);
    writer.putU32(file.descentGap);
}

void get(CByteReader& reader, CFontFile& file)
{
    getVersion(reader);
    get(reader, file.glyphs);
    file.lineHeight = reader.getU32();
    file.ascentGap = reader.getU32();
    file.descentGap = reader.getU32();
}

// --- brushes

void put(CByteWriter& writer, const CBrushSetFile& file)
{
    writer.putU32(kVersion);
    writer.putU32(static_cast<std::uint32_t>(file.brushes.size()));
    for (const CBrush& brush : file.brushes) {
        writer.putF64(brush.width);
        writer.putU32(brush.oversampling);
        writer.putU32(static_cast<std::uint32_t>(brush.variants.size()));
        for (const CBrushVariant& variant : brush.variants) {
            writer.putF64(variant.scale);
        }
        for (const CBrushVariant& variant : brush.variants) {
            writer.putU32(variant.size);
            writer.putF64(variant.radius);
            writer.putU32(static_cast<std::uint32_t>(variant.table.size()));
            writer.put(variant.table);
        }
    }
}

void get(CByteReader& reader, CBrushVariant& variant, std::uint32_t oversampling)
{
    variant.size = reader.getU32();
    variant.radius = reader.getF64();
    const auto table = reader.get(reader.getU32());
    const std::uint64_t stamps = std::uint64_t{1} << (2 * oversampling);
    if (variant.size > static_cast<std::uint32_t>(kLargestVariant) ||
        table.size() != std::uint64_t{variant.size} * variant.size * stamps) {
        reader.fail("a table of " + std::to_string(table.size()) + " bytes for stamps of size " +
                    std::to_string(variant.size));
    }
    variant.table.assign(table.begin(), table.end());
}

void get(CByteReader& reader, CBrushSetFile& file)
{
    getVersion(reader);
    file.brushes.resize(reader.getCount(16));
    for (CBrush& brush : file.brushes) {
        brush.width = reader.getF64();
        brush.oversampling = reader.getU32();
        if (brush.oversampling > 8) {
            reader.fail("an oversampling of " + std::to_string(brush.oversampling) + " bits");
        }
        brush.variants.resize(reader.getCount(8 + 16));
        for (CBrushVariant& variant : brush.variants) {
            variant.scale = getScale(reader);
        }
        for (CBrushVariant& variant : brush.variants) {
            get(reader, variant, brush.oversampling);
        }
    }
}

// --- palettes

void put(CByteWriter& writer, const CPaletteFile& file)
{
    writer.putU32(kVersion);
    writer.putI32(static_cast<std::int32_t>(file.colours.size()));
    for (const CPaletteColour& colour : file.colours) {
        writer.putString(colour.name);
        writer.putF64(colour.opacity);
        writer.put(colour.red);
        writer.put(colour.green);
        writer.put(colour.blue);
    }
    writer.putU32(static_cast<std::uint32_t>(file.frameTables.size()));
    for (const CFrameTable& table : file.frameTables) {
        writer.putString(table.name);
        writer.putU32(table.frames);
    }
}

void get(CByteReader& reader, CPaletteFile& file)
{
    getVersion(reader);
    file.colours.resize(reader.getCount(4 + 8 + 3 * 256));
    for (CPaletteColour& colour : file.colours) {
        colour.name = reader.getString();
        colour.opacity = reader.getF64();
        if (!(colour.opacity >= 0.0 && colour.opacity <= 1.0)) {
            reader.fail("an opacity outside 0 to 1");
        }
        for (CPaletteColour::Table* table : {&colour.red, &colour.green, &colour.blue}) {
            std::ranges::copy(reader.get(table->size()), table->begin());
        }
    }
    file.frameTables.resize(reader.getCount(8));
    for (CFrameTable& table : file.frameTables) {
        table.name = reader.getString();
        table.frames = reader.getU32();
    }
}

std::string suffixOf(std::string_view path)
{
    return std::filesystem::path(path).extension().string();
}

// False if the suffix is none of ours.
bool makeEmpty(CGraphicsFile& file, std::string_view suffix)
{
    if (suffix == ".is") {
        file = CImageSetFile();
    } else if (suffix == ".fnt") {
        file = CFontFile();
    } else if (suffix == ".bs") {
        file = CBrushSetFile();
    } else if (suffix == ".pal") {
        file = CPaletteFile();
    } else {
        return false;
    }
    return true;
}

} // namespace

CRaster::CRaster(int rasterWidth, int rasterHeight, int rasterBytesPerPixel)
    : width(rasterWidth), height(rasterHeight), bytesPerPixel(rasterBytesPerPixel),
      pixels(static_cast<std::size_t>(rasterWidth) * static_cast<std::size_t>(rasterHeight) *
             static_cast<std::size_t>(rasterBytesPerPixel))
{}

const CPaletteColour* CPaletteFile::find(std::string_view name) const
{
    const auto colour = std::ranges::find(colours, name, &CPaletteColour::name);
    return colour == colours.end() ? nullptr : &*colour;
}

std::vector<std::uint8_t> encodeGraphics(const CGraphicsFile& file)
{
    CByteWriter writer;
    std::visit([&](const auto& content) { put(writer, content); }, file);
    return writer.take();
}

bool isGraphicsPath(std::string_view path)
{
    CGraphicsFile file;
    return makeEmpty(file, suffixOf(path));
}

CGraphicsFile decodeGraphics(std::span<const std::uint8_t> bytes, const std::string& path)
{
    CGraphicsFile file;
    if (!makeEmpty(file, suffixOf(path))) {
        throw CToolError(path + ": the suffix is none of .is, .fnt, .bs and .pal");
    }
    try {
        CByteReader reader(bytes);
        std::visit([&](auto& content) { get(reader, content); }, file);
        if (reader.remaining() != 0) {
            reader.fail(std::to_string(reader.remaining()) + " bytes too many");
        }
    } catch (const CToolError& error) {
        throw CToolError(path + ": " + error.what());
    }
    return file;
}

CGraphicsFile readGraphicsFile(const std::string& path)
{
    std::ifstream stream(path, std::ios::binary);
    if (!stream || std::filesystem::is_directory(path)) {
        throw CToolError("cannot read '" + path + "'");
    }
    const std::vector<char> bytes(std::istreambuf_iterator<char>(stream), {});
    return decodeGraphics({reinterpret_cast<const std::uint8_t*>(bytes.data()), bytes.size()}, path);
}

void writeGraphicsFile(const CGraphicsFile& file, const std::string& path)
{
    const auto bytes = encodeGraphics(file);
    const std::string temporary = path + ".new";
    std::ofstream stream(temporary, std::ios::binary);
    stream.write(reinterpret_cast<const char*>(bytes.data()), static_cast<std::streamsize>(bytes.size()));
    stream.close();
    std::error_code error;
    if (stream) {
        std::filesystem::rename(temporary, path, error);
    }
    if (!stream || error) {
        throw CToolError("cannot write '" + path + "'");
    }
}

} // namespace qel::tools
