// An instance with an undo store and the three registries of the product over a few parameters.
#pragma once

#include "../ParamFixture.h"
#include "CAudioParamRegistry.h"
#include "CAudioParamUndo.h"
#include "Streams/CMemoryReader.h"
#include "Streams/CMemoryWriteBuffer.h"

#include <functional>
#include <string>

namespace qel::test {

using Bytes = std::vector<std::uint8_t>;

inline std::span<const std::uint8_t> firstOf(const Bytes& bytes, std::size_t size)
{
    return {bytes.data(), size};
}

// What an operation that writes to a stream has written.
inline Bytes bytesOf(const std::function<CError(COutputStream&)>& write)
{
    CMemoryWriteBuffer buffer;
    EXPECT_OK(write(buffer));
    CByteBuffer copy;
    buffer.copyTo(copy);
    return {copy.bytes().begin(), copy.bytes().end()};
}

inline Bytes bodyOf(const CAudioPreset& preset)
{
    return bytesOf([&](COutputStream& stream) { return preset.save(stream); });
}
inline Bytes bodyOf(const CAudioPresetBank& bank)
{
    return bytesOf([&](COutputStream& stream) { return bank.save(stream); });
}

// A single-entry float record for CAudioPreset::setValues().
inline CAudioParamStorage valueRecord(double value, std::int32_t group = 0)
{
    CAudioParamStorage storage;
    storage.format(1, CAudioParamStorage::kFloat);
    storage.write({.group = group, .count = 1, .values = &value});
    return storage;
}

inline CAudioPreset presetOf(const char* name, const std::vector<std::pair<const char*, double>>& values)
{
    CAudioPreset preset{CString(name)};
    for (const auto& [key, value] : values) {
        EXPECT_OK(preset.setValues(key, CString("audio.") + key, valueRecord(value)));
    }
    return preset;
}

struct BridgeCounter : CBridge
{
    explicit BridgeCounter(CBridgeBase& source) { attach(&source); }
    ~BridgeCounter() override { detach(); }
    void update(CBridge*, std::uintptr_t) override { ++count; }
    int count = 0;
};

class PresetFixture : public ParamFixture
{
protected:
    PresetFixture()
    {
        releaseError(registerCreator(
            {"audio:param-undo", &newObject<CAudioParamUndo>, &CAudioParamUndo::buildClassInfo}));
        releaseError(registerCreator(
            {"audio:param-registry", &newObject<CAudioParamRegistry>, &CAudioParamRegistry::buildClassInfo}));
        undo_ = makeObject<CAudioParamUndo>("audio:param-undo", "interface-base", {});
    }

    template <class T>
    T* makeObject(const char* tag, const char* name,
                  const std::vector<std::pair<const char*, const char*>>& attributes)
    {
        CAttrMap map;
        for (const auto& [key, value] : attributes) {
            map[key] = CAttrValue(value);
        }
        T* object = nullptr;
        EXPECT_OK(root_->createChild(object, tag, name, false, nullptr, &map));
        return object;
    }

    // A registry with the attributes that all share, and these.
    CAudioParamRegistry* makeRegistry(const char* name,
                                      std::vector<std::pair<const char*, const char*>> attributes)
    {
        attributes.emplace_back("param-collector", "^param-collector");
        attributes.emplace_back("param-undo", "^interface-base");
        return makeObject<CAudioParamRegistry>("audio:param-registry", name, attributes);
    }

    // The product's three, with what there is of their parameters.
    void makeInstance(const char* bankFile = "")
    {
        const auto groups = std::pair{"group-names-param", "plugin.modMain.io-params.group-names"};
        io_ = makeRegistry("param-registry-io", {{"hierarchy", "plugin.modMain.io-params"},
                                                 {"id", "QLIO"},
                                                 {"preset-naming", "Routing preset"},
                                                 groups});
        master_ = makeRegistry("param-registry", {{"hierarchy", "plugin.modMain"},
                                                  {"is-master", "true"},
                                                  {"id", "7qtz"},
                                                  {"file", bankFile},
                                                  {"preset-name-param", "plugin.modMain.preset-name"},
                                                  {"preset-naming", "Master preset"},
                                                  groups});
        dcFilter_ = makeRegistry("param-registry-dcfilter", {{"hierarchy", "plugin.modMain.dc"},
                                                             {"id", "7qtzA"},
                                                             {"preset-name-param", "plugin.modMain.dc.name"},
                                                             {"preset-naming", "DC filter preset"},
                                                             groups});
        gain_ = &addParam("plugin.modMain.gain", floatInfo("gain", {1.0}, 0.0, 100.0));
        drive_ = &addParam("plugin.modMain.drive", floatInfo("drive", {2.0}));
        oversampling_ =
            &addParam("plugin.modMain.oversampling", singleGroup(floatInfo("oversampling", {1.0}, 0.0, 4.0)));
        routing_ =
            &addParam("plugin.modMain.io-params.routing", singleGroup(floatInfo("routing", {1.0, 2.0, 0.0})));
        dcFreq_ = &addParam("plugin.modMain.dc.freq", floatInfo("freq", {3.0}));
        dcName_ = &addParam("plugin.modMain.dc.name", stringInfo("name", {"3 Hz -6"}));
        presetName_ =
            &addParam("plugin.modMain.preset-name", unstored(stringInfo("preset-name", {"Default"})));
        CAudioParamInfo instanceName = unstored(stringInfo("instance-name", {"Unnamed instance"}));
        instanceName.isPersistent = true;
        instanceName_ = &addParam("plugin.modMain.instance-name", instanceName);
        collector_->finalize();
    }

    static CAudioParamInfo singleGroup(CAudioParamInfo info)
    {
        info.isSingleGroup = true;
        return info;
    }
    static CAudioParamInfo unstored(CAudioParamInfo info)
    {
        info.isStorable = false;
        return info;
    }

    // A knob as the UI turns it.
    void edit(CAudioParam& param, double value, std::int32_t group = 0, bool mergeable = false)
    {
        CAudioParamUndoStep step(param.getName() + " change", &param, mergeable);
        CAudioParamContext context;
        context.recorder = &step;
        param.setValue(group, 0, 0, value, context);
        undo_->addStep(std::move(step));
    }

    static CError activate(CAudioParamRegistry& registry, const CAudioPreset& preset, bool fromHost = false,
                           std::int32_t group = CAudioParamRegistry::kAllGroups)
    {
        const Bytes body = bodyOf(preset);
        CMemoryReader reader(body);
        return registry.activatePreset(reader, fromHost, group);
    }
    static CError activateBank(CAudioParamRegistry& registry, const CAudioPresetBank& bank,
                               bool fromHost = false)
    {
        const Bytes body = bodyOf(bank);
        CMemoryReader reader(body);
        return registry.activateBank(reader, fromHost);
    }
    static Bytes acquire(CAudioParamRegistry& registry, std::int32_t index = -1, bool withPersistent = false)
    {
        return bytesOf([&](COutputStream& stream) {
            return registry.acquirePreset(false, index, CAudioParamRegistry::kAllGroups, stream,
                                          withPersistent);
        });
    }
    static CAudioPreset acquired(CAudioParamRegistry& registry, std::int32_t index = -1,
                                 bool withPersistent = false)
    {
        const Bytes body = acquire(registry, index, withPersistent);
        CMemoryReader reader(body);
        CAudioPreset preset;
        EXPECT_OK(preset.load(reader));
        return preset;
    }
    std::vector<std::string> steps() const
    {
        std::vector<CString> names;
        undo_->listSteps(names);
        std::vector<std::string> texts;
        for (const CString& name : names) {
            texts.push_back(name.toUtf8());
        }
        return texts;
    }
    std::int32_t position() const
    {
        std::vector<CString> names;
        return undo_->listSteps(names);
    }

    CAudioParamUndo* undo_ = nullptr;
    CAudioParamRegistry* io_ = nullptr;
    CAudioParamRegistry* master_ = nullptr;
    CAudioParamRegistry* dcFilter_ = nullptr;
    CAudioParam* gain_ = nullptr;
    CAudioParam* drive_ = nullptr;
    CAudioParam* oversampling_ = nullptr;
    CAudioParam* routing_ = nullptr;
    CAudioParam* dcFreq_ = nullptr;
    CAudioParam* dcName_ = nullptr;
    CAudioParam* presetName_ = nullptr;
    CAudioParam* instanceName_ = nullptr;
};

} // namespace qel::test
