// A window on the product: what it is told at the start, and steps of the history that several objects make.
#include "../Presets/ProductFixture.h"
#include "CAudioExtParam.h"
#include "CAudioExtParamList.h"
#include "CAudioInterfaceClient.h"
#include "CEventLoop.h"
#include "CNotifyServer.h"

namespace qel::test {
namespace {

class ProductInterface : public ProductFixture
{
protected:
    ProductInterface()
    {
        bringUp(host_);
        server_.setEventLoop(&loop_);
        ui_->setNotifyServer(&server_);
        EXPECT_OK(ui_->setAttribute("PluginRootPtrVar",
                                    CAudioInterfaceClientConnectorVST::rootVarOf(*host_.getRoot()), true));
        const CAttrMap toBase{{"base-connector", CAttrValue("plugin.interface-base-connector")}};
        CAudioInterfaceClientConnectorVST* wire = nullptr;
        EXPECT_OK(
            ui_->createChild(wire, "audio:interface-client-connector-vst", "wire", false, nullptr, &toBase));
        const CAttrMap toWire{{"client-connector", CAttrValue("wire")}};
        EXPECT_OK(ui_->createChild(client_, "audio:interface-client", "client", false, nullptr, &toWire));
    }
    ~ProductInterface() override { CObject::releaseObject(ui_); }

    // The client when all that was sent to it has arrived.
    CAudioInterfaceClient* client()
    {
        loop_.drain();
        return client_;
    }

    TestHost host_;
    CEventLoop loop_;
    CNotifyServer server_;
    CObject* ui_ = new CObject;
    CAudioInterfaceClient* client_ = nullptr;
};

TEST_F(ProductInterface, UndoingAChangeAlsoGivesBackTheNameOfThePreset)
{
    CAudioParam& name = paramOf(host_, "modDrumfell.dcfilter-params.name");
    CAudioParam& freq = paramOf(host_, "modDrumfell.dcfilter-params.freq");
    CAudioParamContext context;
    name.setString(0, 0, "Gentle", context);
    const double before = freq.getValue(0, 0);
    const auto drag = [&](double value) {
        EXPECT_OK(client()->send(record::CChangeParams{
            "DC filter frequency", 1, true, {{freq.getName(), 0, 0, false, {value}, {}}}}));
    };
    drag(before + 1.0);
    drag(before + 2.0);
    EXPECT_EQ(name.getString(0, 0), "User");
    ASSERT_EQ(client()->getHistory().steps.size(), 2U) << "one movement is one step";
    EXPECT_OK(client()->send(record::CMoveHistory{0}));
    EXPECT_EQ(freq.getValue(0, 0), before);
    EXPECT_EQ(name.getString(0, 0), "Gentle");
    EXPECT_OK(client()->send(record::CMoveHistory{1}));
    EXPECT_EQ(freq.getValue(0, 0), before + 2.0);
    EXPECT_EQ(name.getString(0, 0), "User");
}

TEST_F(ProductInterface, FollowsTheAutomationOfTheHostAndUndoesNoneOfIt)
{
    CAudioParam& gain = paramOf(host_, "modOutGain.gain");
    const CAudioInterfaceParam& shown = client_->watchParam(gain.getName());
    CAudioExtParam& knob = *host_.getExtParams().get(host_.getExtParams().find(gain, 0, 0));
    const std::vector<std::vector<double>> silence(2, std::vector<double>(64));
    host_.run(silence, {64});
    for (const double norm : {0.25, 0.4}) {
        knob.postNormalized(norm);
        if (norm == 0.25) {
            host_.run(silence, {64}); // the other one waits for a host that does not process
        }
        EXPECT_OK(client()->send(record::CGetViz{}));
        client();
        EXPECT_NEAR(shown.info.converters.at(0)->valueToNorm(shown.info, 0, shown.values.get(0, 0)), norm,
                    1e-9);
    }
    const double automated = gain.getValue(0, 0);
    host_.run(silence, {64});
    knob.postNormalized(0.7);
    host_.run(silence, {64});
    EXPECT_OK(client()->send(
        record::CChangeParams{"Gain change", 1, true, {{gain.getName(), 0, 0, false, {1.0}, {}}}}));
    EXPECT_OK(client()->send(record::CMoveHistory{0}));
    EXPECT_GT(gain.getValue(0, 0), automated) << "the automation between the two";
}

} // namespace
} // namespace qel::test
