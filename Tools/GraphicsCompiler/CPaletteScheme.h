// The scheme that makes a palette's colours from its keys.
#pragma once

#include "GraphicsCompiler/CColourBook.h"
#include "GraphicsCompiler/GraphicsFile.h"

#include <map>
#include <set>
#include <string>
#include <vector>

namespace qel::tools {

// Goes through a scheme's file once, for one palette; PaletteSource.h tells its form. Lives as long as both
// arguments.
class CPaletteScheme
{
public:
    CPaletteScheme(CXmlSource& source, CColourBook& book) : source_(source), book_(book) {}

    void apply(CPaletteFile& palette);

private:
    // What an image's value becomes; the colours of the stops depend on `self` and are kept as text.
    struct Stop
    {
        double value = 0.0;
        std::string colour;
    };
    using Ramp = std::vector<Stop>;

    void readKey(CSourceElement& element);
    void readRamp(CSourceElement& element);
    void readColours(CSourceElement& element, CPaletteFile& palette);
    void readPulse(CSourceElement& element, CPaletteFile& palette);
    // The ramp that an attribute names; null, and reported, if there is none.
    const Ramp* rampOf(CSourceElement& element, const char* attribute);
    double opacityOf(CSourceElement& element);
    void add(CSourceElement& element, CPaletteFile& palette, const std::string& name, const CColour& colour,
             const Ramp* ramp, double opacity);

    CXmlSource& source_;
    CColourBook& book_;
    std::map<std::string, Ramp> ramps_;
    std::set<std::string> names_;
};

} // namespace qel::tools
