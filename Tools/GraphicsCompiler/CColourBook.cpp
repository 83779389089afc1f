// Named key colours, and colours mixed from them.
#include "GraphicsCompiler/CColourBook.h"

#include "TreeCompiler/ToolError.h"

#include <charconv>

namespace qel::tools {

namespace {

constexpr int kDeepest = 16;

void skipBlanks(std::string_view& rest)
{
    while (!rest.empty() && rest.front() == ' ') {
        rest.remove_prefix(1);
    }
}

void expect(std::string_view& rest, char mark)
{
    skipBlanks(rest);
    if (!rest.starts_with(mark)) {
        throw CToolError(std::string("'") + mark + "' expected before '" + std::string(rest) + "'");
    }
    rest.remove_prefix(1);
}

std::string takeWord(std::string_view& rest)
{
    skipBlanks(rest);
    const std::string word(rest.substr(0, rest.find_first_of(" (),")));
    rest.remove_prefix(word.size());
    return word;
}

CColour hexColour(const std::string& word)
{
    std::uint32_t number = 0;
    const auto result = std::from_chars(word.data() + 1, word.data() + word.size(), number, 16);
    if (word.size() != 7 || result.ec != std::errc() || result.ptr != word.data() + word.size()) {
        throw CToolError("'" + word + "' is no colour: six hexadecimal digits are");
    }
    return {static_cast<double>(number >> 16), static_cast<double>(number >> 8 & 255),
            static_cast<double>(number & 255)};
}

} // namespace

CColour mixed(const CColour& a, const CColour& b, double share)
{
    CColour result = {};
    for (std::size_t i = 0; i < result.size(); ++i) {
        result[i] = a[i] + (b[i] - a[i]) * share;
    }
    return result;
}

const CColour* CColourBook::find(const std::string& key) const
{
    const auto found = keys_.find(key);
    return found == keys_.end() ? nullptr : &found->second;
}

CColour CColourBook::parseMix(std::string_view& rest, const CColour* self, int depth) const
{
    expect(rest, '(');
    const CColour a = parse(rest, self, depth + 1);
    expect(rest, ',');
    const CColour b = parse(rest, self, depth + 1);
    expect(rest, ',');
    const std::string word = takeWord(rest);
    double share = 0.0;
    const auto result = std::from_chars(word.data(), word.data() + word.size(), share);
    if (result.ec != std::errc() || result.ptr != word.data() + word.size() || !(share >= 0 && share <= 1)) {
        throw CToolError("'" + word + "' is no share from 0 to 1");
    }
    expect(rest, ')');
    return mixed(a, b, share);
}

CColour CColourBook::parse(std::string_view& rest, const CColour* self, int depth) const
{
    if (depth > kDeepest) {
        throw CToolError("mixed too deeply");
    }
    const std::string word = takeWord(rest);
    if (word == "mix") {
        return parseMix(rest, self, depth);
    }
    if (word.starts_with('#')) {
        return hexColour(word);
    }
    if (word == "self" && self) {
        return *self;
    }
    const std::size_t dot = word.find('.');
    const CColourBook* book = this;
    if (dot != word.npos) {
        book = neighbours_ ? neighbours_(word.substr(0, dot)) : nullptr;
        if (!book) {
            throw CToolError("there is no palette '" + word.substr(0, dot) + "'");
        }
    }
    const CColour* key = book->find(dot == word.npos ? word : word.substr(dot + 1));
    if (!key) {
        throw CToolError("there is no key colour '" + word + "'");
    }
    return *key;
}

CColour CColourBook::evaluate(std::string_view text, const CColour* self) const
{
    const CColour colour = parse(text, self, 0);
    skipBlanks(text);
    if (!text.empty()) {
        throw CToolError("'" + std::string(text) + "' behind the colour");
    }
    return colour;
}

CColour CColourBook::read(CSourceElement& element, const char* attribute, const CColour* self) const
{
    const std::string text = element.text(attribute);
    if (text.empty()) {
        return {};
    }
    try {
        return evaluate(text, self);
    } catch (const CToolError& error) {
        element.report(attribute, error.what());
        return {};
    }
}

} // namespace qel::tools
