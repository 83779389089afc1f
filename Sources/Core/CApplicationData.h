// A store of settings and preset lists, each a small file.
#pragma once

#include "CBridge.h"
#include "CByteBuffer.h"
#include "CError.h"

#include <memory>
#include <string>
#include <vector>

namespace qel {

// Values by name, shared by all instances in the process and kept between sessions. A value is one compressed
// chunk in the file <folder>/<prefix><name>; the chunk's ID tells its kind. Reading tries the user's folder,
// the folders common to all users, and the resource built in under <prefix><name>. What was found or saved
// stays cached, also that nothing was found, so what another process saves later is not seen.
//
// A file is written beside its target and renamed over it: a reader, in this process or another, finds the
// old value or the new one, whole, and a failed save leaves the old one.
//
// A name comes from trees, so it is one file name and nothing else: a separator, a colon or a control
// character makes it invalid. What trees write is understood: "../" in front is dropped, since all stores lie
// in one folder; "name|resource" gives the resource to fall back on; a name that bears the prefix already is
// taken as it is.
//
// Owned by the application. Any thread but the audio thread: a section is held while files are read or
// written. Listeners are told in the saving thread, after the section is left; they may load and save.
// Bridges on the store itself, which is a CBridgeBase, are notified of every save.
class CApplicationData : public CBridgeBase
{
public:
    static constexpr std::uint32_t kString = 0x72747364;   // "dstr": one string
    static constexpr std::uint32_t kAttrList = 0x74736C61; // "alst": a list of presets

    // `folder` is the part below the system's folders of application data.
    CApplicationData(CString prefix, std::string folder);
    ~CApplicationData() override;

    // The value, or empty if there is none, if it is damaged, of another kind, or if the name is invalid.
    void loadAppData(const CString& name, CByteBuffer& outBuffer, std::uint32_t id);
    // Tells all listeners of the setting but `sender` afterwards, unless it failed.
    CError saveAppData(const CString& name, const CByteBuffer& buffer, CBridge* sender, std::uint32_t id);

    // The same for a value that is one string.
    CString loadString(const CString& name, const CString& fallback);
    CError saveString(const CString& name, const CString& text, CBridge* sender);

    // Attaches a bridge to one setting, of any valid name, there or not. An invalid name detaches it.
    void attachBridge(CBridge& bridge, const CString& name, std::uintptr_t userWord = 0);

    // Takes these folders instead of looking the system's up, and forgets what is cached. For tests and
    // tools, before anybody else uses the store.
    void setFolders(const std::string& userFolder, const std::vector<std::string>& commonFolders);

private:
    // One setting: its listeners, and its value once it is known. Never removed while the store lives, since
    // bridges refer to it.
    struct Setting : CBridgeBase
    {
        CByteBuffer value;
        std::uint32_t id = 0;
        bool isCached = false;
    };
    struct Name
    {
        CString file; // with the prefix; empty if the name is invalid
        CString resource;
    };

    Name parseName(const CString& name) const;
    Setting& settingOf(const Name& name);
    bool findFolders();
    void readValue(const Name& name, CByteBuffer& outBuffer, std::uint32_t id) const;
    CError writeValue(const Name& name, const CByteBuffer& buffer, std::uint32_t id) const;

    const CString prefix_;
    const std::string folder_;

    CCriticalSection section_; // guards what follows, and the files
    bool arePathsKnown_ = false;
    bool isDisabled_ = false; // no user folder: nothing is loaded or saved as long as the store lives
    std::string userFolder_;
    std::vector<std::string> commonFolders_;
    CStringMap<std::unique_ptr<Setting>> settings_;
};

// The store shared by all of the maker's plug-ins that want it.
class CGlobalData : public CApplicationData
{
public:
    CGlobalData();
};

// The store of this product's own settings.
class CLocalData : public CApplicationData
{
public:
    CLocalData();
};

// Calls a method of its owner when a setting changes.
template <class T>
class CApplicationDataBridge : public COwnedBridge<T>
{
public:
    using COwnedBridge<T>::COwnedBridge;
    ~CApplicationDataBridge() override { this->endLink(); }

    void attachSetting(CApplicationData& store, const CString& name) { store.attachBridge(*this, name); }
};

} // namespace qel
