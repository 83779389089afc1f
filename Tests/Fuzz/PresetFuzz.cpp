// Fuzz target: preset, bank and list bodies and their chunks, read, written and applied to an instance.
#include "CAudioParamRegistry.h"
#include "CreatorRegistry.h"
#include "FuzzTarget.h"
#include "Streams/CMemoryReader.h"
#include "Streams/CMemoryWriteBuffer.h"

#include <cstdlib>

namespace qel {
namespace {

using Bytes = std::vector<std::uint8_t>;

constexpr CCreatorRow kClasses[] = {
    {"audio:audio-env", newObject<CAudioEnv>, CAudioEnv::buildClassInfo},
    {"audio:param-collector", newObject<CAudioParamCollector>, CAudioParamCollector::buildClassInfo},
    {"audio:param-undo", newObject<CAudioParamUndo>, CAudioParamUndo::buildClassInfo},
    {"audio:param-registry", newObject<CAudioParamRegistry>, CAudioParamRegistry::buildClassInfo},
    {nullptr, nullptr, nullptr}};

template <class Save>
Bytes bytesOf(Save&& save)
{
    CMemoryWriteBuffer buffer;
    releaseError(save(buffer));
    CByteBuffer copy;
    buffer.copyTo(copy);
    return {copy.bytes().begin(), copy.bytes().end()};
}

CObject* makeChild(CObject& root, const char* tag, const char* name,
                   const std::vector<std::pair<const char*, const char*>>& attributes)
{
    CAttrMap map;
    for (const auto& [key, value] : attributes) {
        map[key] = CAttrValue(value);
    }
    CObject* child = nullptr;
    releaseError(root.createChild(child, tag, name, false, nullptr, &map));
    return child;
}

// A master registry over a number, a string and a pair.
class Instance
{
public:
    Instance()
    {
        CObject::setSharedObject(shared_);
        makeChild(*root_, "audio:audio-env", "env", {});
        collector_ = dynamic_cast<CAudioParamCollector*>(
            makeChild(*root_, "audio:param-collector", "collector", {{"env", "^env"}}));
        undo_ = dynamic_cast<CAudioParamUndo*>(makeChild(*root_, "audio:param-undo", "undo", {}));
        registry_ = dynamic_cast<CAudioParamRegistry*>(makeChild(*root_, "audio:param-registry", "registry",
                                                                 {{"hierarchy", "p"},
                                                                  {"is-master", "true"},
                                                                  {"id", "7qtz"},
                                                                  {"preset-name-param", "p.title"},
                                                                  {"param-undo", "^undo"},
                                                                  {"param-collector", "^collector"}}));
        addParam("p.gain", 1, CAudioParamInfo::kTypeFloat);
        addParam("p.name", 1, CAudioParamInfo::kTypeString);
        addParam("p.pair", 2, CAudioParamInfo::kTypeFloat);
        addParam("p.title", 1, CAudioParamInfo::kTypeString);
        collector_->finalize();
        releaseError(registry_->startProgram());
    }
    ~Instance()
    {
        CObject::releaseObject(root_);
        CObject::releaseObject(shared_);
        CObject::setSharedObject(nullptr);
    }
    Instance(const Instance&) = delete;
    Instance& operator=(const Instance&) = delete;

    CAudioParamRegistry& registry() { return *registry_; }
    CAudioParamUndo& undo() { return *undo_; }
    Bytes bank()
    {
        return bytesOf([this](COutputStream& out) { return registry_->acquireBank(false, out, true); });
    }

private:
    void addParam(const char* name, std::int32_t esize, std::int32_t dtype)
    {
        CAudioParamInfo info;
        info.valid = true;
        info.name = name;
        info.isStorable = true;
        info.esize = esize;
        info.dtype = dtype;
        info.minValues.assign(static_cast<std::size_t>(esize), 0.0);
        info.maxValues.assign(static_cast<std::size_t>(esize), 100.0);
        info.defaults = {std::vector<double>(static_cast<std::size_t>(esize), 1.0)};
        if (info.isString()) {
            info.defaults[0][0] = info.pool.addString("text");
        }
        collector_->getParam(name).setInfo(std::make_shared<CAudioParamInfo>(info), "audio.x");
    }

    CObject* shared_ = new CObject();
    CObject* root_ = new CObject();
    CAudioParamCollector* collector_ = nullptr;
    CAudioParamUndo* undo_ = nullptr;
    CAudioParamRegistry* registry_ = nullptr;
};

void require(bool holds)
{
    if (!holds) {
        std::abort();
    }
}

// Reads `body`, or leaves `out` as it was, and says how the result writes itself.
template <class T>
Bytes rewritten(T& out, std::span<const std::uint8_t> body, CError (T::*load)(CInputStream&),
                CError (T::*save)(COutputStream&) const)
{
    CMemoryReader reader(body);
    if ((out.*load)(reader)) {
        require(out == T());
    }
    return bytesOf([&](COutputStream& stream) { return (out.*save)(stream); });
}

// Writing cleans texts, which can make keys equal or reorder them; from then on the bytes stay the same.
template <class T>
void checkRoundTrip(std::span<const std::uint8_t> body, CError (T::*load)(CInputStream&),
                    CError (T::*save)(COutputStream&) const)
{
    T first;
    T second;
    T third;
    const Bytes cleaned = rewritten(second, rewritten(first, body, load, save), load, save);
    require(rewritten(third, cleaned, load, save) == cleaned);
}

void useBody(std::span<const std::uint8_t> body)
{
    checkRoundTrip<CAudioPreset>(body, &CAudioPreset::load, &CAudioPreset::save);
    checkRoundTrip<CAudioPresetBank>(body, &CAudioPresetBank::load, &CAudioPresetBank::save);
    checkRoundTrip<CAudioPresetBank>(body, &CAudioPresetBank::loadList, &CAudioPresetBank::saveList);

    Instance instance;
    for (const std::int32_t group : {-1, 1}) {
        CMemoryReader reader(body);
        releaseError(instance.registry().activatePreset(reader, false, group));
    }
    CMemoryReader reader(body);
    releaseError(instance.registry().activateBank(reader, true));
    releaseError(instance.registry().setProgram(1));
    releaseError(instance.registry().abSwap());
    instance.undo().moveTo(0);
    // What the instance saves it takes back, and is then in the same state.
    const Bytes bank = instance.bank();
    CMemoryReader bankReader(bank);
    if (!instance.registry().activateBank(bankReader, true)) {
        require(instance.bank() == bank);
    }
}

CByteBuffer chunkOf(const Bytes& body, std::uint32_t id)
{
    CMemoryWriteBuffer chunk;
    releaseError(chunk.writeCompressedData(CByteBuffer(body), id));
    CByteBuffer copy;
    chunk.copyTo(copy);
    return copy;
}

} // namespace

// The input is tried both as a chunk and as what a chunk unpacks to.
void fuzzOne(std::span<const std::uint8_t> input)
{
    static const bool isReady = [] {
        releaseError(registerCreators(kClasses));
        return true;
    }();
    (void)isReady;
    for (const std::uint32_t id :
         {CAudioPreset::kChunkId, CAudioPresetBank::kChunkId, CAudioPresetBank::kListChunkId}) {
        CByteBuffer body;
        CMemoryReader reader(input);
        if (CError error = reader.readCompressedData(body, id); !error) {
            useBody(body.bytes());
        }
    }
    useBody(input);
}

std::vector<Bytes> fuzzSeeds()
{
    CAudioParamStorage gain;
    gain.format(1, CAudioParamStorage::kFloat);
    const double values[] = {2.0, 3.0};
    gain.write({.count = 1, .values = values});
    gain.write({.group = 2, .count = 2, .values = values});
    CAudioParamStorage name;
    name.format(1, CAudioParamStorage::kString);
    CAudioParamData pool;
    const double id = pool.addString("User");
    name.write({.count = 1, .dtype = CAudioParamStorage::kString, .values = &id, .pool = &pool});
    CAudioParamStorage pair;
    pair.format(2, CAudioParamStorage::kFloat);
    pair.write({.count = 1, .esize = 2, .values = values});

    CAudioPreset preset("7qtz:Seed");
    releaseError(preset.setValues("gain", "audio.x", gain));
    releaseError(preset.setValues("name", "audio.x", name));
    releaseError(preset.setValues("pair", "audio.x", pair));
    CAudioPresetBank bank;
    bank.setName("Bank");
    bank.add(preset);
    preset.setName("7qtz:Other");
    bank.add(preset);
    releaseError(preset.setValues("unknown", "audio.x", name));

    const Bytes presetBody = bytesOf([&](COutputStream& out) { return preset.save(out); });
    const Bytes bankBody = bytesOf([&](COutputStream& out) { return bank.save(out); });
    const Bytes listBody = bytesOf([&](COutputStream& out) { return bank.saveList(out); });
    const CByteBuffer presetChunk = chunkOf(presetBody, CAudioPreset::kChunkId);
    const CByteBuffer bankChunk = chunkOf(bankBody, CAudioPresetBank::kChunkId);
    const auto bytes = [](const CByteBuffer& chunk) {
        return Bytes(chunk.bytes().begin(), chunk.bytes().end());
    };
    return {presetBody, bankBody, listBody, bytes(presetChunk), bytes(bankChunk)};
}

} // namespace qel
