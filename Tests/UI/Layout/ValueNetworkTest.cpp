// The network of values behind layouts.
#include "CValueNetwork.h"
#include "Trace.h"

#include <gtest/gtest.h>

namespace qel {
namespace {

class ValueNetwork : public ::testing::Test
{
protected:
    CVariableId variable(double value = 0.0)
    {
        CVariableId id = kNoVariable;
        EXPECT_FALSE(network_.newVariable(id, nullptr));
        network_.setValue(id, value);
        return id;
    }
    CVariableId follower(const CFormula& formula)
    {
        const CVariableId id = variable(-7.0); // what a formula that does not work leaves
        EXPECT_FALSE(network_.setFormula(id, formula));
        network_.propagate();
        return id;
    }

    CValueNetwork network_;
};

TEST_F(ValueNetwork, ChangesGoAsFarAsValuesChangeAndCostOneComputationEach)
{
    const CVariableId source = variable(10.0);
    // Diamonds upon diamonds: followed naively, the last would be computed a million times.
    CVariableId last = source;
    for (int i = 0; i < 20; ++i) {
        const CVariableId a = follower(CFormula().variable(last).half());
        const CVariableId b = follower(CFormula().variable(last).variable(a).subtract());
        last = follower(CFormula().variable(a).variable(b).add());
    }
    const CVariableId clamped = follower(CFormula().variable(last).constant(50.0).max2());
    const CVariableId behind = follower(CFormula().variable(clamped).half());
    std::uint64_t work = network_.getEvaluationCount();
    network_.setValue(source, 20.0);
    network_.propagate();
    EXPECT_EQ(network_.getValue(last), 20.0f);
    EXPECT_EQ(network_.getValue(behind), 25.0f);
    EXPECT_EQ(network_.getEvaluationCount() - work, 61u); // and not `behind`

    work = network_.getEvaluationCount();
    network_.setValue(source, 20.00009);
    EXPECT_FALSE(network_.hasWork());
    EXPECT_EQ(network_.getValue(source), 20.0f);
}

TEST_F(ValueNetwork, CirclesSettleOrEndWithATrace)
{
    std::vector<std::string> lines;
    const CTraceHook before = setTraceHook([&](const CString& line) { lines.push_back(line.toUtf8()); });
    const CVariableId a = variable(8.0);
    const CVariableId b = follower(CFormula().variable(a).half());
    ASSERT_FALSE(network_.setFormula(a, CFormula().variable(b).constant(1.0).max2()));
    network_.propagate();
    EXPECT_EQ(network_.getValue(a), 1.0f);
    EXPECT_TRUE(lines.empty());

    ASSERT_FALSE(network_.setFormula(a, CFormula().variable(b).constant(4.0).multiply()));
    network_.propagate();
    EXPECT_EQ(lines, std::vector<std::string>{"Too many recursions"});
    EXPECT_FALSE(network_.hasWork());
    const CVariableId own = variable();
    EXPECT_FALSE(network_.setFormula(own, CFormula().variable(own).constant(1.0).add()));
    network_.propagate();
    EXPECT_EQ(lines.size(), 2u);
    setTraceHook(before);
}

TEST_F(ValueNetwork, IdsAndConstantsAreGivenBackAndRunOutWithAnError)
{
    std::vector<CVariableId> ids;
    CVariableId id = kNoVariable;
    CError error;
    while (!(error = network_.newVariable(id, nullptr))) {
        ids.push_back(id);
    }
    EXPECT_EQ(ids.size(), 65535u);
    EXPECT_EQ(id, kNoVariable);
    EXPECT_NE(error.text().find("65535"), std::string::npos);

    // Freed: what followed it keeps its value, and the id is there again.
    ASSERT_FALSE(network_.setFormula(ids[1], CFormula().variable(ids[2]).constant(3.0).add()));
    network_.propagate();
    network_.freeVariable(ids[2]);
    EXPECT_EQ(network_.getConstantCount(), 0u);
    EXPECT_TRUE(network_.setFormula(ids[3], CFormula().variable(ids[2])));
    ASSERT_FALSE(network_.newVariable(id, nullptr));
    EXPECT_EQ(id, ids[2]);
    network_.setValue(id, 100.0);
    network_.propagate();
    EXPECT_EQ(network_.getValue(ids[1]), 3.0f);

    // A size that is animated for hours.
    for (int i = 0; i < 100000; ++i) {
        ASSERT_FALSE(
            network_.setFormula(ids[1], CFormula().constant(i * 0.01).constant(i * 0.01 + 5e-5).max2()));
    }
    EXPECT_EQ(network_.getConstantCount(), 1u);

    CFormula longest;
    for (int i = 0; i < 128; ++i) {
        longest.constant(1.0);
    }
    EXPECT_FALSE(network_.setFormula(ids[1], longest));
    EXPECT_TRUE(network_.setFormula(ids[1], longest.half()));
    CError full;
    for (std::size_t i = 0; i < 65535 && !full; ++i) {
        CFormula formula;
        for (int k = 0; k < 4; ++k) {
            formula.constant(static_cast<double>(4 * i) + k);
        }
        full = network_.setFormula(ids[i], formula);
    }
    EXPECT_TRUE(full);
    EXPECT_EQ(network_.getConstantCount(), 65536u);
}

} // namespace
} // namespace qel
