// An item of a parameter's data pool.
#pragma once

#include "CCheckedObject.h"
#include "CError.h"
#include "CRetireList.h"
#include "Streams/CInputStream.h"
#include "Streams/COutputStream.h"

#include <atomic>
#include <cstdint>

namespace qel {

class CAudioParamDataItem;
using CAudioParamItemRetireList = CRetireList<CAudioParamDataItem>;

// What a number in a parameter stands for when it is an identifier: today always a string. An item is filled
// once and never changes after it has entered a pool, so pools of different threads share it by counted
// reference instead of copying its text: that is how a string reaches the audio thread without touching the
// heap. Made with one reference, which belongs to the maker; pools keep the books from there on.
class CAudioParamDataItem : public CCheckedObject
{
public:
    // Another reference to this item, for a second pool.
    virtual CAudioParamDataItem* clone();
    virtual CError load(CInputStream& stream) = 0;
    virtual CError save(COutputStream& stream) const = 0;
    // The number of the item's kind in files.
    virtual std::int32_t getType() const = 0;

    // Gives a reference back. Who gives the last one destroys the item, or, with `retired`, leaves that to
    // the thread that empties the list; the audio thread always passes one.
    void release(CAudioParamItemRetireList* retired);

    CAudioParamDataItem* retireNext = nullptr;

private:
    std::atomic<std::int32_t> references_{1};
};

// A string.
class CAudioParamDataItemString : public CAudioParamDataItem
{
public:
    static constexpr std::int32_t kType = 1;

    CAudioParamDataItemString() = default;
    explicit CAudioParamDataItemString(CString text) : text_(std::move(text)) {}

    CError load(CInputStream& stream) override;
    CError save(COutputStream& stream) const override;
    std::int32_t getType() const override { return kType; }

    const CString& text() const { return text_; }

private:
    CString text_;
};

// Destroys what the audio thread has left in the list. Control threads.
void reclaimItems(CAudioParamItemRetireList& retired);

} // namespace qel
