// A postfix formula over layout variables, as it is put together.
#pragma once

#include "CInlineArray.h"

#include <cstddef>
#include <cstdint>

namespace qel {

// Number of a variable in its network. kNoVariable is none.
using CVariableId = std::uint16_t;
constexpr CVariableId kNoVariable = 0xFFFF;

// Operands are pushed, operators replace them; every value is a 32-bit float. The numbers are those of the
// tokens that a network stores.
enum class COperator : std::uint16_t
{
    kPushConstant = 0, // the next token is an index of the network's constant table
    kDivide = 1,       // a b: a / b, unchecked
    kSafeDivide = 2,   // a b c: a / b, or c where b is within 0.0001 of 0
    kHalf = 3,         // a: a * 0.5
    kFloor = 4,        // a: the greatest whole number not above a
    kMax2 = 5,         // a b: the greater
    kMaxN = 6,         // n values and n on top: their maximum, at least -1e20; 0 where n is 0
    kSubtract = 7,     // a b: a - b
    kMultiply = 8,     // a b: a * b
    kAdd = 9,          // a b: a + b
    kRound = 10,       // a: the nearest whole number, halves away from zero
    kPushVariable = 11 // the next token is a variable
};

// Built by appending: `CFormula().variable(width).variable(border).add()` is width + border. A value type
// that allocates only beyond 64 tokens. What it refers to is checked when a network takes it.
class CFormula
{
public:
    CFormula& constant(double value);
    CFormula& variable(CVariableId id);
    CFormula& append(const CFormula& other);
    CFormula& op(COperator operation);

    CFormula& add() { return op(COperator::kAdd); }
    CFormula& add(const CFormula& other) { return append(other).add(); }
    CFormula& subtract() { return op(COperator::kSubtract); }
    CFormula& subtract(const CFormula& other) { return append(other).subtract(); }
    CFormula& multiply() { return op(COperator::kMultiply); }
    CFormula& divide() { return op(COperator::kDivide); }
    CFormula& max2() { return op(COperator::kMax2); }
    CFormula& half() { return op(COperator::kHalf); }
    CFormula& round() { return op(COperator::kRound); }

    bool isEmpty() const { return tokens_.isEmpty(); }
    std::size_t size() const { return tokens_.size(); }

private:
    friend class CValueNetwork;

    CInlineArray<std::uint16_t, 64> tokens_; // kPushConstant is followed by a place in constants_
    CInlineArray<float, 4> constants_;
};

} // namespace qel
