// The memory of a subtree of parameters: presets, programs, A/B.
#pragma once

#include "CAudioParamCollector.h"
#include "CAudioParamListener.h"
#include "CAudioParamRegistryBase.h"
#include "CAudioParamUndo.h"
#include "CAudioPresetBank.h"
#include "CBridge.h"

#include <functional>
#include <memory>
#include <mutex>
#include <optional>
#include <utility>
#include <vector>

namespace qel {

// Tag audio:param-registry. Takes snapshots of the parameters whose names begin with `hierarchy` and puts
// them back, each time as one batch for the audio side. An instance has several; the one that is master also
// has the host's programs, the factory bank and the A/B state, and each of its programs an undo history.
// Bridges attached to a registry hear of a change of program or of a program's name.
//
// Owned by its tree; joins the collector in init() and leaves it in release(). Parameters are offered when
// the collector is finalised and join with the registry's next operation. All calls may come from any thread
// but the audio thread. Locks in their order: bank, undo store, parameter map, a parameter, CAudioEnv; the
// one of the pending list stands alone. Listeners are called when all of them are left.
//
// Streams are read whole before anything changes, so a damaged one changes nothing. An entry whose block does
// not fit its parameter is met later: the entries before it stay, and the audio side gets none of them.
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
    // Copies the present state, with its history, into the other slot.
    CError abStore();
    // Exchanges the present state and that in the other slot, with their histories.
    CError abSwap();

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
    // What a program or a slot of the A/B comparison is.
    struct Alternate
    {
        CAudioPreset preset;
        std::unique_ptr<CAudioParamUndoHistory> history;
    };
    using HistoryPtr = std::unique_ptr<CAudioParamUndoHistory>;

    // Hears of the parameters that select a preset of an enumerated registry.
    class CSelectorListener : public CAudioParamListener
    {
    public:
        explicit CSelectorListener(CAudioParamRegistry& owner) : owner_(owner) {}
        ~CSelectorListener() override { endLink(); }
        void onParamChange(const CAudioParamNotice& notice) override { owner_.onSelectorChange(notice); }

    private:
        CAudioParamRegistry& owner_;
    };

    // Init.
    CError findObjects();
    void initBanks();
    bool readStoredDefault(CAudioPreset& outPreset) const;
    void loadStoredList();

    // Membership. With the map's lock.
    void synchronise();
    void loadInitialValues(CAudioParam& param, const CString& key);
    void refreshInitialValues();
    bool isNameOfSubregistry(const CString& fullName) const;
    CString fullNameOf(const CString& key) const { return hierarchy_ + "." + key; }

    // Presets. With the map's lock.
    CError snapshot(CAudioPreset& preset, bool withName, bool withPersistent, std::int32_t group);
    CError storeParam(CAudioPreset& preset, const CString& key, const CAudioParam& param, bool withPersistent,
                      std::int32_t group) const;
    CAudioParam& paramOfKey(const CString& key);
    CError loadEntry(CAudioParam& param, const CByteBuffer& block, CAudioParamContext& context,
                     bool withPersistent, std::int32_t group);
    CError applyMissing(const CAudioPreset& preset, CAudioParam& param, CAudioParamContext& context,
                        std::int32_t group);
    CError applyEntries(const CAudioPreset& preset, bool partial, CAudioParamContext& context,
                        bool withPersistent, std::int32_t group);
    CError activate(const CAudioPreset& preset, bool fromHost, std::int32_t group, const CString& stepName);
    CString stepNameFor(std::int32_t group) const;

    // Programs. With the bank's lock.
    CAudioPreset& currentProgram() { return sessionBank_.get(program_); }
    CError snapshotProgram();
    CError applyWithName(const CAudioPreset& preset, CAudioParamContext& context, bool withPersistent);
    void moveToProgram(std::int32_t index);
    // Calls function(key, param) for what hosts save and presets do not.
    void forEachHostOnly(const std::function<void(const CString&, const CAudioParam&)>& function);
    CError addHostOnly(CAudioPresetBank& bank);
    // On failure everything but the values is as it was.
    CError takeSessionBank(CAudioPresetBank& bank, CAudioParamContext& context, bool fromHost);
    CError exchangeAlternate(CAudioParamContext& context);
    void renameCurrent(const CString& title, CAudioParamContext& context);
    HistoryPtr swapHistory(HistoryPtr history);
    // Locks nothing without an undo store.
    std::unique_lock<CCriticalSection> lockUndo();
    void addStep(CAudioParamUndoStep& step);

    void onNameParamChange(const CAudioParam& param);
    void markAsUser(const CAudioParamNotice& notice);
    void onSelectorChange(const CAudioParamNotice& notice);

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
    CSelectorListener selectorListener_{*this};

    // Guards what follows, up to the next lock.
    CCriticalSection bankLock_;
    CAudioPresetBank romBank_;
    CAudioPresetBank sessionBank_;
    CAudioPresetBank storedList_;
    std::int32_t program_ = 0;
    std::vector<HistoryPtr> histories_; // of the programs but the current one, whose place is empty
    std::optional<Alternate> alternate_;

    CCriticalSection mapLock_;
    CStringMap<CAudioParam*> params_; // by key
    CAudioPreset storedDefault_;      // the user's own initial values

    CCriticalSection pendingLock_;
    std::vector<std::pair<CString, CAudioParam*>> pending_; // by full name
};

} // namespace qel
