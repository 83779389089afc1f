// Image sets, from drawings.
#include "GraphicsCompiler/ImageSetSource.h"

#include "GraphicsCompiler/CDrawing.h"
#include "GraphicsCompiler/SvgRenderer.h"
#include "TreeCompiler/ToolError.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <optional>
#include <set>
#include <string_view>

namespace qel::tools {

namespace {

constexpr int kLargestSide = 2048;
constexpr std::uint32_t kLastId = 65535;
constexpr std::size_t kScales = std::size(kGraphicsScales);

std::vector<std::string_view> split(std::string_view text, char separator)
{
    std::vector<std::string_view> parts;
    for (std::size_t start = 0; start <= text.size();) {
        const std::size_t end = std::min(text.find(separator, start), text.size());
        parts.push_back(text.substr(start, end - start));
        start = end + 1;
    }
    return parts;
}

std::optional<std::uint32_t> wholeNumber(std::string_view text)
{
    std::uint32_t value = 0;
    const auto result = std::from_chars(text.data(), text.data() + text.size(), value);
    if (result.ec != std::errc() || result.ptr != text.data() + text.size() || value > kLastId) {
        return std::nullopt;
    }
    return value;
}

// "0..7,9"
std::optional<std::vector<std::uint32_t>> idList(std::string_view text)
{
    std::vector<std::uint32_t> ids;
    for (const std::string_view part : split(text, ',')) {
        const std::size_t dots = part.find("..");
        const auto first = wholeNumber(part.substr(0, dots));
        const auto last = dots == part.npos ? first : wholeNumber(part.substr(dots + 2));
        if (!first || !last || *last < *first) {
            return std::nullopt;
        }
        for (std::uint32_t id = *first; id <= *last; ++id) {
            ids.push_back(id);
        }
    }
    return ids;
}

struct Geometry
{
    int width = 0;
    int height = 0;
    int top = 0;
    int right = 0;
    int bottom = 0;
    int left = 0;
};

class CImageSetSource
{
public:
    CImageSetSource(CXmlSource& source, std::vector<std::filesystem::path>& files)
        : source_(source), files_(files), drawing_(source)
    {}

    CImageSetFile compile()
    {
        const pugi::xml_node root = source_.document().first_child();
        if (std::string_view(root.name()) != "image-set") {
            source_.report(root, "an <image-set> expected");
            return {};
        }
        for (const pugi::xml_node node : root.children()) {
            try {
                topLevel(node);
            } catch (const CReportedFault&) {
                // On to the next, so that a person sees all faults at once.
            }
        }
        std::ranges::sort(set_.images, {}, &CImage::id);
        return std::move(set_);
    }

private:
    [[noreturn]] void fail(pugi::xml_node node, const std::string& message)
    {
        source_.report(node, message);
        throw CReportedFault();
    }

    [[noreturn]] void fail(pugi::xml_attribute attribute, const std::string& message)
    {
        source_.report(attribute, message);
        throw CReportedFault();
    }

    void allow(pugi::xml_node node, std::initializer_list<std::string_view> names)
    {
        for (const pugi::xml_attribute attribute : node.attributes()) {
            if (std::ranges::find(names, std::string_view(attribute.name())) == names.end()) {
                fail(attribute,
                     "<" + std::string(node.name()) + "> has no attribute '" + attribute.name() + "'");
            }
        }
    }

    pugi::xml_attribute required(pugi::xml_node node, const char* name)
    {
        const pugi::xml_attribute attribute = node.attribute(name);
        if (attribute.empty()) {
            fail(node, "<" + std::string(node.name()) + "> needs the attribute '" + name + "'");
        }
        return attribute;
    }

    std::uint32_t whole(pugi::xml_attribute attribute)
    {
        const auto value = wholeNumber(attribute.value());
        if (!value) {
            fail(attribute, "'" + std::string(attribute.value()) + "' is no whole number up to " +
                                std::to_string(kLastId));
        }
        return *value;
    }

    void topLevel(pugi::xml_node node)
    {
        const std::string_view name = node.name();
        if (name == "include") {
            allow(node, {"file"});
            drawing_.include(node, files_);
        } else if (name == "define") {
            drawing_.define(node);
        } else if (name == "let") {
            lets_.push_back(node);
        } else if (name == "range") {
            range(node);
        } else if (name == "image") {
            images(node);
        } else {
            fail(node, "<" + std::string(name) + "> does not stand in an <image-set>");
        }
    }

    void range(pugi::xml_node node)
    {
        allow(node, {"name", "first", "last"});
        CImageRange range;
        range.name = required(node, "name").value();
        range.first = whole(required(node, "first"));
        range.last = whole(required(node, "last"));
        if (range.last < range.first) {
            fail(node, "the range ends before it begins");
        }
        if (std::ranges::find(set_.ranges, range.name, &CImageRange::name) != set_.ranges.end()) {
            fail(node, "the range '" + range.name + "' stands twice");
        }
        set_.ranges.push_back(std::move(range));
    }

    void images(pugi::xml_node node)
    {
        allow(node, {"id", "width", "height", "sizes", "margin"});
        const pugi::xml_attribute list = required(node, "id");
        const auto ids = idList(list.value());
        if (!ids) {
            fail(list, "'" + std::string(list.value()) + "' is no list of ids such as \"4,7..9\"");
        }
        for (std::size_t i = 0; i < ids->size(); ++i) {
            const std::uint32_t id = (*ids)[i];
            if (!ids_.insert(id).second) {
                fail(list, "the id " + std::to_string(id) + " stands twice");
            }
            CScope scope;
            scope.set("id", id);
            scope.set("i", static_cast<double>(i));
            scope.set("n", static_cast<double>(ids->size()));
            scope.set("t",
                      ids->size() < 2 ? 0.0 : static_cast<double>(i) / static_cast<double>(ids->size() - 1));
            CImage image;
            image.id = id;
            for (std::size_t scale = 0; scale < kScales; ++scale) {
                variant(node, scale, scope, image);
            }
            set_.images.push_back(std::move(image));
        }
    }

    // Adds one scale to every layer of the image.
    void variant(pugi::xml_node node, std::size_t scaleIndex, const CScope& outer, CImage& image)
    {
        const double scale = kGraphicsScales[scaleIndex];
        CScope scope(&outer);
        scope.set("scale", scale);
        scope.set("px", 1.0 / scale);
        const Geometry geometry = geometryOf(node, scaleIndex, scope);
        scope.set("w", geometry.width / scale);
        scope.set("h", geometry.height / scale);
        for (const pugi::xml_node let : lets_) {
            drawing_.let(source_, let, scope);
        }
        std::size_t count = 0;
        for (const pugi::xml_node child : node.children()) {
            if (std::string_view(child.name()) == "let") {
                drawing_.let(source_, child, scope);
            } else if (std::string_view(child.name()) == "layer") {
                if (count == image.layers.size()) {
                    image.layers.push_back(layerOf(child, count));
                }
                CImageLayer& layer = image.layers[count++];
                layer.variants.push_back(render(child, geometry, scale, scope, layer.bytesPerPixel));
            } else {
                fail(child, "only <let> and <layer> stand in an <image>");
            }
        }
    }

    CImageLayer layerOf(pugi::xml_node node, std::size_t place)
    {
        allow(node, {"slot", "bytes"});
        CImageLayer layer;
        const pugi::xml_attribute slot = node.attribute("slot");
        layer.slot = slot.empty() ? static_cast<std::uint32_t>(place) : whole(slot);
        const pugi::xml_attribute bytes = node.attribute("bytes");
        layer.bytesPerPixel = bytes.empty() ? 2 : whole(bytes);
        if (layer.bytesPerPixel != 1 && layer.bytesPerPixel != 2 && layer.bytesPerPixel != 4) {
            fail(bytes, "a pixel has 1, 2 or 4 bytes");
        }
        return layer;
    }

    Geometry geometryOf(pugi::xml_node node, std::size_t scaleIndex, const CScope& scope)
    {
        const double scale = kGraphicsScales[scaleIndex];
        Geometry geometry;
        if (const pugi::xml_attribute sizes = node.attribute("sizes"); !sizes.empty()) {
            const auto parts = split(sizes.value(), ' ');
            const auto sides =
                parts.size() == kScales ? split(parts[scaleIndex], 'x') : std::vector<std::string_view>();
            const auto width = sides.size() == 2 ? wholeNumber(sides[0]) : std::nullopt;
            const auto height = sides.size() == 2 ? wholeNumber(sides[1]) : std::nullopt;
            if (!width || !height) {
                fail(sizes, "three sizes expected, such as \"60x60 74x74 93x93\"");
            }
            geometry.width = static_cast<int>(*width);
            geometry.height = static_cast<int>(*height);
        } else {
            const auto pixels = [&](const char* name) {
                return static_cast<int>(std::lround(drawing_.number(source_, node, name, scope) * scale));
            };
            geometry.width = pixels("width");
            geometry.height = pixels("height");
        }
        if (const pugi::xml_attribute margin = node.attribute("margin"); !margin.empty()) {
            const auto parts = split(margin.value(), ' ');
            if (parts.size() != 4) {
                fail(margin, "a margin has four numbers: top right bottom left");
            }
            int* const sides[] = {&geometry.top, &geometry.right, &geometry.bottom, &geometry.left};
            for (std::size_t i = 0; i < 4; ++i) {
                try {
                    *sides[i] = static_cast<int>(std::lround(evaluate(parts[i], scope) * scale));
                } catch (const CExpressionError& error) {
                    fail(margin, error.what());
                }
            }
        }
        const int width = geometry.left + geometry.width + geometry.right;
        const int height = geometry.top + geometry.height + geometry.bottom;
        if (std::min({width, height, geometry.width, geometry.height}) < 1 ||
            std::max(width, height) > kLargestSide) {
            fail(node, "an image has 1 to " + std::to_string(kLargestSide) + " pixels a side");
        }
        return geometry;
    }

    CImageVariant render(pugi::xml_node layer, const Geometry& geometry, double scale, const CScope& scope,
                         std::uint32_t bytesPerPixel)
    {
        CImageVariant variant;
        variant.scale = scale;
        variant.width = geometry.width;
        variant.height = geometry.height;
        variant.originX = -geometry.left;
        variant.originY = -geometry.top;
        const int width = geometry.left + geometry.width + geometry.right;
        const int height = geometry.top + geometry.height + geometry.bottom;
        CScope box(&scope);
        box.set("rasterX", variant.originX / scale);
        box.set("rasterY", variant.originY / scale);
        box.set("rasterW", width / scale);
        box.set("rasterH", height / scale);
        // Blurs are to keep their grey, so they take place in the colour space that it is given in.
        const std::string svg = fillIn("<svg xmlns=\"http://www.w3.org/2000/svg\" "
                                       "xmlns:xlink=\"http://www.w3.org/1999/xlink\" "
                                       "color-interpolation-filters=\"sRGB\" preserveAspectRatio=\"none\" "
                                       "viewBox=\"{rasterX} {rasterY} {rasterW} {rasterH}\">",
                                       box) +
                                drawing_.expand(layer, box) + "</svg>";
        try {
            variant.raster = renderSvg(svg, width, height, static_cast<int>(bytesPerPixel));
        } catch (const CToolError& error) {
            fail(layer, error.what());
        }
        return variant;
    }

    CXmlSource& source_;
    std::vector<std::filesystem::path>& files_;
    CDrawing drawing_;
    std::vector<pugi::xml_node> lets_;
    std::set<std::uint32_t> ids_;
    CImageSetFile set_;
};

} // namespace

CImageSetFile compileImageSet(CXmlSource& source, std::vector<std::filesystem::path>& files)
{
    return CImageSetSource(source, files).compile();
}

} // namespace qel::tools
