// Drawings of image sets.
#include "GraphicsCompiler/CDrawing.h"

#include "TreeCompiler/ToolError.h"

#include <algorithm>

namespace qel::tools {

namespace {

constexpr int kMostNested = 32;
constexpr int kMostRounds = 10000;

void appendEscaped(std::string& svg, std::string_view text)
{
    for (const char c : text) {
        switch (c) {
        case '&':
            svg += "&amp;";
            break;
        case '<':
            svg += "&lt;";
            break;
        case '"':
            svg += "&quot;";
            break;
        default:
            svg += c;
        }
    }
}

// The renderer leaves out what it does not know, so that a slip of the pen would be seen on the screen only.
bool isSvgElement(std::string_view name)
{
    constexpr std::string_view kNames[] = {
        "circle",         "clipPath",       "defs", "ellipse", "filter",  "g",
        "linearGradient", "line",           "mask", "path",    "pattern", "polygon",
        "polyline",       "radialGradient", "rect", "stop",    "symbol",  "use"};
    return name.starts_with("fe") || std::ranges::find(kNames, name) != std::end(kNames);
}

} // namespace

void CDrawing::fail(CXmlSource& source, pugi::xml_node node, const std::string& message)
{
    source.report(node, message);
    throw CReportedFault();
}

double CDrawing::number(CXmlSource& source, pugi::xml_attribute attribute, const CScope& scope)
{
    try {
        return evaluate(attribute.value(), scope);
    } catch (const CExpressionError& error) {
        source.report(attribute, error.what());
        throw CReportedFault();
    }
}

double CDrawing::number(CXmlSource& source, pugi::xml_node node, const char* name, const CScope& scope)
{
    const pugi::xml_attribute attribute = node.attribute(name);
    if (attribute.empty()) {
        fail(source, node, "<" + std::string(node.name()) + "> needs the attribute '" + name + "'");
    }
    return number(source, attribute, scope);
}

void CDrawing::define(pugi::xml_node node)
{
    define(source_, node);
}

void CDrawing::define(CXmlSource& source, pugi::xml_node node)
{
    const std::string name = node.attribute("name").value();
    if (name.empty()) {
        source.report(node, "<define> needs the attribute 'name'");
    } else if (!definitions_.emplace(name, Definition{&source, node}).second) {
        source.report(node, "'" + name + "' is defined twice");
    }
}

void CDrawing::include(pugi::xml_node node, std::vector<std::filesystem::path>& files)
{
    const std::filesystem::path path = source_.path().parent_path() / node.attribute("file").value();
    try {
        included_.push_back(std::make_unique<CXmlSource>(path, path.string(), source_.diagnostics()));
    } catch (const CToolError& error) {
        source_.report(node, error.what());
        return;
    }
    files.push_back(path);
    CXmlSource& source = *included_.back();
    if (!source.isGood()) {
        return;
    }
    for (const pugi::xml_node child : source.document().child("drawings").children()) {
        if (std::string_view(child.name()) == "define") {
            define(source, child);
        } else {
            source.report(child, "only <define> stands in <drawings>");
        }
    }
}

std::string CDrawing::expand(pugi::xml_node layer, const CScope& scope)
{
    std::string svg;
    depth_ = 0;
    content(source_, layer, scope, svg);
    return svg;
}

void CDrawing::content(CXmlSource& source, pugi::xml_node parent, const CScope& outer, std::string& svg)
{
    if (++depth_ > kMostNested) {
        fail(source, parent, "too many levels: does a drawing insert itself?");
    }
    CScope scope(&outer);
    for (const pugi::xml_node node : parent.children()) {
        if (node.type() == pugi::node_element) {
            element(source, node, scope, svg);
        } else {
            appendEscaped(svg, node.value());
        }
    }
    --depth_;
}

void CDrawing::element(CXmlSource& source, pugi::xml_node node, CScope& scope, std::string& svg)
{
    const std::string_view name = node.name();
    if (name == "let") {
        let(source, node, scope);
    } else if (name == "for") {
        loop(source, node, scope, svg);
    } else if (name == "if") {
        if (number(source, node, "test", scope) != 0.0) {
            content(source, node, scope, svg);
        }
    } else if (name == "insert") {
        insert(source, node, scope, svg);
    } else {
        plain(source, node, scope, svg);
    }
}

void CDrawing::let(CXmlSource& source, pugi::xml_node node, CScope& scope)
{
    const std::string name = node.attribute("name").value();
    if (name.empty()) {
        fail(source, node, "<let> needs the attribute 'name'");
    }
    scope.set(name, number(source, node, "value", scope));
}

void CDrawing::loop(CXmlSource& source, pugi::xml_node node, const CScope& scope, std::string& svg)
{
    const std::string name = node.attribute("name").value();
    const double from = number(source, node, "from", scope);
    const double to = number(source, node, "to", scope);
    if (name.empty() || to - from > kMostRounds) {
        fail(source, node, "<for> needs a name, and at most " + std::to_string(kMostRounds) + " rounds");
    }
    for (double value = from; value <= to + 1e-9; value += 1.0) {
        CScope round(&scope);
        round.set(name, value);
        content(source, node, round, svg);
    }
}

void CDrawing::insert(CXmlSource& source, pugi::xml_node node, const CScope& scope, std::string& svg)
{
    const std::string_view name = node.attribute("name").value();
    const auto found = definitions_.find(name);
    if (found == definitions_.end()) {
        fail(source, node, "no drawing '" + std::string(name) + "' is defined");
    }
    const Definition& definition = found->second;
    CScope parameters(&scope);
    for (const pugi::xml_attribute standard : definition.node.attributes()) {
        if (std::string_view(standard.name()) != "name" && node.attribute(standard.name()).empty()) {
            parameters.set(standard.name(), number(*definition.source, standard, parameters));
        }
    }
    for (const pugi::xml_attribute given : node.attributes()) {
        if (std::string_view(given.name()) != "name") {
            parameters.set(given.name(), number(source, given, scope));
        }
    }
    content(*definition.source, definition.node, parameters, svg);
}

void CDrawing::plain(CXmlSource& source, pugi::xml_node node, const CScope& scope, std::string& svg)
{
    const std::string name = node.name();
    if (!isSvgElement(name)) {
        fail(source, node, "<" + name + "> is no element of a drawing");
    }
    svg += "<" + name;
    for (const pugi::xml_attribute attribute : node.attributes()) {
        svg += ' ';
        svg += attribute.name();
        svg += "=\"";
        try {
            appendEscaped(svg, fillIn(attribute.value(), scope));
        } catch (const CExpressionError& error) {
            source.report(attribute, error.what());
            throw CReportedFault();
        }
        svg += '"';
    }
    svg += '>';
    content(source, node, scope, svg);
    svg += "</" + name + ">";
}

} // namespace qel::tools
