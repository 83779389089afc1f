// Patterns for the names of hosts.
#include "Wildcard.h"

namespace qel {

// On a mismatch the last star takes one character more. Earlier stars need no second try: what the later one
// can match it can match from there too.
bool matchesWildcard(std::string_view pattern, std::string_view text)
{
    constexpr std::size_t kNone = std::string_view::npos;
    std::size_t p = 0;
    std::size_t t = 0;
    std::size_t star = kNone;
    std::size_t starText = 0;
    while (t < text.size()) {
        if (p < pattern.size() && pattern[p] == '*') {
            star = p++;
            starText = t;
        } else if (p < pattern.size() && pattern[p] == text[t]) {
            ++p;
            ++t;
        } else if (star != kNone) {
            p = star + 1;
            t = ++starText;
        } else {
            return false;
        }
    }
    return pattern.find_first_not_of('*', p) == kNone;
}

} // namespace qel
