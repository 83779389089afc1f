// Lines of text in a font of the X server.
#pragma once

#include "CXcbConnection.h"

#include <functional>
#include <string>
#include <vector>

namespace qel::platform {

using XcbLine = std::vector<xcb_char2b_t>;

// UTF-8 as the characters of a server font; what such a font cannot address becomes '?'.
XcbLine xcbText(const std::string& utf8);

// Breaks at '\n', and where a line gets wider than `width` pixels at its last blank or, without one,
// anywhere.
std::vector<XcbLine> wrapXcbText(const std::function<int(xcb_char2b_t)>& widthOf, const std::string& utf8,
                                 int width);

// One font of the server, with the measures of its characters.
class CXcbFont
{
public:
    explicit CXcbFont(CXcbConnection& connection) : connection_(connection) {}

    // False when the server has no font by that name. Waits for the answer.
    bool open(const char* name);

    xcb_font_t id() const { return font_; }
    int ascent() const { return metrics_->font_ascent; }
    int descent() const { return metrics_->font_descent; }
    int widthOf(xcb_char2b_t character) const;
    int widthOf(const XcbLine& line) const;

private:
    CXcbConnection& connection_;
    xcb_font_t font_ = 0;
    XcbPtr<xcb_query_font_reply_t> metrics_;
};

} // namespace qel::platform
