// Parameters as the host sees them.
#include "CApplication.h"
#include "HostParamFixture.h"
#include "TemporaryHome.h"

#include <atomic>
#include <cmath>
#include <thread>

namespace qel {
namespace {

using test::HostParamFixture;
using Calls = test::RecordingHost::Calls;

class ExtParamTest : public HostParamFixture
{};

TEST_F(ExtParamTest, KeepsANewerPostedValueWhenAnOlderOneComesBackFromTheAudioSide)
{
    declare("p.a", "real", "0", "10", "5");
    CAudioExtParam& ext = add("A", "p.a");
    callAudio();
    ext.postNormalized(0.3);
    list_->applyPosted(0.0);
    ext.postNormalized(0.6);
    collector_->takeChangesFromAudio();
    EXPECT_EQ(ext.getNormalized(), 0.6);
    list_->applyPosted(0.0);
    collector_->takeChangesFromAudio();
    EXPECT_EQ(ext.getNormalized(), 0.6);
    EXPECT_EQ(ext.getParam().getValue(0, 0), 6.0);
    EXPECT_EQ(host_.take(), Calls{});

    // The user's hand comes after the host's value and wins.
    ext.postNormalized(0.1);
    list_->applyPosted(0.0);
    ext.getParam().setValue(0, 0, 0, 9.0, context_);
    collector_->takeChangesFromAudio();
    EXPECT_EQ(ext.getNormalized(), 0.9);
    EXPECT_EQ(ext.getDisplay(), "9.00");
    EXPECT_EQ(host_.take(), (Calls{{0, 0.9}}));
}

TEST_F(ExtParamTest, LosesNoPostedValueWhenAllEventsAreUnderWay)
{
    declare("p.a", "real", "0", "10", "5");
    CAudioExtParam& ext = add("A", "p.a");
    callAudio();
    for (int i = 0; i <= 40; ++i) {
        ext.postNormalized(i / 40.0);
        list_->applyPosted(0.0);
    }
    callAudio();
    callAudio();
    list_->applyPosted(0.0);
    collector_->takeChangesFromAudio();
    EXPECT_EQ(ext.getParam().getValue(0, 0), 10.0);
    // Without any processing call a control thread shows it, or takes it.
    test::Slot slot(ext.getParam());
    ext.postNormalized(0.4);
    list_->showPosted();
    EXPECT_EQ(ext.getParam().getValue(0, 0), 4.0);
    ext.postNormalized(0.5);
    list_->takePosted();
    EXPECT_EQ(ext.getParam().getValue(0, 0), 5.0);
    callAudio();
    list_->applyPosted(0.0);
    slot.drain();
    EXPECT_EQ(slot.storage.get(0, 0), 5.0);
    // What is shown still goes its own way, in its turn.
    ext.postNormalized(0.6);
    list_->showPosted();
    ext.postNormalized(0.7);
    callAudio();
    list_->applyPosted(0.0);
    slot.drain();
    collector_->takeChangesFromAudio();
    EXPECT_EQ(slot.storage.get(0, 0), 7.0);
    EXPECT_EQ(ext.getParam().getValue(0, 0), 7.0);
    EXPECT_EQ(ext.getDisplay(), "7.00");
}

// Host automation from two threads, the user's hand and a running audio thread: whoever was last, parameter
// and number agree in the end, and so does what the host was told last if it was told.
TEST_F(ExtParamTest, AgreesWithItsParameterAfterWritesFromManyThreads)
{
    CAudioParam& param = declare("p.a", "real", "0", "1", "0.5");
    CAudioExtParam& ext = add("A", "p.a");
    test::Slot slot(param);
    std::atomic<int> running{4};
    const auto write = [&](auto&& set) {
        return std::thread([&running, set] {
            for (int i = 0; i < 3000; ++i) {
                set(i / 3000.0);
            }
            --running;
        });
    };
    std::thread writers[] = {
        write([&](double norm) { ext.postNormalized(norm / 2); }),
        write([&](double norm) { ext.setNormalized(norm); }),
        write([&](double norm) { ext.postNormalized(1.0 - norm); }),
        write([&](double value) {
            CAudioParamContext context;
            param.setValue(0, 0, 0, value, context);
        }),
    };
    std::thread audio([&] {
        while (running > 0) {
            env_->setInProcess(true);
            collector_->applyPending(env_->getPositionSec());
            list_->applyPosted(env_->getPositionSec());
            slot.drain();
            env_->setInProcess(false);
        }
    });
    while (running > 0) {
        collector_->takeChangesFromAudio();
        list_->showPosted();
        const double norm = ext.getNormalized();
        ASSERT_TRUE(norm >= 0.0 && norm <= 1.0);
        (void)ext.getDisplay();
    }
    for (std::thread& writer : writers) {
        writer.join();
    }
    audio.join();
    callAudio();
    list_->applyPosted(0.0);
    slot.drain();
    collector_->takeChangesFromAudio();
    list_->showPosted();
    list_->showPosted();
    EXPECT_EQ(ext.getNormalized(), param.getValue(0, 0));
    EXPECT_EQ(slot.storage.get(0, 0), param.getValue(0, 0));
    EXPECT_EQ(ext.getDisplay(), ext.getDisplayOf(ext.getNormalized()));
}

// As one that plays a ramp while the user turns the knob.
TEST_F(ExtParamTest, StopsTellingAHostThatAnswersWithAnotherValueEachTime)
{
    struct AnsweringHost : CAudioExtParamHostBridge
    {
        void setParameterAutomated(std::int32_t, double norm) override
        {
            ASSERT_LT(++count, 100);
            param->postNormalized(norm / 2 + 0.2);
        }
        CAudioExtParam* param = nullptr;
        int count = 0;
    };
    CAudioParam& param = declare("p.a", "real", "0", "1", "0.5");
    CAudioExtParam& ext = add("A", "p.a");
    AnsweringHost host;
    host.param = &ext;
    list_->setHostBridge(&host);
    CAudioParamContext context;
    param.setValue(0, 0, 0, 1.0, context);
    EXPECT_EQ(host.count, 4);
    list_->setHostBridge(&host_);
}

std::vector<std::uint8_t> ccTable(const std::vector<std::pair<std::uint8_t, std::string>>& entries)
{
    std::vector<std::uint8_t> bytes{static_cast<std::uint8_t>(entries.size()), 0, 0, 0};
    for (const auto& [controller, path] : entries) {
        bytes.insert(bytes.end(), {controller, 0, 0, 0});
        bytes.insert(bytes.end(), {static_cast<std::uint8_t>(path.size()), 0, 0, 0});
        bytes.insert(bytes.end(), path.begin(), path.end());
    }
    return bytes;
}

// As in the product's tree, where the table comes first.
TEST(CCTable, FindsParametersThatAreMadeAfterIt)
{
    test::TemporaryHome home;
    using test::TreeNode;
    const CCreatorRow classes[] = {test::creatorRow<CAudioEnv>("audio:audio-env"),
                                   test::creatorRow<CAudioParamCollector>("audio:param-collector"),
                                   test::creatorRow<CAudioCCTable>("audio:cctable"),
                                   test::creatorRow<CAudioExtParamList>("audio:ext-param-list"),
                                   test::creatorRow<CAudioExtParam>("audio:ext-param"),
                                   {}};
    CApplicationParts parts;
    parts.creators = classes;
    parts.sharedFile = {};
    ASSERT_OK(CApplication::start(parts));
    const auto bytes = ccTable({{7, "^ext-param-list.a"}});
    EXPECT_OK(CApplication::get()->getLocalData().saveAppData(CAudioCCTable::kStoreKey, CByteBuffer(bytes),
                                                              nullptr, CApplicationData::kAttrList));
    CObject* root = nullptr;
    ASSERT_OK(CApplication::get()->initRootObject(root));
    TreeNode tree;
    tree.child(TreeNode("audio:audio-env", "env"))
        .child(TreeNode("audio:param-collector", "params").attr("env", "env"))
        .child(TreeNode("audio:cctable", "cctable"))
        .child(TreeNode("audio:ext-param-list", "ext-param-list")
                   .child(TreeNode("audio:ext-param", "a").attr("param-collector", "params")));
    const std::vector<std::uint8_t> encoded = tree.bytes();
    CNodeCursor cursor(encoded);
    EXPECT_OK(root->loadNode(cursor, false, true, false, false));
    const auto* table = dynamic_cast<CAudioCCTable*>(root->findObject("cctable"));
    EXPECT_NE(table->get(7), nullptr);
    EXPECT_EQ(table->get(7), root->findObject("ext-param-list.a"));
    CApplication::get()->releaseRootObject(root);
    CApplication::finish();
}

} // namespace
} // namespace qel
