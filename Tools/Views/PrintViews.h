// The views of a window, as text, as JSON, and as a user sees them.
#pragma once

#include "CWindow.h"

#include <filesystem>
#include <iosfwd>
#include <string>
#include <vector>

namespace qel::tools {

struct CViewRecord
{
    std::string path;
    std::string tag;
    CRect rect; // window pixels, not clipped
    bool isVisible = false;
    bool isDisabled = false; // by itself or by a view above
    std::string title;
    std::string hint;
    std::string param; // the parameter that it is bound to, by the first of its bindings
};

// All views of a window in the order of the tree.
std::vector<CViewRecord> listViews(CWindow& window);

void printViewsText(const std::vector<CViewRecord>& views, std::ostream& out);
void printViewsJson(const std::vector<CViewRecord>& views, std::ostream& out);
// What the window shows; throws CToolError if the file cannot be written.
void writePicture(CWindow& window, const std::filesystem::path& png);

} // namespace qel::tools
