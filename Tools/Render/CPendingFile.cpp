// A file that takes its name only once it is whole.
#include "Render/CPendingFile.h"

#include "Render/RenderError.h"

#include <array>
#include <csignal>
#include <cstdlib>

#include <unistd.h>

namespace qel::tools {

namespace {

// What a signal handler may read: names that stay where they are while they stand here.
constexpr std::size_t kMaxPending = 1024;
std::array<std::atomic<const char*>, kMaxPending> pendingNames;
static_assert(std::atomic<const char*>::is_always_lock_free);

std::atomic<unsigned> nextNumber = 0;

std::size_t enter(const char* name)
{
    for (std::size_t slot = 0; slot < kMaxPending; ++slot) {
        const char* none = nullptr;
        if (pendingNames[slot].compare_exchange_strong(none, name)) {
            return slot;
        }
    }
    throw CRenderError(CExitCode::kOutput, "Too many files are being written at once");
}

} // namespace

std::atomic<bool> CPendingFile::interrupted = false;

CPendingFile::CPendingFile(std::filesystem::path target) : target_(std::move(target))
{
    const std::string number = std::to_string(getpid()) + "-" + std::to_string(nextNumber++);
    path_ = target_;
    path_.replace_filename("." + target_.filename().string() + "." + number + ".partial");
    slot_ = enter(path_.c_str());
}

CPendingFile::~CPendingFile()
{
    std::error_code ignored;
    std::filesystem::remove(path_, ignored);
    pendingNames[slot_] = nullptr;
}

void CPendingFile::commit()
{
    std::error_code error;
    std::filesystem::rename(path_, target_, error);
    if (error) {
        throw CRenderError(CExitCode::kOutput, target_.string() + ": " + error.message());
    }
}

void CPendingFile::onSignal(int)
{
    if (!interrupted.exchange(true)) {
        return;
    }
    for (const std::atomic<const char*>& entry : pendingNames) {
        if (const char* name = entry.load()) {
            unlink(name);
        }
    }
    _exit(static_cast<int>(CExitCode::kInterrupted));
}

void CPendingFile::catchSignals()
{
    struct sigaction action = {};
    action.sa_handler = &CPendingFile::onSignal;
    sigemptyset(&action.sa_mask);
    for (const int number : {SIGINT, SIGTERM, SIGHUP}) {
        sigaction(number, &action, nullptr);
    }
}

} // namespace qel::tools
