// Prints stored strings.
#include "Inspect/FileKinds.h"
#include "Streams/CMemoryReader.h"
#include "TreeCompiler/ToolError.h"

#include <ostream>

namespace qel::tools {

void printString(std::span<const std::uint8_t> payload, std::ostream& out)
{
    CMemoryReader reader(payload);
    CString text;
    if (const CError error = reader.readString(text)) {
        throw CToolError(error.text());
    }
    out << printable(text.toUtf8()) << '\n';
}

} // namespace qel::tools
