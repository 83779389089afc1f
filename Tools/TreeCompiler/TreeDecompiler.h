// From a compiled tree back to XML.
#pragma once

#include "TreeCompiler/CTreeNode.h"

#include <string>

namespace qel::tools {

// XML text that compiles to the same payload, byte for byte. Throws CToolError, naming the node, for a tree
// that has no such form because the compiler would never make it: a root with a tag or name, a template whose
// parts disagree, a value the loader would not read as it stands.
std::string decompileTree(const CTreeNode& root);

} // namespace qel::tools
