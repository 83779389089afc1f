// What a registry begins with: the user's default preset, stored lists.
#include "CApplication.h"
#include "PresetFixture.h"
#include "TemporaryHome.h"

namespace qel::test {
namespace {

constexpr CCreatorRow kClasses[] = {
    {"audio:audio-env", newObject<CAudioEnv>, CAudioEnv::buildClassInfo},
    {"audio:param-collector", newObject<CAudioParamCollector>, CAudioParamCollector::buildClassInfo},
    {"audio:param-registry", newObject<CAudioParamRegistry>, CAudioParamRegistry::buildClassInfo},
    {nullptr, nullptr, nullptr}};

using Attributes = std::vector<std::pair<const char*, const char*>>;

// An application with a user's data folder of its own, and one instance in it.
class RegistryStart : public ::testing::Test
{
protected:
    RegistryStart()
    {
        CApplicationParts parts;
        parts.creators = kClasses;
        parts.sharedFile = {};
        EXPECT_OK(CApplication::start(parts));
        EXPECT_OK(CApplication::get()->initRootObject(root_));
        make<CAudioEnv>("audio:audio-env", "audio-env", {});
        collector_ =
            make<CAudioParamCollector>("audio:param-collector", "param-collector", {{"env", "^audio-env"}});
        gain_ = &collector_->getParam("plugin.modMain.gain");
        gain_->setInfo(std::make_shared<CAudioParamInfo>(floatInfo("gain", {1.0})), "audio.gain");
    }
    ~RegistryStart() override
    {
        CApplication::get()->releaseRootObject(root_);
        CApplication::finish();
    }

    template <class T>
    T* make(const char* tag, const char* name, const Attributes& attributes)
    {
        CAttrMap map;
        for (const auto& [key, value] : attributes) {
            map[key] = CAttrValue(value);
        }
        T* object = nullptr;
        EXPECT_OK(root_->createChild(object, tag, name, false, nullptr, &map));
        return object;
    }
    CAudioParamRegistry* makeMaster()
    {
        auto* master = make<CAudioParamRegistry>("audio:param-registry", "param-registry",
                                                 {{"hierarchy", "plugin.modMain"},
                                                  {"is-master", "true"},
                                                  {"id", "7qtz"},
                                                  {"param-collector", "^param-collector"}});
        collector_->finalize();
        return master;
    }
    static void storeDefault(const Bytes& body)
    {
        EXPECT_OK(CApplication::get()->getLocalData().saveAppData("default-preset", CByteBuffer(body),
                                                                  nullptr, CAudioPreset::kChunkId));
    }

    test::TemporaryHome home_;
    CObject* root_ = nullptr;
    CAudioParamCollector* collector_ = nullptr;
    CAudioParam* gain_ = nullptr;
    CAudioParamContext context_;
};

TEST_F(RegistryStart, TheUsersDefaultIsTheFirstProgramAndWhatResetReturnsTo)
{
    storeDefault(bodyOf(presetOf("7qtz:Mine", {{"gain", 6.0}})));
    CAudioParamRegistry* master = makeMaster();
    EXPECT_EQ(master->getCurrentProgramName(), "Mine");
    ASSERT_OK(master->startProgram());
    EXPECT_EQ(gain_->getValue(0, 0), 6.0);
    gain_->setValue(0, 0, 0, 9.0, context_);
    master->masterReset();
    EXPECT_EQ(gain_->getValue(0, 0), 6.0);
    // One that was stored meanwhile counts at once.
    storeDefault(bodyOf(presetOf("7qtz:Newer", {{"gain", 7.0}})));
    master->masterReset();
    EXPECT_EQ(gain_->getValue(0, 0), 7.0);
}

TEST_F(RegistryStart, AParameterSelectsFromAStoredList)
{
    CAudioPresetBank list;
    list.add(presetOf("X:Low", {{"gain", 2.0}}));
    list.add(presetOf("X:High", {{"gain", 8.0}}));
    const Bytes body = bytesOf([&](COutputStream& stream) { return list.saveList(stream); });
    for (const bool isGlobal : {false, true}) {
        CApplication& app = *CApplication::get();
        CApplicationData& store = isGlobal ? static_cast<CApplicationData&>(app.getGlobalData())
                                           : static_cast<CApplicationData&>(app.getLocalData());
        ASSERT_OK(
            store.saveAppData("my-presets", CByteBuffer(body), nullptr, CAudioPresetBank::kListChunkId));
        auto* registry = make<CAudioParamRegistry>("audio:param-registry", "list-registry",
                                                   {{"hierarchy", "plugin.modMain"},
                                                    {"is-enumerated", "1"},
                                                    {"id", "X"},
                                                    {"param-collector", "^param-collector"},
                                                    {"store-name", isGlobal ? "/my-presets" : "my-presets"}});
        collector_->finalize();
        EXPECT_EQ(registry->listPresets(false), (std::vector<CString>{"Low", "High"}));
        CAudioParam& selector = collector_->getParam(isGlobal ? "selector1" : "selector0");
        CAudioParamInfo info = floatInfo("selector", {0.0});
        info.paramRegistry = "list-registry";
        selector.setInfo(std::make_shared<CAudioParamInfo>(info), {});
        for (const auto& [value, expected] : {std::pair{0.6, 8.0}, {0.4, 2.0}, {1.4, 8.0}, {1.5, 8.0}}) {
            selector.setValue(0, 0, 0, value, context_);
            EXPECT_EQ(gain_->getValue(0, 0), expected) << value;
        }
        CObject::releaseObject(registry);
    }
}

} // namespace
} // namespace qel::test
