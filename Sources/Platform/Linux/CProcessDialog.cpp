// Dialogs of programs that the desktop brings, run as child processes.
#include "CFileDialogMethod.h"

#include "SystemCall.h"

#include <fcntl.h>
#include <signal.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstdlib>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

extern "C" char** environ;

namespace qel::platform {

namespace {

using State = CFileDialogMethod::State;

// What a host sets for its own libraries, with which programs of the desktop fail to start or look foreign.
bool isOfHost(std::string_view variable)
{
    constexpr std::array<std::string_view, 11> kPrefixes = {
        "LD_LIBRARY_PATH=", "LD_PRELOAD=", "GTK_",        "GDK_",        "QT_",   "GIO_",
        "GSETTINGS_",       "PYTHON",      "FONTCONFIG_", "GCONV_PATH=", "PANGO_"};
    return std::ranges::any_of(kPrefixes,
                               [&](std::string_view prefix) { return variable.starts_with(prefix); });
}

std::string findProgram(const std::string& name)
{
    const char* path = std::getenv("PATH");
    const std::string folders = path && *path ? path : "/usr/local/bin:/usr/bin:/bin";
    for (std::size_t start = 0; start <= folders.size();) {
        const std::size_t end = std::min(folders.find(':', start), folders.size());
        const std::string file = folders.substr(start, end - start) + "/" + name;
        if (file.front() == '/' && access(file.c_str(), X_OK) == 0) {
            return file;
        }
        start = end + 1;
    }
    return {};
}

std::vector<char*> pointersTo(std::vector<std::string>& texts)
{
    std::vector<char*> pointers;
    for (std::string& text : texts) {
        pointers.push_back(text.data());
    }
    pointers.push_back(nullptr);
    return pointers;
}

// Owns a child process that prints a path and ends. Only this child is ever waited for; the host's handling
// of SIGCHLD stays as it is, and where it collects the child before us, the end of its output tells as much.
class CProcessDialog : public CFileDialogMethod
{
public:
    CProcessDialog() = default;
    CProcessDialog(const CProcessDialog&) = delete;
    CProcessDialog& operator=(const CProcessDialog&) = delete;
    ~CProcessDialog() override;

    [[nodiscard]] int start(const std::string& program, std::vector<std::string> arguments);
    State poll(FileDialogResult& out) override;

private:
    int spawn(const std::string& program, std::vector<std::string>& arguments, int output);

    pid_t child_ = -1;
    int output_ = -1;
    std::string text_;
};

CProcessDialog::~CProcessDialog()
{
    if (output_ >= 0) {
        ::close(output_);
    }
    // Not when the host has collected it: its number may be another's by now.
    if (child_ > 0 && retryInterrupted([this] { return waitpid(child_, nullptr, WNOHANG); }) == 0) {
        kill(child_, SIGKILL);
        retryInterrupted([this] { return waitpid(child_, nullptr, 0); });
    }
}

int CProcessDialog::start(const std::string& program, std::vector<std::string> arguments)
{
    int ends[2];
    if (pipe2(ends, O_CLOEXEC) != 0) {
        return errno;
    }
    output_ = ends[0];
    fcntl(output_, F_SETFL, O_NONBLOCK);
    arguments.insert(arguments.begin(), program);
    const int error = spawn(program, arguments, ends[1]);
    ::close(ends[1]);
    return error;
}

int CProcessDialog::spawn(const std::string& program, std::vector<std::string>& arguments, int output)
{
    std::vector<std::string> environment;
    for (char** variable = environ; variable && *variable; ++variable) {
        if (!isOfHost(*variable)) {
            environment.emplace_back(*variable);
        }
    }
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_addopen(&actions, STDIN_FILENO, "/dev/null", O_RDONLY, 0);
    posix_spawn_file_actions_adddup2(&actions, output, STDOUT_FILENO);
    posix_spawn_file_actions_addopen(&actions, STDERR_FILENO, "/dev/null", O_WRONLY, 0);
    posix_spawn_file_actions_addclosefrom_np(&actions, STDERR_FILENO + 1); // sound devices of the host, say
    posix_spawnattr_t attributes;
    posix_spawnattr_init(&attributes);
    sigset_t none;
    sigemptyset(&none);
    sigset_t all;
    sigfillset(&all);
    posix_spawnattr_setsigmask(&attributes, &none);
    posix_spawnattr_setsigdefault(&attributes, &all);
    posix_spawnattr_setflags(&attributes, POSIX_SPAWN_SETSIGMASK | POSIX_SPAWN_SETSIGDEF);
    const int error = posix_spawn(&child_, program.c_str(), &actions, &attributes,
                                  pointersTo(arguments).data(), pointersTo(environment).data());
    posix_spawnattr_destroy(&attributes);
    posix_spawn_file_actions_destroy(&actions);
    if (error) {
        child_ = -1;
    }
    return error;
}

// The programs print the path and a line feed, and nothing at all when the user cancels.
State CProcessDialog::poll(FileDialogResult& out)
{
    constexpr std::size_t kMaxPathBytes = 64 * 1024;
    std::array<char, 4096> buffer;
    ssize_t count = 0;
    while ((count = retryInterrupted([&] { return ::read(output_, buffer.data(), buffer.size()); })) > 0 &&
           text_.size() < kMaxPathBytes) {
        text_.append(buffer.data(), static_cast<std::size_t>(count));
    }
    if (count < 0 && errno == EAGAIN) {
        return State::kRunning;
    }
    int status = 0;
    const pid_t ended = retryInterrupted([&] { return waitpid(child_, &status, WNOHANG); });
    if (ended == 0 && count == 0) { // has closed its output, and is about to end
        return State::kRunning;
    }
    if (ended != 0) {
        child_ = -1;
    }
    constexpr int kAccepted = 0;
    constexpr int kCancelled = 1;
    const bool isKnown = ended > 0 && WIFEXITED(status);
    const bool isBroken = ended > 0 && (!isKnown || WEXITSTATUS(status) > kCancelled);
    if (isBroken) {
        return State::kUnavailable; // without the libraries it needs, say
    }
    while (!text_.empty() && text_.back() == '\n') {
        text_.pop_back();
    }
    const bool isAccepted = text_.starts_with('/') && (!isKnown || WEXITSTATUS(status) == kAccepted);
    out.outcome = isAccepted ? FileDialogResult::Outcome::kAccepted : FileDialogResult::Outcome::kCancelled;
    out.path = isAccepted ? text_ : std::string();
    return State::kDone;
}

std::unique_ptr<CFileDialogMethod> startProcess(const std::string& name, std::vector<std::string> arguments)
{
    const std::string program = findProgram(name);
    auto dialog = std::make_unique<CProcessDialog>();
    if (program.empty() || dialog->start(program, std::move(arguments))) {
        return nullptr;
    }
    return dialog;
}

// The folder with a separator at its end, and the name proposed in it.
std::string startPath(const FileDialogRequest& request)
{
    std::string path = request.folder;
    if (!path.empty() && path.back() != '/') {
        path += '/';
    }
    return request.mode == FileDialogMode::kSave ? path + request.fileName : path;
}

} // namespace

std::unique_ptr<CFileDialogMethod> startZenity(const FileDialogRequest& request)
{
    std::vector<std::string> arguments = {"--file-selection", "--title=" + request.title};
    if (request.mode == FileDialogMode::kSave) {
        arguments.insert(arguments.end(), {"--save", "--confirm-overwrite"});
    } else if (request.mode == FileDialogMode::kFolder) {
        arguments.emplace_back("--directory");
    }
    if (const std::string path = startPath(request); !path.empty()) {
        arguments.push_back("--filename=" + path);
    }
    if (!request.extension.empty() && request.mode != FileDialogMode::kFolder) {
        arguments.push_back("--file-filter=" + request.filterText + " | *." + request.extension);
    }
    return startProcess("zenity", std::move(arguments));
}

std::unique_ptr<CFileDialogMethod> startKdialog(const FileDialogRequest& request)
{
    std::vector<std::string> arguments = {"--title", request.title};
    const std::string path = startPath(request);
    const std::string start = path.empty() ? "." : path;
    if (request.mode == FileDialogMode::kFolder) {
        arguments.insert(arguments.end(), {"--getexistingdirectory", start});
        return startProcess("kdialog", std::move(arguments));
    }
    arguments.insert(
        arguments.end(),
        {request.mode == FileDialogMode::kSave ? "--getsavefilename" : "--getopenfilename", start});
    if (!request.extension.empty()) {
        arguments.push_back("*." + request.extension + "|" + request.filterText);
    }
    if (request.owner) {
        arguments.insert(arguments.end(), {"--attach", std::to_string(request.owner)});
    }
    return startProcess("kdialog", std::move(arguments));
}

} // namespace qel::platform
