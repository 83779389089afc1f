// Prints the head of preset lists.
#include "Inspect/FileKinds.h"
#include "Streams/CMemoryReader.h"
#include "TreeCompiler/ToolError.h"

#include <ostream>

namespace qel::tools {

namespace {

CError readHead(CMemoryReader& reader, std::uint32_t& version, CString& name, std::uint32_t& count)
{
    QEL_TRY(reader.readU32(version), {});
    QEL_TRY(reader.readString(name), {});
    QEL_TRY(reader.readU32(count), {});
    return {};
}

} // namespace

void printList(std::span<const std::uint8_t> payload, std::ostream& out)
{
    CMemoryReader reader(payload);
    std::uint32_t version = 0;
    std::uint32_t count = 0;
    CString name;
    if (const CError error = readHead(reader, version, name, count)) {
        throw CToolError(error.text());
    }
    out << "version " << version << ", name " << printable(name.toUtf8()) << ", " << count << " presets\n";
}

} // namespace qel::tools
