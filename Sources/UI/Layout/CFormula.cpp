// A postfix formula over layout variables, as it is put together.
#include "CFormula.h"

namespace qel {

CFormula& CFormula::op(COperator operation)
{
    tokens_.push(static_cast<std::uint16_t>(operation));
    return *this;
}

CFormula& CFormula::constant(double value)
{
    op(COperator::kPushConstant);
    tokens_.push(static_cast<std::uint16_t>(constants_.size()));
    constants_.push(static_cast<float>(value));
    return *this;
}

CFormula& CFormula::variable(CVariableId id)
{
    op(COperator::kPushVariable);
    tokens_.push(id);
    return *this;
}

CFormula& CFormula::append(const CFormula& other)
{
    const auto shift = static_cast<std::uint16_t>(constants_.size());
    for (std::size_t i = 0; i < other.tokens_.size(); ++i) {
        const std::uint16_t token = other.tokens_[i];
        tokens_.push(token);
        if (token == static_cast<std::uint16_t>(COperator::kPushConstant)) {
            tokens_.push(static_cast<std::uint16_t>(other.tokens_[++i] + shift));
        } else if (token == static_cast<std::uint16_t>(COperator::kPushVariable)) {
            tokens_.push(other.tokens_[++i]);
        }
    }
    for (const float constant : other.constants_) {
        constants_.push(constant);
    }
    return *this;
}

} // namespace qel
