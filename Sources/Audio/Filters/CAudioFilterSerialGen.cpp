// Filters made of other filters in a row.
#include "CAudioFilterSerialGen.h"

#include "NumberSyntax.h"

#include <algorithm>
#include <array>

namespace qel {

namespace {

// No generator reads more; what lies behind is not passed on.
constexpr std::size_t kMaxParams = 16;

} // namespace

void CAudioFilterSerialGenItem::buildClassInfo(CClassInfo& info)
{
    using Self = CAudioFilterSerialGenItem;
    CObject::buildClassInfo(info);
    info.bind<&Self::adjust_>("adjust", "");
    info.bind<&Self::fltgen_>("fltgen", "");
}

CError CAudioFilterSerialGenItem::init()
{
    QEL_TRY(CObject::init(), getFullName());
    if (adjust_.isEmpty()) {
        return {};
    }
    for (const CString& entry : adjust_.split(u',')) {
        const std::optional<double> factor = parseReal(entry);
        if (!factor) {
            QEL_FAIL(getFullName(),
                     "@qelstr_CAudioFilterSerialGenItem_init_InvalidAdjust Invalid factors '%1' specified.",
                     adjust_);
        }
        factors_.push(*factor);
    }
    return {};
}

CError CAudioFilterSerialGenItem::findGenerator()
{
    generator_ = CAudioFilterGen::findFrom(*this, fltgen_);
    if (!generator_) {
        QEL_FAIL(getFullName(),
                 "@qelstr_CAudioFilterSerialGenItem_init_InvalidFltGen "
                 "Invalid filter generator with the name '%1' specified.",
                 fltgen_);
    }
    return {};
}

void CAudioFilterSerialGenItem::appendSections(CFilterSections& outList, double sampleRateHz,
                                               std::span<const double> params) const
{
    std::array<double, kMaxParams> adjusted;
    const std::size_t count = std::min(params.size(), kMaxParams);
    for (std::size_t i = 0; i < count; ++i) {
        adjusted[i] = params[i] * (i < factors_.size() ? factors_[i] : 1.0);
    }
    generator_->appendSections(outList, sampleRateHz, std::span(adjusted.data(), count));
}

CError CAudioFilterSerialGen::initChilds()
{
    QEL_TRY(CAudioFilterGen::initChilds(), getFullName());
    for (std::size_t i = 0; i < getChildCount(); ++i) {
        if (auto* item = dynamic_cast<CAudioFilterSerialGenItem*>(getChild(i))) {
            QEL_TRY(item->findGenerator(), getFullName());
            items_.push_back(item);
        }
    }
    return {};
}

void CAudioFilterSerialGen::appendSections(CFilterSections& outList, double sampleRateHz,
                                           std::span<const double> params) const
{
    for (const CAudioFilterSerialGenItem* item : items_) {
        item->appendSections(outList, sampleRateHz, params);
    }
}

double CAudioFilterSerialGen::latencySamples() const
{
    double latency = 0.0;
    for (const CAudioFilterSerialGenItem* item : items_) {
        latency += item->latencySamples();
    }
    return latency;
}

} // namespace qel
