// One element of a graphics source, with its attributes read by name.
#include "GraphicsCompiler/CSourceElement.h"

#include <algorithm>
#include <charconv>
#include <sstream>

namespace qel::tools {

namespace {

std::string shown(double number)
{
    std::ostringstream text;
    text << number;
    return text.str();
}

} // namespace

pugi::xml_attribute CSourceElement::required(const char* attribute)
{
    asked_.emplace_back(attribute);
    const pugi::xml_attribute found = node_.attribute(attribute);
    if (!found) {
        report("<" + name() + "> needs the attribute '" + attribute + "'");
    }
    return found;
}

std::string CSourceElement::text(const char* attribute)
{
    return required(attribute).value();
}

std::string CSourceElement::text(const char* attribute, const std::string& standard)
{
    asked_.emplace_back(attribute);
    return node_.attribute(attribute).as_string(standard.c_str());
}

std::vector<std::string> CSourceElement::words(const char* attribute)
{
    const pugi::xml_attribute found = required(attribute);
    std::istringstream stream(found.value());
    std::vector<std::string> words;
    for (std::string word; stream >> word;) {
        words.push_back(word);
    }
    if (found && words.empty()) {
        report(attribute, std::string("'") + attribute + "' is empty");
    }
    return words;
}

double CSourceElement::parse(pugi::xml_attribute attribute, double least, double most) const
{
    const std::string_view text = attribute.value();
    double number = 0.0;
    const auto result = std::from_chars(text.data(), text.data() + text.size(), number);
    if (result.ec != std::errc() || result.ptr != text.data() + text.size()) {
        source_.report(attribute, "'" + std::string(text) + "' is no number");
        return least;
    }
    if (!(number >= least && number <= most)) {
        source_.report(attribute, std::string(text) + " is outside " + shown(least) + " to " + shown(most));
        return least;
    }
    return number;
}

double CSourceElement::number(const char* attribute, double least, double most)
{
    const pugi::xml_attribute found = required(attribute);
    return found ? parse(found, least, most) : least;
}

double CSourceElement::number(const char* attribute, double least, double most, double standard)
{
    asked_.emplace_back(attribute);
    const pugi::xml_attribute found = node_.attribute(attribute);
    return found ? parse(found, least, most) : standard;
}

std::uint32_t CSourceElement::count(const char* attribute, std::uint32_t least, std::uint32_t most)
{
    const double value = number(attribute, least, most);
    const auto whole = static_cast<std::uint32_t>(value);
    if (whole != value) {
        report(attribute, "'" + std::string(node_.attribute(attribute).value()) + "' is no whole number");
    }
    return whole;
}

void CSourceElement::reportUnasked() const
{
    for (const pugi::xml_attribute attribute : node_.attributes()) {
        if (std::ranges::find(asked_, attribute.name()) == asked_.end()) {
            source_.report(attribute, "<" + name() + "> has no attribute '" + attribute.name() + "'");
        }
    }
}

std::vector<CSourceElement> CSourceElement::children()
{
    reportUnasked();
    std::vector<CSourceElement> elements;
    for (const pugi::xml_node child : node_.children()) {
        if (child.type() == pugi::node_element) {
            elements.emplace_back(source_, child);
        } else {
            source_.report(child, "text where only elements may stand");
        }
    }
    return elements;
}

void CSourceElement::close()
{
    for (const CSourceElement& child : children()) {
        child.report("<" + name() + "> holds no <" + child.name() + ">");
    }
}

void CSourceElement::report(const char* attribute, const std::string& message) const
{
    const pugi::xml_attribute found = node_.attribute(attribute);
    if (found) {
        source_.report(found, message);
    } else {
        source_.report(node_, message);
    }
}

std::optional<CSourceElement> rootElement(CXmlSource& source, const char* name)
{
    if (!source.isGood()) {
        return std::nullopt;
    }
    std::optional<CSourceElement> root;
    for (const pugi::xml_node node : source.document().children()) {
        if (root || node.type() != pugi::node_element || node.name() != std::string_view(name)) {
            source.report(node, std::string("the file must hold one <") + name + "> and nothing else");
            return std::nullopt;
        }
        root.emplace(source, node);
    }
    return root;
}

} // namespace qel::tools
