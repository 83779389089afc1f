// The preset and bank files that all VST 2.4 hosts share (.fxp and .fxb).
#include "Render/HostStateFile.h"

#include "Render/RenderError.h"

#include <algorithm>
#include <bit>
#include <cmath>

namespace qel::tools {

namespace {

// All numbers are big endian.
constexpr std::uint32_t kFileId = 0x43636E4B;      // "CcnK"
constexpr std::uint32_t kPlainPreset = 0x4678436B; // "FxCk"
constexpr std::uint32_t kChunkPreset = 0x46504368; // "FPCh"
constexpr std::uint32_t kPlainBank = 0x4678426B;   // "FxBk"
constexpr std::uint32_t kChunkBank = 0x46424368;   // "FBCh"
constexpr std::uint32_t kPresetVersion = 1;
constexpr std::uint32_t kBankVersion = 2; // since then with the current program
constexpr std::size_t kNameBytes = 28;
constexpr std::size_t kBankReserved = 128;
constexpr std::size_t kLengthEnd = 8; // what the length field does not count

[[noreturn]] void refuse(const std::string& why)
{
    throw CRenderError(CExitCode::kInput, why);
}

class CBigEndianReader
{
public:
    explicit CBigEndianReader(std::span<const std::uint8_t> bytes) : bytes_(bytes) {}

    std::size_t left() const { return bytes_.size(); }
    std::span<const std::uint8_t> take(std::size_t count)
    {
        if (count > bytes_.size()) {
            refuse("the file ends too early");
        }
        const auto taken = bytes_.first(count);
        bytes_ = bytes_.subspan(count);
        return taken;
    }
    std::uint32_t word()
    {
        std::uint32_t value = 0;
        for (const std::uint8_t byte : take(4)) {
            value = value << 8 | byte;
        }
        return value;
    }

private:
    std::span<const std::uint8_t> bytes_;
};

void putWord(CBytes& out, std::uint32_t value)
{
    for (int shift = 24; shift >= 0; shift -= 8) {
        out.push_back(static_cast<std::uint8_t>(value >> shift));
    }
}

struct CHead
{
    std::uint32_t kind;
    std::uint32_t version;
    std::uint32_t uniqueId;
    std::uint32_t effectVersion;
    std::uint32_t count; // of parameters or programs
};

CHead takeHead(CBigEndianReader& reader, bool isWholeFile)
{
    if (reader.word() != kFileId) {
        refuse("no preset or bank file of a host begins like this");
    }
    const std::uint32_t length = reader.word();
    if (isWholeFile && length != reader.left()) {
        refuse("the file says that " + std::to_string(length) + " bytes follow, and " +
               std::to_string(reader.left()) + " do");
    }
    CHead head{};
    for (std::uint32_t* field :
         {&head.kind, &head.version, &head.uniqueId, &head.effectVersion, &head.count}) {
        *field = reader.word();
    }
    return head;
}

CBytes takeChunk(CBigEndianReader& reader)
{
    const std::uint32_t size = reader.word();
    if (size != reader.left()) {
        refuse("the file says that its chunk has " + std::to_string(size) + " bytes, and " +
               std::to_string(reader.left()) + " are there");
    }
    const auto bytes = reader.take(size);
    return {bytes.begin(), bytes.end()};
}

CHostProgram takeProgram(CBigEndianReader& reader, const CHead& head)
{
    CHostProgram program;
    const auto name = reader.take(kNameBytes);
    program.name.assign(name.begin(), std::ranges::find(name, std::uint8_t{0}));
    if (head.kind == kChunkPreset) {
        program.content = takeChunk(reader);
        return program;
    }
    if (head.count > reader.left() / 4) {
        refuse("the file says that it holds " + std::to_string(head.count) +
               " parameters, and ends before them");
    }
    std::vector<float> values(head.count);
    for (float& value : values) {
        value = std::bit_cast<float>(reader.word());
        if (!std::isfinite(value)) {
            refuse("the file holds a parameter value that is no number");
        }
    }
    program.content = std::move(values);
    return program;
}

CHostBank takeBank(CBigEndianReader& reader, const CHead& head)
{
    CHostBank bank;
    bank.programCount = static_cast<std::int32_t>(head.count);
    CBigEndianReader reserved(reader.take(kBankReserved));
    bank.currentProgram = head.version >= kBankVersion ? static_cast<std::int32_t>(reserved.word()) : 0;
    if (head.kind == kChunkBank) {
        bank.content = takeChunk(reader);
        return bank;
    }
    std::vector<CHostProgram> programs;
    for (std::uint32_t i = 0; i < head.count; ++i) {
        const CHead programHead = takeHead(reader, false);
        if (programHead.kind != kPlainPreset || programHead.uniqueId != head.uniqueId) {
            refuse("program " + std::to_string(i) +
                   " of the bank is not of plain parameters or of another effect");
        }
        programs.push_back(takeProgram(reader, programHead));
    }
    bank.content = std::move(programs);
    return bank;
}

void putHead(CBytes& out, const CHead& head)
{
    for (const std::uint32_t word :
         {kFileId, 0U, head.kind, head.version, head.uniqueId, head.effectVersion, head.count}) {
        putWord(out, word);
    }
}

void putChunk(CBytes& out, const CBytes& chunk)
{
    putWord(out, static_cast<std::uint32_t>(chunk.size()));
    out.insert(out.end(), chunk.begin(), chunk.end());
}

// The length stands before what it counts.
void finishLength(CBytes& out, std::size_t start)
{
    CBytes length;
    putWord(length, static_cast<std::uint32_t>(out.size() - start - kLengthEnd));
    std::ranges::copy(length, out.begin() + static_cast<std::ptrdiff_t>(start) + 4);
}

void putProgram(CBytes& out, const CHostState& state, const CHostProgram& program,
                std::uint32_t parameterCount)
{
    const std::size_t start = out.size();
    const auto* values = std::get_if<std::vector<float>>(&program.content);
    const auto count = values ? static_cast<std::uint32_t>(values->size()) : parameterCount;
    putHead(out,
            {values ? kPlainPreset : kChunkPreset, kPresetVersion, static_cast<std::uint32_t>(state.uniqueId),
             static_cast<std::uint32_t>(state.version), count});
    std::string name = program.name.substr(0, kNameBytes - 1);
    name.resize(kNameBytes);
    out.insert(out.end(), name.begin(), name.end());
    if (values) {
        for (const float value : *values) {
            putWord(out, std::bit_cast<std::uint32_t>(value));
        }
    } else {
        putChunk(out, std::get<CBytes>(program.content));
    }
    finishLength(out, start);
}

void putBank(CBytes& out, const CHostState& state, const CHostBank& bank)
{
    const auto* programs = std::get_if<std::vector<CHostProgram>>(&bank.content);
    const auto count = programs ? static_cast<std::uint32_t>(programs->size())
                                : static_cast<std::uint32_t>(bank.programCount);
    putHead(out,
            {programs ? kPlainBank : kChunkBank, kBankVersion, static_cast<std::uint32_t>(state.uniqueId),
             static_cast<std::uint32_t>(state.version), count});
    putWord(out, static_cast<std::uint32_t>(bank.currentProgram));
    out.resize(out.size() + kBankReserved - 4);
    if (programs) {
        for (const CHostProgram& program : *programs) {
            putProgram(out, state, program, 0);
        }
    } else {
        putChunk(out, std::get<CBytes>(bank.content));
    }
    finishLength(out, 0);
}

} // namespace

bool isHostState(std::span<const std::uint8_t> bytes)
{
    return bytes.size() >= 4 && CBigEndianReader(bytes).word() == kFileId;
}

CHostState decodeHostState(std::span<const std::uint8_t> bytes)
{
    CBigEndianReader reader(bytes);
    const CHead head = takeHead(reader, true);
    CHostState state;
    state.uniqueId = static_cast<std::int32_t>(head.uniqueId);
    state.version = static_cast<std::int32_t>(head.effectVersion);
    switch (head.kind) {
    case kPlainPreset:
    case kChunkPreset:
        state.content = takeProgram(reader, head);
        break;
    case kPlainBank:
    case kChunkBank:
        state.content = takeBank(reader, head);
        break;
    default:
        refuse("the file is neither a preset nor a bank");
    }
    if (reader.left() != 0) {
        refuse(std::to_string(reader.left()) + " bytes follow the end of the state");
    }
    return state;
}

CBytes encodeHostState(const CHostState& state)
{
    CBytes out;
    if (const auto* program = std::get_if<CHostProgram>(&state.content)) {
        putProgram(out, state, *program, 1);
    } else {
        putBank(out, state, std::get<CHostBank>(state.content));
    }
    return out;
}

} // namespace qel::tools
