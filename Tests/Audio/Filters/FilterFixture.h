// Filter generators from the delivered tree, and what their sections do to a sine.
#pragma once

#include "CAudioFilterGen.h"
#include "CreatorTable.h"
#include "TreeCompiler/CTreeCompiler.h"
#include "TreeFixture.h"

#include <cmath>
#include <complex>
#include <numbers>

namespace qel::test {

using Complex = std::complex<double>;

// Loads data/Filters.xml below an object "audio" of the shared tree, as the product does.
class FilterFixture : public TreeFixture
{
protected:
    FilterFixture() { releaseError(registerCreators(kCreatorTable)); }
    ~FilterFixture() override
    {
        for (std::size_t i = shared_->getChildCount(); i > 0; --i) {
            CObject::releaseObject(shared_->getChild(i - 1));
        }
        for (std::size_t i = root_->getChildCount(); i > 0; --i) {
            CObject::releaseObject(root_->getChild(i - 1));
        }
        clearCreators();
    }

    void loadDeliveredFilters()
    {
        tools::CTreeCompiler compiler;
        ASSERT_TRUE(compiler.compile(DRUMFELL_DATA "/Filters.xml")) << compiler.diagnostics().front().text();
        tools::CTreeNode audio = compiler.root();
        audio.tag = "core:object";
        audio.name = "audio";
        tools::CTreeNode tree;
        tree.children.push_back(std::move(audio));
        const std::vector<std::uint8_t> payload = tools::encodeTree(tree);
        CNodeCursor cursor(payload);
        ASSERT_OK(shared_->loadNode(cursor, true, true, false, false));
    }

    // The object of this path in the shared tree.
    template <class Class>
    const Class& get(const std::string& path) const
    {
        const auto* object = dynamic_cast<const Class*>(shared_->findObject(path));
        if (!object) {
            ADD_FAILURE() << path << " is missing or of another class";
            std::abort();
        }
        return *object;
    }

    CFilterSections sections(const std::string& entry, double rateHz,
                             std::initializer_list<double> params) const
    {
        CFilterSections list;
        get<CAudioFilterGen>("audio.flt." + entry).generate(list, rateHz, {params.begin(), params.size()});
        return list;
    }
};

// The numerator that a biquad family's kernel has.
inline Complex biquadNumerator(const CFilterSection& section, Complex z1)
{
    switch (section.kind) {
    case EFilterFamily::kBiquadLowPass:
        return 1.0 + 2.0 * z1 + z1 * z1;
    case EFilterFamily::kBiquadHighPass:
        return 1.0 - 2.0 * z1 + z1 * z1;
    case EFilterFamily::kBiquadBandPass:
        return 1.0 - z1 * z1;
    case EFilterFamily::kBiquadNotch:
        return 1.0 + section.zeros[0] * z1 + z1 * z1;
    default:
        return 1.0 + section.zeros[0] * z1 + section.zeros[1] * z1 * z1;
    }
}

// Transfer function of one section at `cycles` per sample, from its coefficients.
inline Complex response(const CFilterSection& section, double cycles)
{
    const Complex z1 = std::polar(1.0, -2.0 * std::numbers::pi * cycles);
    const auto allPasses = [z2 = z1 * z1](const auto& coefficients) {
        Complex product = 1.0;
        for (const double c : coefficients) {
            product *= (c + z2) / (1.0 + c * z2);
        }
        return product;
    };
    const auto kind = static_cast<int>(section.kind);
    Complex h;
    if (kind <= static_cast<int>(EFilterFamily::kBiquadNotch)) {
        h = biquadNumerator(section, z1) / (1.0 - section.poles[0] * z1 - section.poles[1] * z1 * z1);
    } else if (kind <= static_cast<int>(EFilterFamily::kHighPass4)) {
        const int chain = kind - static_cast<int>(EFilterFamily::kLowPass1);
        const Complex follower = section.poles[0] / (1.0 - (1.0 - section.poles[0]) * z1);
        h = std::pow(chain < 4 ? follower : 1.0 - follower, chain % 4 + 1);
    } else {
        h = allPasses(section.zeros) + z1 * allPasses(section.poles);
    }
    return h * section.gain;
}

inline Complex response(const CFilterSections& cascade, double cycles)
{
    Complex product = 1.0;
    for (const CFilterSection& section : cascade) {
        product *= response(section, cycles);
    }
    return product;
}

inline double decibels(Complex h)
{
    return 20.0 * std::log10(std::abs(h));
}

} // namespace qel::test
