// One element of a graphics source, with its attributes read by name.
#pragma once

#include "TreeCompiler/CXmlSource.h"

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace qel::tools {

// Reads attributes and reports what is wrong with them at the place where they stand; then it returns a
// harmless value, so that a compiler finds all faults in one go. Those without a default are required.
class CSourceElement
{
public:
    CSourceElement(CXmlSource& source, pugi::xml_node node) : source_(source), node_(node) {}

    pugi::xml_node node() const { return node_; }
    std::string name() const { return node_.name(); }
    bool has(const char* attribute) const { return !node_.attribute(attribute).empty(); }

    std::string text(const char* attribute);
    std::string text(const char* attribute, const std::string& standard);
    // Words between blanks; at least one.
    std::vector<std::string> words(const char* attribute);
    double number(const char* attribute, double least, double most);
    double number(const char* attribute, double least, double most, double standard);
    std::uint32_t count(const char* attribute, std::uint32_t least, std::uint32_t most);

    // All elements inside; text and attributes that nobody asked for are reported.
    std::vector<CSourceElement> children();
    // For an element without any inside.
    void close();

    void report(const char* attribute, const std::string& message) const;
    void report(const std::string& message) const { source_.report(node_, message); }

private:
    // Null, and reported, if it is missing.
    pugi::xml_attribute required(const char* attribute);
    double parse(pugi::xml_attribute attribute, double least, double most) const;
    void reportUnasked() const;

    CXmlSource& source_;
    pugi::xml_node node_;
    std::vector<std::string> asked_;
};

// The root element. Null, and reported, if it has another name.
std::optional<CSourceElement> rootElement(CXmlSource& source, const char* name);

} // namespace qel::tools
