// A file that takes its name only once it is whole.
#pragma once

#include <atomic>
#include <filesystem>

namespace qel::tools {

// Write to path(), which lies beside the target; commit() gives it the target's name. Destroyed without that,
// it is removed. Throws CRenderError (kOutput).
class CPendingFile
{
public:
    explicit CPendingFile(std::filesystem::path target);
    ~CPendingFile();
    CPendingFile(const CPendingFile&) = delete;
    CPendingFile& operator=(const CPendingFile&) = delete;

    const std::filesystem::path& target() const { return target_; }
    const std::filesystem::path& path() const { return path_; }
    void commit();

    // From here on an interruption asks for an orderly end; a second one ends the program at once, in case an
    // effect never comes back.
    static void catchSignals();
    static bool isInterrupted() { return interrupted.load(std::memory_order_relaxed); }

private:
    static std::atomic<bool> interrupted;

    std::filesystem::path target_;
    std::filesystem::path path_;
};

} // namespace qel::tools
