// Drawings of image sets: SVG with a little arithmetic around it.
#pragma once

#include "GraphicsCompiler/Expression.h"
#include "TreeCompiler/CXmlSource.h"

#include <filesystem>
#include <map>
#include <memory>
#include <string>
#include <vector>

namespace qel::tools {

// A fault of the source that has been reported; what it stands in is given up.
struct CReportedFault
{};

// Turns the content of a <layer> into plain SVG for one image at one scale. SVG elements pass through; the
// "{expressions}" of their attributes are filled in. These stand for something else:
//
//   <let name="r" value="w / 2 - 3"/>        a name for the elements that follow it
//   <for name="k" from="0" to="9"> ...        its content once for each whole number
//   <if test="k != 4"> ...                    its content or nothing
//   <insert name="lamp" x="3" lit="1"/>       the content of <define name="lamp" ...>, which sees x and lit
//
// The attributes of a <define> are the defaults of its parameters.
class CDrawing
{
public:
    explicit CDrawing(CXmlSource& source) : source_(source) {}

    // <define>, and <include file="..."/> of a file of such, whose path is added to `files`.
    void define(pugi::xml_node node);
    void include(pugi::xml_node node, std::vector<std::filesystem::path>& files);

    // SVG of the content of `layer`. Throws CReportedFault.
    std::string expand(pugi::xml_node layer, const CScope& scope);

    // <let>
    void let(CXmlSource& source, pugi::xml_node node, CScope& scope);
    // The value of an attribute that is an expression. Throws CReportedFault, also when it is missing.
    double number(CXmlSource& source, pugi::xml_node node, const char* name, const CScope& scope);

private:
    struct Definition
    {
        CXmlSource* source;
        pugi::xml_node node;
    };

    void define(CXmlSource& source, pugi::xml_node node);
    void content(CXmlSource& source, pugi::xml_node parent, const CScope& outer, std::string& svg);
    void element(CXmlSource& source, pugi::xml_node node, CScope& scope, std::string& svg);
    void loop(CXmlSource& source, pugi::xml_node node, const CScope& scope, std::string& svg);
    void insert(CXmlSource& source, pugi::xml_node node, const CScope& scope, std::string& svg);
    void plain(CXmlSource& source, pugi::xml_node node, const CScope& scope, std::string& svg);
    double number(CXmlSource& source, pugi::xml_attribute attribute, const CScope& scope);
    [[noreturn]] void fail(CXmlSource& source, pugi::xml_node node, const std::string& message);

    CXmlSource& source_;
    std::vector<std::unique_ptr<CXmlSource>> included_;
    std::map<std::string, Definition, std::less<>> definitions_;
    int depth_ = 0;
};

} // namespace qel::tools
