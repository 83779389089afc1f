// The two ends of the audio/UI interface, joined.
#include "../Viz/VizFixture.h"
#include "CAudioInterfaceBase.h"
#include "CAudioInterfaceClient.h"
#include "CEventLoop.h"
#include "CNotifyServer.h"

#include <thread>

namespace qel {
namespace {

using test::creatorRow;

// Writes down what reaches the user interface.
class Screen : public CAudioInterfaceParamListener, public CAudioInterfaceVizProcessor
{
public:
    void onParamUpdate(const CString& param) override { updates.push_back(param); }
    void onVizSource(const CString&, std::int32_t sourceId) override { id = sourceId; }
    void onVizData(const CAudioVizData& data) override { times.push_back(data.timeSec); }

    std::vector<CString> updates;
    std::vector<double> times;
    std::int32_t id = -2;
};

class InterfaceTest : public test::VizFixture
{
protected:
    InterfaceTest()
    {
        const CCreatorRow rows[] = {
            creatorRow<CAudioInterfaceBaseConnectorVST>("audio:interface-base-connector-vst"),
            creatorRow<CAudioInterfaceBase>("audio:interface-base"),
            creatorRow<CAudioInterfaceClientConnectorVST>("audio:interface-client-connector-vst"),
            creatorRow<CAudioInterfaceClient>("audio:interface-client"),
            {},
        };
        EXPECT_OK(registerCreators(rows));
        EXPECT_OK(root_->createChild(wire_, "audio:interface-base-connector-vst", "wire"));
        const CAttrMap attributes{{"base-connector", CAttrValue("wire")},
                                  {"param-collector", CAttrValue("param-collector")},
                                  {"viz-collector", CAttrValue("viz-collector")}};
        EXPECT_OK(root_->createChild(base_, "audio:interface-base", "base", false, nullptr, &attributes));

        CAudioParamInfo info;
        info.valid = info.isGlobal = info.isStorable = true;
        info.name = "gain";
        info.converterNames = {"gain"};
        EXPECT_OK(info.parseConverterNames());
        EXPECT_OK(info.convertMinMaxValues("-24", "24"));
        EXPECT_OK(info.parseDefValues("0"));
        gain_ = &addParam("p.gain", info);
        openWindow();
    }
    ~InterfaceTest() override { closeWindow(); }

    void openWindow()
    {
        server_ = std::make_unique<CNotifyServer>();
        server_->setEventLoop(&loop_);
        ui_ = new CObject;
        ui_->setNotifyServer(server_.get());
        EXPECT_OK(ui_->setAttribute("PluginRootPtrVar", CAudioInterfaceClientConnectorVST::rootVarOf(*root_),
                                    true));
        CAttrMap attributes{{"base-connector", CAttrValue("wire")}};
        EXPECT_OK(ui_->createChild(clientWire_, "audio:interface-client-connector-vst", "wire", false,
                                   nullptr, &attributes));
        attributes = {{"client-connector", CAttrValue("wire")}};
        EXPECT_OK(ui_->createChild(client_, "audio:interface-client", "client", false, nullptr, &attributes));
    }
    void closeWindow()
    {
        CObject::releaseObject(ui_);
        ui_ = nullptr;
        server_.reset();
    }
    // The client when all that was sent to it has arrived.
    CAudioInterfaceClient* client()
    {
        loop_.drain();
        return client_;
    }
    double shownGain() { return client()->findParam("p.gain")->values.get(0, 0); }

    CEventLoop loop_;
    CAudioParam* gain_ = nullptr;
    CAudioInterfaceBaseConnectorVST* wire_ = nullptr;
    CAudioInterfaceBase* base_ = nullptr;
    std::unique_ptr<CNotifyServer> server_;
    CObject* ui_ = nullptr;
    CAudioInterfaceClientConnectorVST* clientWire_ = nullptr;
    CAudioInterfaceClient* client_ = nullptr;
    Screen screen_;
};

TEST_F(InterfaceTest, FillsUpToAnEntryBeyondTheListAndTellsWhatItRefuses)
{
    CAudioParam& names = addParam("p.names", test::stringInfo("names", {"a", "b", "c"}));
    CAudioParam& list = addParam("p.list", test::floatInfo("list", {1.0, 2.0}));
    EXPECT_OK(client()->send(record::CChangeParams{
        "Names", 1, false, {{"p.names", 0, 6, false, {}, {"g"}}, {"p.list", 2, 3, false, {9.0}, {}}}}));
    EXPECT_EQ(names.getString(0, 6), "g");
    EXPECT_EQ(names.getString(0, 2), "c");
    EXPECT_EQ(names.getCurrent().getCount(0), 7);
    EXPECT_EQ(list.getValue(2, 3), 9.0);
    EXPECT_EQ(list.getValue(2, 1), 2.0);
    EXPECT_FAILS(
        client()->send(record::CChangeParams{
            "Bad", 1, false, {{"p.gain", 0, 0, false, {3.0}, {}}, {"p.list", -1, 0, false, {1.0}, {}}}}),
        "Parameter 'p.list' does not take these values.");
    EXPECT_EQ(gain_->getValue(0, 0), 1.0) << "all or nothing";
    EXPECT_EQ(client()->getHistory().steps.size(), 2U);
    EXPECT_OK(client()->send(record::CMoveHistory{0}));
    EXPECT_EQ(names.getCurrent().getCount(0), 3);
}

TEST_F(InterfaceTest, AnswersOnlyTheClientThatAsksAndForgetsOneThatLeaves)
{
    const std::int32_t id = viz_->registerSource("meter");
    client()->setVizProcessor(&screen_);
    EXPECT_OK(client()->send(record::CListenViz{"meter", true}));
    client();
    EXPECT_EQ(screen_.id, id);
    CAudioParam& enable = collector_->getParam("meter-enable");
    EXPECT_EQ(enable.getValue(0, 0), 1.0);
    viz_->beginBlock();
    viz_->push(meterData(1.5));
    viz_->push(meterData(2.5));
    viz_->beginBlock();
    EXPECT_OK(client()->send(record::CGetViz{}));
    client();
    EXPECT_EQ(screen_.times, (std::vector<double>{1.5, 2.5}));

    closeWindow();
    EXPECT_EQ(enable.getValue(0, 0), 0.0) << "nobody looks any more";
    EXPECT_FALSE(wire_->hasClients());
    gain_->setValue(0, 0, 0, 2.0, context_);
    openWindow();
    client_->watchParam("p.gain");
    EXPECT_EQ(shownGain(), 2.0) << "a new window asks afresh";
}

TEST_F(InterfaceTest, KeepsTheOrderOfEachSenderAndDropsWhatIsQueuedWhenTheWindowCloses)
{
    client_->addParamListener("p.gain", screen_);
    std::thread other([&] {
        CAudioParamContext context;
        for (int i = 1; i <= 200; ++i) {
            gain_->setValue(0, 0, 0, 1.0 + i / 200.0, context);
        }
    });
    for (int i = 0; i < 200; ++i) {
        base_->setEnvironment({.sampleRateHz = 44100.0 + i});
    }
    other.join();
    EXPECT_EQ(client()->getEnvironment().sampleRateHz, 44299.0);
    EXPECT_EQ(shownGain(), 2.0);
    base_->clearClients();
}

TEST_F(InterfaceTest, NeverRunsInTheSendersThreadAndNeverGetsStuck)
{
    client_->addParamListener("p.gain", screen_);
    server_->setEventLoop(nullptr);
    const auto sendFromAnotherThread = [&](double value) {
        std::thread([&] {
            CAudioParamContext context;
            gain_->setValue(0, 0, 0, value, context);
        }).join();
    };
    sendFromAnotherThread(2.0);
    gain_->setValue(0, 0, 0, 3.0, context_);
    EXPECT_EQ(client_->findParam("p.gain")->isKnown, false) << "there is no loop that could carry it";

    // A loop that goes before it has delivered.
    auto lost = std::make_unique<CEventLoop>();
    server_->setEventLoop(lost.get());
    sendFromAnotherThread(4.0);
    server_->setEventLoop(nullptr);
    lost.reset();
    server_->setEventLoop(&loop_);
    EXPECT_EQ(shownGain(), 4.0);
    sendFromAnotherThread(5.0);
    EXPECT_EQ(shownGain(), 5.0);
}

TEST_F(InterfaceTest, AWindowMayOutliveTheInstance)
{
    gain_->setValue(0, 0, 0, 2.0, context_);
    CObject::releaseObject(base_);
    CObject::releaseObject(wire_);
    EXPECT_OK(client_->send(record::CGetState{}));
    client();
}

} // namespace
} // namespace qel
