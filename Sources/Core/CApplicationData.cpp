// A store of settings and preset lists, each a small file.
#include "CApplicationData.h"

#include "CFile.h"
#include "FileSystem.h"
#include "Streams/CFileReader.h"
#include "Streams/CFileWriter.h"
#include "Streams/CMemoryReader.h"
#include "Streams/CMemoryWriteBuffer.h"
#include "Streams/CResourceReader.h"
#include "ThreadId.h"

#include <algorithm>
#include <utility>

namespace qel {

namespace {

// All of the maker's plug-ins share this folder.
constexpr const char* kStoreFolder = "Brintal/Audio Plug-Ins";

bool isFileName(const CString& name)
{
    if (name.isEmpty() || name == "." || name == "..") {
        return false;
    }
    for (std::size_t i = 0; i < name.length(); ++i) {
        const char16_t c = name[i];
        if (c < u' ' || c == u'/' || c == u'\\' || c == u':' || c == u'|') {
            return false;
        }
    }
    return true;
}

// The streams take names in the system's own strings; a folder that those cannot hold would be another one.
bool isHeldByStrings(const std::string& path)
{
    return CString::fromUtf8(path).toUtf8() == path;
}

// Beside the target, so that it can be renamed over it; no two writers share one.
std::string temporaryName(const std::string& path)
{
    return path + "." + std::to_string(platform::processId()) + "-" +
           std::to_string(platform::currentThreadId()) + ".tmp";
}

CError writeFile(const std::string& path, const CByteBuffer& buffer, std::uint32_t id)
{
    CFileWriter writer;
    QEL_TRY(writer.open(CString::fromUtf8(path), 0, false), {});
    QEL_TRY(writer.writeCompressedData(buffer, id), {});
    QEL_TRY(writer.close(), {});
    return {};
}

// A rename may reach the disk before the bytes do; after a power failure an empty file would stand where a
// whole one was. Single strings change with every move of a slider and are not worth the wait.
int makeDurable(const std::string& path, std::uint32_t id)
{
    if (id == CApplicationData::kString) {
        return 0;
    }
    CFile file;
    if (const int code = file.open(path, CFile::Access::kAppend); code != 0) {
        return code;
    }
    return file.flush();
}

CError replaceFile(const std::string& path, const CByteBuffer& buffer, std::uint32_t id)
{
    const std::string temporary = temporaryName(path);
    CError error = writeFile(temporary, buffer, id);
    if (!error) {
        int code = makeDurable(temporary, id);
        if (code == 0) {
            code = platform::renameFile(temporary, path);
        }
        if (code == 0) {
            return {};
        }
        error = makeError(__FILE__, __LINE__, {},
                          "@qelstr_CApplicationData_saveAppData_Replace Unable to replace file '%1' (error "
                          "%2).",
                          CString::fromUtf8(path), code);
    }
    static_cast<void>(platform::removeFile(temporary));
    return error;
}

} // namespace

CApplicationData::CApplicationData(CString prefix, std::string folder)
    : prefix_(std::move(prefix)), folder_(std::move(folder))
{}

CApplicationData::~CApplicationData() = default;

CGlobalData::CGlobalData() : CApplicationData("AppDataGlobal_", kStoreFolder) {}

CLocalData::CLocalData() : CApplicationData("AppDataLocal_", kStoreFolder) {}

// --- loading

void CApplicationData::loadAppData(const CString& name, CByteBuffer& outBuffer, std::uint32_t id)
{
    outBuffer.release();
    const Name parsed = parseName(name);
    const CLock lock(section_);
    if (parsed.file.isEmpty() || !findFolders()) {
        return;
    }
    Setting& setting = settingOf(parsed);
    if (!setting.isCached || setting.id != id) {
        CByteBuffer value;
        readValue(parsed, value, id);
        if (value.isEmpty() && setting.isCached) {
            return; // it is there, and of another kind
        }
        setting.value = std::move(value);
        setting.id = id;
        setting.isCached = true;
    }
    outBuffer = setting.value;
}

// The first place that has the setting decides, even if what it has is damaged.
void CApplicationData::readValue(const Name& name, CByteBuffer& outBuffer, std::uint32_t id) const
{
    CFileReader file;
    CResourceReader resource;
    CInputStream* found = nullptr;
    const auto tryFolder = [&](const std::string& folder) {
        if (!found && !file.open(CString::fromUtf8(folder) + "/" + name.file, 0)) {
            found = &file;
        }
    };
    tryFolder(userFolder_);
    std::ranges::for_each(commonFolders_, tryFolder);
    if (!found && !resource.open(name.resource)) {
        found = &resource;
    }
    if (!found) {
        return;
    }
    if (CError error = found->readCompressedData(outBuffer, id)) {
        outBuffer.release();
        traceError(reportError(std::move(error), __FILE__, __LINE__, name.file));
    }
}

CString CApplicationData::loadString(const CString& name, const CString& fallback)
{
    CByteBuffer buffer;
    loadAppData(name, buffer, kString);
    if (buffer.isEmpty()) {
        return fallback;
    }
    CMemoryReader reader(buffer.bytes());
    CString text;
    if (CError error = reader.readString(text)) {
        traceError(reportError(std::move(error), __FILE__, __LINE__, prefix_ + name));
        return fallback;
    }
    return text;
}

// --- saving

CError CApplicationData::saveAppData(const CString& name, const CByteBuffer& buffer, CBridge* sender,
                                     std::uint32_t id)
{
    const Name parsed = parseName(name);
    if (parsed.file.isEmpty()) {
        QEL_FAIL(prefix_, "@qelstr_CApplicationData_saveAppData_Name Invalid setting name '%1'.", name);
    }
    Setting* setting = nullptr;
    {
        const CLock lock(section_);
        if (!findFolders()) {
            QEL_FAIL(parsed.file,
                     "@qelstr_CApplicationData_saveAppData_Disabled No folder for application data found.");
        }
        QEL_TRY(writeValue(parsed, buffer, id), parsed.file);
        setting = &settingOf(parsed);
        setting->value = buffer;
        setting->id = id;
        setting->isCached = true;
    }
    setting->updateBridges(sender);
    updateBridges(sender);
    return {};
}

CError CApplicationData::writeValue(const Name& name, const CByteBuffer& buffer, std::uint32_t id) const
{
    if (const int code = platform::createFolders(userFolder_); code != 0) {
        QEL_FAIL({},
                 "@qelstr_CApplicationData_saveAppData_CreateFolder Unable to create folder '%1' (error %2).",
                 CString::fromUtf8(userFolder_), code);
    }
    return replaceFile(userFolder_ + "/" + name.file.toUtf8(), buffer, id);
}

CError CApplicationData::saveString(const CString& name, const CString& text, CBridge* sender)
{
    CMemoryWriteBuffer writer;
    QEL_TRY(writer.writeString(text), prefix_ + name);
    CByteBuffer buffer;
    writer.copyTo(buffer);
    return saveAppData(name, buffer, sender, kString);
}

// --- settings and folders

void CApplicationData::attachBridge(CBridge& bridge, const CString& name, std::uintptr_t userWord)
{
    const Name parsed = parseName(name);
    Setting* setting = nullptr;
    if (!parsed.file.isEmpty()) {
        const CLock lock(section_);
        setting = &settingOf(parsed);
    }
    bridge.attach(setting, userWord);
}

CApplicationData::Name CApplicationData::parseName(const CString& name) const
{
    const std::size_t bar = name.find(u'|');
    CString file = bar == CString::kNone ? name : name.substring(0, bar);
    if (file.startsWith("../")) {
        file = file.substring(3);
    }
    if (!isFileName(file)) {
        return {};
    }
    if (!file.startsWith(prefix_.toUtf8())) {
        file = prefix_ + file;
    }
    return {file, bar == CString::kNone ? file : name.substring(bar + 1)};
}

CApplicationData::Setting& CApplicationData::settingOf(const Name& name)
{
    std::unique_ptr<Setting>& setting = settings_[name.file];
    if (!setting) {
        setting = std::make_unique<Setting>();
    }
    return *setting;
}

bool CApplicationData::findFolders()
{
    if (arePathsKnown_) {
        return !isDisabled_;
    }
    arePathsKnown_ = true;
    isDisabled_ = platform::userDataFolder(userFolder_) != 0 || !isHeldByStrings(userFolder_);
    if (isDisabled_) {
        return false;
    }
    userFolder_ += "/" + folder_;
    // Without common folders the user's own and the built-in values remain.
    if (platform::commonDataFolders(commonFolders_) != 0) {
        commonFolders_.clear();
    }
    for (std::string& folder : commonFolders_) {
        folder += "/" + folder_;
    }
    return true;
}

void CApplicationData::setFolders(const std::string& userFolder,
                                  const std::vector<std::string>& commonFolders)
{
    const CLock lock(section_);
    userFolder_ = userFolder;
    commonFolders_ = commonFolders;
    arePathsKnown_ = true;
    isDisabled_ = false;
    for (const auto& [name, setting] : settings_) {
        setting->isCached = false;
    }
}

} // namespace qel
