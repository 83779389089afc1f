// Palettes, from a shared scheme and the key colours of each.
#include "GraphicsCompiler/PaletteSource.h"

#include "GraphicsCompiler/CPaletteScheme.h"
#include "GraphicsCompiler/CSourceElement.h"

namespace qel::tools {

namespace {

namespace fs = std::filesystem;

void readKey(CSourceElement& element, CColourBook& book)
{
    if (element.name() != "key") {
        element.report("<palette> holds no <" + element.name() + ">");
        return;
    }
    const std::string name = element.text("name");
    const CColour colour = book.read(element, "colour");
    element.close();
    if (book.has(name)) {
        element.report("name", "key colour '" + name + "' stands there twice");
    }
    book.set(name, colour);
}

// The palettes beside the one being compiled, each read when it is first asked for.
class CNeighbours
{
public:
    CNeighbours(CXmlSource& source, std::vector<fs::path>& files) : source_(source), files_(files) {}

    const CColourBook* book(const std::string& palette)
    {
        const auto [place, isNew] = books_.try_emplace(palette);
        if (!isNew) {
            return place->second ? &*place->second : nullptr;
        }
        const fs::path path = source_.path().parent_path() / (palette + ".xml");
        if (!fs::is_regular_file(path)) {
            return nullptr;
        }
        files_.push_back(path);
        CXmlSource file(path, (fs::path(source_.shownName()).parent_path() / (palette + ".xml")).string(),
                        source_.diagnostics());
        if (auto root = rootElement(file, "palette")) {
            root->text("scheme");
            place->second.emplace();
            for (CSourceElement& element : root->children()) {
                readKey(element, *place->second);
            }
        }
        return place->second ? &*place->second : nullptr;
    }

private:
    CXmlSource& source_;
    std::vector<fs::path>& files_;
    std::map<std::string, std::optional<CColourBook>> books_;
};

} // namespace

CPaletteFile compilePalette(CXmlSource& source, std::vector<fs::path>& files)
{
    CPaletteFile result;
    auto root = rootElement(source, "palette");
    if (!root) {
        return result;
    }
    const std::string scheme = root->text("scheme");
    CNeighbours neighbours(source, files);
    CColourBook book([&](const std::string& palette) { return neighbours.book(palette); });
    for (CSourceElement& element : root->children()) {
        readKey(element, book);
    }
    const fs::path path = source.path().parent_path() / scheme;
    if (scheme.empty() || !fs::is_regular_file(path)) {
        root->report("scheme", "there is no file '" + scheme + "'");
        return result;
    }
    files.push_back(path);
    CXmlSource file(path, (fs::path(source.shownName()).parent_path() / scheme).string(),
                    source.diagnostics());
    CPaletteScheme(file, book).apply(result);
    return result;
}

} // namespace qel::tools
