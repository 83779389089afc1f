// From one source of graphics to what its file holds.
#pragma once

#include "GraphicsCompiler/GraphicsFile.h"
#include "TreeCompiler/CXmlSource.h"

#include <filesystem>
#include <string>
#include <vector>

namespace qel::tools {

// The kinds of sources are told by their root elements, each with a file pair of its own:
//
//   <image-set>   compileImageSet   ImageSetSource.h
//   <font>        compileFont       FontSource.h
//   <brush-set>   compileBrushSet   BrushSource.h
//   <palette>     compilePalette    PaletteSource.h
//
// Such a function has the form
//
//   CImageSetFile compileImageSet(CXmlSource& source, std::vector<std::filesystem::path>& files);
//
// Faults go to source.report(), with the place they lie at; the result is used only if there are none.
// Further files that it reads are added to `files`, for the dependency list.
struct CGraphicsSource
{
    CGraphicsFile result;
    std::vector<CDiagnostic> diagnostics;     // none: the result is good
    std::vector<std::filesystem::path> files; // all that were read, the source itself first
};

// Throws CToolError when the file cannot be read.
CGraphicsSource compileGraphics(const std::filesystem::path& path);

} // namespace qel::tools
