// Graphics files as readable text.
#pragma once

#include "GraphicsCompiler/GraphicsFile.h"

#include <iosfwd>

namespace qel::tools {

enum class GraphicsDetail
{
    kFacts, // names, counts, sizes; colours at a few values
    kAll,   // pixels, stamps and ramps as hexadecimal bytes as well
};

// XML that says what a file holds.
void printGraphics(const CGraphicsFile& file, GraphicsDetail detail, std::ostream& out);

} // namespace qel::tools
