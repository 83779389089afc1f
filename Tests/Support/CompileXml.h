// A compiled tree from XML text.
#pragma once

#include "TemporaryFolder.h"
#include "TreeCompiler/CTreeCompiler.h"

#include <fstream>
#include <stdexcept>

namespace qel::test {

// Compiles the text of a <tree>.
inline tools::CTreeNode compileXml(const std::string& xml)
{
    const TemporaryFolder folder;
    const std::string path = folder.path("tree.xml");
    std::ofstream(path) << xml;
    tools::CTreeCompiler compiler;
    if (!compiler.compile(path)) {
        throw std::runtime_error(compiler.diagnostics().front().message);
    }
    return compiler.root();
}

} // namespace qel::test
