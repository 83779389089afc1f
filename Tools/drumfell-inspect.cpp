// Inspector: prints any compiled file as readable text.
#include "Inspect/FileKinds.h"
#include "Streams/CFileReader.h"
#include "TreeCompiler/ToolError.h"

#include <CLI/CLI.hpp>

#include <algorithm>
#include <iostream>

namespace {

using namespace qel;
using namespace qel::tools;

void require(CError error)
{
    if (error) {
        throw CToolError(error.text());
    }
}

std::string idText(std::uint32_t id)
{
    std::string text;
    for (unsigned shift = 0; shift < 32; shift += 8) {
        text += static_cast<char>(id >> shift);
    }
    return text;
}

void inspect(const std::string& path)
{
    CFileReader reader;
    std::uint32_t id = 0;
    require(reader.open(CString::fromUtf8(path), 0));
    require(reader.readU32(id));
    const auto kinds = fileKinds();
    const auto kind = std::ranges::find(kinds, idText(id), &CFileKind::id);
    if (kind == kinds.end()) {
        throw CToolError(path + ": unknown chunk ID " + printable(idText(id)));
    }
    CByteBuffer payload;
    require(reader.setPosition(0));
    require(reader.readCompressedData(payload, id));
    std::cout << kind->id << " (" << kind->title << "), " << payload.size() << " bytes unpacked\n";
    kind->print(payload.bytes(), std::cout);
}

} // namespace

int main(int argc, char** argv)
{
    CLI::App app("Prints a compiled file as readable text");
    std::string path;
    app.add_option("FILE", path, "Compiled tree, stored string or preset list")->required();
    CLI11_PARSE(app, argc, argv);
    try {
        inspect(path);
        return 0;
    } catch (const std::exception& error) {
        std::cerr << error.what() << '\n';
        return 1;
    }
}
