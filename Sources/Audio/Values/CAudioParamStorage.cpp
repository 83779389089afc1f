// A set of values of one parameter: groups of entries of numbers.
#include "CAudioParamStorage.h"

#include "CAudioParamInfo.h"

#include <algorithm>
#include <cmath>
#include <set>

namespace qel {

namespace {

constexpr std::int32_t kRecordVersion = 1;

} // namespace

CAudioParamStorage::Room::Room(std::int32_t groups, std::int32_t numbersPerGroup) : stride_(numbersPerGroup)
{
    numbers_.resize(static_cast<std::size_t>(groups) * static_cast<std::size_t>(numbersPerGroup));
    counts_.resize(static_cast<std::size_t>(groups));
}

CAudioParamStorage::CAudioParamStorage(const CAudioParamStorage& other)
{
    *this = other;
}

CAudioParamStorage& CAudioParamStorage::operator=(const CAudioParamStorage& other)
{
    CAudioParamStorage copy;
    if (other.isFormatted_) {
        copy.formatLike(other);
        copy.copyValues(other);
    }
    exchange(copy);
    return *this;
}

void CAudioParamStorage::format(std::int32_t esize, std::int32_t dtype, std::int32_t reserved,
                                std::int32_t entriesExpected, std::int32_t groupsExpected)
{
    esize_ = std::max(esize, 1);
    dtype_ = dtype;
    reserved_ = reserved;
    isFormatted_ = true;
    groupCount_ = 0;
    fill_.clear();
    const std::int32_t entries = std::clamp(entriesExpected, 0, kMaxEntries);
    room_ = Room(std::clamp(groupsExpected, 1, kMaxGroups), offset(entries));
    strings_.reset();
    if (isString()) {
        strings_ = std::make_unique<Strings>();
        // One more, since a new string comes in before the one it replaces goes.
        const std::int32_t groups = std::max(room_.groups(), kUsualGroups);
        strings_->values.reserve(static_cast<std::size_t>(entries) * static_cast<std::size_t>(groups) + 1);
        setRetireList(retired_);
    }
}

void CAudioParamStorage::formatLike(const CAudioParamStorage& model, std::int32_t groups)
{
    const std::int32_t entries =
        std::max(model.getFillCount(), model.room_.numbersPerGroup() / model.getEsize());
    format(model.getEsize(), model.getDtype(), model.getReserved(), entries,
           std::max(groups, model.room_.groups()));
    setFill(model.getFill(), &model.getFillPool());
}

void CAudioParamStorage::setFill(std::span<const double> values, const CAudioParamData* pool)
{
    fill_.clear();
    const std::size_t whole = values.size() - values.size() % static_cast<std::size_t>(esize_);
    fill_.reserve(whole);
    if (strings_) {
        strings_->fill.clear();
    }
    for (const double value : values.first(whole)) {
        fill_.push(strings_ && pool ? strings_->fill.copyItem(CAudioParamData::toId(value), *pool) : value);
    }
}

void CAudioParamStorage::setRetireList(CAudioParamItemRetireList* list)
{
    retired_ = list;
    if (strings_) {
        strings_->values.setRetireList(list);
        strings_->fill.setRetireList(list);
    }
}

const CAudioParamData& CAudioParamStorage::getPool() const
{
    static const CAudioParamData kNone;
    return strings_ ? strings_->values : kNone;
}

const CAudioParamData& CAudioParamStorage::getFillPool() const
{
    return strings_ ? strings_->fill : getPool();
}

std::int32_t CAudioParamStorage::getCount(std::int32_t group) const
{
    return group >= 0 && group < groupCount_ ? room_.count(group) : 0;
}

std::span<const double> CAudioParamStorage::getValues(std::int32_t group) const
{
    if (group < 0 || group >= groupCount_) {
        return {};
    }
    return {room_.values(group), static_cast<std::size_t>(offset(room_.count(group)))};
}

double CAudioParamStorage::get(std::int32_t group, std::int32_t entry, std::int32_t element) const
{
    if (element < 0 || element >= esize_) {
        return 0.0;
    }
    if (isStored(group, entry)) {
        return room_.values(group)[offset(entry) + element];
    }
    return fallback(entry, element);
}

double CAudioParamStorage::getForState(std::int32_t group, std::int32_t entry, std::int32_t element) const
{
    return isStored(group, entry) ? get(group, entry, element) : fallback(group, element);
}

const CString& CAudioParamStorage::getString(std::int32_t group, std::int32_t entry) const
{
    return isStored(group, entry) ? getPool().getString(get(group, entry))
                                  : getFillPool().getString(fallback(entry, 0));
}

double CAudioParamStorage::fallback(std::int32_t fillEntry, std::int32_t element) const
{
    if (fill_.isEmpty() || element < 0 || element >= esize_) {
        return 0.0;
    }
    const std::int32_t entry = fillEntry >= 0 && fillEntry < getFillCount() ? fillEntry : 0;
    return fill_[static_cast<std::size_t>(offset(entry) + element)];
}

bool CAudioParamStorage::accepts(const CAudioParamChange& change) const
{
    return hasFormat(change.esize, change.dtype, change.reserved) &&
           (change.isWhole() || (change.group >= 0 && change.group < kMaxGroups)) && change.start >= 0 &&
           change.start <= kMaxEntries && change.count >= 0 && change.count <= kMaxEntries - change.start &&
           (change.count == 0 || change.values);
}

// Nearly always one number takes the place of another.
bool CAudioParamStorage::write(const CAudioParamChange& change)
{
    const bool isOneNumber = change.count == 1 && change.esize == 1 && change.dtype == kFloat &&
                             !change.resize && isStored(change.group, change.start);
    if (!isOneNumber || !hasFormat(1, kFloat, change.reserved) || !change.values) {
        return writeAny(change);
    }
    room_.values(change.group)[change.start] = *change.values;
    return true;
}

bool CAudioParamStorage::writeAny(const CAudioParamChange& change)
{
    if (!accepts(change)) {
        return false;
    }
    if (change.isWhole()) {
        clear();
        if (change.count == 0) {
            return true;
        }
    }
    const std::int32_t group = change.isWhole() ? 0 : change.group;
    growRoom(group + 1, change.end());
    growGroups(group + 1);
    const std::int32_t oldCount = getCount(group);
    const std::int32_t newCount = change.resize ? change.end() : std::max(oldCount, change.end());
    resizeGroup(group, newCount);
    fillEntries(group, oldCount, change.start);

    double* target = room_.values(group) + offset(change.start);
    const std::int32_t size = offset(change.count);
    if (!strings_) {
        std::copy_n(change.values, size, target);
        return true;
    }
    for (std::int32_t i = 0; i < size; ++i) {
        const std::uint32_t id =
            change.pool ? strings_->values.copyItem(CAudioParamData::toId(change.values[i]), *change.pool)
                        : 0;
        strings_->values.remove(CAudioParamData::toId(target[i]));
        target[i] = id;
    }
    return true;
}

void CAudioParamStorage::clear()
{
    groupCount_ = 0;
    if (strings_) {
        strings_->values.clear();
    }
}

void CAudioParamStorage::copyValues(const CAudioParamStorage& source)
{
    if (this == &source || !hasFormat(source.esize_, source.dtype_, source.reserved_)) {
        return;
    }
    clear();
    for (std::int32_t group = 0; group < source.groupCount_; ++group) {
        growRoom(source.groupCount_, source.getCount(group));
        growGroups(group + 1);
        room_.count(group) = source.room_.count(group);
        std::ranges::copy(source.getValues(group), room_.values(group));
    }
    if (strings_) {
        strings_->values = source.strings_->values;
    }
}

void CAudioParamStorage::clamp(std::span<const double> minimum, std::span<const double> maximum)
{
    const auto esize = static_cast<std::size_t>(esize_);
    const bool hasRange = minimum.size() >= esize && maximum.size() >= esize;
    for (std::int32_t group = 0; group < groupCount_ && !strings_; ++group) {
        for (std::int32_t i = 0; i < offset(getCount(group)); ++i) {
            double& value = room_.values(group)[i];
            const std::int32_t element = i % esize_;
            if (std::isnan(value)) {
                value = fallback(i / esize_, element);
            }
            if (hasRange) {
                const auto at = static_cast<std::size_t>(element);
                const auto [low, high] = std::minmax(minimum[at], maximum[at]);
                value = std::clamp(value, low, high);
            }
        }
    }
}

// --- room

bool CAudioParamStorage::needsRoom(const CAudioParamChange& change) const
{
    const std::int32_t group = change.isWhole() ? 0 : change.group;
    return group >= room_.groups() || offset(change.end()) > room_.numbersPerGroup();
}

std::int32_t CAudioParamStorage::groupsOfRoom(std::int32_t group)
{
    return group < 1 ? 1 : group < kUsualGroups ? kUsualGroups : kMaxGroups;
}

CAudioParamStorage::Room CAudioParamStorage::roomFor(std::int32_t group, std::int32_t numbersPerGroup) const
{
    return Room(std::max(room_.groups(), groupsOfRoom(group)),
                std::max(room_.numbersPerGroup(), numbersPerGroup));
}

void CAudioParamStorage::exchangeRoom(Room& room)
{
    if (room.groups() < room_.groups() || room.numbersPerGroup() < room_.numbersPerGroup()) {
        return;
    }
    for (std::int32_t group = 0; group < groupCount_; ++group) {
        std::ranges::copy(getValues(group), room.values(group));
        room.count(group) = room_.count(group);
    }
    std::swap(room, room_);
}

void CAudioParamStorage::exchange(CAudioParamStorage& other)
{
    std::swap(*this, other);
    CAudioParamItemRetireList* const retired = other.retired_;
    other.setRetireList(retired_);
    setRetireList(retired);
}

void CAudioParamStorage::growRoom(std::int32_t groups, std::int32_t entries)
{
    const CAudioParamChange change{.group = groups - 1, .start = entries};
    if (needsRoom(change)) {
        Room room = roomFor(groups - 1, offset(entries));
        exchangeRoom(room);
    }
}

void CAudioParamStorage::growGroups(std::int32_t count)
{
    for (; groupCount_ < count; ++groupCount_) {
        room_.count(groupCount_) = 0;
    }
}

void CAudioParamStorage::resizeGroup(std::int32_t group, std::int32_t entries)
{
    double* const values = room_.values(group);
    const std::int32_t oldSize = offset(getCount(group));
    const std::int32_t size = offset(entries);
    for (std::int32_t i = size; strings_ && i < oldSize; ++i) {
        strings_->values.remove(CAudioParamData::toId(values[i]));
    }
    if (size > oldSize) {
        std::fill(values + oldSize, values + size, 0.0);
    }
    room_.count(group) = static_cast<std::uint16_t>(entries);
}

void CAudioParamStorage::fillEntries(std::int32_t group, std::int32_t from, std::int32_t to)
{
    double* const values = room_.values(group);
    for (std::int32_t entry = from; entry < to; ++entry) {
        for (std::int32_t element = 0; element < esize_; ++element) {
            const double value = fallback(entry, element);
            values[offset(entry) + element] =
                strings_ ? strings_->values.copyItem(CAudioParamData::toId(value), strings_->fill) : value;
        }
    }
}

CError CAudioParamStorage::load(CInputStream& stream)
{
    std::int32_t groups = 0;
    QEL_TRY(loadHead(stream, groups), {});
    CAudioParamStorage loaded;
    loaded.format(esize_, dtype_, reserved_);
    if (isString()) {
        QEL_TRY(loaded.strings_->values.load(stream), {});
    }
    for (std::int32_t group = 0; group < groups; ++group) {
        QEL_TRY(loaded.loadGroup(stream, group), {});
    }
    loaded.separateSharedIds();
    copyValues(loaded);
    return {};
}

CError CAudioParamStorage::loadHead(CInputStream& stream, std::int32_t& outGroups) const
{
    std::int32_t version = 0;
    QEL_TRY(stream.readI32(version), {});
    if (version != kRecordVersion) {
        QEL_FAIL({}, "qelstr_CAudioParamStorage_load_VersionError Unsupported data set version %1.", version);
    }
    std::int32_t esize = 0;
    std::int32_t dtype = 0;
    QEL_TRY(stream.readI32(esize), {});
    QEL_TRY(stream.readI32(dtype), {});
    if (!isFormatted_ || esize != esize_ || dtype != dtype_) {
        QEL_FAIL({},
                 "@qelstr_CAudioParamStorage_load_FormatError Unsupported storage format (esize=%1, "
                 "dtype=%2; should be: esize=%3, dtype=%4).",
                 esize, dtype, esize_, dtype_);
    }
    QEL_TRY(stream.readI32(outGroups), {});
    if (outGroups < 0 || outGroups > kMaxGroups) {
        QEL_FAIL({}, "@qelstr_CAudioParamStorage_load_GroupCountError Invalid group count %1.", outGroups);
    }
    return {};
}

CError CAudioParamStorage::loadGroup(CInputStream& stream, std::int32_t group)
{
    std::int32_t count = 0;
    QEL_TRY(stream.readI32(count), {});
    if (count < 0 || count > kMaxEntries) {
        QEL_FAIL({}, "@qelstr_CAudioParamStorage_load_EntryCountError Invalid entry count %1.", count);
    }
    growRoom(group + 1, count);
    growGroups(group + 1);
    resizeGroup(group, count);
    double* const values = room_.values(group);
    for (std::int32_t i = 0; i < offset(count); ++i) {
        if (isString()) {
            std::uint32_t id = 0;
            QEL_TRY(stream.readU32(id), {});
            values[i] = id;
        } else {
            QEL_TRY(stream.readF64(values[i]), {});
        }
    }
    return {};
}

void CAudioParamStorage::separateSharedIds()
{
    if (!isString()) {
        return;
    }
    std::set<std::uint32_t> seen;
    for (std::int32_t group = 0; group < groupCount_; ++group) {
        for (std::int32_t i = 0; i < getCount(group); ++i) {
            double& value = room_.values(group)[i];
            const std::uint32_t id = CAudioParamData::toId(value);
            if (!seen.insert(id).second) {
                value = strings_->values.copyItem(id, strings_->values);
            }
        }
    }
}

CError CAudioParamStorage::save(COutputStream& stream, std::int32_t group) const
{
    if (group >= 0) {
        CAudioParamStorage single;
        single.format(esize_, dtype_, reserved_);
        const std::span<const double> values = getValues(group);
        single.write({.count = getCount(group),
                      .esize = esize_,
                      .dtype = dtype_,
                      .reserved = reserved_,
                      .values = values.data(),
                      .pool = &getPool()});
        return single.save(stream);
    }
    QEL_TRY(stream.writeI32(kRecordVersion), {});
    QEL_TRY(stream.writeI32(esize_), {});
    QEL_TRY(stream.writeI32(dtype_), {});
    QEL_TRY(stream.writeI32(groupCount_), {});
    if (isString()) {
        QEL_TRY(getPool().save(stream), {});
    }
    for (std::int32_t i = 0; i < groupCount_; ++i) {
        QEL_TRY(stream.writeI32(getCount(i)), {});
        for (const double value : getValues(i)) {
            if (isString()) {
                QEL_TRY(stream.writeU32(CAudioParamData::toId(value)), {});
            } else {
                QEL_TRY(stream.writeF64(value), {});
            }
        }
    }
    return {};
}

void CAudioParamStorage::fillWithDefaults(const CAudioParamInfo& info)
{
    std::size_t longest = 0;
    for (const std::vector<double>& values : info.defaults) {
        longest = std::max(longest, values.size());
    }
    const std::int32_t esize = std::max(info.esize, 1);
    format(esize, info.dtype, info.reserved, static_cast<std::int32_t>(longest) / esize);
    for (std::size_t group = 0; group < info.defaults.size(); ++group) {
        const std::vector<double>& values = info.defaults[group];
        write({.group = static_cast<std::int32_t>(group),
               .count = static_cast<std::int32_t>(values.size()) / esize,
               .esize = esize,
               .dtype = info.dtype,
               .reserved = info.reserved,
               .values = values.data(),
               .pool = &info.pool});
    }
    clamp(info.minValues, info.maxValues);
    setFill(getValues(0), &getPool());
}

} // namespace qel
