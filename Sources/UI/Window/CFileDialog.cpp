// The chooser of files and folders.
#include "CFileDialog.h"

#include "CWindow.h"
#include "FileSystem.h"
#include "LiteralText.h"

namespace qel {

namespace {

using platform::FileDialogMode;
using platform::FileDialogResult;

constexpr const char* kMessage = "path-message";
constexpr char kSeparator = '/';

bool isAbsolute(const std::string& path)
{
    const bool hasDrive = path.size() > 2 && path[1] == ':' && path[2] == kSeparator;
    return path.starts_with(kSeparator) || hasDrive;
}

std::string trimmed(const std::string& text)
{
    constexpr const char* kBlanks = " \t\r\n";
    const std::size_t first = text.find_first_not_of(kBlanks);
    return first == std::string::npos ? "" : text.substr(first, text.find_last_not_of(kBlanks) + 1 - first);
}

std::string join(const std::string& folder, const std::string& name)
{
    return folder.empty() || folder.ends_with(kSeparator) ? folder + name : folder + kSeparator + name;
}

std::string folderOf(const std::string& path)
{
    const std::size_t end = path.rfind(kSeparator);
    return path.substr(0, end == 0 ? 1 : end);
}

std::string extensionOf(const std::string& path)
{
    const std::size_t name = path.rfind(kSeparator) + 1; // 0 without one
    const std::size_t dot = path.rfind('.');
    return dot == std::string::npos || dot <= name ? "" : path.substr(dot + 1);
}

CAttrValue textValue(const std::string& utf8)
{
    return CAttrValue(CString::fromUtf8(utf8));
}

} // namespace

void CFileDialog::buildClassInfo(CClassInfo& info)
{
    using Self = CFileDialog;
    CObject::buildClassInfo(info);
    info.bind<&Self::mode_>("mode", "open");
    info.bind<&Self::title_>("title", "");
    info.bind<&Self::filterName_>("filter-name", "");
    info.bind<&Self::extension_>("extension", "");
    info.bind<&Self::folder_>("path", "");
    info.bind<&Self::fileName_>("filename", "");
    info.bind<&Self::resultEvent_>("result-event", "");
    info.bind<&Self::resultTarget_>("result-target", "");
    info.handleEvent<&Self::eventOpen>("open");
    info.handleEvent<&Self::eventPathChanged>("path-changed");
    info.handleEvent<&Self::eventPathEntered>("path-entered");
}

CError CFileDialog::init()
{
    QEL_TRY(CObject::init(), getFullName());
    for (CObject* above = getParent(); above && !view_; above = above->getParent()) {
        view_ = dynamic_cast<CView*>(above);
    }
    if (!view_) {
        QEL_FAIL(getFullName(), "@qelstr_CFileDialog_init_NoView Parent object is not a view.");
    }
    return {};
}

void CFileDialog::release()
{
    if (request_) {
        *request_ = nullptr;
        const auto* const window = dynamic_cast<CWindow*>(view_->getWindow());
        if (platform::CSystemDisplay* const display = window ? window->getSystem().getDisplay() : nullptr) {
            display->fileDialog().cancel();
        }
        request_.reset();
    }
    CObject::release();
}

// --- the system's dialog

CError CFileDialog::readMode(FileDialogMode& out) const
{
    if (mode_ == "open") {
        out = FileDialogMode::kOpen;
    } else if (mode_ == "save") {
        out = FileDialogMode::kSave;
    } else if (mode_ == "folder") {
        out = FileDialogMode::kFolder;
    } else {
        QEL_FAIL(getFullName(), "@qelstr_CFileDialog_open_InvalidMode Invalid file dialog mode.");
    }
    return {};
}

platform::FileDialogRequest CFileDialog::makeRequest(const CWindow& window) const
{
    platform::FileDialogRequest request;
    request.mode = openMode_;
    request.title = title_.toUtf8();
    request.extension = extension_.toUtf8();
    request.filterText = filterName_.toUtf8();
    if (!request.extension.empty()) {
        request.filterText += " (*." + request.extension + ")";
    }
    request.folder = folder_.toUtf8();
    request.fileName = plainText(fileName_).toUtf8();
    request.owner = window.getSystemWindow() ? window.getSystemWindow()->handle() : 0;
    return request;
}

CError CFileDialog::eventOpen(const CAttrMap&)
{
    return open();
}

CError CFileDialog::open()
{
    auto* const window = dynamic_cast<CWindow*>(view_->getWindow());
    if (request_ || !window) {
        return {};
    }
    if (const CView* const own = findPathWindow()) {
        if (auto* const open = dynamic_cast<CWindow*>(own->getWindow())) {
            open->raise();
        }
        return {};
    }
    QEL_TRY(readMode(openMode_), getFullName());
    platform::CSystemDisplay* const display = window->getSystem().getDisplay();
    if (!display) {
        return openPathWindow();
    }
    const CHold hold(*this);
    request_ = std::make_shared<CFileDialog*>(this);
    const auto handler = [request = request_](const FileDialogResult& result) {
        if (CFileDialog* const self = *request) {
            traceError(self->onSystemResult(result));
        }
    };
    if (!display->fileDialog().start(makeRequest(*window), handler)) {
        request_.reset(); // another one of this editor is open
    }
    return {};
}

CError CFileDialog::onSystemResult(const FileDialogResult& result)
{
    using Step = FileDialogResult::Step;
    const CHold hold(*this);
    request_.reset();
    switch (result.outcome) {
    case FileDialogResult::Outcome::kAccepted:
        return takeSystemPath(result.path);
    case FileDialogResult::Outcome::kCancelled:
        return {};
    case FileDialogResult::Outcome::kUnavailable:
        return openPathWindow();
    case FileDialogResult::Outcome::kFailed:
        break;
    }
    // The user gets a way to name the file all the same.
    const CError shown = openPathWindow();
    traceError(shown);
    if (result.failedStep == Step::kWindowClass) {
        QEL_FAIL(getFullName(),
                 "@qelstr_CFileDialog_open_ClassReg Unable to register window class (error %1).",
                 result.error);
    }
    QEL_FAIL(getFullName(), "@qelstr_CFileDialog_open_CreateWindow Unable to create new window (error %1).",
             result.error);
}

// The system has asked about replacing the file of the name that was typed, and not of the one that this
// becomes.
CError CFileDialog::takeSystemPath(const std::string& path)
{
    const std::string file = openMode_ == FileDialogMode::kSave ? withExtension(path) : path;
    if (file == path || !platform::fileExists(file)) {
        return finish(file);
    }
    confirmed_ = CString::fromUtf8(file);
    return showPathWindow(file, replacingQuestion());
}

// --- our own window

CView* CFileDialog::findPathWindow() const
{
    auto* const window = dynamic_cast<CWindow*>(view_->getWindow());
    CView* const root = window ? window->getPopups().findOpen(*view_) : nullptr;
    return root && root->getAttrString("file-dialog") == getFullName() ? root : nullptr;
}

CError CFileDialog::openPathWindow()
{
    std::string home;
    if (folder_.isEmpty() && platform::homeFolder(home) == 0) {
        QEL_TRY(setAttribute("path", CString::fromUtf8(home), true), getFullName());
    }
    const std::string name = openMode_ == FileDialogMode::kFolder ? "" : plainText(fileName_).toUtf8();
    confirmed_ = {};
    return showPathWindow(join(folder_.toUtf8(), name), {});
}

CError CFileDialog::showPathWindow(const std::string& path, const CString& message)
{
    typed_ = CString::fromUtf8(path);
    CAttrMap parameters;
    parameters["tag"] = CAttrValue(kPathWindowTag);
    parameters["window-alignment"] = CAttrValue("center");
    parameters["is-popup-toggle-always-create"] = CAttrValue(true);
    parameters["popup-is-drop-down-behavior-disabled"] = CAttrValue(true);
    parameters["popup-title"] = CAttrValue(title_);
    parameters["popup-path-text"] = CAttrValue(literalText(typed_));
    parameters["popup-path-message"] = CAttrValue(literalText(message));
    parameters["popup-file-dialog"] = CAttrValue(getFullName());
    return sendEvent(*view_, "popup-toggle", parameters);
}

CError CFileDialog::eventPathChanged(const CAttrMap& parameters)
{
    const auto text = parameters.find("text");
    const auto isCancelled = parameters.find("is-cancelled");
    if (text != parameters.end() &&
        (isCancelled == parameters.end() || !isCancelled->second.toBool().value_or(false))) {
        typed_ = text->second.toString();
    }
    return {};
}

CError CFileDialog::eventPathEntered(const CAttrMap&)
{
    std::string path = trimmed(typed_.toUtf8());
    if (!path.empty() && !isAbsolute(path)) {
        path = join(folder_.toUtf8(), path);
    }
    if (path.size() > 1 && path.ends_with(kSeparator)) {
        path.pop_back();
    }
    if (const CString message = checkPath(path); !message.isEmpty()) {
        return showMessage(message);
    }
    if (openMode_ == FileDialogMode::kSave) {
        path = withExtension(path);
        const CString file = CString::fromUtf8(path);
        if (platform::fileExists(path) && file != confirmed_) {
            confirmed_ = file;
            return showMessage(replacingQuestion());
        }
    }
    const CHold hold(*this);
    if (CView* const window = findPathWindow()) {
        QEL_TRY(sendEvent(*window, "close-window", {}), getFullName());
    }
    return isReleased() ? CError() : finish(path);
}

CString CFileDialog::replacingQuestion() const
{
    return formatMessage("The file '%1' exists. Once more to replace it.", {confirmed_});
}

CError CFileDialog::showMessage(const CString& message)
{
    CView* const window = findPathWindow();
    return window ? window->setAttribute(kMessage, literalText(message), true) : CError();
}

CString CFileDialog::checkPath(const std::string& path) const
{
    const CString text = CString::fromUtf8(path);
    if (path.empty()) {
        return openMode_ == FileDialogMode::kFolder ? "Enter the path of a folder."
                                                    : "Enter the path of a file.";
    }
    if (!isAbsolute(path)) {
        return formatMessage("'%1' is no whole path: it must begin with '/'.", {text});
    }
    const bool isFolder = platform::folderExists(path);
    if (openMode_ == FileDialogMode::kFolder) {
        return isFolder ? CString() : formatMessage("There is no folder '%1'.", {text});
    }
    if (isFolder) {
        return formatMessage("'%1' is a folder.", {text});
    }
    if (openMode_ == FileDialogMode::kOpen) {
        return platform::fileExists(path) ? CString() : formatMessage("There is no file '%1'.", {text});
    }
    const std::string folder = folderOf(path);
    return platform::folderExists(folder)
               ? CString()
               : formatMessage("There is no folder '%1'.", {CString::fromUtf8(folder)});
}

// --- results

// A file that is there under the very name that the user gave, and has agreed to replace, keeps that name.
std::string CFileDialog::withExtension(const std::string& path) const
{
    const std::string extension = extension_.toUtf8();
    const bool isComplete = extension.empty() || extensionOf(path) == extension || platform::fileExists(path);
    return isComplete ? path : path + "." + extension;
}

CError CFileDialog::finish(const std::string& path)
{
    const bool isFolder = openMode_ == FileDialogMode::kFolder;
    const std::string folder = isFolder ? path : folderOf(path);
    QEL_TRY(setAttribute("path", CString::fromUtf8(folder), true), getFullName());
    CAttrMap parameters;
    parameters["filename"] = textValue(isFolder ? "" : path);
    parameters["path"] = textValue(folder);
    parameters["extension"] = textValue(isFolder ? "" : extensionOf(path));
    CObject* const target = resultTarget_.isEmpty() ? getParent() : findObject(resultTarget_);
    if (!target) {
        QEL_FAIL(getFullName(), "@qelstr_CFileDialog_finish_NoTarget Unable to locate result target '%1'.",
                 resultTarget_);
    }
    return sendEvent(*target, resultEvent_, parameters);
}

} // namespace qel
