// The clipboard of windows without a window system.
#pragma once

#include "CSystemClipboard.h"

namespace qel {

// Keeps its text and hands it out at once.
class CMemoryClipboard : public platform::CSystemClipboard
{
public:
    void setText(const std::string& text) override { text_ = text; }
    void requestText(TextHandler handler) override { handler(text_); }

private:
    std::optional<std::string> text_;
};

} // namespace qel
