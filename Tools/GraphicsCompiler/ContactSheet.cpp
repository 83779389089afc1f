// Contact sheets: everything a graphics file holds, on one picture.
#include "GraphicsCompiler/ContactSheet.h"

#include "GraphicsCompiler/CSheetCanvas.h"
#include "TreeCompiler/ToolError.h"

#include <algorithm>
#include <cmath>
#include <filesystem>
#include <map>

namespace qel::tools {

namespace {

using Rgb = CSheetCanvas::Rgb;

constexpr int kWidth = 1200;
constexpr int kMargin = 12;
constexpr int kLabelHeight = 14;
constexpr int kLetterWidth = 7;
constexpr Rgb kInk{200, 204, 210};
constexpr Rgb kHeading{255, 255, 255};
// What an image is read against when there is no palette.
constexpr Rgb kPaper{0x1C, 0x1F, 0x23};

constexpr const char* kSampleWords[] = {
    "Freq  Punch Gain  Drive  Hi Pass  Lo Pass  Dry Mix  Out Gain  Comp  LF Output Mix  Monitor",
    "97.4 Hz  +5.0 dB  -300.0 dB  +16.4 dB  1.00 kHz  0 %  11.1  47.8  0.0 dB",
    "Presets  A  B  Reset  Routing  Settings  Copy to  Solo  IN1, IN2  Information and Settings",
    "Drive: how hard the low band is pushed into the saturator. Ctrl-click resets.",
    "\xC3\x84pfel \xC3\x9C"
    "bung gro\xC3\x9F \xC3\xA7"
    "a va na\xC3\xAFve \xC5\x92uvre \xCE\xA9 \xCE\xBC \xCF\x86 \xC2\xB1 \xC2\xB0",
};

template <typename Variants>
const auto& nearest(const Variants& variants, double scale)
{
    if (variants.empty()) {
        throw CToolError("an image without any variant");
    }
    return *std::ranges::min_element(variants, {},
                                     [&](const auto& variant) { return std::abs(variant.scale - scale); });
}

CPaletteColour plainColour(Rgb rgb)
{
    CPaletteColour colour;
    for (std::size_t value = 0; value < 256; ++value) {
        colour.red[value] = static_cast<std::uint8_t>(rgb.red * value / 255);
        colour.green[value] = static_cast<std::uint8_t>(rgb.green * value / 255);
        colour.blue[value] = static_cast<std::uint8_t>(rgb.blue * value / 255);
    }
    return colour;
}

Rgb entry(const CPaletteColour& colour, std::size_t value)
{
    return {colour.red[value], colour.green[value], colour.blue[value]};
}

// Draws from the top down and remembers how far it got. It runs twice: once to learn the height.
class CSheet
{
public:
    CSheet(const CSheetOptions& options, int height)
        : options_(options), canvas_(kWidth, height, paper(options))
    {}

    int height() const { return y_ + kMargin; }
    void save(const std::string& path) const { canvas_.save(path); }

    void operator()(const CImageSetFile& file);
    void operator()(const CFontFile& file);
    void operator()(const CBrushSetFile& file);
    void operator()(const CPaletteFile& file);

private:
    struct Box
    {
        int left = 0;
        int top = 0;
        int right = 0;
        int bottom = 0;
    };

    static Rgb paper(const CSheetOptions& options)
    {
        const CPaletteColour* panel = options.palette ? options.palette->find("Panel") : nullptr;
        return panel ? entry(*panel, 156) : kPaper;
    }

    CPaletteColour colourOf(std::uint32_t slot) const;
    Box boxOf(const CImage& image) const;
    void heading(const std::string& text);
    // Moves to the next place of a row of cells; returns its left edge.
    int nextCell(int width, int height);
    void endRow();
    void drawRange(const CImageSetFile& file, const CImageRange& range);
    void drawImage(const CImage& image, const std::string& name);
    void drawText(const CFontFile& file, const std::string& utf8, const CPaletteColour& colour);

    const CSheetOptions& options_;
    CSheetCanvas canvas_;
    int x_ = kMargin;
    int y_ = kMargin;
    int rowHeight_ = 0;
};

CPaletteColour CSheet::colourOf(std::uint32_t slot) const
{
    if (!options_.palette || options_.colours.empty()) {
        return plainColour(kHeading);
    }
    const std::string& base = options_.colours[std::min<std::size_t>(slot, options_.colours.size() - 1)];
    const std::string state = options_.state.empty() ? "" : "_" + options_.state;
    for (const std::string& name : {base + state, base + state + "|0", base, base + "|0"}) {
        if (const CPaletteColour* colour = options_.palette->find(name)) {
            return *colour;
        }
    }
    throw CToolError("the palette has no colour '" + base + "'");
}

void CSheet::heading(const std::string& text)
{
    endRow();
    y_ += kLabelHeight;
    canvas_.label(kMargin, y_, text, kHeading);
    y_ += kMargin / 2;
}

int CSheet::nextCell(int width, int height)
{
    if (x_ + width > kWidth - kMargin) {
        endRow();
    }
    const int left = x_;
    x_ += width + kMargin;
    rowHeight_ = std::max(rowHeight_, height);
    return left;
}

void CSheet::endRow()
{
    if (rowHeight_ > 0) {
        y_ += rowHeight_ + kMargin;
    }
    x_ = kMargin;
    rowHeight_ = 0;
}

CSheet::Box CSheet::boxOf(const CImage& image) const
{
    Box box;
    for (const CImageLayer& layer : image.layers) {
        const CImageVariant& variant = nearest(layer.variants, options_.scale);
        box.left = std::min(box.left, variant.originX);
        box.top = std::min(box.top, variant.originY);
        box.right = std::max({box.right, variant.width, variant.originX + variant.raster.width});
        box.bottom = std::max({box.bottom, variant.height, variant.originY + variant.raster.height});
    }
    return box;
}

void CSheet::drawImage(const CImage& image, const std::string& name)
{
    const Box box = boxOf(image);
    const int zoom = options_.zoom;
    const int labelWidth = kLetterWidth * static_cast<int>(name.size());
    const int width = std::max((box.right - box.left) * zoom, labelWidth);
    const int height = (box.bottom - box.top) * zoom;
    const int left = nextCell(width, height + kLabelHeight);
    for (const CImageLayer& layer : image.layers) {
        canvas_.draw(nearest(layer.variants, options_.scale), colourOf(layer.slot), left - box.left * zoom,
                     y_ - box.top * zoom, zoom);
    }
    canvas_.label(left, y_ + height + kLabelHeight - 3, name, kInk);
}

void CSheet::drawRange(const CImageSetFile& file, const CImageRange& range)
{
    std::vector<const CImage*> images;
    for (const CImage& image : file.images) {
        if (image.id >= range.first && image.id <= range.last) {
            images.push_back(&image);
        }
    }
    // Single ones stand in one row, with the range's name.
    if (images.size() == 1) {
        drawImage(*images[0], range.name + ":" + std::to_string(images[0]->id));
        return;
    }
    heading("\"" + range.name + "\"  " + std::to_string(range.first) + " to " + std::to_string(range.last));
    for (const CImage* image : images) {
        drawImage(*image, std::to_string(image->id));
    }
    endRow();
}

void CSheet::operator()(const CImageSetFile& file)
{
    for (const CImageRange& range : file.ranges) {
        drawRange(file, range);
    }
    const auto isInRange = [&](const CImage& image) {
        return std::ranges::any_of(file.ranges, [&](const CImageRange& range) {
            return image.id >= range.first && image.id <= range.last;
        });
    };
    endRow();
    for (const CImage& image : file.images) {
        if (!isInRange(image)) {
            drawImage(image, std::to_string(image.id));
        }
    }
    endRow();
}

void CSheet::drawText(const CFontFile& file, const std::string& utf8, const CPaletteColour& colour)
{
    double pen = kMargin;
    for (std::size_t at = 0; at < utf8.size(); ++at) {
        auto code = static_cast<unsigned char>(utf8[at]) + 0u;
        if (code >= 0xC0 && at + 1 < utf8.size()) { // two bytes reach beyond all characters of our fonts
            ++at;
            code = (code & 0x1F) << 6 | (static_cast<unsigned char>(utf8[at]) & 0x3Fu);
        }
        const auto glyph = std::ranges::find(file.glyphs.images, code, &CImage::id);
        if (glyph == file.glyphs.images.end() || glyph->layers.empty()) {
            continue;
        }
        const CImageVariant& variant = nearest(glyph->layers[0].variants, options_.scale);
        canvas_.draw(variant, colour, static_cast<int>(std::lround(pen)), y_, options_.zoom);
        pen += variant.advance * options_.zoom;
    }
}

void CSheet::operator()(const CFontFile& file)
{
    heading("line height " + std::to_string(file.lineHeight) + ", gaps " + std::to_string(file.ascentGap) +
            " and " + std::to_string(file.descentGap));
    const int step = static_cast<int>(
        std::lround((file.lineHeight + file.ascentGap + file.descentGap) * options_.scale * options_.zoom));
    const CPaletteColour colour = colourOf(0);
    for (const char* words : kSampleWords) {
        y_ += step;
        drawText(file, words, colour);
    }
    y_ += step;
    (*this)(file.glyphs);
}

void CSheet::operator()(const CBrushSetFile& file)
{
    for (const CBrush& brush : file.brushes) {
        const CBrushVariant& variant = nearest(brush.variants, options_.scale);
        heading("width " + std::to_string(brush.width) + ", size " + std::to_string(variant.size));
        const auto side = static_cast<int>(variant.size);
        const std::size_t stampBytes = std::size_t{variant.size} * variant.size;
        const int positions = 1 << brush.oversampling;
        for (int index = 0; index < positions * positions; ++index) {
            CImageVariant stamp;
            stamp.raster = CRaster(side, side, 1);
            const auto start = variant.table.begin() + static_cast<std::ptrdiff_t>(stampBytes) * index;
            std::copy_n(start, stampBytes, stamp.raster.pixels.begin());
            const int x = kMargin + index % positions * (side + 2) * options_.zoom;
            const int y = y_ + index / positions * (side + 2) * options_.zoom;
            canvas_.draw(stamp, colourOf(0), x, y, options_.zoom);
        }
        y_ += positions * (side + 2) * options_.zoom + kMargin;
    }
}

void CSheet::operator()(const CPaletteFile& file)
{
    constexpr int kRampWidth = 128;
    constexpr int kCellWidth = 280;
    constexpr int kSwatch = 14;
    for (const CPaletteColour& colour : file.colours) {
        const int left = nextCell(kCellWidth, kSwatch);
        for (int x = 0; x < kRampWidth; ++x) {
            canvas_.fill(left + x, y_, 1, kSwatch, entry(colour, static_cast<std::size_t>(2 * x + 1)),
                         colour.opacity);
        }
        canvas_.fill(left + kRampWidth, y_, 2 * kSwatch, kSwatch, entry(colour, 255), colour.opacity);
        canvas_.label(left + kRampWidth + 2 * kSwatch + 4, y_ + kSwatch - 3, colour.name, kInk);
    }
    endRow();
}

} // namespace

std::vector<std::string> usualColours(const std::string& fileName)
{
    static const std::map<std::string, std::vector<std::string>> kColours = {
        {"button", {"Button", "ButtonUnderlay", "Indicator1"}},
        {"buttonab", {"ButtonAB", "ButtonABIndicator"}},
        {"close", {"Button", "ButtonText"}},
        {"csurface", {"CSSliderBar"}},
        {"editbox", {"LevelMeter", "Panel"}},
        {"frame", {"Panel"}},
        {"groupcaption", {"Panel"}},
        {"history", {"Button", "ButtonUnderlay", "ButtonText"}},
        {"instancename", {"LevelMeter", "WindowTitle"}},
        // The arc for ranges with a sign in a colour of its own: a control draws one of the two.
        {"knob", {"Knob", "KnobIndicator", "Indicator3"}},
        {"levelmeter", {"LevelMeter", "Panel"}},
        {"palicon", {"PalIconDefault", "PalIconDefaultInner", "PalIconDefaultOuter", "PalIconDefaultText"}},
        {"popup", {"WindowTitle"}},
        {"popup2", {"Panel"}},
        {"ruler", {"KnobLabelsText"}},
        {"scroller", {"ScrollerBar", "ScrollerBarEdge"}},
        {"statusbar", {"WindowTitle"}},
        {"texture", {"PanelTexture"}},
    };
    const auto found = kColours.find(std::filesystem::path(fileName).stem().string());
    return found == kColours.end() ? std::vector<std::string>{"Action"} : found->second;
}

void drawContactSheet(const CGraphicsFile& file, const CSheetOptions& options, const std::string& path)
{
    CSheet measure(options, 1);
    std::visit(measure, file);
    CSheet sheet(options, measure.height());
    std::visit(sheet, file);
    sheet.save(path);
}

} // namespace qel::tools
