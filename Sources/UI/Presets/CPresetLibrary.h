// The banks and presets that a registry's views show.
#pragma once

#include "CApplicationData.h"
#include "CAudioInterfaceClient.h"
#include "CAudioPresetBank.h"
#include "CBridge.h"

#include <functional>
#include <map>

namespace qel {

class CParamGroupSelector;

// Part of each view of presets. Knows the factory bank and the session bank of a registry, which lie on the
// audio side, and the user's banks, which lie in a store of application data that all instances share. What
// is changed here is a request: the lists are others when the registry or the store says so.
//
// The registry of a whole instance has all of these. Any other has the banks of its store alone; if that is
// empty there is still one bank, without a name, to put presets in.
//
// Thread of the window's tree. The owner closes it before it ends, and calls onStoreChanged() when
// kStoreUpdate comes.
class CPresetLibrary : public CAudioInterfaceRegistryListener
{
public:
    enum class Kind : std::int32_t
    {
        kROM,     // factory presets: activated and read, never changed
        kSession, // the programs of the instance
        kStored   // the user's
    };
    struct Bank
    {
        Kind kind = Kind::kStored;
        CString name;
        std::vector<CString> presets;
        std::int32_t stored = -1; // which one of the store
    };
    struct Settings
    {
        CString clientPath;
        CString registry;  // path on the audio side
        CString storeName; // setting of application data; none: no banks of the user
        bool isGlobal = false;
        CString selectorPath;           // of the group that presets are for; none: for all
        const char* noClient = nullptr; // messages where there is no such object
        const char* noSelector = nullptr;
    };
    using Changed = std::function<void()>;
    using Taker = std::function<CError(const CAudioPreset& preset)>;
    using BankTaker = std::function<CError(const CAudioPresetBank& bank)>;

    // What the owner gets in the thread of its tree when the store has changed in any thread, and answers
    // with onStoreChanged().
    static constexpr const char* kStoreUpdate = "shared-banks-update";

    ~CPresetLibrary() override { close(); }

    // `onChanged` is called whenever the lists, the current program or the slot are others.
    CError open(CObject& owner, const Settings& settings, Changed onChanged);
    void close();
    // The store has changed.
    void onStoreChanged();

    // --- what there is

    const std::vector<Bank>& getBanks() const { return banks_; }
    std::vector<CString> listNames() const;
    // Null for an index that is not there.
    const Bank* findBank(std::int32_t bank) const;
    bool hasPreset(std::int32_t bank, std::int32_t preset) const;
    // The preset of a bank that the instance has been set by, or -1.
    std::int32_t findCurrent(std::int32_t bank) const;
    // False for factory presets.
    bool canChange(std::int32_t bank) const;
    // True for banks that the user has made.
    bool canChangeBank(std::int32_t bank) const;
    const record::CRegistryState& getState() const { return state_; }

    // --- activation, for the selected group or all

    CError activate(std::int32_t bank, std::int32_t preset);

    // --- reading; `taker` is called when the audio side has answered, which may be at once

    // The present settings, of all groups or of the selected one.
    CError takePresent(Taker taker);
    CError takePresentOfGroup(Taker taker);
    CError takePreset(std::int32_t bank, std::int32_t preset, Taker taker);
    CError takeBank(std::int32_t bank, BankTaker taker);

    // --- changes; without effect on what cannot be changed

    // In front of the preset at `before`, or behind all.
    CError addPreset(std::int32_t bank, std::int32_t before, const CAudioPreset& preset);
    CError removePreset(std::int32_t bank, std::int32_t preset);
    // Keeps the name that the preset has.
    CError replacePreset(std::int32_t bank, std::int32_t preset, const CAudioPreset& by);
    CError renamePreset(std::int32_t bank, std::int32_t preset, const CString& title);
    // Behind the bank at `behind`, if that is the user's, or behind all.
    CError addBank(std::int32_t behind, const CAudioPresetBank& added);
    CError removeBank(std::int32_t bank);
    CError renameBank(std::int32_t bank, const CString& name);

    void onRegistryState(const record::CRegistryState& state) override;
    void onRegistryData(const record::CRegistryData& data) override;

private:
    using StoredBanks = std::vector<CAudioPresetBank>;
    using DataTaker = std::function<CError(const CByteBuffer& body)>;

    // -1: all.
    std::int32_t getGroup() const;
    void tellOwner(CBridge* sender, std::uintptr_t userWord);
    void listBanks();
    CError acquire(record::CAcquireData request, DataTaker taker);
    CError acquirePresent(std::int32_t group, Taker taker);
    // A request whose result the lists show at once.
    template <class Record>
    CError sendAndTake(const Record& request);
    CError sendEdit(record::CEditPrograms edit, const CAudioPreset* preset);
    // Changes the store as it is now.
    template <class Change>
    CError changeStore(Change&& change);

    CObject* owner_ = nullptr;
    CAudioInterfaceClient* client_ = nullptr;
    CParamGroupSelector* selector_ = nullptr;
    CString registry_;
    CString storeName_;
    Changed onChanged_;
    record::CRegistryState state_;
    StoredBanks stored_;
    std::vector<Bank> banks_;
    std::map<std::int32_t, DataTaker> waiting_; // by request
    std::int32_t lastRequest_ = 0;
    CApplicationDataBridge<CPresetLibrary> storeLink_{*this, &CPresetLibrary::tellOwner};
};

} // namespace qel
