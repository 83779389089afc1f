// The parameters that the host sees.
#include "CAudioExtParamList.h"

#include <algorithm>

namespace qel {

CError CAudioExtParamList::initChilds()
{
    QEL_TRY(CObject::initChilds(), getFullName());
    QEL_TRY(notify(kCompleteEvent, {}, false), getFullName());
    return {};
}

CError CAudioExtParamList::onChildAdded(CObject& child)
{
    if (auto* param = dynamic_cast<CAudioExtParam*>(&child)) {
        params_.push_back(param);
    }
    return CObject::onChildAdded(child);
}

void CAudioExtParamList::onChildRemoved(CObject& child)
{
    std::erase(params_, dynamic_cast<CAudioExtParam*>(&child));
    CObject::onChildRemoved(child);
}

void CAudioExtParamList::setHostBridge(CAudioExtParamHostBridge* bridge)
{
    for (std::int32_t i = 0; i < getCount(); ++i) {
        get(i)->setHostBridge(bridge, i);
    }
}

CAudioExtParam* CAudioExtParamList::get(std::int32_t index) const
{
    return index >= 0 && index < getCount() ? params_[static_cast<std::size_t>(index)] : nullptr;
}

std::int32_t CAudioExtParamList::find(const CAudioParam& param, std::int32_t group,
                                      std::int32_t element) const
{
    const auto found = std::find_if(params_.begin(), params_.end(), [&](const CAudioExtParam* ext) {
        return &ext->getParam() == &param && ext->getGroup() == group && ext->getElementIndex() == element;
    });
    return found == params_.end() ? -1 : static_cast<std::int32_t>(found - params_.begin());
}

void CAudioExtParamList::applyPosted(double timeSec)
{
    for (CAudioExtParam* param : params_) {
        param->applyPosted(timeSec);
    }
}

void CAudioExtParamList::refresh()
{
    for (CAudioExtParam* param : params_) {
        param->refresh();
    }
}

void CAudioExtParamList::takePosted()
{
    for (CAudioExtParam* param : params_) {
        param->takePosted();
    }
}

void CAudioExtParamList::showPosted()
{
    for (CAudioExtParam* param : params_) {
        param->showPosted();
    }
}

} // namespace qel
