// Programs that are added, deleted, replaced and moved.
#include "PresetFixture.h"

namespace qel::test {
namespace {

class RegistryPrograms : public PresetFixture
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

TEST_F(RegistryPrograms, OneIsAddedDeletedReplacedAndMovedWithoutTouchingTheOthers)
{
    const auto names = [&] { return master_->listPresets(false); };
    using Names = std::vector<CString>;
    const auto withBody = [&](const char* name, double gain, auto&& use) {
        const Bytes body = bodyOf(presetOf(name, {{"gain", gain}}));
        CMemoryReader reader(body);
        return use(reader);
    };
    edit(*drive_, 5.0); // a history of the first
    ASSERT_OK(master_->setProgram(1));
    edit(*gain_, 20.0);
    const auto expectUntouched = [&](std::int32_t index) {
        EXPECT_EQ(master_->getProgram(), index);
        EXPECT_EQ(gain_->getValue(0, 0), 20.0);
        EXPECT_EQ(steps().size(), 2u);
        EXPECT_EQ(master_->getCurrentProgramName(), "Two");
    };
    BridgeCounter listener(*master_);
    ASSERT_OK(withBody("7qtz:Zero", 10.0, [&](auto& body) { return master_->addProgram(0, body); }));
    ASSERT_OK(withBody("7qtz:Four", 14.0, [&](auto& body) { return master_->addProgram(-1, body); }));
    EXPECT_EQ(names(), (Names{"Zero", "One", "Two", "Three", "Four"}));
    expectUntouched(2);
    ASSERT_OK(master_->moveProgram(1, 4));
    EXPECT_EQ(names(), (Names{"Zero", "Two", "Three", "Four", "One"}));
    expectUntouched(1);
    ASSERT_OK(master_->moveProgram(1, 3));
    EXPECT_EQ(names(), (Names{"Zero", "Three", "Four", "Two", "One"}));
    expectUntouched(3);
    ASSERT_OK(withBody("7qtz:Neu", 15.0, [&](auto& body) { return master_->replaceProgram(1, body); }));
    ASSERT_OK(master_->removeProgram(0));
    EXPECT_EQ(names(), (Names{"Neu", "Four", "Two", "One"}));
    expectUntouched(2);
    EXPECT_EQ(listener.count, 6);
    ASSERT_OK(master_->setProgram(3));
    EXPECT_EQ(drive_->getValue(0, 0), 5.0);
    EXPECT_EQ(steps().size(), 2u) << "its history came along";
    ASSERT_OK(master_->setProgram(0));
    EXPECT_EQ(gain_->getValue(0, 0), 15.0);

    // Where the current one is concerned, something becomes audible.
    ASSERT_OK(master_->setProgram(2));
    ASSERT_OK(withBody("7qtz:Loud", 40.0, [&](auto& body) { return master_->replaceProgram(2, body); }));
    EXPECT_EQ(gain_->getValue(0, 0), 40.0);
    EXPECT_EQ(steps().back(), "Master preset activate");
    ASSERT_OK(master_->setProgram(3));
    ASSERT_OK(master_->removeProgram(3));
    EXPECT_EQ(names(), (Names{"Neu", "Four", "Loud"}));
    EXPECT_EQ(master_->getProgram(), 2);
    EXPECT_EQ(gain_->getValue(0, 0), 40.0);
    ASSERT_OK(master_->removeProgram(2));
    ASSERT_OK(master_->removeProgram(1));
    EXPECT_EQ(gain_->getValue(0, 0), 15.0);
    EXPECT_FAILS(master_->removeProgram(0), "The last program cannot be deleted.");
    EXPECT_FAILS(master_->moveProgram(0, 1), "Invalid preset index 1 specified.");
    EXPECT_FAILS(withBody("QLIO:x", 1.0, [&](auto& body) { return master_->addProgram(0, body); }),
                 "Incompatible preset.");
    EXPECT_EQ(names(), Names{"Neu"});
}

} // namespace
} // namespace qel::test
