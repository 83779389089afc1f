#include "GraphicsCompiler/ImageSetSource.h"
#include "FolderFixture.h"

#include <cmath>

namespace qel::tools {

namespace {

class ImageSetSource : public FolderFixture
{
protected:
    // All messages, one a line, with file names relative to the folder.
    std::string compile(const std::string& text)
    {
        std::vector<CDiagnostic> diagnostics;
        files_.clear();
        CXmlSource source(write("set.xml", text), "set.xml", diagnostics);
        set_ = source.isGood() ? compileImageSet(source, files_) : CImageSetFile();
        std::string messages;
        for (CDiagnostic& diagnostic : diagnostics) {
            diagnostic.file = std::filesystem::path(diagnostic.file).filename();
            messages += diagnostic.text() + "\n";
        }
        return messages;
    }

    const CImageVariant& variant(std::size_t image, std::size_t scale) const
    {
        return set_.images.at(image).layers.at(0).variants.at(scale);
    }

    // The first row as one digit a pixel: alpha in ninths.
    static std::string firstRow(const CImageVariant& variant)
    {
        std::string row;
        for (int x = 0; x < variant.raster.width; ++x) {
            row += static_cast<char>('0' + std::lround(variant.raster.alphaAt(x, 0) * 9 / 255.0));
        }
        return row;
    }

    CImageSetFile set_;
    std::vector<std::filesystem::path> files_;
};

std::string inSet(const std::string& content)
{
    return "<image-set>\n" + content + "</image-set>\n";
}

CImageSetFile shipped(const std::string& name)
{
    return std::get<CImageSetFile>(
        readGraphicsFile(std::string(DRUMFELL_BUILT_RESOURCES) + "/" + name + ".is"));
}

using Pixels = std::vector<std::uint8_t>;

Pixels column(const CRaster& raster, int x)
{
    Pixels pixels;
    for (int y = 0; y < raster.height; ++y) {
        pixels.insert(pixels.end(), raster.at(x, y), raster.at(x, y) + raster.bytesPerPixel);
    }
    return pixels;
}

Pixels row(const CRaster& raster, int y)
{
    return Pixels(raster.at(0, y), raster.at(0, y) + raster.width * raster.bytesPerPixel);
}

std::uint8_t strongestOnBorder(const CRaster& raster)
{
    std::uint8_t strongest = 0;
    for (int y = 0; y < raster.height; ++y) {
        for (int x = 0; x < raster.width; ++x) {
            if (x == 0 || y == 0 || x == raster.width - 1 || y == raster.height - 1) {
                strongest = std::max(strongest, raster.alphaAt(x, y));
            }
        }
    }
    return strongest;
}

} // namespace

TEST_F(ImageSetSource, DrawsEveryIdAfreshAtEveryScale)
{
    write("shared.xml", R"(<drawings><define name="bar" from="0" length="1">
        <rect x="{snap(from)}" width="{length * px}" height="{h}" fill="#fff"/></define></drawings>)");
    ASSERT_EQ(compile(inSet(R"(<include file="shared.xml"/>
        <range name="" first="3" last="9"/>
        <let name="third" value="w / 3"/>
        <image id="9,3..4" width="10" height="2" margin="0 0 1 5">
          <layer>
            <insert name="bar" length="i + 1"/>
            <if test="id == 4"><insert name="bar" from="third"/></if>
            <for name="k" from="1" to="2"><insert name="bar" from="w - k * 2 * px"/></for>
          </layer>
          <layer slot="2" bytes="4"><rect width="{w}" height="{h}" fill="#102030"/></layer>
        </image>)")),
              "");
    ASSERT_EQ(set_.images.size(), 3u);
    // Sorted by id; the places count in the order of the list.
    EXPECT_EQ(set_.images[0].id, 3u);
    EXPECT_EQ(firstRow(variant(0, 1)), "000009900009090");
    // At 0.8: 8 pixels and a margin of 4; the third of 2.67 is drawn from pixel 3, two steps of a pixel stay
    // sharp.
    EXPECT_EQ(firstRow(variant(1, 0)), "000099999090");
    EXPECT_EQ(variant(1, 0).width, 8);
    EXPECT_EQ(variant(1, 0).originX, -4);
    EXPECT_EQ(variant(1, 2).raster.height, 4); // 2 x 1.25 and a margin of 1 x 1.25, each rounded
    const CImageLayer& second = set_.images[0].layers[1];
    EXPECT_EQ(second.slot, 2u);
    const std::uint8_t* const pixel = second.variants[1].raster.at(6, 0);
    EXPECT_EQ(Pixels(pixel, pixel + 4), (Pixels{0x30, 0x20, 0x10, 255}));
    ASSERT_EQ(files_.size(), 1u);
    EXPECT_EQ(files_[0].filename(), "shared.xml");
}

// An edge is repeated along its side, between two corners: it must not change along it, and must go on from
// them.
TEST(ShippedImages, FramePiecesMeetWithoutASeam)
{
    const std::pair<std::string, std::size_t> frames[] = {
        {"editbox", 0},  {"frame", 0},     {"instancename", 0}, {"levelmeter", 0}, {"popup", 0},
        {"popup2", 0},   {"statusbar", 0}, {"button", 0},       {"button", 8},     {"button", 16},
        {"csurface", 0}, {"csurface", 8},  {"csurface", 16},    {"csurface", 24}};
    enum
    {
        kBottom,
        kLeft,
        kRight,
        kTop,
        kBottomLeft,
        kBottomRight,
        kTopLeft,
        kTopRight
    };
    for (const auto& [name, first] : frames) {
        const CImageSetFile set = shipped(name);
        for (std::size_t layer = 0; layer < set.images.at(first).layers.size(); ++layer) {
            for (std::size_t scale = 0; scale < std::size(kGraphicsScales); ++scale) {
                SCOPED_TRACE(name + " from " + std::to_string(first) + ", layer " + std::to_string(layer) +
                             ", scale " + std::to_string(kGraphicsScales[scale]));
                const auto piece = [&, start = first](std::size_t place) -> const CRaster& {
                    return set.images.at(start + place).layers.at(layer).variants.at(scale).raster;
                };
                for (const auto& [edge, before, after] : {std::array{kBottom, kBottomLeft, kBottomRight},
                                                          std::array{kTop, kTopLeft, kTopRight}}) {
                    const Pixels line = column(piece(edge), 0);
                    for (int x = 1; x < piece(edge).width; ++x) {
                        ASSERT_EQ(column(piece(edge), x), line);
                    }
                    EXPECT_EQ(column(piece(before), piece(before).width - 1), line);
                    EXPECT_EQ(column(piece(after), 0), line);
                }
                for (const auto& [edge, before, after] : {std::array{kLeft, kTopLeft, kBottomLeft},
                                                          std::array{kRight, kTopRight, kBottomRight}}) {
                    const Pixels line = row(piece(edge), 0);
                    for (int y = 1; y < piece(edge).height; ++y) {
                        ASSERT_EQ(row(piece(edge), y), line);
                    }
                    EXPECT_EQ(row(piece(before), piece(before).height - 1), line);
                    EXPECT_EQ(row(piece(after), 0), line);
                }
            }
        }
    }
}

// What stands free in its raster is whole: nothing of it reaches the border, where it would be cut off.
TEST(ShippedImages, NothingIsCutOff)
{
    struct Free
    {
        std::string set;
        std::uint32_t first;
        std::uint32_t last;
    };
    const Free sets[] = {{"knob", 0, 100},     {"close", 0, 1},   {"button", 24, 29},     {"button", 31, 39},
                         {"csurface", 32, 35}, {"brintal", 0, 0}, {"listoutline", 10, 10}};
    for (const Free& free : sets) {
        for (const CImage& image : shipped(free.set).images) {
            for (const CImageLayer& layer : image.layers) {
                for (const CImageVariant& variant : layer.variants) {
                    if (image.id >= free.first && image.id <= free.last) {
                        EXPECT_EQ(strongestOnBorder(variant.raster), 0)
                            << free.set << " " << image.id << " at " << variant.scale;
                    }
                }
            }
        }
    }
}

} // namespace qel::tools
