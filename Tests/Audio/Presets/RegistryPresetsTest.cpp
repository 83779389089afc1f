// Snapshots of parameters, and putting them back.
#include "PresetFixture.h"

namespace qel::test {
namespace {

class RegistryPresets : public PresetFixture
{
protected:
    RegistryPresets() { makeInstance(); }
};

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

TEST_F(RegistryPresets, AnUnreadableEntryChangesNothing)
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
    EXPECT_EQ(drive_->getValue(0, 0), 2.0);        // before it, by key
    EXPECT_EQ(oversampling_->getValue(0, 0), 1.0); // behind it
    EXPECT_EQ(presetName_->getString(0, 0), "Default");
    EXPECT_EQ(steps().size(), 1u);
    callAudio();
    EXPECT_EQ(drive.drain(), 0);
    edit(*drive_, 3.0); // later changes arrive
    callAudio();
    drive.drain();
    EXPECT_EQ(drive.storage.get(0, 0), 3.0);
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
    // The first group is one among others.
    ASSERT_OK(activate(*master_, preset, false, 0));
    EXPECT_EQ(gain_->getValue(0, 0), 9.0);
    EXPECT_EQ(routing_->getValue(0, 0), 4.0);
    EXPECT_EQ(oversampling_->getValue(0, 0), 1.0);

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

TEST_F(RegistryPresets, TheFilterShowsTheNameOfItsPresetUntilItIsChangedByHand)
{
    CAudioPreset preset = presetOf("7qtzA:10 Hz", {{"freq", 10.0}});
    CAudioParamStorage name;
    name.format(1, CAudioParamStorage::kString);
    CAudioParamData pool;
    const double id = pool.addString("User");
    name.write({.count = 1, .dtype = CAudioParamStorage::kString, .values = &id, .pool = &pool});
    ASSERT_OK(preset.setValues("name", "audio.name", name));
    ASSERT_OK(activate(*dcFilter_, preset));
    EXPECT_EQ(dcName_->getString(0, 0), "10 Hz") << "its own name, whatever was stored in it";
    undo_->moveTo(0);
    EXPECT_EQ(dcName_->getString(0, 0), "3 Hz -6");
    undo_->moveTo(1);
    EXPECT_EQ(dcName_->getString(0, 0), "10 Hz");
    ASSERT_OK(activate(*dcFilter_, presetOf("7qtzA:20 Hz", {{"freq", 20.0}}), false, 1));
    EXPECT_EQ(dcName_->getString(0, 0), "10 Hz");
    EXPECT_EQ(dcName_->getString(1, 0), "20 Hz");
    edit(*gain_, 5.0);
    EXPECT_EQ(dcName_->getString(0, 0), "10 Hz");
    edit(*dcFreq_, 11.0, 2);
    EXPECT_EQ(dcName_->getString(0, 0), "10 Hz");
    EXPECT_EQ(dcName_->getString(2, 0), "User");
    // The name is carried by what is stored, but does not count as one of the filter's values.
    EXPECT_EQ(acquired(*dcFilter_).findEntry("name"), nullptr);
}

} // namespace
} // namespace qel::test
