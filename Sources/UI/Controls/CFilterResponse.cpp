// What filters let through.
#include "CFilterResponse.h"

#include "NumberSyntax.h"

#include <algorithm>
#include <cmath>
#include <numbers>

namespace qel {

namespace {

// Of a filter whose definition scales it by nothing.
constexpr double kPlainQ = std::numbers::sqrt2 / 2.0;
constexpr std::int32_t kFirstHighPass = 4; // of the forms of first order
constexpr std::int32_t kMaxType = 7;

double factorOf(const CObject& item, std::size_t index)
{
    const std::vector<CString> factors = item.getAttrString("adjust").split(u',');
    return index < factors.size() ? parseReal(factors[index]).value_or(1.0) : 1.0;
}

} // namespace

void CFilterResponse::load(const CObject& array)
{
    chains_.clear();
    for (std::size_t i = 0; i < array.getChildCount(); ++i) {
        const CObject& item = *array.getChild(i);
        Chain& chain = chains_[item.getAttrInt("index")];
        addSections(item.findObject(item.getAttrString("fltgen")), 1.0, 1.0, chain);
    }
}

void CFilterResponse::addSections(const CObject* generator, double cornerFactor, double qFactor, Chain& chain)
{
    if (!generator) {
        return;
    }
    const std::int32_t type = generator->getAttrInt("type", -1);
    if (generator->getTag() == "audio:fltgen-serial") {
        for (std::size_t i = 0; i < generator->getChildCount(); ++i) {
            const CObject& item = *generator->getChild(i);
            // Factors are for frequency, gain and Q.
            addSections(item.findObject(item.getAttrString("fltgen")), cornerFactor * factorOf(item, 0),
                        qFactor * factorOf(item, 2), chain);
        }
    } else if (generator->getTag() == "audio:fltgen-lphp1" && type >= 0 && type <= kMaxType) {
        chain.push_back({.isHighPass = type >= kFirstHighPass, .cornerFactor = cornerFactor});
    } else if (generator->getTag() == "audio:fltgen-rbj" && (type == 0 || type == 1)) {
        chain.push_back({.isHighPass = type == 1,
                         .isSecondOrder = true,
                         .cornerFactor = cornerFactor,
                         .q = kPlainQ * qFactor});
    }
}

double CFilterResponse::getGainDb(std::int32_t index, double frequencyHz, double cornerHz) const
{
    const auto found = chains_.find(index);
    if (found == chains_.end()) {
        return 0.0;
    }
    double power = 1.0;
    for (const Section& section : found->second) {
        // A low-pass is a high-pass in the reciprocal of the frequency.
        const double ratio = frequencyHz / std::max(cornerHz * section.cornerFactor, 1e-9);
        const double x = section.isHighPass ? ratio : 1.0 / std::max(ratio, 1e-9);
        const double xx = x * x;
        power *= section.isSecondOrder ? xx * xx / ((1.0 - xx) * (1.0 - xx) + xx / (section.q * section.q))
                                       : xx / (1.0 + xx);
    }
    return power > 0.0 ? std::max(10.0 * std::log10(power), kFloorDb) : kFloorDb;
}

} // namespace qel
