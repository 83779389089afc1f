// Conversions of text and paths.
#include "WideText.h"

#include "WindowsApi.h"

#include <algorithm>

namespace qel::platform {

namespace {

// Some calls, CreateDirectoryW among them, need 12 characters less than MAX_PATH.
constexpr std::size_t kLongestPlainPath = MAX_PATH - 12 - 1;

int convert(const std::string& utf8, DWORD flags, std::wstring& out)
{
    out.clear();
    if (utf8.empty()) {
        return 0;
    }
    const int length = static_cast<int>(utf8.size());
    const int wideLength = MultiByteToWideChar(CP_UTF8, flags, utf8.data(), length, nullptr, 0);
    if (wideLength <= 0) {
        return lastError();
    }
    out.resize(static_cast<std::size_t>(wideLength));
    MultiByteToWideChar(CP_UTF8, flags, utf8.data(), length, out.data(), wideLength);
    return 0;
}

// The unlimited form takes absolute paths with backslashes only and resolves nothing.
int makeUnlimited(std::wstring& path)
{
    const DWORD size = GetFullPathNameW(path.c_str(), 0, nullptr, nullptr);
    std::wstring full(size, L'\0');
    const DWORD length = size ? GetFullPathNameW(path.c_str(), size, full.data(), nullptr) : 0;
    if (length == 0 || length >= size) {
        return size ? ERROR_INVALID_NAME : lastError();
    }
    full.resize(length);
    path = full.starts_with(L"\\\\") ? L"\\\\?\\UNC" + full.substr(1) : L"\\\\?\\" + full;
    return 0;
}

} // namespace

std::wstring wideText(const std::string& utf8)
{
    std::wstring wide;
    static_cast<void>(convert(utf8, 0, wide));
    return wide;
}

std::string utf8Text(const std::wstring& wide)
{
    if (wide.empty()) {
        return {};
    }
    const int wideLength = static_cast<int>(wide.size());
    const int length = WideCharToMultiByte(CP_UTF8, 0, wide.data(), wideLength, nullptr, 0, nullptr, nullptr);
    std::string utf8(static_cast<std::size_t>(std::max(0, length)), '\0');
    WideCharToMultiByte(CP_UTF8, 0, wide.data(), wideLength, utf8.data(), length, nullptr, nullptr);
    return utf8;
}

int widePath(const std::string& utf8, std::wstring& out)
{
    if (utf8.find('\0') != std::string::npos) {
        return ERROR_INVALID_NAME;
    }
    if (const int error = convert(utf8, MB_ERR_INVALID_CHARS, out)) {
        return error;
    }
    return out.size() > kLongestPlainPath ? makeUnlimited(out) : 0;
}

std::string utf8Path(const std::wstring& wide)
{
    std::string path = utf8Text(wide);
    std::ranges::replace(path, '\\', '/');
    while (path.size() > 1 && path.back() == '/') {
        path.pop_back();
    }
    return path;
}

} // namespace qel::platform
