// Half-band filters with given coefficients.
#include "CAudioFilterHBFGen.h"

#include "NumberSyntax.h"

namespace qel {

namespace {

enum : std::int32_t
{
    kHalved,
    kAllPassChain,
    kSum
};

constexpr std::int32_t kMaxOrder = 16;
constexpr std::int32_t kChainOrder = 6;

using Coefficients = decltype(CFilterSection::zeros);

// Nothing is read if any entry is not a number, or if there are more than any order has.
Coefficients parseList(const CString& text)
{
    Coefficients list;
    for (const CString& entry : text.split(u',')) {
        const std::optional<double> number = parseReal(entry);
        if (!number || list.size() == kMaxOrder / 2) {
            return {};
        }
        list.push(*number);
    }
    return list;
}

EFilterFamily familyOf(std::int32_t order)
{
    return static_cast<EFilterFamily>(static_cast<std::int32_t>(EFilterFamily::kHalfBand2) + order / 2 - 1);
}

} // namespace

void CAudioFilterHBFGen::buildClassInfo(CClassInfo& info)
{
    using Self = CAudioFilterHBFGen;
    CAudioFilterGen::buildClassInfo(info);
    info.bind<&Self::order_>("order", 0);
    info.bind<&Self::a_>("a", "");
    info.bind<&Self::b_>("b", "");
}

CError CAudioFilterHBFGen::init()
{
    QEL_TRY(CAudioFilterGen::init(), getFullName());
    QEL_TRY(checkType(kSum,
                      "@qelstr_CAudioFilterHBFGen_init_FilterTypeError Invalid filter type '%1' specified."),
            getFullName());
    QEL_TRY(readCoefficients(), getFullName());
    QEL_TRY(readOrder(), getFullName());
    section_.gain = getType() == kHalved ? 0.5 : 1.0;
    return {};
}

CError CAudioFilterHBFGen::readCoefficients()
{
    section_.zeros = parseList(a_);
    section_.poles = parseList(b_);
    if (section_.zeros.isEmpty()) {
        QEL_FAIL(getFullName(),
                 "@qelstr_CAudioFilterHBFGen_init_NoCoeffsA Not enough 'a' coefficients defined.");
    }
    if (section_.poles.isEmpty()) {
        QEL_FAIL(getFullName(),
                 "@qelstr_CAudioFilterHBFGen_init_NoCoeffsB Not enough 'b' coefficients defined.");
    }
    if (section_.zeros.size() != section_.poles.size()) {
        QEL_FAIL(getFullName(), "@qelstr_CAudioFilterHBFGen_init_CoeffsCountError "
                                "Coefficient count should match in 'a' and 'b' coefficient lists.");
    }
    return {};
}

CError CAudioFilterHBFGen::readOrder()
{
    const bool isChain = getType() == kAllPassChain;
    if (order_ != static_cast<std::int32_t>(section_.coefficientCount()) ||
        (isChain && order_ != kChainOrder)) {
        QEL_FAIL(getFullName(),
                 "@qelstr_CAudioFilterHBFGen_init_OrderError Filter order '%1' does not fit %2 coefficients.",
                 getAttrString("order"), section_.coefficientCount());
    }
    section_.kind = isChain ? EFilterFamily::kAllPassChain : familyOf(order_);
    return {};
}

} // namespace qel
