// A layout as text, as JSON, and as a picture.
#pragma once

#include "Layout/CLayoutTree.h"

#include <iosfwd>

namespace qel::tools {

// One line a view: path, x, y, width, height.
void printLayoutText(const std::vector<CLayoutTree::View>& views, std::ostream& out);
// An array of objects with `path`, `x`, `y`, `width` and `height`.
void printLayoutJson(const std::vector<CLayoutTree::View>& views, std::ostream& out);
// The views' outlines with their names, a pixel of the window a pixel of the picture. Throws CToolError if
// the file cannot be written.
void drawLayout(const std::vector<CLayoutTree::View>& views, const std::filesystem::path& png);

} // namespace qel::tools
