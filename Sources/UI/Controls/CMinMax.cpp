// A range of values that meters and rulers share.
#include "CMinMax.h"

#include "CUIParam.h"

#include <algorithm>
#include <cmath>

namespace qel {

namespace {

double clampedPosition(double value, double min, double max)
{
    const double place = (value - min) / (max - min);
    return place > 0.0 ? std::min(place, 1.0) : 0.0; // also for NaN
}

} // namespace

void CMinMax::buildClassInfo(CClassInfo& info)
{
    using Self = CMinMax;
    CObject::buildClassInfo(info);
    info.bind<&Self::min_, &Self::onRangeChanged>("min", -60.0);
    info.bind<&Self::max_, &Self::onRangeChanged>("max", 0.0);
    info.bind<&Self::isLogWanted_, &Self::onRangeChanged>("is-log", false);
    info.bind<&Self::power_, &Self::onRangeChanged>("scale-power", 1.0);
}

double CMinMax::param(const CUIParam* param, double fallback)
{
    return param && param->getElementCount() > 0 ? param->getValue(0) : fallback;
}

// --- mapping

double CMinMax::toLinearPosition(double value) const
{
    return clampedPosition(value, getMin(), getMax());
}

double CMinMax::toPosition(double value) const
{
    const double place =
        isLog() ? clampedPosition(std::log(std::max(value, 1e-300)), std::log(getMin()), std::log(getMax()))
                : toLinearPosition(value);
    return power_ > 0.0 && power_ != 1.0 ? std::pow(place, power_) : place;
}

double CMinMax::toValue(double position) const
{
    double place = position > 0.0 ? std::min(position, 1.0) : 0.0;
    if (power_ > 0.0 && power_ != 1.0) {
        place = std::pow(place, 1.0 / power_);
    }
    const double min = getMin();
    const double max = getMax();
    return isLog() ? min * std::pow(max / min, place) : min + (max - min) * place;
}

// --- changes

CError CMinMax::onRangeChanged()
{
    return getInitState() == InitState::kCreated ? CError() : notify(kUpdate, {}, false);
}

CError CMinMax::onParamAdded(CUIParam& param)
{
    const CString name = param.getName();
    if (name == "ui-param-min") {
        minParam_ = &param;
    } else if (name == "ui-param-max") {
        maxParam_ = &param;
    }
    return {};
}

CError CMinMax::onParamRemoved(CUIParam& param)
{
    minParam_ = minParam_ == &param ? nullptr : minParam_;
    maxParam_ = maxParam_ == &param ? nullptr : maxParam_;
    return {};
}

CError CMinMax::onParamUpdate(CUIParam&)
{
    return onRangeChanged();
}

CError CMinMax::onParamInfo(CUIParam&)
{
    return onRangeChanged();
}

} // namespace qel
