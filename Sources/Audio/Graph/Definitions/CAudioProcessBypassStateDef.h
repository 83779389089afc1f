// Definition of a bypass state: when something should leave the graph, as a function of parameters.
#pragma once

#include "CObject.h"

#include <optional>

namespace qel {

// A range of whole numbers, open or closed on each side, or without a bound there.
struct CAudioIntRange
{
    std::int32_t low = 0;
    std::int32_t high = 0;
    bool hasLow = false;
    bool hasHigh = false;
    bool isLowInclusive = false;
    bool isHighInclusive = false;

    // "low;high", either of which may be empty; "[" in front and "]" at the end make a bound inclusive.
    // Nothing for any other text.
    static std::optional<CAudioIntRange> parse(const CString& text);

    // Takes any real, so that a rounded parameter value of any size can be asked for.
    bool contains(double number) const;
};

// Tag audio:process-bypass-state. Stands among the children of a CAudioProcessDef. The processes made of that
// read the parameters, whose names are relative to the process, and ask isActive(); this object holds what
// the tree says and no state of its own, so any thread may ask it.
//
// init fails on a missing or negative id, a missing parameter name and bad range text.
class CAudioProcessBypassStateDef : public CObject
{
public:
    static void buildClassInfo(CClassInfo& info);

    CError init() override;

    std::int32_t id() const { return id_; }
    const CString& param() const { return param_; }
    bool hasAndParam() const { return andParam_.has_value(); }
    // Only with a second parameter.
    const CString& andParam() const { return *andParam_; }
    // The parameters are read at band element 0 of the multiband wrapper.
    bool isMultiband() const { return isMultiband_; }
    bool isInverted() const { return isInverted_; }
    // The parameters are read at group 0, not at the group of the process.
    bool isGroup0() const { return isGroup0_; }

    // True if what bears the state's number is out of the graph at these values of the parameters. `andValue`
    // counts only with a second parameter. Audio thread: neither locks nor allocates.
    bool isActive(double value, double andValue = 0.0) const;

private:
    struct Condition
    {
        std::optional<CAudioIntRange> range;
        double value = 1.0; // counts without a range

        bool holds(double paramValue) const;
    };

    std::int32_t id_ = -1;
    CString param_;
    std::optional<CString> andParam_;
    std::optional<CString> range_;
    std::optional<CString> andRange_;
    double value_ = 1.0;
    double andValue_ = 1.0;
    Condition first_;
    Condition second_;
    bool isMultiband_ = false;
    bool isInverted_ = false;
    bool isGroup0_ = false;
};

} // namespace qel
