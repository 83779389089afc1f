// How a view gets from one state to another.
#pragma once

#include "CAttrValue.h"

#include <optional>

namespace qel {

// The course of both kinds of change: slow at the ends, 0 at `startSec`, 1 from `endSec` on, and 1 at any
// time if the end does not come after the start.
double easedPosition(double nowSec, double startSec, double endSec);

// A number, or a percentage ("50%").
struct CStateNumber
{
    double value = 0.0;
    bool isPercentage = false;

    // Nothing if the text is neither.
    static std::optional<CStateNumber> parse(const CString& text);
    // The same, with 0 for what is no number.
    static CStateNumber parseAny(const CString& text);
    // As an attribute: a percentage has four decimals.
    CAttrValue toValue() const;
    // The same as far as an attribute can tell.
    bool isSameAs(const CStateNumber& other) const;
};

// One attribute on its way to a number.
struct CStateMorph
{
    double from = 0.0;
    CStateNumber to;
    double startSec = 0.0;
    double endSec = 0.0;
    bool isRunning = false;

    CStateNumber at(double nowSec) const;
};

// What a view looks like, as far as it fades over.
struct CViewLook
{
    CString colorState;
    CString imageRange;

    friend bool operator==(const CViewLook&, const CViewLook&) = default;
};

// A look on its way to another; without one both are the same.
struct CStateFade
{
    // The rest of a fade is not seen any more, but costs a second picture of the view each frame.
    static constexpr double kEndPosition = 0.95;

    CViewLook from;
    CViewLook to;
    double startSec = 0.0;
    double endSec = 0.0;
    double position = 1.0; // 0: from, 1: to
    bool isRunning = false;

    void start(const CViewLook& look, double nowSec, double durationSec);
    void move(double nowSec);
};

} // namespace qel
