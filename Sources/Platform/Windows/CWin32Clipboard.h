// The clipboard of Windows.
#pragma once

#include "CSystemClipboard.h"
#include "CWin32Session.h"

#include <memory>
#include <utility>

namespace qel::platform {

// Unicode text; lines end in CR LF there, and in LF here.
class CWin32Clipboard : public CSystemClipboard
{
public:
    explicit CWin32Clipboard(std::shared_ptr<CWin32Session> session) : session_(std::move(session)) {}

    void setText(const std::string& text) override;
    void requestText(TextHandler handler) override;

private:
    bool open() const;

    const std::shared_ptr<CWin32Session> session_;
};

} // namespace qel::platform
