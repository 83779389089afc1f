// The undo store of an instance.
#include "CAudioParamUndo.h"

#include "CAudioParam.h"
#include "CAudioParamCollector.h"

#include <algorithm>
#include <mutex>
#include <utility>

namespace qel {

void CAudioParamUndo::buildClassInfo(CClassInfo& info)
{
    CObject::buildClassInfo(info);
    info.bind<&CAudioParamUndo::countMax_>("undo-count-max", kDefaultCountMax);
}

void CAudioParamUndo::release()
{
    {
        const CLock lock(lock_);
        history_.reset();
    }
    CObject::release();
}

void CAudioParamUndo::addStep(CAudioParamUndoStep step, bool locked)
{
    if (!step.hasEffect()) {
        return;
    }
    {
        std::unique_lock<CCriticalSection> lock(lock_, std::defer_lock);
        if (!locked) {
            lock.lock();
        }
        appendStep(std::move(step));
    }
    onHistoryChanged();
}

void CAudioParamUndo::appendStep(CAudioParamUndoStep&& step)
{
    if (!history_) {
        history_ = std::make_unique<CAudioParamUndoHistory>();
    }
    std::vector<CAudioParamUndoStep>& steps = history_->steps;
    if (history_->position > 0 && history_->position == history_->count() && steps.back().canTake(step)) {
        steps.back().take(std::move(step));
        return;
    }
    steps.erase(steps.begin() + history_->position, steps.end());
    const auto most = static_cast<std::size_t>(std::max(countMax_, 1));
    if (steps.size() >= most) {
        steps.erase(steps.begin(), steps.end() - static_cast<std::ptrdiff_t>(most - 1));
    }
    steps.push_back(std::move(step));
    history_->position = history_->count();
}

void CAudioParamUndo::moveTo(std::int32_t position)
{
    CAudioParamContext context(CAudioParamOrigin::kActivation);
    {
        // Listeners hear of it after the lock is left.
        const CAudioParamContext::Scope scope(context);
        const CLock lock(lock_);
        if (!history_ || position < 0 || position > history_->count() || position == history_->position) {
            return;
        }
        walkTo(position, context);
    }
    onHistoryChanged();
}

void CAudioParamUndo::walkTo(std::int32_t position, CAudioParamContext& context)
{
    CAudioParamCollector& collector = *history_->steps.front().getCollector();
    CAudioParamBatch& batch = collector.newBatch();
    context.batch = &batch;
    while (history_->position > position) {
        history_->steps[static_cast<std::size_t>(history_->position - 1)].undo(context);
        --history_->position;
    }
    while (history_->position < position) {
        history_->steps[static_cast<std::size_t>(history_->position)].redo(context);
        ++history_->position;
    }
    context.batch = nullptr;
    collector.submitBatch(batch);
}

std::int32_t CAudioParamUndo::listSteps(std::vector<CString>& outNames)
{
    outNames.assign(1, "Undo history start");
    const CLock lock(lock_);
    if (!history_) {
        return 0;
    }
    for (const CAudioParamUndoStep& step : history_->steps) {
        outNames.push_back(step.getName());
    }
    return history_->position;
}

std::unique_ptr<CAudioParamUndoHistory>
CAudioParamUndo::swapHistory(std::unique_ptr<CAudioParamUndoHistory> history)
{
    {
        const CLock lock(lock_);
        history_.swap(history);
    }
    onHistoryChanged();
    return history;
}

std::unique_ptr<CAudioParamUndoHistory> CAudioParamUndo::copyHistory()
{
    const CLock lock(lock_);
    return history_ ? std::make_unique<CAudioParamUndoHistory>(*history_) : nullptr;
}

} // namespace qel
