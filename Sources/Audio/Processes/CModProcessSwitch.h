// One of several processes in one place of the graph.
#pragma once

#include "CModProcessSeq.h"
#include "Definitions/CAudioProcessDefBase.h"

namespace qel {

// Tag audio:modProcessSwitch. Its child definitions are prototypes; `process-list` ("0:.mod1;1:.mod2") gives
// each the index that selects it. An item without a path means the child named by `def-child-name`. The list
// is read in init and its paths in initChilds, when the children are there; both fail on a faulty list.
class CModProcessSwitchDef : public CAudioProcessDefBase
{
public:
    struct Item
    {
        std::int32_t index;
        CString path;
        const CAudioProcessDefBase* def; // null until initChilds
    };

    static void buildClassInfo(CClassInfo& info);

    CError init() override;
    CError initChilds() override;
    std::unique_ptr<CAudioProcessBase> createProcess() const override;

    const std::vector<Item>& items() const { return items_; }
    // Place in items() of what an index selects: that of `def-index` if it is not listed, items().size() if
    // that is not listed either.
    std::size_t place(std::int32_t index) const;
    std::int32_t defIndex() const { return defIndex_; }
    // Name under which whichever child is selected is reached in paths.
    const CString& childName() const { return childName_; }
    // Element at which the index is read.
    std::int32_t element() const { return element_; }

private:
    CError readItem(const CString& text, std::size_t number);
    std::size_t find(std::int32_t index) const;

    std::vector<Item> items_;
    std::int32_t defIndex_ = 0;
    std::int32_t element_ = 0;
    CString childName_;
    CString processList_;
};

// Runs the child that slot 0, `index`, selects. All children are built at init under the name
// `def-child-name` (their own where there is none), so their slots follow the same parameters, and a change
// of the index swaps which of them gets the stream: it allocates nothing, cannot fail and loses no sample.
// The child that starts forgets any signal it had before, and is faded in over the one that ends. If neither
// the index nor `def-index` is listed, the stream passes by reference.
class CModProcessSwitch : public CModProcessSeq
{
public:
    explicit CModProcessSwitch(const CModProcessSwitchDef& def) : CModProcessSeq(def), switchDef_(def) {}

    CError init() override;
    void applyEvents() override;

protected:
    int slotCount() const override { return 1; }

private:
    void select(std::int32_t index);

    const CModProcessSwitchDef& switchDef_;
    std::size_t selected_ = 0;
};

} // namespace qel
