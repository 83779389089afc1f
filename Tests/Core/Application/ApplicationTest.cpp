// Start and end of the application, shared and instance trees, and settings shared between instances.
#include "CApplication.h"
#include "CEventLoop.h"
#include "CNotifyServer.h"
#include "CSharedAttribute.h"
#include "FailureReport.h"
#include "Streams/CMemoryWriteBuffer.h"
#include "TemporaryHome.h"
#include "Trace.h"
#include "TreeFixture.h"

#include <list>
#include <thread>

namespace qel {
namespace {

using test::TreeNode;

constexpr CCreatorRow kClasses[] = {
    {"core:object", newObject<CObject>, CObject::buildClassInfo},
    {"core:shared-attribute", newObject<CSharedAttribute>, CSharedAttribute::buildClassInfo},
    {nullptr, nullptr, nullptr}};

// A resource record of a compiled tree: length, then the chunk. Lives as long as the process.
const std::uint8_t* treeRecord(const TreeNode& root)
{
    const std::vector<std::uint8_t> bytes = root.bytes();
    CMemoryWriteBuffer chunk;
    EXPECT_OK(chunk.writeCompressedData(CByteBuffer(std::span<const std::uint8_t>(bytes)), 0x6C6D7863));
    CMemoryWriteBuffer record;
    EXPECT_OK(record.writeU32(static_cast<std::uint32_t>(chunk.size())));
    EXPECT_OK(chunk.writeTo(record));
    static std::list<CByteBuffer> kept;
    record.copyTo(kept.emplace_back());
    return kept.back().data();
}

const CResourceRow* resources()
{
    static const CResourceRow rows[] = {
        {treeRecord(TreeNode().child(TreeNode::templateOf(
             "plugin", TreeNode("core:object").child(TreeNode("core:object", "inside"))))),
         "Shared.xml"},
        {treeRecord(TreeNode()
                        .child(TreeNode::templateOf("plugin", TreeNode("core:object")))
                        .child(TreeNode("core:shared-attribute", "wrong"))),
         "Broken.xml"},
        {nullptr, nullptr}};
    return rows;
}

class Application : public ::testing::Test
{
protected:
    ~Application() override { CApplication::finish(); }

    CError start(const CString& sharedFile = "Shared.xml", const CCreatorRow* classes = kClasses)
    {
        return CApplication::start({classes, resources(), sharedFile});
    }
    static CApplication& application() { return *CApplication::get(); }
    // The parent of a shared attribute named "mode", which follows the setting "app-mode".
    static CObject& addShared(CObject& root, const char* isGlobal = "false")
    {
        CObject* parent = nullptr;
        EXPECT_OK(root.createChild(parent, "core:object", "holder"));
        CAttrMap attributes;
        attributes["attribute"] = CAttrValue("mode");
        attributes["data-name"] = CAttrValue("app-mode");
        attributes["def-value"] = CAttrValue("standard");
        attributes["is-global"] = CAttrValue(isGlobal);
        CSharedAttribute* shared = nullptr;
        EXPECT_OK(parent->createChild(shared, "core:shared-attribute", "link", false, nullptr, &attributes));
        return *parent;
    }
    CObject* makeRoot(const CString& file = {})
    {
        CObject* root = nullptr;
        EXPECT_OK(application().initRootObject(root, file));
        return root;
    }

    test::TemporaryHome home_;
};

TEST_F(Application, StartsAndFinishesAsOftenAsAsked)
{
    std::vector<std::string> lines;
    const CTraceHook before = setTraceHook([&](const CString& line) { lines.push_back(line.toUtf8()); });
    for (int round = 0; round < 2; ++round) {
        lines.clear();
        EXPECT_EQ(CApplication::get(), nullptr);
        ASSERT_OK(start());
        EXPECT_FAILS(start(), "running already");
        ASSERT_NE(CApplication::get(), nullptr);
        EXPECT_EQ(application().getUIScale(), 1.0);
        EXPECT_FALSE(application().getModulePath().isEmpty());
        ASSERT_NE(CObject::sharedObject(), nullptr);
        EXPECT_EQ(CObject::sharedObject()->getObjectNumber(), -1);

        CObject* root = makeRoot();
        CObject* plugin = nullptr;
        EXPECT_OK(root->createChild(plugin, "plugin", "plugin", true));
        EXPECT_NE(root->findObject("plugin.inside"), nullptr);
        application().releaseRootObject(root);
        CApplication::finish();
        EXPECT_EQ(CObject::sharedObject(), nullptr);
        EXPECT_EQ(lines,
                  (std::vector<std::string>{"Initializing application...", "Finalizing application..."}));
    }
    setTraceHook(before);
    CApplication::finish();
}

TEST_F(Application, ASharedTreeThatFailsToLoadLeavesInstancesToReportIt)
{
    std::string lines;
    const CTraceHook before = setTraceHook([&](const CString& line) { lines += line.toUtf8() + "\n"; });
    EXPECT_OK(start("Broken.xml"));
    setTraceHook(before);
    EXPECT_NE(lines.find("No attached attribute name specified."), std::string::npos);
    CObject* root = nullptr;
    EXPECT_FAILS(application().initRootObject(root), "No shared object created.");
    EXPECT_EQ(root, nullptr);
    EXPECT_OK(application().initSharedObject({}));
    EXPECT_OK(application().initRootObject(root));
    application().releaseRootObject(root);
}

TEST_F(Application, TakesTheInterfaceScaleAsItIsNowAndFallsBackToOne)
{
    ASSERT_OK(start());
    const std::pair<const char*, double> cases[] = {{"1.25", 1.25}, {"0.8", 0.8}, {"2", 2.0},
                                                    {"", 1.0},      {"big", 1.0}, {"-1", 1.0},
                                                    {"0", 1.0},     {"1e1", 1.0}, {"99999999", 1.0}};
    for (const auto& [text, scale] : cases) {
        ASSERT_OK(application().getLocalData().saveString("ui-scale", text, nullptr));
        EXPECT_EQ(application().getUIScale(), scale) << text;
    }
}

TEST_F(Application, SharedAttributesKeepAllInstancesAndTheStoreAlike)
{
    ASSERT_OK(start());
    CObject* rootA = makeRoot();
    CObject* rootB = makeRoot();
    CObject& a = addShared(*rootA);
    CObject& b = addShared(*rootB);
    CObject& global = addShared(*rootB, "true");
    EXPECT_EQ(a.getAttrString("mode"), "standard");

    EXPECT_OK(a.setAttribute("mode", "fast", true));
    EXPECT_EQ(b.getAttrString("mode"), "fast");
    EXPECT_OK(b.setAttribute("mode", "slow", true));
    EXPECT_EQ(a.getAttrString("mode"), "slow");
    EXPECT_EQ(global.getAttrString("mode"), "standard");
    EXPECT_OK(a.setAttribute("unrelated", "x", true));

    application().releaseRootObject(rootA);
    EXPECT_OK(b.setAttribute("mode", "last", true));
    application().releaseRootObject(rootB);
    CApplication::finish();
    ASSERT_OK(start());
    CObject* next = makeRoot();
    EXPECT_EQ(addShared(*next).getAttrString("mode"), "last");
    application().releaseRootObject(next);
}

TEST_F(Application, SharedAttributesAreSetOnTheThreadOfTheirTree)
{
    ASSERT_OK(start());
    CEventLoop loop;
    CObject* root = makeRoot();
    root->getNotifyServer()->setEventLoop(&loop);
    CObject& holder = addShared(*root);
    CObject* leaving = makeRoot();
    leaving->getNotifyServer()->setEventLoop(&loop);
    addShared(*leaving);
    std::thread([] {
        CApplicationData& store = CApplication::get()->getLocalData();
        EXPECT_OK(store.saveString("app-mode", "first", nullptr));
        EXPECT_OK(store.saveString("app-mode", "second", nullptr));
    }).join();
    EXPECT_EQ(holder.getAttrString("mode"), "standard");
    application().releaseRootObject(leaving); // before its update arrives
    loop.drain();
    EXPECT_EQ(holder.getAttrString("mode"), "second");
    root->getNotifyServer()->setEventLoop(nullptr);
    application().releaseRootObject(root);
}

} // namespace
} // namespace qel
