// The memory of a subtree of parameters: presets, programs, A/B.
#pragma once

#include "CAudioParamCollector.h"
#include "CAudioParamPrograms.h"
#include "CAudioParamRegistryBase.h"
#include "CAudioParamSubtree.h"
#include "CAudioPresetNameParam.h"
#include "CAudioPresetPicker.h"
#include "CBridge.h"

#include <memory>
#include <mutex>
#include <vector>

namespace qel {

// Tag audio:param-registry. Takes snapshots of the parameters whose names begin with `hierarchy` and puts
// them back, each time as one batch for the audio side. An instance has several; the one that is master also
// has the host's programs, the factory bank and the A/B state, and each of its programs an undo history.
// Bridges attached to a registry hear of every change of its programs, of the current one, and of A and B.
//
// What the parameters are is in a CAudioParamSubtree, what the programs are in a CAudioParamPrograms; the
// registry joins the two, and writes what happens as steps to undo.
//
// Owned by its tree; joins the collector in init() and leaves it in release(). Parameters are offered when
// the collector is finalised and join with the registry's next operation. All calls may come from any thread
// but the audio thread. Locks in their order: bank, undo store, parameter map, a parameter, CAudioEnv; the
// one of the pending list stands alone. Listeners are called when all of them are left.
//
// Streams are read whole, and tried on their parameters, before anything changes: one that is damaged, or
// whose entries do not fit, changes nothing.
class CAudioParamRegistry : public CObject, public CBridgeBase, public CAudioParamRegistryBase
{
public:
    static constexpr std::int32_t kAllGroups = -1;
    static constexpr std::int32_t kCurrentProgram = -1;

    static void buildClassInfo(CClassInfo& info);

    CAudioParamRegistry();
    ~CAudioParamRegistry() override;

    CError init() override;
    void release() override;

    bool isMaster() const { return isMaster_; }
    // What stands before the colon in the names of its presets.
    const CString& getId() const { return id_; }

    // --- snapshots

    // Replaces the entries of a preset by the present values of all storable parameters, or of one group of
    // them, which becomes the records' group 0. `withPersistent` adds what only the host saves. The name
    // stays, or becomes that of the current program. On error nothing changes.
    CError storePreset(CAudioPreset& preset, bool withName, bool withPersistent,
                       std::int32_t group = kAllGroups);
    // Puts values back. Parameters that the preset does not name return to their defaults unless `partial`.
    // Writes go into the context's batch, or one of its own.
    CError applyPreset(const CAudioPreset& preset, bool partial, CAudioParamContext& context,
                       bool withPersistent = false, std::int32_t group = kAllGroups);

    // --- presets and banks as streams

    // Writes the body of a preset. The current program, and any preset of a registry that is not the master,
    // is taken from the present values.
    CError acquirePreset(bool fromROM, std::int32_t index, std::int32_t group, COutputStream& stream,
                         bool withPersistent);
    // Writes the body of the factory bank or of the programs.
    CError acquireBank(bool fromROM, COutputStream& stream, bool withPersistent);
    // Reads a preset body and applies it: a step to undo, unless the host asked.
    CError activatePreset(CInputStream& stream, bool fromHost, std::int32_t group = kAllGroups);
    // Reads a bank body in place of the programs and applies the current one. All undo histories go.
    CError activateBank(CInputStream& stream, bool fromHost);
    // Applies a factory preset.
    CError activateROMPreset(std::int32_t index);

    // --- programs; without effect on a registry that is not the master

    std::int32_t getProgramCount();
    std::int32_t getProgram();
    // Names are without the id. Empty for an index that is not there.
    CString getProgramName(std::int32_t index);
    CString getCurrentProgramName();
    // Keeps the present values in the current program and goes to another. The current one and one that is
    // not there are ignored. `sender` is not told.
    CError setProgram(std::int32_t index, CBridge* sender = nullptr);
    // `fromUser`: a step to undo, if it is the current program.
    void setProgramName(std::int32_t index, const CString& name, bool fromUser, CBridge* sender = nullptr);
    // Applies the current program. For the start of an instance, when its parameters are there: they begin
    // with what the first program holds, which may be the user's own default preset.
    CError startProgram();

    // Every storable parameter back to its initial value: a step to undo.
    void masterReset();
    // --- one program; the others, the current one and their histories stay. Without effect on a registry
    // that is not the master; an index that is not there is an error.

    // Reads a preset body and puts it in front of the program at `index`, or behind all of them.
    CError addProgram(std::int32_t index, CInputStream& stream);
    // Removes a program. In place of the current one the next is applied, or the one before. The last one
    // stays: that is an error.
    CError removeProgram(std::int32_t index);
    // Reads a preset body in place of a program, name included. In place of the current one it is activated.
    CError replaceProgram(std::int32_t index, CInputStream& stream);
    // The program at `from` comes to stand at `to`.
    CError moveProgram(std::int32_t from, std::int32_t to);

    // --- A and B: two states to compare, which go into no preset and end with the bank they were made in

    // Copies the present state, with its history, into the slot that is not active.
    CError abStore();
    // Exchanges the present state and that in the other slot, with their histories. The names of programs
    // stay.
    CError abSwap();
    // Whether B is active.
    bool isB();

    // Names without the id: of the factory bank, of the programs, or of an enumerated registry's list.
    std::vector<CString> listPresets(bool fromROM);

    // --- for the collector

    const CString& getRegistryName() const override { return getFullName(); }
    const CString& getHierarchy() const override { return hierarchy_; }
    bool isEnumerated() const override { return isEnumerated_ || isMaster_; }
    bool addParam(CAudioParam& param) override;
    void onParamsComplete() override {}
    void onParamChange(const CAudioParamNotice& notice) override;

private:
    // Init.
    CError findObjects();
    void initBanks();

    // Presets. With the bank's lock.
    CError snapshot(CAudioPreset& preset, bool withName, bool withPersistent, std::int32_t group);
    CError readPreset(CInputStream& stream, CAudioPreset& out) const;
    CError applyWithName(const CAudioPreset& preset, CAudioParamContext& context, bool withPersistent,
                         std::int32_t group);
    CError activate(const CAudioPreset& preset, bool fromHost, std::int32_t group, const CString& stepName);
    CString stepNameFor(std::int32_t group) const;
    void refreshInitialValues();

    // Runs `action(context)` as one batch with the locks of the bank and of the undo store, and then tells
    // the bridges. If it fails nobody is told.
    template <class Action>
    CError change(Action&& action);

    // Programs. With the bank's lock.
    CError checkIndex(const CAudioPresetBank& bank, std::int32_t index) const;
    CError snapshotProgram();
    CError goToProgram(std::int32_t index, CAudioParamContext& context);
    CError addHostOnly(CAudioPresetBank& bank);
    CError takeSessionBank(const CAudioPresetBank& bank, CAudioParamContext& context, bool fromHost);
    void renameCurrent(const CString& title, CAudioParamContext& context);
    void showName(const CString& title, std::int32_t group, CAudioParamContext& context);
    // Locks nothing without an undo store.
    std::unique_lock<CCriticalSection> lockUndo();
    void addStep(CAudioParamUndoStep& step);

    void onNameParamChange(const CAudioParam& param);
    void onPicked(const CAudioPreset& preset, std::int32_t group);

    CString hierarchy_;
    CString id_;
    CString presetNaming_;
    CString presetNameParam_;
    CString groupNamesParam_;
    CString file_;
    CString storeName_;
    CString collectorPath_;
    CString undoPath_;
    bool isMaster_ = false;
    bool isEnumerated_ = false;
    CAudioParamCollector* collector_ = nullptr;
    CAudioParamUndo* undo_ = nullptr;
    CAudioPresetPicker picker_; // of an enumerated registry
    CAudioPresetNameParam nameParam_;
    CAudioParamSubtree params_;

    CCriticalSection bankLock_; // guards what follows
    std::shared_ptr<const CAudioPresetBank> romBank_ = std::make_shared<CAudioPresetBank>();
    CAudioParamPrograms programs_;
};

} // namespace qel
