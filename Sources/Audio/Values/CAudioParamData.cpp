// The pool behind the identifiers in a string parameter.
#include "CAudioParamData.h"

#include "CAudioParamStorage.h"

#include <algorithm>
#include <memory>

namespace qel {

namespace {

// As many as a parameter has entries at the most.
constexpr std::uint32_t kMaxItems = CAudioParamStorage::kMaxGroups * CAudioParamStorage::kMaxEntries;

} // namespace

CAudioParamData::CAudioParamData(const CAudioParamData& other)
{
    *this = other;
}

CAudioParamData::CAudioParamData(CAudioParamData&& other) noexcept
{
    *this = std::move(other);
}

CAudioParamData& CAudioParamData::operator=(const CAudioParamData& other)
{
    if (this == &other) {
        return *this;
    }
    clear();
    entries_.reserve(other.entries_.size());
    for (const Entry& entry : other.entries_) {
        entries_.push({entry.id, entry.item->clone()});
    }
    lastId_ = other.lastId_;
    return *this;
}

CAudioParamData& CAudioParamData::operator=(CAudioParamData&& other) noexcept
{
    if (this == &other) {
        return *this;
    }
    clear();
    entries_ = std::move(other.entries_);
    lastId_ = other.lastId_;
    return *this;
}

std::uint32_t CAudioParamData::addString(const CString& text)
{
    const std::uint32_t id = takeId();
    put(id, new CAudioParamDataItemString(text));
    return id;
}

const CString& CAudioParamData::getString(std::uint32_t id) const
{
    static const CString kNothing;
    const Entry* entry = find(id);
    if (!entry || entry->item->getType() != CAudioParamDataItemString::kType) {
        return kNothing;
    }
    return static_cast<const CAudioParamDataItemString*>(entry->item)->text();
}

void CAudioParamData::remove(std::uint32_t id)
{
    const std::size_t index = position(id);
    if (index < entries_.size() && entries_[index].id == id) {
        CAudioParamDataItem* item = entries_[index].item;
        entries_.erase(index);
        item->release(retired_);
    }
}

std::uint32_t CAudioParamData::copyItem(std::uint32_t id, const CAudioParamData& source)
{
    const Entry* entry = source.find(id);
    if (!entry) {
        return 0;
    }
    CAudioParamDataItem* item = entry->item->clone();
    const std::uint32_t ownId = takeId();
    put(ownId, item);
    return ownId;
}

void CAudioParamData::clear()
{
    for (const Entry& entry : entries_) {
        entry.item->release(retired_);
    }
    entries_.clear();
}

CError CAudioParamData::load(CInputStream& stream)
{
    CAudioParamData loaded;
    std::uint32_t count = 0;
    QEL_TRY(stream.readU32(count), {});
    if (count > kMaxItems) {
        QEL_FAIL({}, "@qelstr_CAudioParamData_load_TooMany Too many data items (%1).", count);
    }
    for (std::uint32_t i = 0; i < count; ++i) {
        std::uint32_t id = 0;
        QEL_TRY(stream.readU32(id), {});
        std::uint32_t type = 0;
        QEL_TRY(stream.readU32(type), {});
        if (type != CAudioParamDataItemString::kType) {
            QEL_FAIL({}, "@qelstr_CAudioParamData_load_TypeError Unknown data type %1 encountered", type);
        }
        auto item = std::make_unique<CAudioParamDataItemString>();
        QEL_TRY(item->load(stream), {});
        loaded.entries_.push({id, item.release()});
        loaded.lastId_ = std::max(loaded.lastId_, id);
    }
    loaded.sort();
    *this = std::move(loaded);
    return {};
}

CError CAudioParamData::save(COutputStream& stream) const
{
    QEL_TRY(stream.writeU32(static_cast<std::uint32_t>(entries_.size())), {});
    for (const Entry& entry : entries_) {
        QEL_TRY(stream.writeU32(entry.id), {});
        QEL_TRY(stream.writeI32(entry.item->getType()), {});
        QEL_TRY(entry.item->save(stream), {});
    }
    return {};
}

std::size_t CAudioParamData::position(std::uint32_t id) const
{
    const auto place =
        std::lower_bound(entries_.begin(), entries_.end(), id,
                         [](const Entry& entry, std::uint32_t wanted) { return entry.id < wanted; });
    return static_cast<std::size_t>(place - entries_.begin());
}

const CAudioParamData::Entry* CAudioParamData::find(std::uint32_t id) const
{
    const std::size_t index = position(id);
    return index < entries_.size() && entries_[index].id == id ? &entries_[index] : nullptr;
}

void CAudioParamData::put(std::uint32_t id, CAudioParamDataItem* item)
{
    const std::size_t index = position(id);
    if (index < entries_.size() && entries_[index].id == id) {
        std::exchange(entries_[index].item, item)->release(retired_);
        return;
    }
    entries_.push({id, item});
    std::rotate(entries_.begin() + index, entries_.end() - 1, entries_.end());
}

// Of several entries with one identifier the last counts.
void CAudioParamData::sort()
{
    std::stable_sort(entries_.begin(), entries_.end(),
                     [](const Entry& a, const Entry& b) { return a.id < b.id; });
    std::size_t kept = 0;
    for (std::size_t i = 0; i < entries_.size(); ++i) {
        if (i + 1 < entries_.size() && entries_[i + 1].id == entries_[i].id) {
            entries_[i].item->release(retired_);
        } else {
            entries_[kept++] = entries_[i];
        }
    }
    entries_.resize(kept);
}

std::uint32_t CAudioParamData::takeId()
{
    // The counter wraps only after a file brought absurd identifiers; then 0 and live ones are stepped over.
    do {
        ++lastId_;
    } while (lastId_ == 0 || contains(lastId_));
    return lastId_;
}

} // namespace qel
