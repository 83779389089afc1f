// Small pictures: PNG with a palette.
#include "Views/IndexedPng.h"

#include "TreeCompiler/ToolError.h"

#include <zlib.h>

#include <algorithm>
#include <fstream>
#include <map>
#include <string_view>
#include <vector>

namespace qel::tools {

namespace {

constexpr std::size_t kMaxColours = 256;
constexpr int kChannelShifts[] = {16, 8, 0};

using Bytes = std::vector<std::uint8_t>;

struct Colour
{
    std::uint32_t rgb;
    std::size_t count;
};

std::uint32_t channel(std::uint32_t rgb, int shift)
{
    return (rgb >> shift) & 0xFF;
}

// Colours that are to become one.
struct Box
{
    std::vector<Colour> colours;
    int widestShift = 0;    // of the channel in which they differ most
    std::size_t weight = 0; // how much is lost if they become one

    void measure()
    {
        std::uint32_t width = 0;
        std::size_t count = 0;
        for (const Colour& colour : colours) {
            count += colour.count;
        }
        for (const int shift : kChannelShifts) {
            const auto [low, high] = std::ranges::minmax(
                colours, {}, [&](const Colour& colour) { return channel(colour.rgb, shift); });
            const std::uint32_t distance = channel(high.rgb, shift) - channel(low.rgb, shift);
            if (distance > width) {
                width = distance;
                widestShift = shift;
            }
        }
        weight = std::size_t{width} * width * count;
    }

    // What lies on the far side of the middle of all pixels goes to another box.
    Box split()
    {
        std::ranges::sort(colours, {},
                          [&](const Colour& colour) { return channel(colour.rgb, widestShift); });
        std::size_t total = 0;
        for (const Colour& colour : colours) {
            total += colour.count;
        }
        std::size_t seen = 0;
        std::size_t middle = 0;
        while (middle + 1 < colours.size() && (middle == 0 || seen + colours[middle].count <= total / 2)) {
            seen += colours[middle++].count;
        }
        Box other;
        other.colours.assign(colours.begin() + static_cast<std::ptrdiff_t>(middle), colours.end());
        colours.resize(middle);
        measure();
        other.measure();
        return other;
    }

    std::uint32_t mean() const
    {
        std::size_t sums[3] = {};
        std::size_t total = 0;
        for (const Colour& colour : colours) {
            for (std::size_t i = 0; i < 3; ++i) {
                sums[i] += channel(colour.rgb, kChannelShifts[i]) * colour.count;
            }
            total += colour.count;
        }
        std::uint32_t rgb = 0;
        for (const std::size_t sum : sums) {
            rgb = rgb << 8 | static_cast<std::uint32_t>((sum + total / 2) / total);
        }
        return rgb;
    }
};

std::vector<Box> findBoxes(std::span<const std::uint32_t> pixels)
{
    std::map<std::uint32_t, std::size_t> counts;
    for (const std::uint32_t pixel : pixels) {
        ++counts[pixel & 0xFFFFFF];
    }
    std::vector<Box> boxes(1);
    for (const auto& [rgb, count] : counts) {
        boxes[0].colours.push_back({rgb, count});
    }
    boxes[0].measure();
    while (boxes.size() < kMaxColours) {
        const auto heaviest = std::ranges::max_element(boxes, {}, &Box::weight);
        if (heaviest->weight == 0) {
            break;
        }
        Box other = heaviest->split();
        boxes.push_back(std::move(other));
    }
    return boxes;
}

void putU32(Bytes& bytes, std::uint32_t value)
{
    for (int shift = 24; shift >= 0; shift -= 8) {
        bytes.push_back(static_cast<std::uint8_t>(value >> shift));
    }
}

void putChunk(Bytes& file, std::string_view name, const Bytes& content)
{
    putU32(file, static_cast<std::uint32_t>(content.size()));
    const std::size_t start = file.size();
    file.insert(file.end(), name.begin(), name.end());
    file.insert(file.end(), content.begin(), content.end());
    const auto length = static_cast<uInt>(file.size() - start);
    putU32(file, static_cast<std::uint32_t>(crc32(0, file.data() + start, length)));
}

Bytes compressed(const Bytes& rows)
{
    uLongf size = compressBound(static_cast<uLong>(rows.size()));
    Bytes result(size);
    compress2(result.data(), &size, rows.data(), static_cast<uLong>(rows.size()), Z_BEST_COMPRESSION);
    result.resize(size);
    return result;
}

} // namespace

void writeIndexedPng(const std::filesystem::path& path, std::span<const std::uint32_t> pixels,
                     std::size_t width)
{
    const std::vector<Box> boxes = findBoxes(pixels);
    Bytes palette;
    std::map<std::uint32_t, std::uint8_t> indices;
    for (std::size_t i = 0; i < boxes.size(); ++i) {
        const std::uint32_t rgb = boxes[i].mean();
        for (const int shift : kChannelShifts) {
            palette.push_back(static_cast<std::uint8_t>(channel(rgb, shift)));
        }
        for (const Colour& colour : boxes[i].colours) {
            indices[colour.rgb] = static_cast<std::uint8_t>(i);
        }
    }
    Bytes rows;
    for (std::size_t i = 0; i < pixels.size(); ++i) {
        if (i % width == 0) {
            rows.push_back(0); // no filter
        }
        rows.push_back(indices.at(pixels[i] & 0xFFFFFF));
    }
    Bytes header;
    putU32(header, static_cast<std::uint32_t>(width));
    putU32(header, static_cast<std::uint32_t>(pixels.size() / width));
    header.insert(header.end(), {8, 3, 0, 0, 0}); // eight bits, palette

    Bytes file = {0x89, 'P', 'N', 'G', '\r', '\n', 0x1A, '\n'};
    putChunk(file, "IHDR", header);
    putChunk(file, "PLTE", palette);
    putChunk(file, "IDAT", compressed(rows));
    putChunk(file, "IEND", {});
    std::ofstream out(path, std::ios::binary);
    out.write(reinterpret_cast<const char*>(file.data()), static_cast<std::streamsize>(file.size()));
    if (!out.flush()) {
        throw CToolError(path.string() + ": cannot be written");
    }
}

} // namespace qel::tools
