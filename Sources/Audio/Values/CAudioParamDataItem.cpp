// An item of a parameter's data pool.
#include "CAudioParamDataItem.h"

namespace qel {

CAudioParamDataItem* CAudioParamDataItem::clone()
{
    references_.fetch_add(1, std::memory_order_relaxed);
    return this;
}

void CAudioParamDataItem::release(CAudioParamItemRetireList* retired)
{
    if (references_.fetch_sub(1, std::memory_order_acq_rel) > 1) {
        return;
    }
    if (retired) {
        retired->push(*this);
    } else {
        delete this;
    }
}

CError CAudioParamDataItemString::load(CInputStream& stream)
{
    QEL_TRY(stream.readString(text_), {});
    return {};
}

CError CAudioParamDataItemString::save(COutputStream& stream) const
{
    QEL_TRY(stream.writeString(text_), {});
    return {};
}

void reclaimItems(CAudioParamItemRetireList& retired)
{
    CAudioParamDataItem* item = retired.takeAll();
    while (item) {
        CAudioParamDataItem* next = item->retireNext;
        delete item;
        item = next;
    }
}

} // namespace qel
