// Lines of text in a font of the X server.
#pragma once

#include "X11Library.h"

#include <string>
#include <vector>

namespace qel::platform {

using X11Line = std::vector<XChar2b>;

// UTF-8 as the characters of a server font; what such a font cannot address becomes '?'.
X11Line x11Text(const std::string& utf8);

// Breaks at '\n', and where a line gets wider than `width` pixels at its last blank or, without one,
// anywhere.
std::vector<X11Line> wrapX11Text(const X11Library& x11, XFontStruct* font, const std::string& utf8,
                                 int width);

} // namespace qel::platform
