// The system's side of the failure window. Internal to this layer.
#pragma once

#include <string>

namespace qel::platform {

void showSystemFailureWindow(const std::string& title, const std::string& text, const std::string& details);

} // namespace qel::platform
