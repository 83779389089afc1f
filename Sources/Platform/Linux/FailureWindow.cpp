// The failure on standard error, and in a window where there is a display.
#include "FailureWindow.h"

#include "CXcbFailureWindow.h"

#include <cstdio>

namespace qel::platform {

void showFailureWindow(const std::string& title, const std::string& text, const std::string& details)
{
    std::fprintf(stderr, "%s\n%s\n%s\n", title.c_str(), text.c_str(), details.c_str());
    CXcbFailureWindow window(text, details);
    if (window.open(title)) {
        window.run();
    }
}

} // namespace qel::platform
