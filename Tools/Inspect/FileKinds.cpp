// The compiled files that the inspector can print.
#include "Inspect/FileKinds.h"

#include <cstdio>

namespace qel::tools {

namespace {

constexpr CFileKind kKinds[] = {
    {"cxml", "compiled tree", printTree}, {"dstr", "stored string", printString},
    {"aprs", "preset", printPreset},      {"abnk", "preset bank", printBank},
    {"alst", "preset list", printList},
};

} // namespace

std::span<const CFileKind> fileKinds()
{
    return kKinds;
}

std::string printable(std::string_view utf8)
{
    std::string text = "\"";
    for (const char c : utf8) {
        const auto byte = static_cast<unsigned char>(c);
        if (c == '"' || c == '\\') {
            text += '\\';
            text += c;
        } else if (byte < 0x20 || byte == 0x7F) {
            char code[8];
            std::snprintf(code, sizeof code, "\\x%02X", static_cast<unsigned>(byte));
            text += code;
        } else {
            text += c;
        }
    }
    return text + "\"";
}

} // namespace qel::tools
