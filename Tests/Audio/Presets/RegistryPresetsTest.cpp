// Snapshots of parameters, and putting them back.
#include "PresetInstance.h"

namespace qel::test {
namespace {

using Texts = std::vector<std::string>;

class RegistryPresets : public PresetInstanceTest
{
protected:
    RegistryPresets() { makeInstance(); }

    static Texts keysOf(const CAudioPreset& preset)
    {
        Texts keys;
        for (const auto& [key, block] : preset.getEntries()) {
            keys.push_back(key.toUtf8());
        }
        return keys;
    }
};

TEST_F(RegistryPresets, HoldWhatIsStorableAndForTheHostWhatIsPersistentToo)
{
    EXPECT_EQ(keysOf(acquired(*master_)),
              (Texts{"dc.freq", "dc.name", "drive", "gain", "io-params.routing", "oversampling"}));
    EXPECT_EQ(
        keysOf(acquired(*master_, -1, true)),
        (Texts{"dc.freq", "dc.name", "drive", "gain", "instance-name", "io-params.routing", "oversampling"}));
    EXPECT_EQ(keysOf(acquired(*io_)), (Texts{"routing"}));
    EXPECT_EQ(keysOf(acquired(*dcFilter_)), (Texts{"freq"}));

    // Only the host puts the instance's name back.
    instanceName_->setString(0, 0, "Kick", context_);
    const CAudioPreset host = acquired(*master_, -1, true);
    instanceName_->setString(0, 0, "Snare", context_);
    ASSERT_OK(activate(*master_, host));
    EXPECT_EQ(instanceName_->getString(0, 0), "Snare");
    ASSERT_OK(activate(*master_, host, true));
    EXPECT_EQ(instanceName_->getString(0, 0), "Kick");
}

TEST_F(RegistryPresets, ReturnWhatTheyDoNotNameToDefaults)
{
    edit(*gain_, 5.0);
    edit(*gain_, 6.0, 3);
    edit(*drive_, 7.0);
    edit(*oversampling_, 3.0);
    ASSERT_OK(activate(*master_, presetOf("7qtz:One", {{"drive", 9.0}})));
    EXPECT_EQ(drive_->getValue(0, 0), 9.0);
    EXPECT_EQ(gain_->getValue(0, 0), 1.0);
    EXPECT_EQ(gain_->getValue(3, 0), 1.0);
    EXPECT_EQ(oversampling_->getValue(0, 0), 3.0); // stays unless named

    CAudioParamContext context(CAudioParamOrigin::kActivation);
    edit(*gain_, 5.0);
    ASSERT_OK(master_->applyPreset(presetOf("7qtz:One", {{"drive", 4.0}}), true, context));
    EXPECT_EQ(drive_->getValue(0, 0), 4.0);
    EXPECT_EQ(gain_->getValue(0, 0), 5.0);
}

TEST_F(RegistryPresets, DropKeysThatNoParameterUsesWithTheNextSnapshot)
{
    ASSERT_OK(activate(*master_, presetOf("7qtz:Odd", {{"no-such", 1.0}, {"gain", 2.0}})));
    EXPECT_EQ(gain_->getValue(0, 0), 2.0);
    EXPECT_FALSE(collector_->getParam("plugin.modMain.no-such").hasInfo());
    EXPECT_EQ(acquired(*master_).findEntry("no-such"), nullptr);
}

TEST_F(RegistryPresets, OfAnotherRegistryAreRefused)
{
    edit(*gain_, 5.0);
    const Bytes before = acquire(*master_);
    for (const char* name : {"5xyz:Foo", "Foo", "", "7qt:z", ":"}) {
        EXPECT_FAILS(activate(*master_, presetOf(name, {{"gain", 9.0}})), "Incompatible preset.");
    }
    CAudioPresetBank bank;
    bank.add(presetOf("5xyz:Foo", {{"gain", 9.0}}));
    EXPECT_FAILS(activateBank(*master_, bank), "Incompatible bank.");
    EXPECT_EQ(acquire(*master_), before);
    EXPECT_EQ(steps().size(), 2u);
}

TEST_F(RegistryPresets, CutAtAnyByteChangeNothing)
{
    const Bytes preset = bodyOf(presetOf("7qtz:Cut", {{"gain", 9.0}, {"drive", 8.0}}));
    const Bytes before = acquire(*master_);
    for (std::size_t size = 0; size < preset.size(); ++size) {
        CMemoryReader reader(firstOf(preset, size));
        ASSERT_TRUE(master_->activatePreset(reader, false)) << "cut to " << size;
    }
    CAudioPresetBank bank;
    bank.add(presetOf("7qtz:Cut", {{"gain", 9.0}}));
    bank.add(presetOf("7qtz:More", {{"gain", 7.0}}));
    const Bytes bankBody = bodyOf(bank);
    for (std::size_t size = 0; size < bankBody.size(); ++size) {
        CMemoryReader reader(firstOf(bankBody, size));
        ASSERT_TRUE(master_->activateBank(reader, true)) << "cut to " << size;
    }
    EXPECT_EQ(acquire(*master_), before);
    EXPECT_EQ(master_->getProgramCount(), 1);
    EXPECT_EQ(steps().size(), 1u);
}

TEST_F(RegistryPresets, AnUnreadableEntryKeepsTheBatchFromTheAudioSide)
{
    callAudio();
    Slot drive(*drive_, 0);
    drive.drain();
    CAudioPreset preset = presetOf("7qtz:Bad", {{"drive", 9.0}, {"oversampling", 3.0}});
    CAudioParamStorage pairs;
    pairs.format(2, CAudioParamStorage::kFloat);
    ASSERT_OK(preset.setValues("gain", "audio.gain", pairs));
    EXPECT_FAILS(activate(*master_, preset), "Unsupported storage format (esize=2, dtype=0; should be: "
                                             "esize=1, dtype=0).");
    EXPECT_EQ(drive_->getValue(0, 0), 9.0);        // before it, by key
    EXPECT_EQ(oversampling_->getValue(0, 0), 1.0); // behind it
    EXPECT_EQ(steps().size(), 1u);
    callAudio();
    EXPECT_EQ(drive.drain(), 0);
    edit(*drive_, 3.0); // later changes arrive
    callAudio();
    drive.drain();
    EXPECT_EQ(drive.storage.get(0, 0), 3.0);
}

TEST_F(RegistryPresets, ActivationNamesTheProgramAndCanBeTakenBack)
{
    BridgeCounter listener(*master_);
    edit(*gain_, 5.0);
    ASSERT_OK(activate(*master_, presetOf("7qtz:Loud", {{"gain", 9.0}})));
    EXPECT_EQ(steps(), (Texts{"Undo history start", "plugin.modMain.gain change", "Master preset activate"}));
    EXPECT_EQ(master_->getCurrentProgramName(), "Loud");
    EXPECT_EQ(presetName_->getString(0, 0), "Loud");
    EXPECT_GT(listener.count, 0);
    undo_->moveTo(1);
    EXPECT_EQ(gain_->getValue(0, 0), 5.0);
    EXPECT_EQ(presetName_->getString(0, 0), "Default");
    EXPECT_EQ(master_->getCurrentProgramName(), "Default");
    undo_->moveTo(2);
    EXPECT_EQ(master_->getCurrentProgramName(), "Loud");

    // The host has its own undo.
    ASSERT_OK(activate(*master_, presetOf("7qtz:Host", {{"gain", 3.0}}), true));
    EXPECT_EQ(steps().size(), 3u);
    EXPECT_EQ(master_->getCurrentProgramName(), "Host");
}

TEST_F(RegistryPresets, ActivationReachesTheAudioSideAsOneBatch)
{
    callAudio();
    Slot gain(*gain_, 0);
    Slot drive(*drive_, 0);
    gain.drain();
    drive.drain();
    ASSERT_OK(activate(*master_, presetOf("7qtz:Loud", {{"gain", 9.0}, {"drive", 8.0}})));
    callAudio();
    gain.drain();
    drive.drain();
    EXPECT_EQ(gain.storage.get(0, 0), 9.0);
    EXPECT_EQ(drive.storage.get(0, 0), 8.0);
    EXPECT_FAILS(master_->activateROMPreset(0), "Invalid preset index 0 specified.");
}

TEST_F(RegistryPresets, AGroupIsActivatedAlone)
{
    edit(*gain_, 5.0);
    edit(*routing_, 4.0);
    const CAudioPreset preset =
        presetOf("7qtz:Loud", {{"gain", 9.0}, {"io-params.routing", 6.0}, {"oversampling", 4.0}});
    ASSERT_OK(activate(*master_, preset, false, 1));
    EXPECT_EQ(gain_->getValue(0, 0), 5.0);
    EXPECT_EQ(gain_->getValue(1, 0), 9.0);
    EXPECT_EQ(routing_->getValue(0, 0), 4.0); // one group for all: no part of group 1
    EXPECT_EQ(routing_->getCurrent().getGroupCount(), 1);
    EXPECT_EQ(oversampling_->getValue(0, 0), 1.0);
    EXPECT_EQ(steps().back(), "Master preset (2) activate");
    EXPECT_EQ(master_->getCurrentProgramName(), "Default");
    undo_->moveTo(position() - 1);
    EXPECT_EQ(gain_->getCurrent().getGroupCount(), 1);

    addParam("plugin.modMain.io-params.group-names", stringInfo("group-names", {"Left", "Right"}));
    ASSERT_OK(activate(*master_, preset, false, 1));
    EXPECT_EQ(steps().back(), "Master preset (Right) activate");
    ASSERT_OK(activate(*dcFilter_, presetOf("7qtzA:x", {{"freq", 9.0}}), false, 0));
    EXPECT_EQ(steps().back(), "DC filter preset (Left) activate");

    // A snapshot of a group holds that group alone, as the first of its records.
    CAudioPreset group;
    ASSERT_OK(master_->storePreset(group, true, false, 1));
    CString definition;
    CAudioParamStorage values;
    values.format(1, CAudioParamStorage::kFloat);
    ASSERT_OK(group.readValues("gain", definition, values));
    EXPECT_EQ(values.getGroupCount(), 1);
    EXPECT_EQ(values.get(0, 0), 9.0);
    EXPECT_EQ(group.findEntry("io-params.routing"), nullptr);
}

TEST_F(RegistryPresets, RoutingAndFilterPresetsKeepToTheirSubtrees)
{
    edit(*gain_, 5.0);
    ASSERT_OK(activate(*io_, presetOf("QLIO:Mono", {{"routing", 8.0}, {"oversampling", 4.0}})));
    EXPECT_EQ(routing_->getValue(0, 0), 8.0);
    EXPECT_EQ(oversampling_->getValue(0, 0), 1.0);
    EXPECT_EQ(gain_->getValue(0, 0), 5.0);
    EXPECT_EQ(steps().back(), "Routing preset activate");
    EXPECT_EQ(master_->getCurrentProgramName(), "Default");
    CMemoryWriteBuffer nowhere;
    EXPECT_FAILS(io_->acquireBank(false, nowhere, false),
                 "Acquiring bank in a non-master registry is an error.");
    EXPECT_OK(io_->setProgram(1));
}

TEST_F(RegistryPresets, AChangeByHandMakesTheFilterPresetTheUsers)
{
    CAudioPreset preset = presetOf("7qtzA:10 Hz", {{"freq", 10.0}});
    CAudioParamStorage name;
    name.format(1, CAudioParamStorage::kString);
    CAudioParamData pool;
    const double id = pool.addString("-6 @ 10");
    name.write({.count = 1, .dtype = CAudioParamStorage::kString, .values = &id, .pool = &pool});
    ASSERT_OK(preset.setValues("name", "audio.name", name));
    ASSERT_OK(activate(*dcFilter_, preset));
    EXPECT_EQ(dcName_->getString(0, 0), "-6 @ 10");
    edit(*gain_, 5.0);
    EXPECT_EQ(dcName_->getString(0, 0), "-6 @ 10");
    edit(*dcFreq_, 11.0, 2);
    EXPECT_EQ(dcName_->getString(0, 0), "-6 @ 10");
    EXPECT_EQ(dcName_->getString(2, 0), "User");
    // The name is carried by what is stored, but does not count as one of the filter's values.
    EXPECT_EQ(acquired(*dcFilter_).findEntry("name"), nullptr);
}

} // namespace
} // namespace qel::test
