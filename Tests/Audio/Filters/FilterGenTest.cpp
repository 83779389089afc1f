// Filter generators: the delivered tree, stability, and what fails to load.
#include "CAudioFilterGenArray.h"
#include "FilterFixture.h"

namespace qel {
namespace {

using test::TreeNode;

class FilterGen : public test::FilterTest
{
protected:
    TreeNode gen(const char* kind, const char* name = "gen")
    {
        return TreeNode(std::string("audio:fltgen-") + kind, name);
    }
    CError load(TreeNode node) { return root_.load(TreeNode().child(std::move(node))); }
    CFilterSections generate(const char* path, double rateHz, std::initializer_list<double> params)
    {
        CFilterSections list;
        dynamic_cast<const CAudioFilterGen&>(*root_->findObject(path))
            .generate(list, rateHz, {params.begin(), params.size()});
        return list;
    }
};

// --- the delivered tree

TEST_F(FilterGen, DeliveredArraysHoldTheirFiltersInOrder)
{
    loadDeliveredFilters();
    const struct
    {
        const char* array;
        std::vector<const char*> entries;
    } arrays[] = {
        {"std", {"bypass", "peak_magnusB", "ls_rbj", "hs_rbj", "lp2_rbj", "hp2_rbj"}},
        {"lp1", {"bypass", "lp1", "lp1b", "lp1c", "lp1d"}},
        {"hp1", {"bypass", "hp1", "hp1b", "hp1c", "hp1d"}},
        {"lriley", {"lp4_lr", "hp4_lr"}},
        {"lriley12", {"lp2_rbj_q", "hp2_rbj_qi"}},
        {"hbf-steep5",
         {"hbf212t20", "hbf186t20", "hbf159t20", "hbf133t20", "hbf106t20", "hbf80t20", "hbf53t20"}},
        {"hbf-soft", {"hbf225t4", "hbf171t4", "hbf116t4", "hbf62t4"}},
        {"dcfilters",
         {"hp1", "hp2_bessel", "hp2_bworth", "hp3_bessel", "hp3_bworth", "hp4_bessel", "hp4_bworth",
          "hp5_bessel", "hp5_bworth", "hp6_bessel", "hp6_bworth"}},
    };
    for (const auto& expected : arrays) {
        const auto& array = get<CAudioFilterGenArray>(std::string("audio.fltarray.") + expected.array);
        ASSERT_EQ(array.length(), static_cast<std::int32_t>(expected.entries.size())) << expected.array;
        for (std::int32_t i = 0; i < array.length(); ++i) {
            ASSERT_NE(array.getGen(i), nullptr);
            EXPECT_EQ(array.getGen(i)->getFullName().toUtf8(),
                      std::string("audio.flt.") + expected.entries[static_cast<std::size_t>(i)]);
        }
        EXPECT_EQ(array.getGen(-1), nullptr);
        EXPECT_EQ(array.getGen(array.length()), nullptr);
    }
}

TEST_F(FilterGen, TooFewParametersPassTheSignal)
{
    loadDeliveredFilters();
    CFilterSections list = sections("lp4_lr", 48000.0, {100.0, 1.0, 0.7071});
    ASSERT_EQ(list.size(), 2u);
    const double two[] = {100.0, 2.0};
    get<CAudioFilterGen>("audio.flt.lp2_rbj").generate(list, 48000.0, two);
    EXPECT_TRUE(list.isEmpty()) << "what the list held before is gone";
    EXPECT_TRUE(sections("peak_magnusB", 48000.0, {100.0, 2.0}).isEmpty());
    EXPECT_TRUE(sections("lp1", 48000.0, {}).isEmpty());
    EXPECT_EQ(sections("hp3_bworth", 48000.0, {100.0, 1.0}).size(), 1u) << "each part for itself";
}

// --- coefficients

TEST_F(FilterGen, InversionTurnsLowPassAndHighPassOnly)
{
    ASSERT_OK(load(gen("rbj").attr("type", "6").attr("is-inverted", "true")));
    EXPECT_GT(generate("gen", 48000.0, {100.0, 4.0, 1.0})[0].gain, 0.0);
}

TEST_F(FilterGen, SerialFiltersScaleTheParametersOfEachPart)
{
    ASSERT_OK(
        load(TreeNode("core:object", "flt")
                 .child(gen("rbj", "lp").attr("type", "0").attr("is-q", "true"))
                 .child(gen("serial", "both")
                            .child(gen("serial-item", "a").attr("fltgen", "^^lp").attr("adjust", "2.0"))
                            .child(gen("serial-item", "b").attr("fltgen", "^own").attr("adjust", "1,1,0.5"))
                            .child(gen("rbj", "own").attr("type", "1").attr("is-q", "true")))));
    const CFilterSections both = generate("flt.both", 48000.0, {100.0, 1.0, 0.8});
    ASSERT_EQ(both.size(), 2u);
    const CFilterSection first = generate("flt.lp", 48000.0, {200.0, 1.0, 0.8})[0];
    const CFilterSection second = generate("flt.both.own", 48000.0, {100.0, 1.0, 0.4})[0];
    EXPECT_EQ(both[0].poles[0], first.poles[0]);
    EXPECT_EQ(both[0].poles[1], first.poles[1]);
    EXPECT_EQ(both[1].kind, EFilterFamily::kBiquadHighPass) << "a generator behind the item is found";
    EXPECT_EQ(both[1].poles[1], second.poles[1]);
}

TEST_F(FilterGen, ArraysGoByIndexAndHaveGaps)
{
    ASSERT_OK(
        load(TreeNode("core:object", "flt")
                 .child(gen("bypass", "none"))
                 .child(gen("lphp1", "lp"))
                 .child(gen("array", "list")
                            .child(gen("array-item", "x").attr("index", "3").attr("fltgen", "flt.lp"))
                            .child(gen("array-item", "y").attr("index", "0").attr("fltgen", "flt.none")))));
    const auto& list = dynamic_cast<const CAudioFilterGenArray&>(*root_->findObject("flt.list"));
    EXPECT_EQ(list.length(), 4);
    EXPECT_EQ(list.getGen(0), root_->findObject("flt.none"));
    for (const std::int32_t none : {-1, 1, 4}) {
        EXPECT_EQ(list.getGen(none), nullptr) << none;
    }
    EXPECT_EQ(list.getGen(3), root_->findObject("flt.lp"));
}

// --- stability

// True if all poles lie inside the unit circle and every number is one.
bool isStable(const CFilterSection& section)
{
    bool isFinite = std::isfinite(section.gain);
    for (const auto* list : {&section.zeros, &section.poles}) {
        for (const double value : *list) {
            isFinite = isFinite && std::isfinite(value);
        }
    }
    const auto kind = section.kind;
    if (kind <= EFilterFamily::kBiquadNotch) {
        const double a1 = section.poles[0];
        const double a2 = section.poles[1];
        return isFinite && std::fabs(a2) < 1.0 && std::fabs(a1) < 1.0 - a2;
    }
    if (kind <= EFilterFamily::kHighPass4) {
        return isFinite && section.poles[0] >= 0.0 && section.poles[0] < 1.0;
    }
    bool isInside = isFinite;
    for (const auto* list : {&section.zeros, &section.poles}) {
        for (const double c : *list) {
            isInside = isInside && std::fabs(c) < 1.0;
        }
    }
    return isInside;
}

TEST_F(FilterGen, EveryFilterIsStableForEveryParameterAtEveryRate)
{
    loadDeliveredFilters();
    const CObject& all = get<CObject>("audio.flt");
    // Beyond what parameters allow: nothing, half the rate and far above it, and slots that read 0.
    const double freqsHz[] = {0.0,     0.5,     1.0,     3.0,     20.0,   77.0,   100.0,
                              300.0,   999.0,   2000.0,  3999.0,  4000.0, 4001.0, 10000.0,
                              12000.0, 20000.0, 21000.0, 22050.0, 1e5,    1e9};
    const double gainsDb[] = {-300.0, -96.0, -48.0, -12.0, -0.01, 0.0, 0.001, 6.0, 12.0, 48.0, 96.0};
    const double widths[] = {0.0, 0.01, 0.1, 0.5, 0.7071, 1.0, 2.0, 5.0, 7.0, 50.0};
    for (std::size_t i = 0; i < all.getChildCount(); ++i) {
        const auto& generator = dynamic_cast<const CAudioFilterGen&>(*all.getChild(i));
        CFilterSections list;
        for (const double rateHz : {8000.0, 44100.0, 48000.0, 192000.0, 768000.0, 3072000.0}) {
            for (const double freqHz : freqsHz) {
                for (const double gainDb : gainsDb) {
                    for (const double width : widths) {
                        const double params[] = {freqHz, std::pow(10.0, gainDb / 20.0), width};
                        generator.generate(list, rateHz, params);
                        for (const CFilterSection& section : list) {
                            ASSERT_TRUE(isStable(section))
                                << generator.getFullName().toUtf8() << " at " << rateHz << ": " << freqHz
                                << " Hz, " << gainDb << " dB, " << width;
                        }
                    }
                }
            }
        }
    }
}

// --- what fails

TEST_F(FilterGen, UnusableAttributesFailTheLoad)
{
    const auto hbf = [this](const char* order, const char* a, const char* b, const char* type = "0") {
        return gen("hbf").attr("type", type).attr("order", order).attr("a", a).attr("b", b);
    };
    const struct
    {
        TreeNode node;
        const char* message;
    } cases[] = {
        {gen("lphp1").attr("type", "8"), "Invalid filter type '8' specified."},
        {gen("lphp1").attr("type", "-1"), "Invalid filter type '-1' specified."},
        {gen("rbj").attr("type", "10"), "Invalid filter type '10' specified."},
        {gen("magnus").attr("type", "6"), "Invalid filter type '6' specified."},
        {gen("firlim").attr("type", "3"), "Invalid filter type '3' specified."},
        {gen("apf1").attr("type", "2"), "Invalid filter type '2' specified."},
        {hbf("2", "0.1", "0.5", "3"), "Invalid filter type '3' specified."},
        {gen("hbf").attr("order", "2").attr("b", "0.5"), "Not enough 'a' coefficients defined."},
        {hbf("2", "0.1x", "0.5"), "Not enough 'a' coefficients defined."},
        {gen("hbf").attr("order", "2").attr("a", "0.5"), "Not enough 'b' coefficients defined."},
        {hbf("4", "0.1,0.2", "0.5"), "Coefficient count should match in 'a' and 'b' coefficient lists."},
        {hbf("4", "0.1", "0.5"), "Filter order '4' does not fit 2 coefficients."},
        {hbf("2", "0.1", "0.5", "1"), "Filter order '2' does not fit 2 coefficients."},
        {gen("rbj").attr("is-heq", "true"), "High-order equaliser filters are not available."},
        {gen("magnus").attr("type", "3"), "Filter type '3' is not available."},
        {gen("firlp"), "Filters of the kind 'audio:fltgen-firlp' are not available."},
        {gen("firlim").attr("type", "2"), "Filters of the kind 'audio:fltgen-firlim' are not available."},
        {gen("firhilb"), "Filters of the kind 'audio:fltgen-firhilb' are not available."},
        {gen("apf1").attr("type", "1"), "Filters of the kind 'audio:fltgen-apf1' are not available."},
        {gen("serial").child(gen("serial-item", "i").attr("fltgen", "nowhere")),
         "Invalid filter generator with the name 'nowhere' specified."},
        {gen("serial").child(gen("serial-item", "i").attr("fltgen", "^i")),
         "Invalid filter generator with the name '^i' specified."},
        {gen("serial", "self").child(gen("serial-item", "i").attr("fltgen", "self")),
         "Invalid filter generator with the name 'self' specified."},
        {gen("serial").child(gen("serial-item", "i").attr("fltgen", "^g").attr("adjust", "1,,2")),
         "Invalid factors '1,,2' specified."},
        {gen("array-item"), "CAudioFilterGenArray class parent expected."},
        {gen("array").child(gen("array-item", "i").attr("index", "0").attr("fltgen", "gone")),
         "Audio filter generator with the name 'gone' not found."},
        {gen("array")
             .child(gen("bypass", "g"))
             .child(gen("array-item", "i").attr("index", "-1").attr("fltgen", "^g")),
         "Invalid audio filter index '-1' specified "},
        {gen("array").child(gen("bypass", "g")).child(gen("array-item", "i").attr("fltgen", "^g")),
         "Invalid audio filter index '' specified "},
        {gen("array")
             .child(gen("bypass", "g"))
             .child(gen("array-item", "i").attr("index", "1").attr("fltgen", "^g"))
             .child(gen("array-item", "j").attr("index", "1").attr("fltgen", "^g")),
         "Invalid audio filter index '1' specified "},
    };
    for (const auto& fault : cases) {
        EXPECT_FAILS(load(fault.node), fault.message);
    }
}

} // namespace
} // namespace qel
