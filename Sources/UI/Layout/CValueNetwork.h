// The numbers of a layout, and the formulas that tie them together.
#pragma once

#include "CError.h"
#include "CFormula.h"

#include <array>
#include <map>
#include <memory>
#include <vector>

namespace qel {

// Told when one of its variables has changed.
class CValueOwner
{
public:
    // Called for each change, while values are being computed: take note and return.
    virtual void onValueChanged() = 0;

protected:
    ~CValueOwner() = default;
};

// A spreadsheet: each variable has a value and perhaps a postfix formula over other variables. Setting a
// value or formula stores it; propagate() then computes what depends on it, and only as far as values change
// by 0.0001 or more. Until then getValue() is what stood before.
//
// Variables are computed operands first, as far as the formulas allow, so one change costs one evaluation of
// each variable that it moves, and results do not depend on the order in which things were made. Formulas
// that depend on each other in a circle are computed again until they settle, or until the circle is some 200
// links deep; then "Too many recursions" is traced and they stay as they are.
//
// One network a window, used by the window's thread alone. At most 65535 variables, 65536 distinct constants
// (equal within 0.0001) and 256 tokens a formula. A refused operation changes nothing.
class CValueNetwork
{
public:
    static constexpr float kTolerance = 0.0001f;
    static constexpr std::size_t kMaxTokens = 256;
    static constexpr std::size_t kMaxVariables = kNoVariable;
    static constexpr std::size_t kMaxConstants = 65536;
    // Computations of one variable in one propagation. A circle through the sizes of a view and its parent
    // has about four links.
    static constexpr int kMaxRounds = 50;

    CValueNetwork() = default;
    CValueNetwork(const CValueNetwork&) = delete;
    CValueNetwork& operator=(const CValueNetwork&) = delete;

    // Makes a variable of value 0. `owner`, which may be null, is notified of its changes. Fails when there
    // are no ids left; `outId` is then kNoVariable.
    CError newVariable(CVariableId& outId, CValueOwner* owner);
    // Gives the id back. Formulas that refer to it are dropped, and their variables keep their values.
    // kNoVariable is ignored.
    void freeVariable(CVariableId id);

    // The value computed last; 0 for kNoVariable.
    float getValue(CVariableId id) const { return id == kNoVariable ? 0.0f : at(id).value; }
    // Makes the variable a constant. A value that is no finite float counts as 0; one within the tolerance
    // of the present value changes nothing.
    void setValue(CVariableId id, double value);
    // Makes the variable follow a formula. Fails for a formula that is too long, refers to variables that do
    // not exist, or needs more constants than there can be. A formula that does not leave exactly one finite
    // number on the stack leaves the variable's value alone.
    CError setFormula(CVariableId id, const CFormula& formula);

    // True if propagate() has something to do.
    bool hasWork() const { return !heap_.empty(); }
    // Computes everything that depends on what was set.
    void propagate();

    // For diagnosis: what is in use.
    std::size_t getVariableCount() const { return variableCount_; }
    std::size_t getConstantCount() const { return constantIndices_.size(); }
    // Formulas computed since the network was made.
    std::uint64_t getEvaluationCount() const { return evaluationCount_; }

private:
    static constexpr unsigned kPageShift = 9;
    static constexpr std::size_t kPageSize = std::size_t{1} << kPageShift;

    using Tokens = CInlineArray<std::uint16_t, 8>;

    struct Variable
    {
        float value = 0.0f;
        bool isUsed = false;
        bool isQueued = false;    // to be computed
        bool isUpdating = false;  // being computed: its operands are looked after
        std::uint16_t rounds = 0; // computations in propagation `serial`
        std::uint32_t serial = 0;
        std::uint32_t rank = 0; // above the ranks of its operands, as they were when it was computed last
        CValueOwner* owner = nullptr;
        Tokens formula;
        Tokens dependants; // each variable once
    };
    struct Constant
    {
        float value = 0.0f;
        std::uint32_t uses = 0;
    };

    Variable& at(CVariableId id) { return (*pages_[id >> kPageShift])[id & (kPageSize - 1)]; }
    const Variable& at(CVariableId id) const { return (*pages_[id >> kPageShift])[id & (kPageSize - 1)]; }
    bool exists(CVariableId id) const;

    CError encode(const CFormula& formula, Tokens& outTokens);
    bool internConstant(float value, std::uint16_t& outIndex);
    void releaseConstants(const Tokens& tokens);
    void link(CVariableId id, Tokens tokens);
    void unlink(CVariableId id);

    void enqueue(CVariableId id);
    void update(CVariableId id, int depth);
    bool countRound(Variable& variable);
    void store(Variable& variable, float value);
    bool evaluate(const Tokens& tokens, float& outValue);
    bool apply(COperator operation);

    std::vector<std::unique_ptr<std::array<Variable, kPageSize>>> pages_;
    std::vector<CVariableId> freeIds_;
    std::size_t nextId_ = 0;
    std::size_t variableCount_ = 0;

    std::vector<Constant> constants_;
    std::vector<std::uint16_t> freeConstants_;
    std::map<float, std::uint16_t> constantIndices_;

    std::vector<float> stack_;
    std::vector<std::uint64_t> heap_; // rank above id; what is no longer queued is skipped
    std::uint32_t serial_ = 0;
    bool isTraced_ = false; // in this propagation
    std::uint64_t evaluationCount_ = 0;
};

} // namespace qel
