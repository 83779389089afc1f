// Fuzz target: a host's state chunks, as they reach a whole effect through the binary interface.
#include "CApplication.h"
#include "CAudioWrapperVST.h"
#include "CByteBuffer.h"
#include "CreatorTable.h"
#include "FuzzTarget.h"
#include "Streams/CMemoryReader.h"
#include "Streams/CMemoryWriteBuffer.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdlib>

extern "C" const qel::CResourceRow drumfellResourceDirectory[];

namespace qel {
namespace {

using Bytes = std::vector<std::uint8_t>;

constexpr std::size_t kHeaderBytes = 16;
constexpr std::uint32_t kIds[] = {0x6B6E6261, 0x73727061}; // "abnk", "aprs"
constexpr int kBlock = 64;

void require(bool holds)
{
    if (!holds) {
        std::abort();
    }
}

std::intptr_t answerVersion(AEffect*, std::int32_t opcode, std::int32_t, std::intptr_t, void*, float)
{
    return opcode == vst24::kMasterVersion ? vst24::kVersion : 0;
}

// One effect for all inputs: what one of them leaves behind is the next one's start.
class Effect
{
public:
    Effect()
    {
        setenv("XDG_DATA_HOME", "/nonexistent", 1);
        CApplicationParts parts;
        parts.creators = kCreatorTable;
        parts.resources = drumfellResourceDirectory;
        require(!CApplication::start(parts));
        effect_ = createEffect(&answerVersion);
        require(effect_ != nullptr);
        call(vst24::kMainsChanged, 0, 1, nullptr);
    }
    ~Effect()
    {
        call(vst24::kClose, 0, 0, nullptr);
        CApplication::finish();
    }
    Effect(const Effect&) = delete;
    Effect& operator=(const Effect&) = delete;

    std::intptr_t call(std::int32_t opcode, std::int32_t index, std::intptr_t value, void* ptr)
    {
        return effect_->dispatcher(effect_, opcode, index, value, ptr, 0.0f);
    }
    Bytes chunk(bool isPreset)
    {
        void* data = nullptr;
        const std::intptr_t size = call(vst24::kGetChunk, isPreset, 0, &data);
        require(data && size > 0);
        const auto* bytes = static_cast<const std::uint8_t*>(data);
        return {bytes, bytes + size};
    }
    bool load(Bytes bytes, bool isPreset)
    {
        return call(vst24::kSetChunk, isPreset, static_cast<std::intptr_t>(bytes.size()), bytes.data()) == 1;
    }
    std::vector<float> values()
    {
        std::vector<float> all;
        for (std::int32_t i = 0; i < effect_->numParams; ++i) {
            all.push_back(effect_->getParameter(effect_, i));
        }
        return all;
    }
    void play()
    {
        std::array<float, kBlock> samples;
        samples.fill(0.1f);
        std::array<float*, 8> channels;
        channels.fill(samples.data());
        effect_->processReplacing(effect_, channels.data(), channels.data(), kBlock);
        require(
            std::all_of(samples.begin(), samples.end(), [](float sample) { return std::isfinite(sample); }));
    }

private:
    AEffect* effect_ = nullptr;
};

Effect& effect()
{
    static Effect instance;
    return instance;
}

// Wraps a body, so that the fuzzer need not find out how to compress.
Bytes chunkOf(std::span<const std::uint8_t> body, bool isPreset)
{
    CMemoryWriteBuffer buffer;
    releaseError(buffer.writeCompressedData(CByteBuffer(body), kIds[isPreset]));
    CByteBuffer copy;
    buffer.copyTo(copy);
    Bytes chunk(kHeaderBytes);
    chunk.insert(chunk.end(), copy.bytes().begin(), copy.bytes().end());
    return chunk;
}

Bytes bodyOf(const Bytes& chunk, bool isPreset)
{
    const std::span<const std::uint8_t> bytes(chunk);
    CMemoryReader reader(bytes.subspan(kHeaderBytes));
    CByteBuffer body;
    require(!reader.readCompressedData(body, kIds[isPreset]));
    return {body.bytes().begin(), body.bytes().end()};
}

} // namespace

std::vector<Bytes> fuzzSeeds()
{
    std::vector<Bytes> seeds;
    for (const bool isPreset : {false, true}) {
        const Bytes chunk = effect().chunk(isPreset);
        for (const bool isBody : {false, true}) {
            const Bytes content = isBody ? bodyOf(chunk, isPreset) : chunk;
            Bytes seed{static_cast<std::uint8_t>(isPreset + 2 * isBody)};
            seed.insert(seed.end(), content.begin(), content.end());
            seeds.push_back(seed);
        }
    }
    return seeds;
}

// The first byte says which kind it is, and whether it is a whole chunk or a body.
void fuzzOne(std::span<const std::uint8_t> input)
{
    if (input.empty()) {
        return;
    }
    const bool isPreset = (input[0] & 1) != 0;
    const auto rest = input.subspan(1);
    const Bytes chunk = (input[0] & 2) != 0 ? chunkOf(rest, isPreset) : Bytes(rest.begin(), rest.end());
    const Bytes before = effect().chunk(isPreset);
    const std::vector<float> values = effect().values();
    if (!effect().load(chunk, isPreset)) {
        // A body can name a parameter that is new, which then stays, and fail with a later entry.
        require(effect().values() == values);
        require((input[0] & 2) != 0 || effect().chunk(isPreset) == before);
    }
    effect().play();
}

} // namespace qel
