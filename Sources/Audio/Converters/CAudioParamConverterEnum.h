// States with names.
#pragma once

#include "CAudioParamConverter.h"

#include <vector>

namespace qel {

// The value is a whole number; the element's minimum stands for the first name. `state-names` is a list of
// names separated by ";", each "full" or "full|short". A value without a name reads "Reserve". Typed text is
// a number in the integer syntax of attributes, not a name. Positions are linear and snap to whole numbers.
// Stateless after init, for any thread.
class CAudioParamConverterEnum : public CAudioParamConverter
{
public:
    static void buildClassInfo(CClassInfo& info);

    double textToValue(const CAudioParamInfo& info, std::int32_t element, const CString& text,
                       bool* ok) const override;
    CString valueToText(const CAudioParamInfo& info, std::int32_t element, double value,
                        const CAudioParamData* pool, TextMode mode) const override;

    std::size_t stateCount() const { return states_.size(); }
    // `index` must be below stateCount().
    const CString& stateName(std::size_t index) const { return states_[index].name; }

protected:
    ELaw law() const override { return ELaw::kWhole; }

private:
    struct State
    {
        CString name;
        CString shortName;
    };

    CError attrStateNames();

    CString stateNames_;
    std::vector<State> states_;
};

} // namespace qel
