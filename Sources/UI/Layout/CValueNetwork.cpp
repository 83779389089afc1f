// The numbers of a layout, and the formulas that tie them together.
#include "CValueNetwork.h"

#include "Trace.h"

#include <algorithm>
#include <cmath>
#include <functional>
#include <limits>

namespace qel {

namespace {

constexpr auto kPushConstant = static_cast<std::uint16_t>(COperator::kPushConstant);
constexpr auto kPushVariable = static_cast<std::uint16_t>(COperator::kPushVariable);
constexpr int kMaxDepth =
    200; // of operands that are computed on the way: a host's thread may have a small stack
constexpr float kLeastMaximum = -1e20f; // where kMaxN starts

// Calls `visit` with the operand of every `push` in a formula.
template <class Visit>
void forEachOperand(const auto& tokens, std::uint16_t push, const Visit& visit)
{
    for (std::size_t i = 0; i < tokens.size(); ++i) {
        const bool isPush = tokens[i] == kPushConstant || tokens[i] == kPushVariable;
        if (isPush && tokens[i] == push) {
            visit(tokens[i + 1]);
        }
        i += isPush ? 1 : 0;
    }
}

// A double holds the sum of any float below 2^52 and a half exactly, so nothing is rounded twice.
float roundHalvesAway(float value)
{
    const double magnitude = std::floor(std::abs(static_cast<double>(value)) + 0.5);
    return static_cast<float>(value < 0.0f ? -magnitude : magnitude);
}

} // namespace

bool CValueNetwork::exists(CVariableId id) const
{
    return id < nextId_ && at(id).isUsed;
}

CError CValueNetwork::newVariable(CVariableId& outId, CValueOwner* owner)
{
    outId = kNoVariable;
    if (freeIds_.empty() && nextId_ == kMaxVariables) {
        QEL_FAIL(
            {},
            "@qelstr_CValueNetwork_newVariable_NoneLeft The window has more than the %1 layout variables "
            "that there can be.",
            kMaxVariables);
    }
    if (!freeIds_.empty()) {
        outId = freeIds_.back();
        freeIds_.pop_back();
    } else {
        outId = static_cast<CVariableId>(nextId_++);
        if (outId % kPageSize == 0) {
            pages_.push_back(std::make_unique<std::array<Variable, kPageSize>>());
        }
    }
    Variable& variable = at(outId);
    variable = Variable();
    variable.isUsed = true;
    variable.owner = owner;
    ++variableCount_;
    return {};
}

void CValueNetwork::freeVariable(CVariableId id)
{
    if (!exists(id)) {
        return;
    }
    unlink(id);
    Variable& variable = at(id);
    while (!variable.dependants.isEmpty()) {
        unlink(variable.dependants[variable.dependants.size() - 1]);
    }
    variable = Variable();
    freeIds_.push_back(id);
    --variableCount_;
}

void CValueNetwork::setValue(CVariableId id, double value)
{
    if (!exists(id)) {
        return;
    }
    unlink(id);
    Variable& variable = at(id);
    variable.isQueued = false;
    const auto number = static_cast<float>(value);
    store(variable, std::isfinite(number) ? number : 0.0f);
}

CError CValueNetwork::setFormula(CVariableId id, const CFormula& formula)
{
    if (!exists(id)) {
        QEL_FAIL({}, "@qelstr_CValueNetwork_setFormula_NoVariable There is no layout variable %1.", id);
    }
    Tokens tokens;
    if (CError error = encode(formula, tokens)) {
        releaseConstants(tokens);
        return error;
    }
    const Tokens& present = at(id).formula;
    if (std::equal(tokens.begin(), tokens.end(), present.begin(), present.end())) {
        releaseConstants(tokens);
        return {};
    }
    unlink(id);
    link(id, std::move(tokens));
    enqueue(id);
    return {};
}

// --- constants and links

// Turns a formula into tokens, which count as users of their constants from now on.
CError CValueNetwork::encode(const CFormula& formula, Tokens& outTokens)
{
    const auto& source = formula.tokens_;
    if (source.size() > kMaxTokens) {
        QEL_FAIL({},
                 "@qelstr_CValueNetwork_setFormula_TooLong A layout formula of %1 tokens is longer than the "
                 "%2 that there can be.",
                 source.size(), kMaxTokens);
    }
    outTokens.reserve(source.size());
    for (std::size_t i = 0; i < source.size(); ++i) {
        if (source[i] == kPushVariable) {
            const CVariableId operand = source[++i];
            if (!exists(operand)) {
                QEL_FAIL(
                    {},
                    "@qelstr_CValueNetwork_setFormula_NoOperand A layout formula refers to the variable %1, "
                    "which does not exist.",
                    operand);
            }
            outTokens.push(kPushVariable);
            outTokens.push(operand);
        } else if (source[i] == kPushConstant) {
            std::uint16_t index = 0;
            if (!internConstant(formula.constants_[source[++i]], index)) {
                QEL_FAIL(
                    {},
                    "@qelstr_CValueNetwork_setFormula_NoConstants The window's layout has more than the %1 "
                    "constants that there can be.",
                    kMaxConstants);
            }
            ++constants_[index].uses;
            outTokens.push(kPushConstant);
            outTokens.push(index);
        } else {
            outTokens.push(source[i]);
        }
    }
    return {};
}

// The constant nearest to `value`, within the tolerance, or a new one.
bool CValueNetwork::internConstant(float value, std::uint16_t& outIndex)
{
    if (!std::isfinite(value)) {
        value = 0.0f;
    }
    const auto distance = [value](auto entry) { return std::abs(entry->first - value); };
    auto nearest = constantIndices_.end();
    for (auto entry = constantIndices_.lower_bound(value - kTolerance);
         entry != constantIndices_.end() && entry->first < value + kTolerance; ++entry) {
        if (nearest == constantIndices_.end() || distance(entry) < distance(nearest)) {
            nearest = entry;
        }
    }
    if (nearest != constantIndices_.end() && distance(nearest) < kTolerance) {
        outIndex = nearest->second;
        return true;
    }
    if (!freeConstants_.empty()) {
        outIndex = freeConstants_.back();
        freeConstants_.pop_back();
    } else if (constants_.size() < kMaxConstants) {
        outIndex = static_cast<std::uint16_t>(constants_.size());
        constants_.emplace_back();
    } else {
        return false;
    }
    constants_[outIndex] = {value, 0};
    constantIndices_.emplace(value, outIndex);
    return true;
}

void CValueNetwork::link(CVariableId id, Tokens tokens)
{
    forEachOperand(tokens, kPushVariable, [&](CVariableId operand) {
        Tokens& dependants = at(operand).dependants;
        if (std::find(dependants.begin(), dependants.end(), id) == dependants.end()) {
            dependants.push(id);
        }
    });
    at(id).formula = std::move(tokens);
}

// Drops the formula.
void CValueNetwork::unlink(CVariableId id)
{
    const Tokens tokens = std::move(at(id).formula);
    at(id).formula.clear();
    forEachOperand(tokens, kPushVariable,
                   [&](CVariableId operand) { at(operand).dependants.eraseFirst(id); });
    releaseConstants(tokens);
}

// Constants that nobody uses any more are given back: a size that is animated brings a new one with each
// frame.
void CValueNetwork::releaseConstants(const Tokens& tokens)
{
    forEachOperand(tokens, kPushConstant, [&](std::uint16_t index) {
        if (--constants_[index].uses == 0) {
            constantIndices_.erase(constants_[index].value);
            freeConstants_.push_back(index);
        }
    });
}

// --- computing

void CValueNetwork::enqueue(CVariableId id)
{
    Variable& variable = at(id);
    if (!variable.isQueued) {
        variable.isQueued = true;
        heap_.push_back(std::uint64_t{variable.rank} << 16 | id);
        std::push_heap(heap_.begin(), heap_.end(), std::greater<>());
    }
}

void CValueNetwork::propagate()
{
    ++serial_;
    isTraced_ = false;
    while (!heap_.empty()) {
        std::pop_heap(heap_.begin(), heap_.end(), std::greater<>());
        const auto id = static_cast<CVariableId>(heap_.back() & 0xFFFF);
        heap_.pop_back();
        if (at(id).isQueued) {
            update(id, 0);
        }
    }
}

// Ranks make sure that operands come first once they are known. Of new formulas they are not, so operands
// that wait are computed on the way.
void CValueNetwork::update(CVariableId id, int depth)
{
    Variable& variable = at(id);
    variable.isUpdating = true;
    std::uint32_t rank = 0;
    forEachOperand(variable.formula, kPushVariable, [&](CVariableId operand) {
        const Variable& source = at(operand);
        if (source.isQueued && !source.isUpdating && depth < kMaxDepth) {
            update(operand, depth + 1);
        }
        rank = std::max(rank, source.rank + 1);
    });
    variable.isUpdating = false;
    variable.isQueued = false;
    variable.rank = rank;
    float value = 0.0f;
    if (countRound(variable) && evaluate(variable.formula, value)) {
        store(variable, value);
    }
}

// False once the variable has been computed so often that its formulas must go in a circle.
bool CValueNetwork::countRound(Variable& variable)
{
    if (variable.serial != serial_) {
        variable.serial = serial_;
        variable.rounds = 0;
    }
    if (++variable.rounds <= kMaxRounds) {
        return true;
    }
    if (!isTraced_) {
        trace("Too many recursions");
        isTraced_ = true;
    }
    return false;
}

void CValueNetwork::store(Variable& variable, float value)
{
    if (std::abs(variable.value - value) < kTolerance) {
        return;
    }
    variable.value = value;
    for (const CVariableId dependant : variable.dependants) {
        enqueue(dependant);
    }
    if (variable.owner) {
        variable.owner->onValueChanged();
    }
}

bool CValueNetwork::evaluate(const Tokens& tokens, float& outValue)
{
    ++evaluationCount_;
    stack_.clear();
    for (std::size_t i = 0; i < tokens.size(); ++i) {
        if (tokens[i] == kPushConstant) {
            stack_.push_back(constants_[tokens[++i]].value);
        } else if (tokens[i] == kPushVariable) {
            stack_.push_back(at(tokens[++i]).value);
        } else if (!apply(static_cast<COperator>(tokens[i]))) {
            return false;
        }
    }
    if (stack_.size() != 1 || !std::isfinite(stack_.front())) {
        return false;
    }
    outValue = stack_.front();
    return true;
}

// False if the stack does not hold the operands.
bool CValueNetwork::apply(COperator operation)
{
    const auto need = [this](std::size_t count) { return stack_.size() >= count; };
    const auto pop = [this] {
        const float top = stack_.back();
        stack_.pop_back();
        return top;
    };
    const auto binary = [&](const auto& combine) {
        if (!need(2)) {
            return false;
        }
        const float b = pop();
        stack_.back() = combine(stack_.back(), b);
        return true;
    };
    const auto unary = [&](const auto& change) {
        if (!need(1)) {
            return false;
        }
        stack_.back() = change(stack_.back());
        return true;
    };
    switch (operation) {
    case COperator::kDivide:
        return binary([](float a, float b) { return a / b; });
    case COperator::kSafeDivide: {
        if (!need(3)) {
            return false;
        }
        const float fallback = pop();
        return binary([fallback](float a, float b) { return std::abs(b) > kTolerance ? a / b : fallback; });
    }
    case COperator::kHalf:
        return unary([](float a) { return a * 0.5f; });
    case COperator::kFloor:
        return unary([](float a) { return std::floor(a); });
    case COperator::kMax2:
        return binary([](float a, float b) { return std::max(a, b); });
    case COperator::kMaxN: {
        if (!need(1)) {
            return false;
        }
        const float top = roundHalvesAway(pop()); // a constant stands for all within the tolerance
        if (!(top >= 0.0f && top <= static_cast<float>(stack_.size()))) {
            return false;
        }
        const auto count = static_cast<std::ptrdiff_t>(top);
        const float greatest =
            count == 0 ? 0.0f
                       : std::max(kLeastMaximum, *std::max_element(stack_.end() - count, stack_.end()));
        stack_.resize(stack_.size() - static_cast<std::size_t>(count));
        stack_.push_back(greatest);
        return true;
    }
    case COperator::kSubtract:
        return binary([](float a, float b) { return a - b; });
    case COperator::kMultiply:
        return binary([](float a, float b) { return a * b; });
    case COperator::kAdd:
        return binary([](float a, float b) { return a + b; });
    case COperator::kRound:
        return unary(roundHalvesAway);
    case COperator::kPushConstant:
    case COperator::kPushVariable:
        break;
    }
    return false;
}

} // namespace qel
