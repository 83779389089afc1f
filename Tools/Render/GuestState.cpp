// The state of a guest in files.
#include "Render/GuestState.h"

#include "Render/CPendingFile.h"
#include "Render/HostStateFile.h"
#include "Render/RenderError.h"

#include <algorithm>
#include <array>
#include <fstream>
#include <iterator>
#include <string_view>

namespace qel::tools {

namespace {

constexpr std::int32_t kDrumfellId = 0x3771747A; // "7qtz"
constexpr std::size_t kChunkHeaderBytes = 16;    // zeros before the chunk that a host gets
constexpr std::string_view kPresetChunk = "aprs";
constexpr std::string_view kBankChunk = "abnk";

bool beginsWith(const CBytes& bytes, std::string_view id)
{
    return bytes.size() >= id.size() && std::equal(id.begin(), id.end(), bytes.begin());
}

CBytes readFile(const std::filesystem::path& path)
{
    std::ifstream file(path, std::ios::binary);
    CBytes bytes{std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
    if (!file) {
        throw CRenderError(CExitCode::kInput, path.string() + ": cannot be read");
    }
    return bytes;
}

void writeFile(const std::filesystem::path& path, const CBytes& bytes)
{
    CPendingFile pending(path);
    std::ofstream file(pending.path(), std::ios::binary);
    file.write(reinterpret_cast<const char*>(bytes.data()), static_cast<std::streamsize>(bytes.size()));
    file.close();
    if (!file) {
        throw CRenderError(CExitCode::kOutput, path.string() + ": cannot be written");
    }
    pending.commit();
}

void giveChunk(CGuestPlugin& guest, const CBytes& chunk, bool isPreset)
{
    if (!guest.hasChunks()) {
        throw CRenderError(CExitCode::kSetting, "the file holds a chunk, and the effect takes none");
    }
    if (!guest.setChunk(chunk, isPreset)) {
        throw CRenderError(CExitCode::kSetting, "the effect refuses what the file holds");
    }
}

void requireId(const CGuestPlugin& guest, std::int32_t id)
{
    if (guest.uniqueId() != id) {
        throw CRenderError(CExitCode::kSetting, "the file is for another effect");
    }
}

void loadProgram(CGuestPlugin& guest, const CHostProgram& program)
{
    if (const CBytes* chunk = std::get_if<CBytes>(&program.content)) {
        giveChunk(guest, *chunk, true);
        return;
    }
    const auto& values = std::get<std::vector<float>>(program.content);
    if (values.size() != static_cast<std::size_t>(guest.parameterCount())) {
        throw CRenderError(CExitCode::kSetting, "the file holds " + std::to_string(values.size()) +
                                                    " parameters, and the effect has " +
                                                    std::to_string(guest.parameterCount()));
    }
    guest.setProgramName(program.name);
    for (std::size_t i = 0; i < values.size(); ++i) {
        guest.setParameter(static_cast<int>(i), values[i]);
    }
}

void loadBank(CGuestPlugin& guest, const CHostBank& bank)
{
    if (const CBytes* chunk = std::get_if<CBytes>(&bank.content)) {
        giveChunk(guest, *chunk, false);
    } else {
        const auto& programs = std::get<std::vector<CHostProgram>>(bank.content);
        if (programs.size() != static_cast<std::size_t>(guest.programCount())) {
            throw CRenderError(CExitCode::kSetting, "the file holds " + std::to_string(programs.size()) +
                                                        " programs, and the effect has " +
                                                        std::to_string(guest.programCount()));
        }
        for (std::size_t i = 0; i < programs.size(); ++i) {
            guest.setProgram(static_cast<int>(i));
            loadProgram(guest, programs[i]);
        }
    }
    if (bank.currentProgram >= 0 && bank.currentProgram < guest.programCount()) {
        guest.setProgram(bank.currentProgram);
    }
}

void loadOwn(CGuestPlugin& guest, const CBytes& bytes)
{
    requireId(guest, kDrumfellId);
    CBytes chunk(kChunkHeaderBytes);
    chunk.insert(chunk.end(), bytes.begin(), bytes.end());
    giveChunk(guest, chunk, beginsWith(bytes, kPresetChunk));
}

void loadBytes(CGuestPlugin& guest, const CBytes& bytes)
{
    if (beginsWith(bytes, kPresetChunk) || beginsWith(bytes, kBankChunk)) {
        loadOwn(guest, bytes);
        return;
    }
    if (!isHostState(bytes)) {
        throw CRenderError(CExitCode::kInput, "neither a host's nor a Drumfell preset or bank");
    }
    const CHostState state = decodeHostState(bytes);
    requireId(guest, state.uniqueId);
    if (const auto* program = std::get_if<CHostProgram>(&state.content)) {
        loadProgram(guest, *program);
    } else {
        loadBank(guest, std::get<CHostBank>(state.content));
    }
}

CBytes takeChunk(CGuestPlugin& guest, bool isPreset)
{
    CBytes chunk = guest.chunk(isPreset);
    if (chunk.empty()) {
        throw CRenderError(CExitCode::kSetting, "the effect gives no state");
    }
    return chunk;
}

CHostProgram takeProgram(CGuestPlugin& guest)
{
    CHostProgram program;
    program.name = guest.programName(guest.program());
    if (guest.hasChunks()) {
        program.content = takeChunk(guest, true);
        return program;
    }
    std::vector<float> values;
    for (int i = 0; i < guest.parameterCount(); ++i) {
        values.push_back(guest.parameter(i));
    }
    program.content = std::move(values);
    return program;
}

CHostBank takeBank(CGuestPlugin& guest)
{
    CHostBank bank;
    bank.currentProgram = guest.program();
    bank.programCount = guest.programCount();
    if (guest.hasChunks()) {
        bank.content = takeChunk(guest, false);
        return bank;
    }
    std::vector<CHostProgram> programs;
    for (int i = 0; i < guest.programCount(); ++i) {
        guest.setProgram(i);
        programs.push_back(takeProgram(guest));
    }
    guest.setProgram(bank.currentProgram);
    bank.content = std::move(programs);
    return bank;
}

CBytes stateFor(CGuestPlugin& guest, const std::string& extension)
{
    if (extension == ".cpf" || extension == ".cbf") {
        if (guest.uniqueId() != kDrumfellId) {
            throw CRenderError(CExitCode::kSetting, "only Drumfell has files of this type; use .fxp or .fxb");
        }
        CBytes chunk = takeChunk(guest, extension == ".cpf");
        chunk.erase(chunk.begin(),
                    chunk.begin() + static_cast<std::ptrdiff_t>(std::min(chunk.size(), kChunkHeaderBytes)));
        return chunk;
    }
    CHostState state{guest.uniqueId(), guest.version(), {}};
    if (extension == ".fxp") {
        state.content = takeProgram(guest);
    } else if (extension == ".fxb") {
        state.content = takeBank(guest);
    } else {
        throw CRenderError(CExitCode::kOutput, "a state file's name ends in .fxp, .fxb, .cpf or .cbf");
    }
    return encodeHostState(state);
}

// `action`, with the file named in what it throws.
template <class Action>
auto naming(const std::filesystem::path& path, Action&& action)
{
    try {
        return action();
    } catch (const CRenderError& error) {
        throw CRenderError(error.code(), path.string() + ": " + error.what());
    }
}

} // namespace

void loadState(CGuestPlugin& guest, const std::filesystem::path& path)
{
    const CBytes bytes = readFile(path);
    naming(path, [&] { loadBytes(guest, bytes); });
}

void saveState(CGuestPlugin& guest, const std::filesystem::path& path)
{
    writeFile(path, naming(path, [&] { return stateFor(guest, path.extension().string()); }));
}

} // namespace qel::tools
