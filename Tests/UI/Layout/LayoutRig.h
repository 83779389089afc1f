// Layouts from short XML.
#pragma once

#include "CompileXml.h"
#include "Layout/CLayoutTree.h"

#include <ostream>

namespace qel::test {

// "<v n=" stands for "<ui:view name=", and the root is a window of 400 x 300, unless its attributes begin
// with a width.
inline std::string layoutXml(std::string views, const std::string& rootAttributes = {})
{
    const auto replace = [&](const std::string& from, const std::string& to) {
        for (std::size_t at = 0; (at = views.find(from, at)) != std::string::npos; at += to.size()) {
            views.replace(at, from.size(), to);
        }
    };
    replace("<v n=", "<ui:view name=");
    replace("</v>", "</ui:view>");
    const bool hasSize = rootAttributes.find("width=") == 0;
    return R"(<tree><ui:view name="root" is-root-view="1" placement="full" )" +
           (hasSize ? rootAttributes : R"(width="400" height="300" )" + rootAttributes) + ">" + views +
           "</ui:view></tree>";
}

class LayoutRig : public tools::CLayoutTree
{
public:
    explicit LayoutRig(const std::string& views, const std::string& rootAttributes = {}, double scale = 1.0)
        : CLayoutTree(compileXml(layoutXml(views, rootAttributes)), scale)
    {}

    CRect rect(const std::string& path) const { return view("root" + path).getViewArea().getRect(); }
    CViewArea& area(const std::string& path) const { return view("root" + path).getViewArea(); }
    // Sets an attribute and solves.
    void change(const std::string& path, const std::string& attribute, const std::string& value)
    {
        set("root" + path, attribute, value);
        solve();
    }
};

} // namespace qel::test

namespace qel {

inline void PrintTo(const CRect& rect, std::ostream* out)
{
    *out << rect.x << ' ' << rect.y << ' ' << rect.width << ' ' << rect.height;
}

} // namespace qel
