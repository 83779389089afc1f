// Filters made of other filters in a row.
#pragma once

#include "CAudioFilterGen.h"

#include <vector>

namespace qel {

// One part of a serial filter: the generator at the path `fltgen`, run with parameters that `adjust` scales,
// a list of factors separated by commas in the order of the parameters. Parameters without a factor stay as
// they are.
class CAudioFilterSerialGenItem : public CObject
{
public:
    static void buildClassInfo(CClassInfo& info);

    CError init() override;
    // Looks the generator up. The enclosing serial filter calls this when all its children are there.
    CError findGenerator();
    void appendSections(CFilterSections& outList, double sampleRateHz, std::span<const double> params) const;
    double latencySamples() const { return generator_->latencySamples(); }

private:
    CString adjust_;
    CString fltgen_;
    const CAudioFilterGen* generator_ = nullptr;
    CInlineArray<double, 4> factors_;
};

// The sections of all its items, one after another.
class CAudioFilterSerialGen : public CAudioFilterGen
{
public:
    CError initChilds() override;
    void appendSections(CFilterSections& outList, double sampleRateHz,
                        std::span<const double> params) const override;
    double latencySamples() const override;

private:
    std::vector<const CAudioFilterSerialGenItem*> items_; // its own children
};

} // namespace qel
