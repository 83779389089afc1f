// Graphics files as readable text.
#include "GraphicsCompiler/GraphicsPrinter.h"

#include "GraphicsCompiler/RasterCode.h"

#include <ostream>

namespace qel::tools {

namespace {

std::string hexText(std::span<const std::uint8_t> bytes)
{
    constexpr char kDigits[] = "0123456789abcdef";
    std::string text;
    for (const std::uint8_t byte : bytes) {
        text += kDigits[byte >> 4];
        text += kDigits[byte & 15];
    }
    return text;
}

std::string escaped(std::string_view text)
{
    std::string result;
    for (const char c : text) {
        const auto byte = static_cast<unsigned char>(c);
        if (c == '&' || c == '<' || c == '"' || byte < 0x20 || byte > 0x7E) {
            result += "&#" + std::to_string(byte) + ";";
        } else {
            result += c;
        }
    }
    return result;
}

class CPrinter
{
public:
    CPrinter(GraphicsDetail detail, std::ostream& out) : isAll_(detail == GraphicsDetail::kAll), out_(out) {}

    void operator()(const CImageSetFile& file)
    {
        out_ << "<image-set images=\"" << file.images.size() << "\">\n";
        printImages(file, "  ");
        out_ << "</image-set>\n";
    }

    void operator()(const CFontFile& file)
    {
        out_ << "<font glyphs=\"" << file.glyphs.images.size() << "\" line-height=\"" << file.lineHeight
             << "\" ascent-gap=\"" << file.ascentGap << "\" descent-gap=\"" << file.descentGap << "\">\n";
        printImages(file.glyphs, "  ");
        out_ << "</font>\n";
    }

    void operator()(const CBrushSetFile& file)
    {
        out_ << "<brush-set brushes=\"" << file.brushes.size() << "\">\n";
        for (const CBrush& brush : file.brushes) {
            out_ << "  <brush width=\"" << brush.width << "\" oversampling=\"" << brush.oversampling
                 << "\">\n";
            for (const CBrushVariant& variant : brush.variants) {
                out_ << "    <variant scale=\"" << variant.scale << "\" size=\"" << variant.size
                     << "\" radius=\"" << variant.radius << "\" bytes=\"" << variant.table.size() << "\"";
                const std::size_t stamp = std::size_t{variant.size} * variant.size;
                printBlock(variant.table, stamp, "      ", "variant", "    ");
            }
            out_ << "  </brush>\n";
        }
        out_ << "</brush-set>\n";
    }

    void operator()(const CPaletteFile& file)
    {
        out_ << "<palette colours=\"" << file.colours.size() << "\">\n";
        for (const CPaletteColour& colour : file.colours) {
            print(colour);
        }
        for (const CFrameTable& table : file.frameTables) {
            out_ << "  <frames name=\"" << escaped(table.name) << "\" count=\"" << table.frames << "\"/>\n";
        }
        out_ << "</palette>\n";
    }

private:
    void print(const CPaletteColour& colour)
    {
        out_ << "  <colour name=\"" << escaped(colour.name) << "\" opacity=\"" << colour.opacity << "\"";
        if (isAll_) {
            out_ << " red=\"" << hexText(colour.red) << "\" green=\"" << hexText(colour.green) << "\" blue=\""
                 << hexText(colour.blue) << "\"";
        } else {
            for (const std::size_t value : {std::size_t{0}, std::size_t{128}, std::size_t{255}}) {
                const std::uint8_t bytes[] = {colour.red[value], colour.green[value], colour.blue[value]};
                out_ << " at-" << value << "=\"#" << hexText(bytes) << "\"";
            }
        }
        out_ << "/>\n";
    }

    void printImages(const CImageSetFile& file, const std::string& indent)
    {
        for (const CImageRange& range : file.ranges) {
            out_ << indent << "<range name=\"" << escaped(range.name) << "\" first=\"" << range.first
                 << "\" last=\"" << range.last << "\"/>\n";
        }
        for (const CImage& image : file.images) {
            out_ << indent << "<image id=\"" << image.id << "\">\n";
            for (const CImageLayer& layer : image.layers) {
                out_ << indent << "  <layer slot=\"" << layer.slot << "\" bytes-per-pixel=\""
                     << layer.bytesPerPixel << "\">\n";
                for (const CImageVariant& variant : layer.variants) {
                    print(variant, indent + "    ");
                }
                out_ << indent << "  </layer>\n";
            }
            out_ << indent << "</image>\n";
        }
    }

    void print(const CImageVariant& variant, const std::string& indent)
    {
        const CRaster& raster = variant.raster;
        out_ << indent << "<variant scale=\"" << variant.scale << "\" width=\"" << variant.width
             << "\" height=\"" << variant.height << "\" advance=\"" << variant.advance << "\" origin-x=\""
             << variant.originX << "\" origin-y=\"" << variant.originY << "\" raster-width=\"" << raster.width
             << "\" raster-height=\"" << raster.height << "\" bytes=\"" << encodeRaster(raster).size()
             << "\"";
        const auto row = static_cast<std::size_t>(raster.width * raster.bytesPerPixel);
        printBlock(raster.pixels, row, indent + "  ", "variant", indent);
    }

    // Ends an open tag, with the bytes in lines inside if all is wanted.
    void printBlock(std::span<const std::uint8_t> bytes, std::size_t line, const std::string& indent,
                    const char* element, const std::string& outerIndent)
    {
        if (!isAll_ || bytes.empty()) {
            out_ << "/>\n";
            return;
        }
        out_ << ">\n";
        for (std::size_t at = 0; at < bytes.size(); at += line) {
            out_ << indent << hexText(bytes.subspan(at, line)) << '\n';
        }
        out_ << outerIndent << "</" << element << ">\n";
    }

    bool isAll_;
    std::ostream& out_;
};

} // namespace

void printGraphics(const CGraphicsFile& file, GraphicsDetail detail, std::ostream& out)
{
    std::visit(CPrinter(detail, out), file);
}

} // namespace qel::tools
