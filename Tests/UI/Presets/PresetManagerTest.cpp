// Banks and presets, arranged in their window.
#include "CPresetManager.h"
#include "LiteralText.h"
#include "PresetsFixture.h"

#include <fstream>

namespace qel::test {
namespace {

std::string manager(const std::string& attributes)
{
    const auto buttons = [](const std::string& name, const std::vector<const char*>& all) {
        std::string xml = "<ui:view name=\"" + name + "\">";
        for (const char* button : all) {
            xml += std::string("<ui:view name=\"") + button + "\"/>";
        }
        return xml + "</ui:view>";
    };
    return "<ui:preset-manager name=\"w\" interface-client=\"ui.client\" title=\"Presets\" width=\"200\" "
           "height=\"100\" "
           "bank-list-path=\".banks\" preset-list-path=\".presets\" bank-buttons-path=\".b\" "
           "preset-buttons-path=\".p\" filename-prefix=\"Drumfell\" " +
           attributes + R"(>
             <ui:textview name="banks" font-name="shared::font.micro" is-paragraph-selectable="true"/>
             <ui:textview name="presets" font-name="shared::font.micro" is-paragraph-selectable="true"/>
             <core:object name="error-preset-type" text="Another kind."/>
             <core:object name="error-preset-load" text="No preset."/>
             <core:object name="error-bank-load" text="No bank."/>
             <core:object name="error-bank-save" text="Not written."/>
             <core:object name="confirm-bank-delete" text="Delete %1?"/>)" +
           buttons("b", {"add", "delete", "load", "save"}) +
           buttons("p", {"add", "delete", "replace", "load", "save", "activate", "set-default"}) +
           "</ui:preset-manager>";
}

const std::string kMaster = manager("param-registry=\"plugin.param-registry\" store-name=\"shared-banks\"");
const std::string kRouting = manager(
    "param-registry=\"plugin.param-registry-io\" store-name=\"routing-presets\" is-global-data=\"true\"");

class PresetManager : public InstanceFixture
{
protected:
    static constexpr int kROM = 0;
    static constexpr int kSession = 1;
    static constexpr int kFirstOwn = 2;

    static std::string banks(PresetTree& tree) { return tree.items("w.bank-items"); }
    static std::string presets(PresetTree& tree) { return tree.items("w.preset-items"); }
    static void perform(PresetTree& tree, const char* event, const std::string& file)
    {
        tree.send("w", event, {{"filename", CAttrValue(CString::fromUtf8(file))}});
    }
    static void rename(PresetTree& tree, const char* list, int index, const char* text,
                       bool isCancelled = false)
    {
        EXPECT_OK(tree.at<CView>(list).fireEvent("paragraph-text-changed",
                                                 {{"index", CAttrValue(index)},
                                                  {"text", CAttrValue(text)},
                                                  {"is-cancelled", CAttrValue(isCancelled)}}));
        tree.settle();
    }
    std::string file(const char* name) const { return (home_.root() / name).string(); }
};

TEST_F(PresetManager, KeepsTheUsersBanksForAllInstances)
{
    PresetTree tree(*host_, kMaster);
    EXPECT_EQ(banks(tree), "Factory ROM|Session Bank");
    ListeningHost otherHost;
    PresetTree other(otherHost, kMaster);
    tree.click("w.b.add");
    tree.click("w.b.add");
    EXPECT_EQ(banks(tree), "Factory ROM|Session Bank|Bank|Bank 2");
    EXPECT_EQ(tree.attr("w.banks", "selected-paragraph"), "3");
    rename(tree, "w.banks", 3, "Kicks {1}");
    host_->set("modDrumfell.lf-gain", 2.0);
    tree.click("w.p.add");
    tree.click("w.p.add");
    rename(tree, "w.presets", 0, "Loud");
    rename(tree, "w.presets", 1, "Quiet", true);
    rename(tree, "w.presets", 1, "");
    EXPECT_EQ(presets(tree), "Loud|Preset 2");

    other.settle();
    EXPECT_EQ(banks(other), "Factory ROM|Session Bank|Bank|Kicks {1}");
    other.select("w.banks", 3);
    EXPECT_EQ(presets(other), "Loud|Preset 2");
    EXPECT_OK(other.at<CView>("w.presets").fireEvent("paragraph-dbl-clicked", {{"index", CAttrValue(0)}}));
    EXPECT_EQ(otherHost.get("modDrumfell.lf-gain"), 2.0);

    host_->set("modDrumfell.lf-gain", 4.0);
    tree.select("w.presets", 1);
    tree.click("w.p.replace");
    EXPECT_EQ(presets(tree), "Loud|Preset 2");
    other.select("w.presets", 1);
    other.click("w.p.activate");
    EXPECT_EQ(otherHost.get("modDrumfell.lf-gain"), 4.0);
    tree.select("w.presets", 0);
    tree.click("w.p.delete");
    EXPECT_EQ(presets(tree), "Preset 2");
    tree.click("w.b.delete");
    EXPECT_EQ(plainText(CString::fromUtf8(tree.window.last("popup-title-message"))), "Delete Kicks {1}?");
    EXPECT_EQ(banks(tree), "Factory ROM|Session Bank|Bank|Kicks {1}") << "not before the user says so";
    tree.send("w", tree.window.last("popup-confirm-event").c_str());
    EXPECT_EQ(banks(tree), "Factory ROM|Session Bank|Bank");
}

TEST_F(PresetManager, KeepsToItsSelectionWhenAnotherInstanceChangesTheLists)
{
    PresetTree tree(*host_, kMaster);
    tree.click("w.b.add");
    tree.click("w.b.add");
    for (int i = 0; i < 3; ++i) {
        tree.click("w.p.add");
    }
    tree.select("w.presets", 1);
    tree.click("w.b.delete");
    ListeningHost otherHost;
    PresetTree other(otherHost, kMaster);
    other.select("w.banks", 3);
    other.select("w.presets", 0);
    other.click("w.p.delete");
    other.select("w.banks", kFirstOwn);
    other.click("w.b.delete");
    other.send("w", "perform-bank-delete");
    tree.settle();
    EXPECT_EQ(banks(tree), "Factory ROM|Session Bank|Bank 2");
    EXPECT_EQ(tree.attr("w.banks", "selected-paragraph"), "2");
    EXPECT_EQ(presets(tree), "Preset 2|Preset 3");
    EXPECT_EQ(tree.attr("w.presets", "selected-paragraph"), "0");
    tree.select("w.banks", kSession);
    tree.send("w", "perform-bank-delete");
    tree.select("w.banks", 2);
    tree.send("w", "perform-bank-delete");
    EXPECT_EQ(banks(tree), "Factory ROM|Session Bank|Bank 2") << "the question was about another preset";
}

TEST_F(PresetManager, ActivatesAndSavesFactoryPresetsButNeverChangesThem)
{
    PresetTree tree(*host_, kMaster);
    tree.select("w.banks", kROM);
    const std::string before = presets(tree);
    EXPECT_EQ(before.substr(0, 28), "Default|Acoustic Drums Punch") << before;
    EXPECT_FALSE(tree.isEnabled("w.p.activate")) << "nothing is selected";
    tree.select("w.presets", 2);
    tree.click("w.p.activate");
    EXPECT_NEAR(host_->get("modDrumfell.xover-freq"), 100.4, 0.1);
    for (const char* event : {"preset-add", "preset-delete", "preset-replace", "bank-delete"}) {
        tree.send("w", event);
    }
    rename(tree, "w.presets", 2, "Mine");
    EXPECT_EQ(presets(tree), before);
    for (const char* button : {"w.p.add", "w.p.delete", "w.p.replace", "w.p.load", "w.b.delete"}) {
        EXPECT_FALSE(tree.isEnabled(button)) << button;
    }
    EXPECT_TRUE(tree.isEnabled("w.p.save"));
    tree.send("w", "preset-can-rename", {{"source", CAttrValue("w.presets")}, {"index", CAttrValue(2)}});
    EXPECT_EQ(tree.attr("w.presets", "is-editbox-refused"), "true");
    EXPECT_EQ(tree.attr("w.presets", "is-read-only"), "true");
}

TEST_F(PresetManager, ArrangesTheProgramsOfTheInstance)
{
    PresetTree tree(*host_, kMaster);
    EXPECT_EQ(tree.attr("w.banks", "selected-paragraph"), std::to_string(kSession));
    EXPECT_EQ(tree.attr("w.presets", "selected-paragraph"), "0") << "the current program";
    const auto count = host_->getRegistry().getProgramCount();
    host_->set("modDrumfell.lf-gain", 2.0);
    tree.send("w", "preset-add", {{"is-insert", CAttrValue(true)}});
    EXPECT_EQ(host_->getRegistry().getProgramName(1), "Preset");
    EXPECT_EQ(tree.attr("w.presets", "selected-paragraph"), "1");
    rename(tree, "w.presets", 1, "Verse");
    EXPECT_EQ(host_->getRegistry().getProgramName(1), "Verse");
    host_->set("modDrumfell.lf-gain", 1.0);
    tree.click("w.p.activate");
    EXPECT_EQ(host_->getRegistry().getProgram(), 1);
    EXPECT_EQ(host_->get("modDrumfell.lf-gain"), 2.0);
    tree.click("w.p.delete");
    EXPECT_EQ(host_->getRegistry().getProgramCount(), count);
}

TEST_F(PresetManager, CarriesBanksAndPresetsInFilesToAnotherInstance)
{
    const std::string bankFile = file("My bank.cbf");
    const std::string presetFile = file("One.cpf");
    {
        PresetTree tree(*host_, kMaster);
        host_->set("modDrumfell.lf-gain", 2.0);
        tree.click("w.p.replace");
        perform(tree, "perform-bank-save", bankFile);
        perform(tree, "perform-preset-save", presetFile);
        perform(tree, "perform-bank-save", file("none/x.cbf"));
        EXPECT_EQ(tree.window.last("popup-title-message"), "Not written.");
        EXPECT_EQ(tree.window.last("tag"), "ui:win-message");
    }
    ListeningHost otherHost;
    PresetTree other(otherHost, kMaster);
    perform(other, "perform-bank-load", bankFile);
    EXPECT_EQ(banks(other), "Factory ROM|Session Bank|Session Bank 2");
    EXPECT_EQ(other.attr("w.banks", "selected-paragraph"), std::to_string(kFirstOwn));
    other.select("w.presets", 0);
    other.click("w.p.activate");
    EXPECT_EQ(otherHost.get("modDrumfell.lf-gain"), 2.0);
    other.select("w.presets", 0);
    other.send("w", "perform-preset-load",
               {{"filename", CAttrValue(presetFile.c_str())}, {"is-insert", CAttrValue(true)}});
    EXPECT_EQ(presets(other).substr(0, 18), "Default|Default 2|");
    EXPECT_EQ(other.attr("w.presets", "selected-paragraph"), "1");
    EXPECT_TRUE(other.window.popups.empty());
}

TEST_F(PresetManager, RefusesFilesOfAnotherKindWithoutAChange)
{
    const std::string routingFile = file("routing.cpf");
    {
        PresetTree routing(*host_, kRouting);
        EXPECT_EQ(presets(routing).substr(0, 14), "Default Stereo");
        routing.select("w.presets", 1);
        perform(routing, "perform-preset-save", routingFile);
        EXPECT_FALSE(routing.isEnabled("w.p.set-default"));
    }
    PresetTree tree(*host_, kMaster);
    const std::string before = presets(tree);
    const std::size_t steps = tree.client().getHistory().steps.size();
    perform(tree, "perform-preset-load", routingFile);
    EXPECT_EQ(tree.window.last("popup-title-message"), "Another kind.");
    std::ofstream(file("damaged.cpf")) << "nothing";
    perform(tree, "perform-preset-load", file("damaged.cpf"));
    EXPECT_EQ(tree.window.last("popup-title-message"), "No preset.");
    perform(tree, "perform-bank-load", routingFile);
    EXPECT_EQ(tree.window.last("popup-title-message"), "No bank.");
    EXPECT_EQ(presets(tree), before);
    EXPECT_EQ(banks(tree), "Factory ROM|Session Bank");
    EXPECT_EQ(tree.client().getHistory().steps.size(), steps);
}

TEST_F(PresetManager, KeepsRoutingsInOneListForAllProducts)
{
    PresetTree tree(*host_, kRouting);
    const std::string delivered = presets(tree);
    host_->set("io-params.in-routing", 4.0, 0, 2);
    tree.click("w.p.add");
    EXPECT_EQ(presets(tree), delivered + "|Preset");
    tree.select("w.presets", 0);
    tree.click("w.p.activate");
    EXPECT_EQ(host_->get("io-params.in-routing", 0, 2), 0.0);
    PresetTree again(*host_, kRouting);
    EXPECT_EQ(presets(again), delivered + "|Preset");
    again.select("w.presets", 9);
    again.click("w.p.activate");
    EXPECT_EQ(host_->get("io-params.in-routing", 0, 2), 4.0);
}

TEST_F(PresetManager, NewInstancesStartWithTheDefaultPresetOnceTheUserHasConfirmed)
{
    PresetTree tree(*host_, kMaster);
    tree.select("w.banks", kROM);
    tree.select("w.presets", 2);
    tree.click("w.p.set-default");
    EXPECT_EQ(tree.window.last("tag"), "ui:win-confirmation");
    EXPECT_EQ(tree.window.last("popup-title"), "Set as Default");
    EXPECT_EQ(tree.window.last("popup-title-message"), "Use this preset as default preset?");
    EXPECT_EQ(tree.window.last("popup-owner-window"), "w");
    EXPECT_EQ(ListeningHost().get("modDrumfell.xover-freq"), 100.0) << "answered with no";
    tree.send("w", tree.window.last("popup-confirm-event").c_str());
    ListeningHost next;
    EXPECT_NEAR(next.get("modDrumfell.xover-freq"), 100.4, 0.1);
    EXPECT_EQ(next.getRegistry().getProgramName(0), "Defined Kicks");
}

} // namespace
} // namespace qel::test
