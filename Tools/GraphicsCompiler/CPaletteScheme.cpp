// The scheme that makes a palette's colours from its keys.
#include "GraphicsCompiler/CPaletteScheme.h"

#include "TreeCompiler/ToolError.h"

#include <algorithm>
#include <cmath>

namespace qel::tools {

void CPaletteScheme::apply(CPaletteFile& palette)
{
    auto root = rootElement(source_, "palette-scheme");
    if (!root) {
        return;
    }
    for (CSourceElement& element : root->children()) {
        const std::string kind = element.name();
        if (kind == "key") {
            readKey(element);
        } else if (kind == "ramp") {
            readRamp(element);
        } else if (kind == "colours") {
            readColours(element, palette);
        } else if (kind == "pulse") {
            readPulse(element, palette);
        } else {
            element.report("<palette-scheme> holds no <" + kind + ">");
        }
    }
}

void CPaletteScheme::readKey(CSourceElement& element)
{
    const std::string name = element.text("name");
    const CColour colour = book_.read(element, "colour");
    element.close();
    if (!book_.has(name)) {
        book_.set(name, colour);
    }
}

void CPaletteScheme::readRamp(CSourceElement& element)
{
    const std::string name = element.text("name");
    const std::size_t faults = source_.diagnostics().size();
    Ramp ramp;
    for (CSourceElement& stop : element.children()) {
        const double value = stop.number("value", 0.0, 255.0);
        const CColour probe = {};
        book_.read(stop, "colour", &probe);
        const bool isInOrder = ramp.empty() ? value == 0.0 : value > ramp.back().value;
        if (stop.name() != "stop" || !isInOrder) {
            stop.report("a <stop> with a value above the last one expected, the first at 0");
        }
        stop.close();
        ramp.push_back({value, stop.text("colour")});
    }
    if (ramp.empty() || ramp.back().value != 255.0) {
        element.report("the last <stop> must lie at 255");
    }
    if (source_.diagnostics().size() > faults) {
        return;
    }
    ramps_[name] = std::move(ramp);
}

const CPaletteScheme::Ramp* CPaletteScheme::rampOf(CSourceElement& element, const char* attribute)
{
    const std::string name = element.text(attribute);
    const auto ramp = ramps_.find(name);
    if (ramp == ramps_.end()) {
        element.report(attribute, "there is no ramp '" + name + "'");
        return nullptr;
    }
    return &ramp->second;
}

double CPaletteScheme::opacityOf(CSourceElement& element)
{
    return element.number("opacity", 0.0, 1.0, 1.0);
}

void CPaletteScheme::readColours(CSourceElement& element, CPaletteFile& palette)
{
    const std::vector<std::string> names = element.words("names");
    const std::string states = element.text("states", "all");
    if (states != "all" && states != "hover" && states != "none") {
        element.report("states", "'" + states + "' is none of 'all', 'hover' and 'none'");
    }
    const Ramp* ramp = rampOf(element, "ramp");
    const Ramp* activeRamp = element.has("active-ramp") ? rampOf(element, "active-ramp") : ramp;
    const double opacity = opacityOf(element);
    const CColour plain = book_.read(element, "colour");
    const auto stateColour = [&](const char* attribute, const CColour& self) {
        return element.has(attribute) ? book_.read(element, attribute, &self) : self;
    };
    const CColour hover = stateColour("hover", plain);
    const CColour active = stateColour("active", plain);
    const CColour activeHover = stateColour(element.has("active-hover") ? "active-hover" : "hover", active);
    element.close();
    for (const std::string& name : names) {
        add(element, palette, name, plain, ramp, opacity);
        if (states != "none") {
            add(element, palette, name + "_Hover", hover, ramp, opacity);
        }
        if (states == "all") {
            add(element, palette, name + "_Active", active, activeRamp, opacity);
            add(element, palette, name + "_ActiveHover", activeHover, activeRamp, opacity);
        }
    }
}

void CPaletteScheme::readPulse(CSourceElement& element, CPaletteFile& palette)
{
    const std::string name = element.text("name");
    const std::uint32_t frames = element.count("frames", 2, 256);
    const Ramp* ramp = rampOf(element, "ramp");
    const double opacity = opacityOf(element);
    const CColour from = book_.read(element, "from");
    const CColour to = book_.read(element, "to");
    element.close();
    for (std::uint32_t frame = 0; frame < frames; ++frame) {
        const double position = static_cast<double>(frame) / (frames - 1);
        add(element, palette, name + "|" + std::to_string(frame), mixed(from, to, position), ramp, opacity);
    }
    palette.frameTables.push_back({name, frames});
}

void CPaletteScheme::add(CSourceElement& element, CPaletteFile& palette, const std::string& name,
                         const CColour& colour, const Ramp* ramp, double opacity)
{
    if (!names_.insert(name).second) {
        element.report("the colour '" + name + "' stands there twice");
    }
    if (!ramp) {
        return; // reported where it is named
    }
    CPaletteColour& entry = palette.colours.emplace_back();
    entry.name = name;
    entry.opacity = opacity;
    CPaletteColour::Table* const tables[] = {&entry.red, &entry.green, &entry.blue};
    for (std::size_t i = 0; i + 1 < ramp->size(); ++i) {
        const Stop& low = (*ramp)[i];
        const Stop& high = (*ramp)[i + 1];
        const CColour lowColour = book_.evaluate(low.colour, &colour);
        const CColour highColour = book_.evaluate(high.colour, &colour);
        for (double value = std::ceil(low.value); value <= high.value; ++value) {
            const CColour result =
                mixed(lowColour, highColour, (value - low.value) / (high.value - low.value));
            for (std::size_t channel = 0; channel < result.size(); ++channel) {
                (*tables[channel])[static_cast<std::size_t>(value)] =
                    static_cast<std::uint8_t>(std::lround(result[channel]));
            }
        }
    }
}

} // namespace qel::tools
