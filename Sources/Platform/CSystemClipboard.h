// Text transfer with other programs.
#pragma once

#include <functional>
#include <optional>
#include <string>

namespace qel::platform {

// The clipboard as one display sees it, on the display's thread. All text is UTF-8 without NUL.
class CSystemClipboard
{
public:
    // Nothing when there is no text, or its owner does not answer within kTimeoutSec.
    using TextHandler = std::function<void(const std::optional<std::string>& text)>;

    static constexpr double kTimeoutSec = 2.0;
    static constexpr std::size_t kMaxTextBytes = 4 << 20; // of text taken over; a longer one counts as none

    virtual ~CSystemClipboard() = default;

    // On Linux the text is handed to others by this display, so it is there as long as the editor is open.
    virtual void setText(const std::string& text) = 0;
    // Calls back once: on Windows before it returns, on Linux from a later processEvents(). A new request
    // takes the place of one under way, whose handler is dropped without a call; so it is when the display is
    // destroyed.
    virtual void requestText(TextHandler handler) = 0;
};

} // namespace qel::platform
