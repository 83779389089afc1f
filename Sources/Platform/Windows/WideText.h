// UTF-8 to the UTF-16 of the system and back.
#pragma once

#include <string>

namespace qel::platform {

// For texts shown to a user: malformed parts become replacement characters.
std::wstring wideText(const std::string& utf8);
std::string utf8Text(const std::wstring& wide);

// For paths: malformed UTF-8 and NUL characters are refused with the system's error number. A path too long
// for the plain form comes in the form that has no limit.
[[nodiscard]] int widePath(const std::string& utf8, std::wstring& out);
// With '/' separators and none at the end.
std::string utf8Path(const std::wstring& wide);

} // namespace qel::platform
