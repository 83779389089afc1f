// One XML file with the positions of everything in it.
#include "TreeCompiler/CXmlSource.h"

#include "TreeCompiler/ToolError.h"
#include "TreeCompiler/TreeText.h"

#include <algorithm>
#include <charconv>
#include <fstream>
#include <iterator>

namespace qel::tools {

namespace {

constexpr std::string_view kByteOrderMark = "\xEF\xBB\xBF";

struct Section
{
    std::string_view start;
    std::string_view end;
};
// Where an ampersand is just a character.
constexpr Section kLiteralSections[] = {{"<!--", "-->"}, {"<![CDATA[", "]]>"}, {"<?", "?>"}};

// The number of a character reference such as "#65" or "#x41"; nothing if it is malformed or too large.
std::optional<char32_t> referencedCharacter(std::string_view name)
{
    const int base = name.starts_with("#x") ? 16 : 10;
    name.remove_prefix(base == 16 ? 2 : 1);
    std::uint32_t number = 0;
    const auto result = std::from_chars(name.data(), name.data() + name.size(), number, base);
    if (result.ec != std::errc() || result.ptr != name.data() + name.size()) {
        return std::nullopt;
    }
    return number;
}

} // namespace

std::string CDiagnostic::text() const
{
    if (line == 0) {
        return file + ": " + message;
    }
    return file + ":" + std::to_string(line) + ":" + std::to_string(column) + ": " + message;
}

CXmlSource::CXmlSource(const std::filesystem::path& path, std::string shownName,
                       std::vector<CDiagnostic>& diagnostics)
    : path_(path), shownName_(std::move(shownName)), diagnostics_(diagnostics)
{
    std::ifstream file(path, std::ios::binary);
    if (!file || std::filesystem::is_directory(path)) {
        throw CToolError("cannot read '" + shownName_ + "'");
    }
    text_.assign(std::istreambuf_iterator<char>(file), {});
    if (text_.starts_with(kByteOrderMark)) {
        text_.erase(0, kByteOrderMark.size());
    }
    checkEncoding();
    if (good_) {
        checkReferences();
        parse();
    }
}

void CXmlSource::checkEncoding()
{
    for (std::size_t i = 0; i < text_.size();) {
        const std::size_t start = i;
        const auto codePoint = nextCodePoint(text_, i);
        if (!codePoint || *codePoint == 0) {
            reportAt(start, codePoint ? "NUL character" : "not valid UTF-8");
            good_ = false;
            return;
        }
    }
}

void CXmlSource::checkReferences()
{
    const std::string_view text = text_;
    for (std::size_t i = 0; i < text.size();) {
        const auto section = std::ranges::find_if(
            kLiteralSections, [&](const Section& each) { return text.substr(i).starts_with(each.start); });
        if (section != std::end(kLiteralSections)) {
            const std::size_t end = text.find(section->end, i + section->start.size());
            i = end == text.npos ? text.size() : end + section->end.size();
            continue;
        }
        if (text[i] == '&') {
            checkReference(i);
        }
        ++i;
    }
}

void CXmlSource::checkReference(std::size_t start)
{
    constexpr std::string_view kEntities[] = {"amp", "lt", "gt", "quot", "apos"};
    const std::size_t end = text_.find_first_of(";&<\"' \t\r\n", start + 1);
    const bool closed = end != text_.npos && text_[end] == ';';
    const std::string name = closed ? text_.substr(start + 1, end - start - 1) : "";
    if (std::ranges::find(kEntities, name) != std::end(kEntities)) {
        return;
    }
    const auto refuse = [&](std::string why) {
        reportAt(start, std::move(why));
        good_ = false;
    };
    if (!name.starts_with('#')) {
        refuse(closed && !name.empty() ? "unknown entity '&" + name + ";'"
                                       : "a lone '&' must be written as '&amp;'");
        return;
    }
    const auto codePoint = referencedCharacter(name);
    const auto isSurrogate = [](char32_t c) { return c >= 0xD800 && c <= 0xDFFF; };
    if (!codePoint || *codePoint > 0x10FFFF) {
        refuse("'&" + name + ";' is no character");
    } else if (*codePoint == 0) {
        refuse("'&" + name + ";' is a NUL character, where the loader would end the value");
    } else if (isSurrogate(*codePoint)) {
        refuse("'&" + name + ";' is a surrogate, which is no character by itself");
    }
}

void CXmlSource::parse()
{
    // With a zero of its own at the end: the parser would sacrifice the last character.
    buffer_ = text_ + '\0';
    // As a fragment, so that text outside the root element is seen and not dropped.
    const unsigned options =
        (pugi::parse_default | pugi::parse_fragment) & ~static_cast<unsigned>(pugi::parse_eol);
    const auto result =
        document_.load_buffer_inplace(buffer_.data(), buffer_.size(), options, pugi::encoding_utf8);
    if (!result) {
        good_ = false;
        reportAt(static_cast<std::size_t>(std::max<std::ptrdiff_t>(result.offset, 0)), result.description());
    }
}

void CXmlSource::report(pugi::xml_node node, std::string message)
{
    if (node.type() == pugi::node_element) {
        reportAt(offsetOf(node.name()) - 1, std::move(message));
        return;
    }
    const std::size_t start = offsetOf(node.value());
    const std::size_t visible = text_.find_first_not_of(" \t\r\n", start);
    reportAt(visible == text_.npos ? start : visible, std::move(message));
}

void CXmlSource::report(pugi::xml_attribute attribute, std::string message)
{
    reportAt(offsetOf(attribute.name()), std::move(message));
}

void CXmlSource::reportAt(std::size_t offset, std::string message)
{
    const std::string_view before = std::string_view(text_).substr(0, std::min(offset, text_.size()));
    const std::size_t lineStart = before.rfind('\n') + 1; // npos + 1 is 0
    const auto isCharacterStart = [](char c) { return (static_cast<std::uint8_t>(c) & 0xC0) != 0x80; };
    CDiagnostic diagnostic;
    diagnostic.file = shownName_;
    diagnostic.line = static_cast<std::size_t>(std::ranges::count(before, '\n')) + 1;
    diagnostic.column =
        static_cast<std::size_t>(std::ranges::count_if(before.substr(lineStart), isCharacterStart)) + 1;
    diagnostic.message = std::move(message);
    // A file that is included twice tells its faults once.
    if (std::ranges::find(diagnostics_, diagnostic) == diagnostics_.end()) {
        diagnostics_.push_back(std::move(diagnostic));
    }
}

} // namespace qel::tools
