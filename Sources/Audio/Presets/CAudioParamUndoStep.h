// One step of an instance's history.
#pragma once

#include "CAudioParamContext.h"
#include "CAudioParamData.h"

#include <vector>

namespace qel {

class CAudioParamCollector;

// Takes down what a series of writes does to parameters, so that it can be taken back and done again. Built
// by whoever wants undo: make one, pass it as the recorder of the context of the writes, hand it to
// CAudioParamUndo::addStep(). The parameters must outlive it, which they do as long as their collector lives.
//
// Writes are kept in the order they happened; taking back goes the other way round. What a write made come
// into being, such as a group, is gone again after taking it back. Copies are independent. One thread at a
// time.
class CAudioParamUndoStep : public CAudioParamRecorder
{
public:
    // `source` tells who made the step; two mergeable steps of one source over the same entries become one.
    explicit CAudioParamUndoStep(CString name, const void* source = nullptr, bool mergeable = false)
        : name_(std::move(name)), source_(source), isMergeable_(mergeable)
    {}

    const CString& getName() const { return name_; }
    // False if nothing was written, or only what was there before.
    bool hasEffect() const { return hasEffect_; }
    // The collector of the parameters; null for an empty step.
    CAudioParamCollector* getCollector() const;

    // The later step takes the same entries on, from the same source.
    bool canTake(const CAudioParamUndoStep& later) const;
    // Takes over where the later step led to; what undo goes back to stays.
    void take(CAudioParamUndoStep&& later);

    // Writes the old or the new values. The context has no recorder.
    void undo(CAudioParamContext& context) const;
    void redo(CAudioParamContext& context) const;

    void onBeforeChange(CAudioParam& param, const CAudioParamStorage& current,
                        const CAudioParamChange& change) override;
    void onAfterChange(CAudioParam& param, const CAudioParamStorage& current,
                       const CAudioParamChange& change) override;

private:
    // A change with values of its own; strings are identifiers of the list's pool.
    struct Record
    {
        CAudioParamChange change;
        std::vector<double> values;
    };
    using Records = std::vector<Record>;
    struct Write
    {
        CAudioParam* param;
        CAudioParamChange head;
        Records before;
        Records after;
    };

    static Record makeRecord(const CAudioParamStorage& current, const CAudioParamChange& range,
                             CAudioParamData& pool);
    static Records wholeRecords(const CAudioParamStorage& current, CAudioParamData& pool);
    bool isSame(const Records& before, const Records& after) const;
    static void apply(const Write& write, const Records& records, const CAudioParamData& pool,
                      CAudioParamContext& context);

    CString name_;
    const void* source_;
    bool isMergeable_;
    bool hasEffect_ = false;
    std::vector<Write> writes_;
    CAudioParamData undoPool_;
    CAudioParamData redoPool_;
};

} // namespace qel
