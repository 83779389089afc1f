// Named key colours, and colours mixed from them.
#pragma once

#include "GraphicsCompiler/CSourceElement.h"

#include <array>
#include <functional>
#include <map>
#include <optional>
#include <string>
#include <string_view>

namespace qel::tools {

// Red, green and blue from 0 to 255.
using CColour = std::array<double, 3>;

// Colours are written as
//
//   #ffb24a                 red, green, blue
//   accent                  a key of this book
//   Blue.accent             a key of another palette
//   mix(a, b, 0.25)         a quarter of b in a, channel by channel
//
// `self` is the colour that the place at hand starts from, where there is one.
class CColourBook
{
public:
    // The book of another palette by its name; null if there is none.
    using Neighbours = std::function<const CColourBook*(const std::string& palette)>;

    CColourBook() = default;
    explicit CColourBook(Neighbours neighbours) : neighbours_(std::move(neighbours)) {}

    void set(const std::string& key, const CColour& colour) { keys_[key] = colour; }
    bool has(const std::string& key) const { return keys_.contains(key); }
    const CColour* find(const std::string& key) const;

    // The colour that an attribute tells. Faults are reported there, and black returned.
    CColour read(CSourceElement& element, const char* attribute, const CColour* self = nullptr) const;
    // Throws CToolError with what is wrong.
    CColour evaluate(std::string_view text, const CColour* self = nullptr) const;

private:
    CColour parse(std::string_view& rest, const CColour* self, int depth) const;
    CColour parseMix(std::string_view& rest, const CColour* self, int depth) const;

    std::map<std::string, CColour> keys_;
    Neighbours neighbours_;
};

CColour mixed(const CColour& a, const CColour& b, double share);

} // namespace qel::tools
