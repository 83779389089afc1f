// The host's programs, A/B and master reset.
#include "PresetInstance.h"

namespace qel::test {
namespace {

using Texts = std::vector<std::string>;

class RegistryPrograms : public PresetInstanceTest
{
protected:
    RegistryPrograms()
    {
        makeInstance();
        CAudioPresetBank bank;
        bank.add(presetOf("7qtz:One", {{"gain", 11.0}}));
        bank.add(presetOf("7qtz:Two", {{"gain", 12.0}}));
        bank.add(presetOf("7qtz:Three", {{"gain", 13.0}}));
        EXPECT_OK(activateBank(*master_, bank));
    }
};

TEST_F(RegistryPrograms, KeepTheirEditsAndTheirHistories)
{
    BridgeCounter listener(*master_);
    edit(*gain_, 20.0);
    edit(*gain_, 21.0);
    undo_->moveTo(1);
    ASSERT_OK(master_->setProgram(1));
    EXPECT_EQ(listener.count, 1);
    EXPECT_EQ(gain_->getValue(0, 0), 12.0);
    EXPECT_EQ(presetName_->getString(0, 0), "Two");
    EXPECT_EQ(steps(), Texts{"Undo history start"});
    edit(*drive_, 30.0);
    ASSERT_OK(master_->setProgram(0));
    EXPECT_EQ(gain_->getValue(0, 0), 20.0);
    EXPECT_EQ(drive_->getValue(0, 0), 2.0);
    EXPECT_EQ(position(), 1);
    undo_->moveTo(2);
    EXPECT_EQ(gain_->getValue(0, 0), 21.0);
    undo_->moveTo(0);
    EXPECT_EQ(gain_->getValue(0, 0), 11.0);
    ASSERT_OK(master_->setProgram(1));
    EXPECT_EQ(steps().size(), 2u);
    EXPECT_EQ(drive_->getValue(0, 0), 30.0);
}

TEST_F(RegistryPrograms, IgnoreTheCurrentIndexAndThoseThatAreNotThere)
{
    BridgeCounter listener(*master_);
    edit(*gain_, 20.0);
    for (const std::int32_t index : {0, -1, 3, 1000}) {
        ASSERT_OK(master_->setProgram(index));
        master_->setProgramName(index == 0 ? -1 : index, "x", true);
    }
    EXPECT_EQ(gain_->getValue(0, 0), 20.0);
    EXPECT_EQ(master_->getProgram(), 0);
    EXPECT_EQ(listener.count, 0);
    EXPECT_EQ(master_->getProgramName(3), "");
    CMemoryWriteBuffer nowhere;
    EXPECT_FAILS(master_->acquirePreset(false, 3, -1, nowhere, false), "Invalid preset index 3 specified.");
    EXPECT_FAILS(master_->acquirePreset(true, -1, -1, nowhere, false), "Invalid preset index -1 specified.");
}

TEST_F(RegistryPrograms, RenamingByTheUserCanBeTakenBack)
{
    master_->setProgramName(0, "Uno", true);
    EXPECT_EQ(steps().back(), "Program name change");
    EXPECT_EQ(presetName_->getString(0, 0), "Uno");
    master_->setProgramName(0, "Uno", true); // the same name is no step
    master_->setProgramName(1, "Due", true); // nor is that of another program
    EXPECT_EQ(steps().size(), 2u);
    EXPECT_EQ(acquired(*master_).getName(), "7qtz:Uno");
    undo_->moveTo(0);
    EXPECT_EQ(master_->getCurrentProgramName(), "One");
    master_->setProgramName(0, "Host", false);
    EXPECT_EQ(presetName_->getString(0, 0), "Host");
    EXPECT_EQ(steps().size(), 2u);
    std::vector<CString> names = master_->listPresets(false);
    EXPECT_EQ(names, (std::vector<CString>{"Host", "Due", "Three"}));
}

TEST_F(RegistryPrograms, ABankReplacesThemAndTheirHistories)
{
    ASSERT_OK(master_->setProgram(2));
    edit(*gain_, 20.0);
    CAudioPresetBank bank;
    bank.add(presetOf("7qtz:A", {{"gain", 21.0}}));
    bank.add(presetOf("7qtz:B", {{"gain", 22.0}}));
    ASSERT_OK(activateBank(*master_, bank));
    EXPECT_EQ(master_->getProgram(), 0); // the third one is gone
    EXPECT_EQ(gain_->getValue(0, 0), 21.0);
    EXPECT_EQ(steps(), Texts{"Undo history start"});

    ASSERT_OK(activateBank(*master_, CAudioPresetBank()));
    EXPECT_EQ(master_->getProgramCount(), 1);
    EXPECT_EQ(master_->getCurrentProgramName(), "Default");
    EXPECT_EQ(gain_->getValue(0, 0), 1.0);
}

TEST_F(RegistryPrograms, MasterResetReturnsToInitialValuesAndCanBeTakenBack)
{
    edit(*gain_, 20.0, 2);
    edit(*oversampling_, 3.0);
    instanceName_->setString(0, 0, "Kick", context_);
    master_->masterReset();
    EXPECT_EQ(steps().back(), "Master reset");
    EXPECT_EQ(gain_->getValue(0, 0), 1.0);
    EXPECT_EQ(gain_->getCurrent().getGroupCount(), 1);
    EXPECT_EQ(oversampling_->getValue(0, 0), 1.0);
    EXPECT_EQ(instanceName_->getString(0, 0), "Kick");
    EXPECT_EQ(master_->getCurrentProgramName(), "Default");
    undo_->moveTo(position() - 1);
    EXPECT_EQ(gain_->getValue(0, 0), 11.0);
    EXPECT_EQ(gain_->getValue(2, 0), 20.0);
    EXPECT_EQ(oversampling_->getValue(0, 0), 3.0);
    EXPECT_EQ(master_->getCurrentProgramName(), "One");
}

} // namespace
} // namespace qel::test
