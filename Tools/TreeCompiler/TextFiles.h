// Text files that the compilers write.
#pragma once

#include <filesystem>
#include <string>
#include <vector>

namespace qel::tools {

// Throws CToolError when it cannot be written.
void writeTextFile(const std::string& path, const std::string& text);

// "out: in1 in2", as Make and Ninja read it.
std::string dependencyRule(const std::string& output, const std::vector<std::filesystem::path>& files);

} // namespace qel::tools
