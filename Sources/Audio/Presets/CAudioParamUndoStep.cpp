// One step of an instance's history.
#include "CAudioParamUndoStep.h"

#include "CAudioParam.h"
#include "CAudioParamStorage.h"

#include <algorithm>
#include <utility>

namespace qel {

namespace {

bool isSameRange(const CAudioParamChange& a, const CAudioParamChange& b)
{
    return a.group == b.group && a.start == b.start && a.count == b.count && a.resize == b.resize;
}

} // namespace

CAudioParamCollector* CAudioParamUndoStep::getCollector() const
{
    return writes_.empty() ? nullptr : &writes_.front().param->getCollector();
}

void CAudioParamUndoStep::onBeforeChange(CAudioParam& param, const CAudioParamStorage& current,
                                         const CAudioParamChange& change)
{
    Write write{&param, change, {}, {}};
    if (change.isWhole() || change.group >= current.getGroupCount()) {
        // Groups that come into being can only go again with all of them.
        write.before = wholeRecords(current, undoPool_);
    } else {
        CAudioParamChange range = change;
        const std::int32_t held = current.getCount(change.group);
        if (change.resize || change.end() > held) {
            range.start = std::min(change.start, held);
            range.count = held - range.start;
            range.resize = true;
        }
        write.before.push_back(makeRecord(current, range, undoPool_));
    }
    writes_.push_back(std::move(write));
}

void CAudioParamUndoStep::onAfterChange(CAudioParam&, const CAudioParamStorage& current,
                                        const CAudioParamChange& change)
{
    Write& write = writes_.back();
    if (change.isWhole()) {
        write.after = wholeRecords(current, redoPool_);
    } else {
        write.after.push_back(makeRecord(current, change, redoPool_));
    }
    hasEffect_ = hasEffect_ || !isSame(write.before, write.after);
}

CAudioParamUndoStep::Record CAudioParamUndoStep::makeRecord(const CAudioParamStorage& current,
                                                            const CAudioParamChange& range,
                                                            CAudioParamData& pool)
{
    Record record{range, {}};
    record.change.time = 0.0;
    record.change.esize = current.getEsize();
    record.change.dtype = current.getDtype();
    record.change.reserved = current.getReserved();
    const auto esize = static_cast<std::size_t>(current.getEsize());
    const auto values = current.getValues(range.group)
                            .subspan(static_cast<std::size_t>(range.start) * esize,
                                     static_cast<std::size_t>(range.count) * esize);
    record.values.reserve(values.size());
    for (const double value : values) {
        record.values.push_back(
            current.isString() ? pool.copyItem(CAudioParamData::toId(value), current.getPool()) : value);
    }
    return record;
}

CAudioParamUndoStep::Records CAudioParamUndoStep::wholeRecords(const CAudioParamStorage& current,
                                                               CAudioParamData& pool)
{
    Records records;
    Record whole = makeRecord(current, {}, pool);
    whole.change.group = CAudioParamChange::kWholeParam;
    records.push_back(std::move(whole));
    for (std::int32_t group = 0; group < current.getGroupCount(); ++group) {
        const CAudioParamChange range{.group = group, .count = current.getCount(group), .resize = true};
        records.push_back(makeRecord(current, range, pool));
    }
    return records;
}

bool CAudioParamUndoStep::isSame(const Records& before, const Records& after) const
{
    const auto isSameValue = [this](const Record& a, std::size_t i, const Record& b) {
        return a.change.dtype == CAudioParamStorage::kString
                   ? undoPool_.getString(a.values[i]) == redoPool_.getString(b.values[i])
                   : a.values[i] == b.values[i];
    };
    const auto isSameRecord = [&](const Record& a, const Record& b) {
        if (!isSameRange(a.change, b.change)) {
            return false;
        }
        for (std::size_t i = 0; i < a.values.size(); ++i) {
            if (!isSameValue(a, i, b)) {
                return false;
            }
        }
        return true;
    };
    return std::equal(before.begin(), before.end(), after.begin(), after.end(), isSameRecord);
}

bool CAudioParamUndoStep::canTake(const CAudioParamUndoStep& later) const
{
    const auto isSameWrite = [](const Write& a, const Write& b) {
        return a.param == b.param && isSameRange(a.head, b.head);
    };
    return isMergeable_ && later.isMergeable_ && source_ == later.source_ &&
           std::equal(writes_.begin(), writes_.end(), later.writes_.begin(), later.writes_.end(),
                      isSameWrite);
}

void CAudioParamUndoStep::take(CAudioParamUndoStep&& later)
{
    for (std::size_t i = 0; i < writes_.size(); ++i) {
        writes_[i].after = std::move(later.writes_[i].after);
    }
    redoPool_ = std::move(later.redoPool_);
}

void CAudioParamUndoStep::undo(CAudioParamContext& context) const
{
    for (auto write = writes_.rbegin(); write != writes_.rend(); ++write) {
        apply(*write, write->before, undoPool_, context);
    }
}

void CAudioParamUndoStep::redo(CAudioParamContext& context) const
{
    for (const Write& write : writes_) {
        apply(write, write.after, redoPool_, context);
    }
}

void CAudioParamUndoStep::apply(const Write& write, const Records& records, const CAudioParamData& pool,
                                CAudioParamContext& context)
{
    for (const Record& record : records) {
        CAudioParamChange change = record.change;
        change.values = record.values.data();
        change.pool = &pool;
        write.param->change(change, context);
    }
}

} // namespace qel
