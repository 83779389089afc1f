// Parameters of a guest by name and in the units that it shows.
#pragma once

#include "Render/CGuestPlugin.h"

#include <map>
#include <string>
#include <vector>

namespace qel::tools {

// An effect knows its units, a host only positions from 0 to 1. So the position for a text is found by asking
// the effect: it may read the text itself; else the whole travel is sampled, and between the two samples that
// enclose the value the search goes on by halves. This also serves lists of names and scales that turn back.
//
// Leaves every parameter where it was. Throws CRenderError (kSetting).
class CParameterSetter
{
public:
    explicit CParameterSetter(CGuestPlugin& guest) : guest_(guest) {}

    // By name (in any case, or its beginning where only one has it) or by index.
    int find(const std::string& nameOrIndex);
    // `value` in display units ("+12", "1.2k", "Pumping"), or as a position ("0.5n").
    float normFor(int index, const std::string& value);
    // "NAME=VALUE"
    void set(const std::string& assignment);

private:
    struct CShown
    {
        float norm;
        std::string text;
    };
    class CHold;

    const std::vector<CShown>& travelOf(int index);
    float normForText(int index, const std::string& value);
    float normForNumber(int index, const std::string& value, double wanted, const std::string& label);
    float middleOfRun(int index, const CShown& found);
    bool readByGuest(int index, const std::string& value, const std::string& label, float& outNorm);

    CGuestPlugin& guest_;
    std::map<int, std::vector<CShown>> travels_;
};

} // namespace qel::tools
