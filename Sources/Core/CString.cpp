// The dual narrow/wide string of the whole system.
#include "CString.h"

#include <algorithm>
#include <charconv>
#include <cstdlib>
#include <cstring>

namespace qel {

namespace {

bool anyWide(std::u16string_view characters)
{
    return std::any_of(characters.begin(), characters.end(), [](char16_t c) { return c >= 256; });
}

} // namespace

CString::CString(std::string_view latin1) : CString()
{
    reserve(latin1.size(), false);
    std::copy(latin1.begin(), latin1.end(), reinterpret_cast<char*>(data_));
    length_ = static_cast<std::uint32_t>(latin1.size());
}

CString::CString(std::u16string_view characters) : CString()
{
    reserve(characters.size(), anyWide(characters));
    for (std::size_t i = 0; i < characters.size(); ++i) {
        if (wide_) {
            wide()[i] = characters[i];
        } else {
            narrow()[i] = static_cast<std::uint8_t>(characters[i]);
        }
    }
    length_ = static_cast<std::uint32_t>(characters.size());
}

CString::CString(const CString& other) : CString()
{
    *this = other;
}

CString::CString(CString&& other) noexcept : CString()
{
    take(other);
}

CString& CString::operator=(const CString& other)
{
    if (this != &other) {
        length_ = 0;
        wide_ = false;
        reserve(other.length_, other.wide_);
        if (isInline() && other.isInline()) {
            std::memcpy(inline_, other.inline_, kInlineBytes); // a length known here: no call
        } else {
            std::memcpy(data_, other.data_, other.length_ * other.width());
        }
        length_ = other.length_;
    }
    return *this;
}

CString& CString::operator=(CString&& other) noexcept
{
    if (this != &other) {
        if (!isInline()) {
            std::free(data_);
        }
        take(other);
    }
    return *this;
}

CString::~CString()
{
    if (!isInline()) {
        std::free(data_);
    }
}

void CString::take(CString& other) noexcept
{
    length_ = other.length_;
    wide_ = other.wide_;
    capacityBytes_ = other.capacityBytes_;
    if (other.isInline()) {
        data_ = inline_;
        std::memcpy(inline_, other.inline_, kInlineBytes);
    } else {
        data_ = other.data_;
        other.data_ = other.inline_;
        other.capacityBytes_ = kInlineBytes;
    }
    other.length_ = 0;
    other.wide_ = false;
}

void CString::regrow(std::size_t characters, bool wideWanted)
{
    const bool mustWiden = wideWanted && !wide_;
    const std::size_t bytes = characters * ((wide_ || wideWanted) ? 2 : 1);
    if (bytes > capacityBytes_) {
        const std::size_t grown = std::max(bytes, std::size_t{2} * capacityBytes_);
        void* memory = grown <= INT32_MAX ? std::malloc(grown) : nullptr;
        if (!memory) {
            std::abort();
        }
        std::memcpy(memory, data_, length_ * width());
        if (!isInline()) {
            std::free(data_);
        }
        data_ = memory;
        capacityBytes_ = static_cast<std::uint32_t>(grown) & INT32_MAX;
    }
    if (mustWiden) {
        // Last to first, since each character grows into the place of the next.
        for (std::size_t i = length_; i-- > 0;) {
            const char16_t character = narrow()[i];
            std::memcpy(static_cast<std::byte*>(data_) + 2 * i, &character, 2);
        }
        wide_ = true;
    }
}

CString CString::fromUtf8(std::string_view bytes)
{
    // Nearly all text is ASCII to its end.
    const auto plain = std::find_if(bytes.begin(), bytes.end(), [](char c) { return c == 0 || (c & 0x80); });
    auto i = static_cast<std::size_t>(plain - bytes.begin());
    CString result(bytes.substr(0, i));
    while (i < bytes.size()) {
        const auto lead = static_cast<std::uint8_t>(bytes[i++]);
        std::uint32_t codePoint = lead;
        std::size_t continuations = 0;
        if (lead >= 0x80) {
            if ((lead & 0xE0) == 0xC0) {
                codePoint = lead & 0x1Fu;
                continuations = 1;
            } else if ((lead & 0xF0) == 0xE0) {
                codePoint = lead & 0x0Fu;
                continuations = 2;
            } else if ((lead & 0xF8) == 0xF0) {
                codePoint = lead & 0x07u;
                continuations = 3;
            } else {
                continue;
            }
        }
        if (bytes.size() - i < continuations) {
            break;
        }
        for (; continuations > 0; --continuations) {
            codePoint = (codePoint << 6) | (static_cast<std::uint8_t>(bytes[i++]) & 0x3Fu);
        }
        if (codePoint == 0) {
            break;
        }
        result.append(static_cast<char16_t>(codePoint));
    }
    return result;
}

CString CString::number(std::int64_t value)
{
    char text[24];
    const auto end = std::to_chars(text, text + sizeof text, value).ptr;
    return CString(std::string_view(text, static_cast<std::size_t>(end - text)));
}

void CString::clear()
{
    length_ = 0;
    wide_ = false;
}

void CString::append(char16_t character)
{
    reserve(length_ + std::size_t{1}, wide_ || character >= 256);
    if (wide_) {
        wide()[length_] = character;
    } else {
        narrow()[length_] = static_cast<std::uint8_t>(character);
    }
    ++length_;
}

void CString::append(const CString& text)
{
    if (&text == this) {
        append(CString(text));
        return;
    }
    reserve(length_ + std::size_t{text.length_}, wide_ || text.wide_);
    if (wide_ == text.wide_) {
        std::memcpy(static_cast<std::byte*>(data_) + length_ * width(), text.data_, text.length_ * width());
    } else {
        for (std::size_t i = 0; i < text.length_; ++i) {
            wide()[length_ + i] = text[i];
        }
    }
    length_ += text.length_;
}

CString& CString::operator+=(const CString& text)
{
    append(text);
    return *this;
}

CString& CString::operator+=(char16_t character)
{
    append(character);
    return *this;
}

CString CString::substring(std::size_t start, std::size_t count) const
{
    if (start >= length_) {
        return {};
    }
    count = std::min(count, length_ - start);
    if (wide_) {
        return CString(std::u16string_view(wide() + start, count));
    }
    return CString(latin1().substr(start, count));
}

std::size_t CString::find(char16_t character, std::size_t from) const
{
    if (!wide_) {
        return character < 256 ? latin1().find(static_cast<char>(character), from) : kNone;
    }
    for (std::size_t i = from; i < length_; ++i) {
        if ((*this)[i] == character) {
            return i;
        }
    }
    return kNone;
}

std::size_t CString::findLast(char16_t character) const
{
    if (!wide_) {
        return character < 256 ? latin1().rfind(static_cast<char>(character)) : kNone;
    }
    for (std::size_t i = length_; i-- > 0;) {
        if ((*this)[i] == character) {
            return i;
        }
    }
    return kNone;
}

bool CString::startsWith(std::string_view start) const
{
    return wide_ ? substring(0, start.size()).equals(start) : latin1().starts_with(start);
}

std::vector<CString> CString::split(char16_t separator) const
{
    std::vector<CString> parts;
    std::size_t start = 0;
    for (std::size_t end = find(separator); end != kNone; end = find(separator, start)) {
        parts.push_back(substring(start, end - start));
        start = end + 1;
    }
    parts.push_back(substring(start));
    return parts;
}

std::vector<CString> CString::splitWords() const
{
    std::vector<CString> words = split(u' ');
    std::erase_if(words, [](const CString& word) { return word.isEmpty(); });
    return words;
}

std::string CString::toUtf8() const
{
    std::string bytes;
    bytes.reserve(length_);
    for (std::size_t i = 0; i < length_; ++i) {
        const std::uint32_t c = (*this)[i];
        if (c == 0) {
            break;
        }
        if (c < 0x80) {
            bytes.push_back(static_cast<char>(c));
        } else if (c < 0x800) {
            bytes.push_back(static_cast<char>(0xC0 | (c >> 6)));
            bytes.push_back(static_cast<char>(0x80 | (c & 0x3F)));
        } else if (c < 0xD800 || c > 0xDFFF) {
            bytes.push_back(static_cast<char>(0xE0 | (c >> 12)));
            bytes.push_back(static_cast<char>(0x80 | ((c >> 6) & 0x3F)));
            bytes.push_back(static_cast<char>(0x80 | (c & 0x3F)));
        }
    }
    return bytes;
}

bool CString::equals(std::string_view text) const
{
    if (!wide_) {
        return latin1() == text;
    }
    if (length_ != text.size()) {
        return false;
    }
    for (std::size_t i = 0; i < length_; ++i) {
        if ((*this)[i] != static_cast<std::uint8_t>(text[i])) {
            return false;
        }
    }
    return true;
}

bool operator==(const CString& a, const CString& b)
{
    if (a.length_ != b.length_) {
        return false;
    }
    if (a.wide_ == b.wide_) {
        return std::memcmp(a.data_, b.data_, a.length_ * a.width()) == 0;
    }
    return (a <=> b) == 0;
}

std::strong_ordering operator<=>(const CString& a, const CString& b)
{
    const std::size_t common = std::min(a.length_, b.length_);
    if (!a.wide_ && !b.wide_) {
        // Most names differ here already.
        if (common > 0 && a.narrow()[0] != b.narrow()[0]) {
            return a.narrow()[0] <=> b.narrow()[0];
        }
        if (const int order = std::memcmp(a.data_, b.data_, common); order != 0) {
            return order <=> 0;
        }
        return a.length_ <=> b.length_;
    }
    for (std::size_t i = 0; i < common; ++i) {
        if (a[i] != b[i]) {
            return a[i] <=> b[i];
        }
    }
    return a.length_ <=> b.length_;
}

CString operator+(CString a, const CString& b)
{
    a.append(b);
    return a;
}

} // namespace qel
