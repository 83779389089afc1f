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

void CAudioParamStorage::format(std::int32_t esize, std::int32_t dtype, std::int32_t reserved,
                                std::int32_t entriesExpected)
{
    clear();
    fill_.clear();
    fillPool_.clear();
    esize_ = std::max(esize, 1);
    dtype_ = dtype;
    reserved_ = reserved;
    isFormatted_ = true;

    const std::int32_t entries = std::clamp(entriesExpected, 0, kMaxEntries);
    growGroups(static_cast<std::int32_t>(kInlineGroups));
    groupCount_ = 0;
    for (Values& values : groups_) {
        values.reserve(offset(entries));
    }
    if (isString()) {
        // One more, since a new string comes in before the one it replaces goes.
        pool_.reserve(static_cast<std::size_t>(entries) * kInlineGroups + 1);
    }
}

void CAudioParamStorage::formatLike(const CAudioParamStorage& model)
{
    std::int32_t entries = model.getFillCount();
    for (std::int32_t group = 0; group < model.getGroupCount(); ++group) {
        entries = std::max(entries, model.getCount(group));
    }
    format(model.getEsize(), model.getDtype(), model.getReserved(), entries);
    setFill(model.getFill(), &model.getFillPool());
}

void CAudioParamStorage::setFill(std::span<const double> values, const CAudioParamData* pool)
{
    fill_.clear();
    fillPool_.clear();
    const std::size_t whole = values.size() - values.size() % static_cast<std::size_t>(esize_);
    fill_.reserve(whole);
    for (const double value : values.first(whole)) {
        fill_.push(isString() && pool ? fillPool_.copyItem(CAudioParamData::toId(value), *pool) : value);
    }
}

void CAudioParamStorage::setRetireList(CAudioParamItemRetireList* list)
{
    pool_.setRetireList(list);
    fillPool_.setRetireList(list);
}

std::int32_t CAudioParamStorage::getCount(std::int32_t group) const
{
    return group >= 0 && group < groupCount_ ? counts_[static_cast<std::size_t>(group)] : 0;
}

std::span<const double> CAudioParamStorage::getValues(std::int32_t group) const
{
    if (group < 0 || group >= groupCount_) {
        return {};
    }
    const Values& values = groups_[static_cast<std::size_t>(group)];
    return {values.data(), values.size()};
}

double CAudioParamStorage::get(std::int32_t group, std::int32_t entry, std::int32_t element) const
{
    if (element < 0 || element >= esize_) {
        return 0.0;
    }
    if (isStored(group, entry)) {
        return groups_[static_cast<std::size_t>(group)][offset(entry) + static_cast<std::size_t>(element)];
    }
    return fallback(entry, element);
}

double CAudioParamStorage::getForState(std::int32_t group, std::int32_t entry, std::int32_t element) const
{
    return isStored(group, entry) ? get(group, entry, element) : fallback(group, element);
}

const CString& CAudioParamStorage::getString(std::int32_t group, std::int32_t entry) const
{
    return isStored(group, entry) ? pool_.getString(get(group, entry))
                                  : fillPool_.getString(fallback(entry, 0));
}

double CAudioParamStorage::fallback(std::int32_t fillEntry, std::int32_t element) const
{
    if (fill_.isEmpty() || element < 0 || element >= esize_) {
        return 0.0;
    }
    const std::int32_t entry = fillEntry >= 0 && fillEntry < getFillCount() ? fillEntry : 0;
    return fill_[offset(entry) + static_cast<std::size_t>(element)];
}

bool CAudioParamStorage::accepts(const CAudioParamChange& change) const
{
    return hasFormat(change.esize, change.dtype, change.reserved) &&
           (change.isWhole() || (change.group >= 0 && change.group < kMaxGroups)) && change.start >= 0 &&
           change.start <= kMaxEntries && change.count >= 0 && change.count <= kMaxEntries - change.start &&
           (change.count == 0 || change.values);
}

bool CAudioParamStorage::write(const CAudioParamChange& change)
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
    growGroups(group + 1);
    const std::int32_t oldCount = getCount(group);
    const std::int32_t newCount = change.resize ? change.end() : std::max(oldCount, change.end());
    resizeGroup(group, newCount);
    fillEntries(group, oldCount, change.start);

    double* target = groups_[static_cast<std::size_t>(group)].data() + offset(change.start);
    const std::size_t size = offset(change.count);
    if (!isString()) {
        std::copy_n(change.values, size, target);
        return true;
    }
    for (std::size_t i = 0; i < size; ++i) {
        const std::uint32_t id =
            change.pool ? pool_.copyItem(CAudioParamData::toId(change.values[i]), *change.pool) : 0;
        pool_.remove(CAudioParamData::toId(target[i]));
        target[i] = id;
    }
    return true;
}

void CAudioParamStorage::clear()
{
    for (std::int32_t group = 0; group < groupCount_; ++group) {
        groups_[static_cast<std::size_t>(group)].clear();
        counts_[static_cast<std::size_t>(group)] = 0;
    }
    groupCount_ = 0;
    pool_.clear();
}

void CAudioParamStorage::copyValues(const CAudioParamStorage& source)
{
    if (this == &source || !hasFormat(source.esize_, source.dtype_, source.reserved_)) {
        return;
    }
    clear();
    growGroups(source.groupCount_);
    for (std::size_t group = 0; group < static_cast<std::size_t>(source.groupCount_); ++group) {
        groups_[group] = source.groups_[group];
        counts_[group] = source.counts_[group];
    }
    pool_ = source.pool_;
}

void CAudioParamStorage::clamp(std::span<const double> minimum, std::span<const double> maximum)
{
    const auto esize = static_cast<std::size_t>(esize_);
    const bool hasRange = minimum.size() >= esize && maximum.size() >= esize;
    for (std::size_t group = 0; group < static_cast<std::size_t>(groupCount_) && !isString(); ++group) {
        Values& values = groups_[group];
        for (std::size_t i = 0; i < values.size(); ++i) {
            const std::size_t element = i % esize;
            if (std::isnan(values[i])) {
                values[i] =
                    fallback(static_cast<std::int32_t>(i / esize), static_cast<std::int32_t>(element));
            }
            if (hasRange) {
                const auto [low, high] = std::minmax(minimum[element], maximum[element]);
                values[i] = std::clamp(values[i], low, high);
            }
        }
    }
}

void CAudioParamStorage::growGroups(std::int32_t count)
{
    const auto size = static_cast<std::size_t>(count);
    if (groups_.size() < size) {
        groups_.resize(size);
        counts_.resize(size, 0);
    }
    groupCount_ = std::max(groupCount_, count);
}

void CAudioParamStorage::resizeGroup(std::int32_t group, std::int32_t entries)
{
    Values& values = groups_[static_cast<std::size_t>(group)];
    const std::size_t size = offset(entries);
    if (isString()) {
        for (std::size_t i = size; i < values.size(); ++i) {
            pool_.remove(CAudioParamData::toId(values[i]));
        }
    }
    values.resize(size, 0.0);
    counts_[static_cast<std::size_t>(group)] = entries;
}

void CAudioParamStorage::fillEntries(std::int32_t group, std::int32_t from, std::int32_t to)
{
    Values& values = groups_[static_cast<std::size_t>(group)];
    for (std::int32_t entry = from; entry < to; ++entry) {
        for (std::int32_t element = 0; element < esize_; ++element) {
            const double value = fallback(entry, element);
            values[offset(entry) + static_cast<std::size_t>(element)] =
                isString() ? pool_.copyItem(CAudioParamData::toId(value), fillPool_) : value;
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
        QEL_TRY(loaded.pool_.load(stream), {});
    }
    for (std::int32_t group = 0; group < groups; ++group) {
        loaded.growGroups(group + 1);
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
    resizeGroup(group, count);
    for (double& value : groups_[static_cast<std::size_t>(group)]) {
        if (isString()) {
            std::uint32_t id = 0;
            QEL_TRY(stream.readU32(id), {});
            value = id;
        } else {
            QEL_TRY(stream.readF64(value), {});
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
    for (Values& values : groups_) {
        for (double& value : values) {
            const std::uint32_t id = CAudioParamData::toId(value);
            if (!seen.insert(id).second) {
                value = pool_.copyItem(id, pool_);
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
                      .pool = &pool_});
        return single.save(stream);
    }
    QEL_TRY(stream.writeI32(kRecordVersion), {});
    QEL_TRY(stream.writeI32(esize_), {});
    QEL_TRY(stream.writeI32(dtype_), {});
    QEL_TRY(stream.writeI32(groupCount_), {});
    if (isString()) {
        QEL_TRY(pool_.save(stream), {});
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
