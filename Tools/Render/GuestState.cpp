// The state of a guest in files.
#include "Render/GuestState.h"

#include "Render/RenderError.h"
#include "Render/RenderSystem.h"

#include <fstream>
#include <iterator>

namespace qel::tools {

namespace {

constexpr std::int32_t kDrumfellId = 0x3771747A; // "7qtz"
constexpr std::size_t kChunkHeaderBytes = 16;    // zeros before the chunk that a host gets

} // namespace

void loadState(CGuestPlugin& guest, const std::filesystem::path& path)
{
    std::ifstream file(systemPath(path), std::ios::binary);
    const std::string bytes{std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
    const bool isPreset = bytes.starts_with("aprs");
    if (!file || (!isPreset && !bytes.starts_with("abnk"))) {
        throw CRenderError(CExitCode::kInput, path.string() + ": no Drumfell preset or bank can be read");
    }
    std::vector<std::uint8_t> chunk(kChunkHeaderBytes);
    chunk.insert(chunk.end(), bytes.begin(), bytes.end());
    if (guest.uniqueId() != kDrumfellId || !guest.setChunk(chunk, isPreset)) {
        throw CRenderError(CExitCode::kSetting, path.string() + ": the effect refuses what the file holds");
    }
}

} // namespace qel::tools
