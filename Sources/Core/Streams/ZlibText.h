// What zlib says of an error.
#pragma once

#include <zlib.h>

namespace qel {

inline const char* zlibText(const z_stream& zip, int code)
{
    return zip.msg ? zip.msg : zError(code);
}

} // namespace qel
