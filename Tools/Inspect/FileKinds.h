// The compiled files that the inspector can print.
#pragma once

#include <cstdint>
#include <iosfwd>
#include <span>
#include <string>
#include <string_view>

namespace qel::tools {

// One kind of compressed chunk: its ID as four letters, what it is, and how to print what it unpacks to. A
// printer throws CToolError when the payload is damaged. A new kind is one file with a printer, declared
// here, and one row.
struct CFileKind
{
    std::string_view id;
    std::string_view title;
    void (*print)(std::span<const std::uint8_t> payload, std::ostream& out);
};

std::span<const CFileKind> fileKinds();

void printTree(std::span<const std::uint8_t> payload, std::ostream& out);
void printString(std::span<const std::uint8_t> payload, std::ostream& out);
void printPreset(std::span<const std::uint8_t> payload, std::ostream& out);
void printBank(std::span<const std::uint8_t> payload, std::ostream& out);
void printList(std::span<const std::uint8_t> payload, std::ostream& out);

// Text between quotes on one line: quotes, backslashes and control characters are escaped.
std::string printable(std::string_view utf8);

} // namespace qel::tools
