// Patterns for the names of hosts.
#pragma once

#include <string_view>

namespace qel {

// Whether all of `text` matches: `*` stands for any run of characters, none included; all else for itself,
// capital or small.
bool matchesWildcard(std::string_view pattern, std::string_view text);

} // namespace qel
