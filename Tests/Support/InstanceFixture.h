// The product's audio side, and trees of the interface joined to it.
#pragma once

#include "CApplication.h"
#include "CAudioExtParamList.h"
#include "CAudioInterfaceBase.h"
#include "CAudioInterfaceClient.h"
#include "CAudioParam.h"
#include "CAudioParamCollector.h"
#include "CAudioParamRegistry.h"
#include "CAudioWrapper.h"
#include "CEventLoop.h"
#include "CNotifyServer.h"
#include "CompileXml.h"
#include "CreatorTable.h"
#include "TemporaryHome.h"
#include "TreeFixture.h"

extern "C" const qel::CResourceRow drumfellResourceDirectory[];

namespace qel::test {

// A host that writes down what controls tell it.
class ListeningHost : public CAudioWrapper
{
public:
    ListeningHost()
    {
        EXPECT_OK(init());
        EXPECT_OK(finishInit());
        CAudioHostSetup setup;
        setup.sampleRateHz = 48000.0;
        setup.inputCount = 2;
        setup.outputCount = 2;
        resume(setup);
    }
    void setParameterAutomated(std::int32_t, double) override {}
    void beginEdit(std::int32_t index) override { calls.push_back("begin " + std::to_string(index)); }
    void endEdit(std::int32_t index) override { calls.push_back("end " + std::to_string(index)); }

    CAudioParam& param(const char* name) { return getParams().getParam(CString("plugin.modMain.") + name); }
    void set(const char* name, double value, std::int32_t group = 0, std::int32_t entry = 0)
    {
        CAudioParamContext context;
        param(name).setValue(group, entry, 0, value, context);
    }
    double get(const char* name, std::int32_t group = 0, std::int32_t entry = 0)
    {
        return param(name).getValue(group, entry);
    }

    std::vector<std::string> calls;
};

// An interface's tree, loaded from XML below a client "ui.client" of the host, with a loop that tests drain.
// `uiXml`: further objects within "ui".
class EditorTree
{
public:
    EditorTree(CAudioWrapper& host, const std::string& xml, const std::string& uiXml = {})
    {
        server_.setEventLoop(&loop_);
        root_->setNotifyServer(&server_);
        EXPECT_OK(root_->setAttribute("PluginRootPtrVar",
                                      CAudioInterfaceClientConnectorVST::rootVarOf(*host.getRoot()), true));
        const std::string head = R"(<tree><core:object name="ui">
            <audio:interface-client-connector-vst name="wire" base-connector="plugin.interface-base-connector"/>
            <audio:interface-client name="client" client-connector="ui.wire"/>
            <ui:window-shared-data name="window-shared-data"/>)";
        const std::vector<std::uint8_t> bytes =
            tools::encodeTree(compileXml(head + uiXml + "</core:object>" + xml + "</tree>"));
        CNodeCursor cursor(bytes);
        EXPECT_OK(root_->loadNode(cursor, true, true, false, false));
    }
    ~EditorTree() { CObject::releaseObject(root_); }
    EditorTree(const EditorTree&) = delete;
    EditorTree& operator=(const EditorTree&) = delete;

    // All that was sent has arrived.
    void settle()
    {
        loop_.drain();
        loop_.drain();
    }
    template <class T>
    T& at(const char* path)
    {
        T* const object = dynamic_cast<T*>(root_->findObject(path));
        if (!object) {
            throw std::runtime_error(std::string("no object ") + path);
        }
        return *object;
    }
    CAudioInterfaceClient& client() { return at<CAudioInterfaceClient>("ui.client"); }
    void set(const char* path, const char* name, const char* value)
    {
        EXPECT_OK(at<CObject>(path).setAttribute(name, value, true));
    }
    CEventLoop& loop() { return loop_; }

private:
    CEventLoop loop_;
    CNotifyServer server_;
    CObject* root_ = new CObject;
};

// The application as it is delivered, with stores of its own, and one instance.
class InstanceFixture : public ::testing::Test
{
protected:
    explicit InstanceFixture(const CCreatorRow* moreCreators = nullptr)
    {
        CApplicationParts parts;
        parts.creators = kCreatorTable;
        parts.resources = drumfellResourceDirectory;
        EXPECT_OK(CApplication::start(parts));
        if (moreCreators) {
            EXPECT_OK(registerCreators(moreCreators));
        }
        host_ = std::make_unique<ListeningHost>();
    }
    ~InstanceFixture() override
    {
        host_.reset();
        CApplication::finish();
    }

    TemporaryHome home_;
    std::unique_ptr<ListeningHost> host_;
};

} // namespace qel::test
