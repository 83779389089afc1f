// A palette file.
#include "CPalette.h"

#include "Trace.h"

#include <algorithm>
#include <cmath>

namespace qel {

namespace {

// Shades of grey: in a palette without a default, a missing colour shows as one without tint.
CPaletteColor greyColor()
{
    CPaletteColor color;
    for (std::size_t i = 0; i < color.red.size(); ++i) {
        color.red[i] = color.green[i] = color.blue[i] = static_cast<std::uint8_t>(i);
    }
    return color;
}

// The name of one frame of an animated colour.
CString frameName(const CString& name, std::int64_t frame)
{
    return name + "|" + CString::number(frame);
}

} // namespace

CPalette::CPalette() : fallback_(greyColor()) {}

CError CPalette::load(CInputStream& stream)
{
    clear();
    if (CError error = loadAll(stream)) {
        clear();
        return reportError(std::move(error), __FILE__, __LINE__);
    }
    if (const auto found = colors_.find("Default"); found != colors_.end()) {
        fallback_ = found->second;
    }
    return {};
}

CError CPalette::loadAll(CInputStream& stream)
{
    std::uint32_t version = 0;
    QEL_TRY(stream.readU32(version), {});
    if (version != kVersion) {
        return {};
    }
    std::int32_t colorCount = 0;
    QEL_TRY(stream.readI32(colorCount), {});
    if (colorCount < 0) {
        QEL_FAIL({}, "@qelstr_CPalette_load_Count Negative number of colors %1.", colorCount);
    }
    for (std::int32_t i = 0; i < colorCount; ++i) {
        QEL_TRY(loadColor(stream), {});
    }
    std::uint32_t tableCount = 0;
    QEL_TRY(stream.readU32(tableCount), {});
    for (std::uint32_t i = 0; i < tableCount; ++i) {
        CString name;
        std::uint32_t frames = 0;
        QEL_TRY(stream.readString(name), {});
        QEL_TRY(stream.readU32(frames), {});
        frames_[name] = frames;
    }
    return {};
}

CError CPalette::loadColor(CInputStream& stream)
{
    CString name;
    CPaletteColor color;
    QEL_TRY(stream.readString(name), {});
    QEL_TRY(stream.readF64(color.opacity), name);
    if (!(color.opacity >= 0.0 && color.opacity <= 1.0)) {
        QEL_FAIL(name, "@qelstr_CPalette_load_Opacity The opacity of a color is not between 0 and 1.");
    }
    QEL_TRY(stream.read(color.red.data(), color.red.size()), name);
    QEL_TRY(stream.read(color.green.data(), color.green.size()), name);
    QEL_TRY(stream.read(color.blue.data(), color.blue.size()), name);
    colors_[name] = color;
    return {};
}

void CPalette::clear()
{
    colors_.clear();
    frames_.clear();
    fallback_ = greyColor();
}

CError CPalette::save(COutputStream& stream) const
{
    QEL_TRY(stream.writeU32(kVersion), {});
    QEL_TRY(stream.writeI32(static_cast<std::int32_t>(colors_.size())), {});
    for (const auto& [name, color] : colors_) {
        QEL_TRY(stream.writeString(name), {});
        QEL_TRY(stream.writeF64(color.opacity), {});
        QEL_TRY(stream.write(color.red.data(), color.red.size()), {});
        QEL_TRY(stream.write(color.green.data(), color.green.size()), {});
        QEL_TRY(stream.write(color.blue.data(), color.blue.size()), {});
    }
    QEL_TRY(stream.writeU32(static_cast<std::uint32_t>(frames_.size())), {});
    for (const auto& [name, frames] : frames_) {
        QEL_TRY(stream.writeString(name), {});
        QEL_TRY(stream.writeU32(frames), {});
    }
    return {};
}

const CPaletteColor* CPalette::findColor(const CString& name) const
{
    const auto found = colors_.find(name);
    return found == colors_.end() ? &fallback_ : &found->second;
}

const CPaletteColor* CPalette::findColor(const CString& name, double position) const
{
    if (const auto found = colors_.find(name); found != colors_.end()) {
        return &found->second;
    }
    if (const std::uint32_t frames = getFrames(name); frames > 0) {
        const double last = frames - 1.0;
        const double frame = std::floor(last * std::clamp(position, 0.0, 1.0) + 0.5);
        return findColor(frameName(name, static_cast<std::int64_t>(frame)));
    }
    if (isTracing()) {
        trace(formatMessage("Color not found: '%1'", {name}));
    }
    return &fallback_;
}

std::uint32_t CPalette::getFrames(const CString& name) const
{
    const auto found = frames_.find(name);
    return found == frames_.end() ? 0 : found->second;
}

} // namespace qel
