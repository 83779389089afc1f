// Text files that the compilers write.
#include "TreeCompiler/TextFiles.h"

#include "TreeCompiler/ToolError.h"

#include <fstream>

namespace qel::tools {

void writeTextFile(const std::string& path, const std::string& text)
{
    std::ofstream file(path, std::ios::binary);
    file << text;
    file.close();
    if (!file) {
        throw CToolError("cannot write '" + path + "'");
    }
}

std::string dependencyRule(const std::string& output, const std::vector<std::filesystem::path>& files)
{
    const auto escapedPath = [](const std::string& path) {
        std::string text;
        for (const char c : path) {
            text += c == '$' ? "$$" : c == ' ' || c == '#' ? std::string("\\") + c : std::string(1, c);
        }
        return text;
    };
    std::string rule = escapedPath(output) + ":";
    for (const auto& file : files) {
        rule += " " + escapedPath(file.string());
    }
    return rule + "\n";
}

} // namespace qel::tools
