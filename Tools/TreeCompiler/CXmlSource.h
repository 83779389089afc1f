// One XML file with the positions of everything in it.
#pragma once

#include <pugixml.hpp>

#include <filesystem>
#include <string>
#include <vector>

namespace qel::tools {

// A message about a place in a source file. Line and column count from 1, the column in characters; line 0
// means the file as a whole.
struct CDiagnostic
{
    std::string file;
    std::size_t line = 0;
    std::size_t column = 0;
    std::string message;

    // "file:line:column: message"
    std::string text() const;
    bool operator==(const CDiagnostic&) const = default;
};

// Reads and parses one file, and judges what the parser is lenient about: bytes that are not UTF-8 and
// references that mean no character. If that finds anything, isGood() is false and the document is not to be
// used. Comments, processing instructions and blank text are not in the document.
class CXmlSource
{
public:
    // Throws CToolError when the file cannot be read. `shownName` is the name in messages.
    CXmlSource(const std::filesystem::path& path, std::string shownName,
               std::vector<CDiagnostic>& diagnostics);
    CXmlSource(const CXmlSource&) = delete;
    CXmlSource& operator=(const CXmlSource&) = delete;

    bool isGood() const { return good_; }
    const std::string& shownName() const { return shownName_; }
    const std::filesystem::path& path() const { return path_; }
    const pugi::xml_document& document() const { return document_; }
    // The list of messages that it was given, for files that this one names.
    std::vector<CDiagnostic>& diagnostics() { return diagnostics_; }

    void report(pugi::xml_node node, std::string message);
    void report(pugi::xml_attribute attribute, std::string message);

private:
    void reportAt(std::size_t offset, std::string message);
    void checkEncoding();
    void checkReferences();
    void checkReference(std::size_t start);
    void parse();
    // The parser works in the buffer and leaves names and texts where they stood.
    std::size_t offsetOf(const char* text) const { return static_cast<std::size_t>(text - buffer_.data()); }

    std::filesystem::path path_;
    std::string shownName_;
    std::vector<CDiagnostic>& diagnostics_;
    std::string text_;
    std::string buffer_;
    pugi::xml_document document_;
    bool good_ = true;
};

} // namespace qel::tools
