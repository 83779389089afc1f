// Tells the user why the program could not start.
#include "FailureReport.h"

#include "FailureWindow.h"

namespace qel {

namespace {

constexpr const char* kTitle = "Brintal Application Message";
constexpr const char* kText = "An issue has happened when executing Brintal application.\n"
                              "Please copy the details below and send them to the maker.";
constexpr const char* kNoDetails = "<no details>";

} // namespace

void showFailureWindow(const CError& error)
{
    const std::string details = error.text();
    platform::showFailureWindow(kTitle, kText, details.empty() ? kNoDetails : details);
}

} // namespace qel
