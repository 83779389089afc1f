// A range of values that meters and rulers share.
#pragma once

#include "CObject.h"
#include "CUIParamUpdateHandler.h"

namespace qel {

// Tag `ui:min-max`.
//
//     min, max          the ends; -60 and 0 by default
//     is-log            equal ratios are equally far apart; ignored unless both ends are above 0
//     scale-power       the place between the ends, 0 to 1, is raised to this power: above 1 the upper end
//                       gets more room
//
// A child ui-param named "ui-param-min" or "ui-param-max" takes the place of an end. Raises "min-max-update"
// when one of these changes.
class CMinMax : public CObject, public CUIParamUpdateHandler
{
public:
    static constexpr const char* kUpdate = "min-max-update";

    static void buildClassInfo(CClassInfo& info);

    double getMin() const { return param(minParam_, min_); }
    double getMax() const { return param(maxParam_, max_); }
    bool isLog() const { return isLogWanted_ && getMin() > 0.0 && getMax() > 0.0; }

    // Where a value lies, 0 (at the minimum) to 1; beyond the ends, and for NaN, at the nearer end or 0.
    double toPosition(double value) const;
    double toValue(double position) const;
    // The same without the power and without "is-log".
    double toLinearPosition(double value) const;

    CError onParamAdded(CUIParam& param) override;
    CError onParamRemoved(CUIParam& param) override;
    CError onParamUpdate(CUIParam& param) override;
    CError onParamInfo(CUIParam& param) override;

private:
    static double param(const CUIParam* param, double fallback);
    CError onRangeChanged();

    const CUIParam* minParam_ = nullptr;
    const CUIParam* maxParam_ = nullptr;

    // Bound attributes.
    double min_ = 0.0;
    double max_ = 0.0;
    bool isLogWanted_ = false;
    double power_ = 1.0;
};

} // namespace qel
