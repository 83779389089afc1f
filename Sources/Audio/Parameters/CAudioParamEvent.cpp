// A change to a parameter on its way to the audio thread and into the slots.
#include "CAudioParamEvent.h"

#include "CAudioParam.h"
#include "CAudioParamEventPool.h"

#include <cmath>
#include <utility>

namespace qel {

namespace {

// Two writes this close are at one time: far below the length of a sample at any rate.
constexpr double kSameTimeSec = 1e-9;

} // namespace

void CAudioParamEvent::set(CAudioParam& param, const CAudioParamChange& change)
{
    param_ = &param;
    change_ = change;
    const std::size_t size = static_cast<std::size_t>(change.count) * static_cast<std::size_t>(change.esize);
    const bool isString = change.dtype == CAudioParamStorage::kString && change.pool;
    values_.clear();
    values_.reserve(size);
    for (std::size_t i = 0; i < size; ++i) {
        const double value = change.values[i];
        values_.push(isString ? pool_.copyItem(CAudioParamData::toId(value), *change.pool) : value);
    }
    change_.values = values_.data();
    change_.pool = &pool_;
}

void CAudioParamEvent::bringRooms(std::size_t count, const CAudioParamStorage& model)
{
    const CAudioParamStorage::Room room =
        model.roomFor(CAudioParamStorage::kUsualGroups - 1, model.getRoom().numbersPerGroup());
    rooms_.assign(count, room);
}

void CAudioParamEvent::depart()
{
    if (change_.touches(0, 0)) {
        isCounted_ = true;
        param_->audioSide().addOverride();
    }
}

void CAudioParamEvent::arrive()
{
    if (std::exchange(isCounted_, false)) {
        param_->audioSide().endOverride();
    }
}

void CAudioParamEvent::setReplacement(CAudioParam& param, std::unique_ptr<CAudioParamStorage> storage)
{
    param_ = &param;
    change_ = {.group = CAudioParamChange::kWholeParam,
               .esize = storage->getEsize(),
               .dtype = storage->getDtype(),
               .reserved = storage->getReserved()};
    replacement_ = std::move(storage);
}

bool CAudioParamEvent::isSupersededBy(const CAudioParam& param, const CAudioParamChange& later) const
{
    if (param_ != &param || replacement_ || !rooms_.empty() ||
        std::abs(change_.time - later.time) > kSameTimeSec) {
        return false;
    }
    if (later.isWhole()) {
        return true;
    }
    // The later write must cover every entry and, where this one cuts its group, cut it too, at the same
    // place or by itself.
    const bool coversEntries = later.start <= change_.start && later.end() >= change_.end();
    const bool coversCut = !change_.resize || later.resize;
    return later.group == change_.group && coversEntries && coversCut;
}

bool CAudioParamEvent::applyTo(CAudioParamStorage& storage)
{
    if (replacement_) {
        return false;
    }
    if (roomsUsed_ < rooms_.size() && storage.accepts(change_) && storage.needsRoom(change_)) {
        storage.exchangeRoom(rooms_[roomsUsed_++]);
    }
    return storage.write(change_);
}

void CAudioParamEvent::applyToAudio(CAudioParamStorage& storage)
{
    if (replacement_) {
        storage.exchange(*replacement_); // what stood there is freed on the control side
        return;
    }
    applyTo(storage);
}

void CAudioParamEvent::release()
{
    if (--references_ == 0) {
        home_->retire(*this);
    }
}

} // namespace qel
