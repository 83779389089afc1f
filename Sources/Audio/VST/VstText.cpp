// Text across the binary interface.
#include "VstText.h"

#include <cstring>
#include <string>

namespace vst24 {

void writeText(char* out, std::size_t bytes, const qel::CString& text)
{
    if (!out || bytes == 0) {
        return;
    }
    const std::string utf8 = text.toUtf8();
    std::size_t length = utf8.size();
    if (length >= bytes) {
        length = bytes - 1;
        while (length > 0 && (static_cast<unsigned char>(utf8[length]) & 0xC0) == 0x80) {
            --length;
        }
    }
    std::memcpy(out, utf8.data(), length);
    out[length] = 0;
}

qel::CString readText(const void* text, std::size_t bytes)
{
    if (!text) {
        return {};
    }
    const char* from = static_cast<const char*>(text);
    const void* end = std::memchr(from, 0, bytes);
    return qel::CString::fromUtf8(
        {from, end ? static_cast<std::size_t>(static_cast<const char*>(end) - from) : bytes});
}

} // namespace vst24
