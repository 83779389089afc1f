// The dual narrow/wide string of the whole system.
#pragma once

#include <compare>
#include <cstddef>
#include <cstdint>
#include <map>
#include <string>
#include <string_view>
#include <vector>

namespace qel {

// A string of 16-bit characters that keeps one byte a character as long as all of them are below 256 (the
// Latin-1 view), and two from the first character of 256 or above on. 48 bytes live inside the object, so
// short names cost no heap. A narrow and a wide string compare equal when their characters do; order is by
// character value.
//
// Plain char text given to a constructor is Latin-1; text from files is UTF-8 and comes in through
// fromUtf8(). Not safe for concurrent writers. Running out of memory ends the process.
class CString
{
public:
    static constexpr std::size_t kInlineBytes = 48;
    static constexpr std::size_t kNone = std::string_view::npos;

    CString() noexcept : data_(inline_) {}
    CString(const char* latin1) : CString(std::string_view(latin1)) {}
    CString(std::string_view latin1);
    CString(const std::string& latin1) : CString(std::string_view(latin1)) {}
    CString(std::u16string_view characters);
    CString(const CString& other);
    CString(CString&& other) noexcept;
    CString& operator=(const CString& other);
    CString& operator=(CString&& other) noexcept;
    ~CString();

    // Decodes UTF-8 leniently: stray lead bytes are skipped, continuation bytes not validated; a sequence cut
    // short or a NUL ends the text; code points above 0xFFFF keep their low 16 bits.
    static CString fromUtf8(std::string_view bytes);
    // Decimal text of a whole number.
    static CString number(std::int64_t value);

    std::size_t length() const { return length_; }
    bool isEmpty() const { return length_ == 0; }
    bool isWide() const { return wide_; }
    // The character at `index`, which must be below length().
    char16_t operator[](std::size_t index) const { return wide_ ? wide()[index] : narrow()[index]; }

    void clear();
    void append(char16_t character);
    void append(const CString& text);
    CString& operator+=(const CString& text);
    CString& operator+=(char16_t character);
    // The text from `start` on, at most `count` characters; a start beyond the end gives the empty string.
    CString substring(std::size_t start, std::size_t count = kNone) const;

    // First or last position of `character`, or kNone.
    std::size_t find(char16_t character, std::size_t from = 0) const;
    std::size_t findLast(char16_t character) const;
    bool startsWith(std::string_view start) const; // Latin-1

    // All parts between separators, empty ones included: n separators give n + 1 parts.
    std::vector<CString> split(char16_t separator) const;
    // The parts between runs of blanks, without empty ones.
    std::vector<CString> splitWords() const;

    // UTF-8 text. Surrogates (0xD800 to 0xDFFF) are dropped and a NUL ends the text, as in every file we
    // write.
    std::string toUtf8() const;

    friend bool operator==(const CString& a, const CString& b);
    friend bool operator==(const CString& a, const char* latin1) { return a.equals(latin1); }
    friend std::strong_ordering operator<=>(const CString& a, const CString& b);

private:
    bool equals(std::string_view text) const; // Latin-1
    bool isInline() const { return data_ == inline_; }
    // Makes room for `characters` of the given width, keeping the text; widens it when asked to.
    void reserve(std::size_t characters, bool wideWanted)
    {
        if ((wideWanted && !wide_) || characters * width() > capacityBytes_) {
            regrow(characters, wideWanted);
        }
    }
    void regrow(std::size_t characters, bool wideWanted);
    void take(CString& other) noexcept;
    std::size_t width() const { return wide_ ? 2 : 1; }
    std::string_view latin1() const { return {static_cast<const char*>(data_), length_}; } // if narrow
    std::uint8_t* narrow() const { return static_cast<std::uint8_t*>(data_); }
    char16_t* wide() const { return static_cast<char16_t*>(data_); }

    void* data_;
    std::uint32_t length_ = 0;
    std::uint32_t capacityBytes_ : 31 = kInlineBytes;
    std::uint32_t wide_ : 1 = 0;
    alignas(8) std::byte inline_[kInlineBytes];
};

CString operator+(CString a, const CString& b);

template <class T>
using CStringMap = std::map<CString, T>;

} // namespace qel
