// The values of a meter.
#include "CLevelMeterBase.h"

#include "CMinMax.h"
#include "CValueList.h"
#include "NumberFormat.h"

#include <algorithm>
#include <cmath>
#include <numbers>

namespace qel {

namespace {

constexpr const char* kSilence = "-inf";
constexpr double kDbPerNeper = 20.0 / std::numbers::ln10;
constexpr double kDefaultMinDb = -60.0;

} // namespace

void CLevelMeterBase::buildClassInfo(CClassInfo& info)
{
    using Self = CLevelMeterBase;
    CView::buildClassInfo(info);
    info.bind<&Self::minMaxPath_>("min-max", "");
    info.bind<&Self::outListPath_>("out-value-list", "");
    info.bind<&Self::outFormat_>("out-format", "%1.2f");
    info.bind<&Self::isInverted_>("is-inverted", false);
    info.bind<&Self::isRawData_>("is-raw-data", false);
    info.bind<&Self::isExportPeaks_>("is-export-peaks", false);
    info.handleEvent<&Self::onMinMaxUpdate>(CMinMax::kUpdate);
    info.handleEvent<&Self::onContentReady>("content-ready");
    info.handleEvent<&Self::onContentReady>("window-create");
}

CError CLevelMeterBase::init()
{
    QEL_TRY(CView::init(), getFullName());
    if (!outListPath_.isEmpty()) {
        QEL_TRY(require(outList_, outListPath_,
                        "@qelstr_CLevelMeterBase_init_NoList Unable to locate out value list object."),
                getFullName());
    }
    return {};
}

CError CLevelMeterBase::initChilds()
{
    QEL_TRY(CView::initChilds(), getFullName());
    for (std::size_t i = 0; i < getChildCount(); ++i) {
        if (auto* const listener = dynamic_cast<CLevelMeterListener*>(getChild(i))) {
            listeners_.push_back(listener);
        }
    }
    if (listeners_.empty()) {
        QEL_FAIL(getFullName(),
                 "@qelstr_CLevelMeterBase_init_NoListener At least one listener object is required.");
    }
    return onListenerUpdate();
}

// The range may lie behind the meter in the tree.
CError CLevelMeterBase::onContentReady(const CAttrMap&)
{
    if (!minMaxPath_.isEmpty()) {
        QEL_TRY(
            require(minMax_, minMaxPath_,
                    "@qelstr_CLevelMeterBase_onContentReady_NoRange Unable to locate min-max object '%1'."),
            getFullName());
        listenObject(minMax_->getFullName(), CMinMax::kUpdate, CMinMax::kUpdate);
    }
    return onMinMaxUpdate({});
}

CError CLevelMeterBase::onMinMaxUpdate(const CAttrMap&)
{
    onRangeChanged();
    return {};
}

CError CLevelMeterBase::announce(const char* event)
{
    QEL_TRY(fireEvent(event, {}), getFullName());
    return isReleased() ? CError() : notify(event, {}, false);
}

// --- values

double CLevelMeterBase::toPosition(double value) const
{
    return minMax_ ? minMax_->toPosition(value) : std::clamp(1.0 - value / kDefaultMinDb, 0.0, 1.0);
}

double CLevelMeterBase::toShown(double linear, bool& outIsSilent) const
{
    if (isRawData_) {
        outIsSilent = false;
        return isInverted_ ? -linear : linear;
    }
    const double db = linear > 0.0 ? std::max(std::log(linear) * kDbPerNeper, kFloorDb) : kFloorDb;
    outIsSilent = db <= kFloorDb;
    return isInverted_ && !outIsSilent ? -db : db;
}

CLevelMeterBase::Channel CLevelMeterBase::convert(const CLevelMeterListener::Channel& heard) const
{
    Channel channel;
    channel.isActive = heard.isActive;
    if (heard.isActive) {
        channel.value = toShown(heard.level, channel.isSilent);
        channel.peak = toShown(heard.peak, channel.isPeakSilent);
    }
    return channel;
}

CError CLevelMeterBase::onListenerUpdate()
{
    std::size_t count = 0;
    bool isChanged = false;
    for (const CLevelMeterListener* const listener : listeners_) {
        for (const CLevelMeterListener::Channel& heard : listener->getChannels()) {
            const Channel channel = convert(heard);
            if (count == channels_.size()) {
                channels_.push_back(channel);
                isChanged = true;
            } else if (!(channels_[count] == channel)) {
                channels_[count] = channel;
                isChanged = true;
            }
            ++count;
        }
    }
    isChanged = isChanged || count != channels_.size();
    channels_.resize(count);
    if (isChanged) {
        onValuesChanged();
    }
    return isChanged || !findAttr("sum-value") ? publish() : CError();
}

// --- texts

CString CLevelMeterBase::format(double value, bool isSilent) const
{
    return isSilent ? CString(kSilence) : formatNumber(outFormat_, value);
}

CError CLevelMeterBase::publish()
{
    const CHold keep(*this);
    if (outList_) {
        std::vector<CString> texts;
        for (const Channel& channel : channels_) {
            texts.push_back(isExportPeaks_ ? format(channel.peak, channel.isPeakSilent)
                                           : format(channel.value, channel.isSilent));
        }
        QEL_TRY(outList_->setValues(std::move(texts)), getFullName());
    }
    return isReleased() ? CError() : publishSums();
}

CError CLevelMeterBase::publishSums()
{
    const auto set = [&](const char* name, const CString& text) {
        // Whoever shows it lays text out, so only for another one.
        return getAttrString(name) == text ? CError() : setAttribute(name, text, true);
    };
    Channel sum;
    for (const Channel& channel : channels_) {
        if (!channel.isSilent && (sum.isSilent || channel.value > sum.value)) {
            sum.value = channel.value;
            sum.isSilent = false;
        }
        if (!channel.isPeakSilent && (sum.isPeakSilent || channel.peak > sum.peak)) {
            sum.peak = channel.peak;
            sum.isPeakSilent = false;
        }
    }
    QEL_TRY(set("sum-value", format(sum.value, sum.isSilent)), getFullName());
    return isReleased() ? CError() : set("sum-peak", format(sum.peak, sum.isPeakSilent));
}

} // namespace qel
