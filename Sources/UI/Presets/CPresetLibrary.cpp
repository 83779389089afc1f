// The banks and presets that a registry's views show.
#include "CPresetLibrary.h"

#include "CParamGroupSelector.h"
#include "PresetStores.h"
#include "Streams/CMemoryReader.h"
#include "Streams/CMemoryWriteBuffer.h"

#include <algorithm>
#include <utility>

namespace qel {

namespace {

constexpr const char* kROMName = "Factory ROM";
constexpr const char* kSessionName = "Session Bank";
// Requests of one object are told from those of others in the same tree by their upper digits.
constexpr std::int32_t kRequestsAnObject = 4096;

std::vector<CString> titlesOf(const CAudioPresetBank& bank)
{
    std::vector<CString> titles;
    for (std::int32_t i = 0; i < bank.getCount(); ++i) {
        titles.push_back(bank.get(i).getTitle());
    }
    return titles;
}

template <class T>
CError readBody(const CByteBuffer& body, T& out)
{
    CMemoryReader reader(body.bytes());
    return out.load(reader);
}

CByteBuffer bodyOf(const CAudioPreset& preset)
{
    CMemoryWriteBuffer stream; // cannot fail
    releaseError(preset.save(stream));
    CByteBuffer body;
    stream.copyTo(body);
    return body;
}

} // namespace

// --- life

CError CPresetLibrary::open(CObject& owner, const Settings& settings, Changed onChanged)
{
    QEL_TRY(owner.require(client_, settings.clientPath, settings.noClient), owner.getFullName());
    if (!settings.selectorPath.isEmpty()) {
        QEL_TRY(owner.require(selector_, settings.selectorPath, settings.noSelector), owner.getFullName());
    }
    owner_ = &owner;
    registry_ = settings.registry;
    storeName_ =
        (settings.isGlobal && !settings.storeName.isEmpty() ? CString("/") : CString()) + settings.storeName;
    CString setting;
    if (CApplicationData* store = findListStore(storeName_, setting)) {
        storeLink_.attachSetting(*store, setting);
    }
    loadStoredBanks(storeName_, stored_);
    client_->addRegistryListener(*this);
    QEL_TRY(client_->send(record::CGetRegistry{registry_}), owner.getFullName());
    client_->takeWaiting();
    listBanks();
    onChanged_ = std::move(onChanged);
    return {};
}

void CPresetLibrary::close()
{
    storeLink_.detach();
    if (client_) {
        client_->removeRegistryListener(*this);
        client_ = nullptr;
    }
    selector_ = nullptr;
    onChanged_ = nullptr;
    waiting_.clear();
}

// In the thread that has saved.
void CPresetLibrary::tellOwner(CBridge*, std::uintptr_t)
{
    traceError(owner_->notifyTo(".", kStoreUpdate, {}, false));
}

void CPresetLibrary::onStoreChanged()
{
    loadStoredBanks(storeName_, stored_);
    listBanks();
}

void CPresetLibrary::onRegistryState(const record::CRegistryState& state)
{
    if (state.registry == registry_) {
        state_ = state;
        listBanks();
    }
}

void CPresetLibrary::listBanks()
{
    banks_.clear();
    if (state_.isMaster) {
        banks_.push_back({.kind = Kind::kROM, .name = kROMName, .presets = state_.romPresets});
        banks_.push_back({.kind = Kind::kSession, .name = kSessionName, .presets = state_.programs});
    }
    for (const CAudioPresetBank& bank : stored_) {
        banks_.push_back({.kind = Kind::kStored,
                          .name = bank.getName(),
                          .presets = titlesOf(bank),
                          .stored = static_cast<std::int32_t>(banks_.size()) - (state_.isMaster ? 2 : 0)});
    }
    if (banks_.empty()) {
        banks_.push_back({.kind = Kind::kStored, .name = {}, .presets = {}, .stored = 0});
    }
    if (onChanged_) {
        onChanged_();
    }
}

// --- what there is

std::vector<CString> CPresetLibrary::listNames() const
{
    std::vector<CString> names;
    for (const Bank& bank : banks_) {
        names.push_back(bank.name);
    }
    return names;
}

const CPresetLibrary::Bank* CPresetLibrary::findBank(std::int32_t bank) const
{
    return bank >= 0 && static_cast<std::size_t>(bank) < banks_.size()
               ? &banks_[static_cast<std::size_t>(bank)]
               : nullptr;
}

bool CPresetLibrary::hasPreset(std::int32_t bank, std::int32_t preset) const
{
    const Bank* const found = findBank(bank);
    return found && preset >= 0 && static_cast<std::size_t>(preset) < found->presets.size();
}

std::int32_t CPresetLibrary::findCurrent(std::int32_t bank) const
{
    const Bank* const found = findBank(bank);
    const auto program = static_cast<std::size_t>(std::max(0, state_.program));
    if (!found || !state_.isMaster || program >= state_.programs.size()) {
        return -1;
    }
    if (found->kind == Kind::kSession) {
        return state_.program;
    }
    // A program has the name of what it was set by.
    const auto named = std::ranges::find(found->presets, state_.programs[program]);
    return named == found->presets.end() ? -1 : static_cast<std::int32_t>(named - found->presets.begin());
}

bool CPresetLibrary::canChange(std::int32_t bank) const
{
    const Bank* const found = findBank(bank);
    return found && found->kind != Kind::kROM;
}

bool CPresetLibrary::canChangeBank(std::int32_t bank) const
{
    const Bank* const found = findBank(bank);
    return found && found->kind == Kind::kStored && static_cast<std::size_t>(found->stored) < stored_.size();
}

// --- activation

template <class Record>
CError CPresetLibrary::sendAndTake(const Record& request)
{
    CError error = client_->send(request);
    client_->takeWaiting();
    return error;
}

std::int32_t CPresetLibrary::getGroup() const
{
    return selector_ ? selector_->getGroup() : -1;
}

CError CPresetLibrary::activate(std::int32_t bank, std::int32_t preset)
{
    using Command = record::CRegistryCommand;
    if (!hasPreset(bank, preset)) {
        return {};
    }
    const Bank& found = *findBank(bank);
    const std::int32_t group = getGroup();
    const bool isWhole = group < 0;
    if (isWhole && found.kind == Kind::kROM) {
        return sendAndTake(Command{registry_, Command::kActivateROMPreset, preset});
    }
    if (isWhole && found.kind == Kind::kSession && preset != state_.program) {
        return sendAndTake(Command{registry_, Command::kSetProgram, preset});
    }
    return takePreset(bank, preset, [this, group](const CAudioPreset& taken) {
        return client_->send(record::CActivateData{
            .registry = registry_, .isBank = false, .group = group, .body = bodyOf(taken)});
    });
}

// --- reading

CError CPresetLibrary::acquire(record::CAcquireData request, DataTaker taker)
{
    lastRequest_ = (lastRequest_ + 1) % kRequestsAnObject;
    request.registry = registry_;
    request.request = owner_->getObjectNumber() * kRequestsAnObject + lastRequest_;
    waiting_[request.request] = std::move(taker);
    if (CError error = client_->send(request)) {
        waiting_.erase(request.request);
        return error;
    }
    client_->takeWaiting();
    return {};
}

void CPresetLibrary::onRegistryData(const record::CRegistryData& data)
{
    const auto taker = waiting_.find(data.request);
    if (taker == waiting_.end() || !(data.registry == registry_)) {
        return;
    }
    const DataTaker take = std::move(taker->second);
    waiting_.erase(taker);
    traceError(take(data.body));
}

CError CPresetLibrary::takePresent(Taker taker)
{
    return acquirePresent(-1, std::move(taker));
}

CError CPresetLibrary::takePresentOfGroup(Taker taker)
{
    return acquirePresent(getGroup(), std::move(taker));
}

CError CPresetLibrary::acquirePresent(std::int32_t group, Taker taker)
{
    return acquire({.registry = {}, .group = group}, [taker = std::move(taker)](const CByteBuffer& body) {
        CAudioPreset preset;
        QEL_TRY(readBody(body, preset), {});
        return taker(preset);
    });
}

CError CPresetLibrary::takePreset(std::int32_t bank, std::int32_t preset, Taker taker)
{
    if (!hasPreset(bank, preset)) {
        return {};
    }
    const Bank& found = *findBank(bank);
    if (found.kind == Kind::kStored) {
        const CAudioPreset taken = stored_[static_cast<std::size_t>(found.stored)].get(preset);
        return taker(taken);
    }
    return acquire({.registry = {}, .fromROM = found.kind == Kind::kROM, .index = preset},
                   [taker = std::move(taker)](const CByteBuffer& body) {
                       CAudioPreset read;
                       QEL_TRY(readBody(body, read), {});
                       return taker(read);
                   });
}

CError CPresetLibrary::takeBank(std::int32_t bank, BankTaker taker)
{
    const Bank* const found = findBank(bank);
    if (!found) {
        return {};
    }
    if (found->kind == Kind::kStored) {
        const CAudioPresetBank taken =
            canChangeBank(bank) ? stored_[static_cast<std::size_t>(found->stored)] : CAudioPresetBank();
        return taker(taken);
    }
    return acquire({.registry = {}, .isBank = true, .fromROM = found->kind == Kind::kROM},
                   [taker = std::move(taker)](const CByteBuffer& body) {
                       CAudioPresetBank read;
                       QEL_TRY(readBody(body, read), {});
                       return taker(read);
                   });
}

// --- changes

template <class Change>
CError CPresetLibrary::changeStore(Change&& change)
{
    StoredBanks banks;
    loadStoredBanks(storeName_, banks);
    change(banks);
    QEL_TRY(saveStoredBanks(storeName_, banks, &storeLink_), storeName_);
    stored_ = std::move(banks);
    listBanks();
    return {};
}

CError CPresetLibrary::sendEdit(record::CEditPrograms edit, const CAudioPreset* preset)
{
    edit.registry = registry_;
    if (preset) {
        edit.body = bodyOf(*preset);
    }
    return sendAndTake(edit);
}

CError CPresetLibrary::addPreset(std::int32_t bank, std::int32_t before, const CAudioPreset& preset)
{
    using Edit = record::CEditPrograms;
    if (!canChange(bank)) {
        return {};
    }
    const std::int32_t index = hasPreset(bank, before) ? before : -1;
    const Bank found = *findBank(bank);
    if (found.kind == Kind::kSession) {
        return sendEdit({.registry = {}, .command = Edit::kAdd, .index = index, .body = {}}, &preset);
    }
    return changeStore([&](StoredBanks& banks) {
        if (banks.empty()) {
            banks.emplace_back(); // the list that was not there yet
        }
        if (const auto at = static_cast<std::size_t>(found.stored); at < banks.size()) {
            banks[at].insert(index, preset);
        }
    });
}

CError CPresetLibrary::removePreset(std::int32_t bank, std::int32_t preset)
{
    using Edit = record::CEditPrograms;
    if (!canChange(bank) || !hasPreset(bank, preset)) {
        return {};
    }
    const Bank found = *findBank(bank);
    if (found.kind == Kind::kSession) {
        return sendEdit({.registry = {}, .command = Edit::kDelete, .index = preset, .body = {}}, nullptr);
    }
    return changeStore([&](StoredBanks& banks) {
        if (const auto at = static_cast<std::size_t>(found.stored); at < banks.size()) {
            banks[at].remove(preset);
        }
    });
}

CError CPresetLibrary::replacePreset(std::int32_t bank, std::int32_t preset, const CAudioPreset& by)
{
    using Edit = record::CEditPrograms;
    if (!canChange(bank) || !hasPreset(bank, preset)) {
        return {};
    }
    const Bank found = *findBank(bank);
    CAudioPreset named = by;
    named.setName(CAudioPreset::makeName(by.getId(), found.presets[static_cast<std::size_t>(preset)]));
    if (found.kind == Kind::kSession) {
        return sendEdit({.registry = {}, .command = Edit::kReplace, .index = preset, .body = {}}, &named);
    }
    return changeStore([&](StoredBanks& banks) {
        if (const auto at = static_cast<std::size_t>(found.stored);
            at < banks.size() && banks[at].hasIndex(preset)) {
            banks[at].get(preset) = named;
        }
    });
}

CError CPresetLibrary::renamePreset(std::int32_t bank, std::int32_t preset, const CString& title)
{
    if (!canChange(bank) || !hasPreset(bank, preset)) {
        return {};
    }
    const Bank found = *findBank(bank);
    if (found.kind == Kind::kSession) {
        return sendAndTake(record::CSetProgramName{registry_, preset, title});
    }
    return changeStore([&](StoredBanks& banks) {
        if (const auto at = static_cast<std::size_t>(found.stored);
            at < banks.size() && banks[at].hasIndex(preset)) {
            CAudioPreset& renamed = banks[at].get(preset);
            renamed.setName(CAudioPreset::makeName(renamed.getId(), title));
        }
    });
}

CError CPresetLibrary::addBank(std::int32_t behind, const CAudioPresetBank& added)
{
    const auto at = canChangeBank(behind) ? static_cast<std::size_t>(findBank(behind)->stored) + 1
                                          : static_cast<std::size_t>(-1);
    return changeStore([&](StoredBanks& banks) {
        banks.insert(at <= banks.size() ? banks.begin() + static_cast<std::ptrdiff_t>(at) : banks.end(),
                     added);
    });
}

CError CPresetLibrary::removeBank(std::int32_t bank)
{
    if (!canChangeBank(bank)) {
        return {};
    }
    const auto at = static_cast<std::size_t>(findBank(bank)->stored);
    return changeStore([&](StoredBanks& banks) {
        if (at < banks.size()) {
            banks.erase(banks.begin() + static_cast<std::ptrdiff_t>(at));
        }
    });
}

CError CPresetLibrary::renameBank(std::int32_t bank, const CString& name)
{
    if (!canChangeBank(bank)) {
        return {};
    }
    const auto at = static_cast<std::size_t>(findBank(bank)->stored);
    return changeStore([&](StoredBanks& banks) {
        if (at < banks.size()) {
            banks[at].setName(name);
        }
    });
}

} // namespace qel
