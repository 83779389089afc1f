// A file that takes its name only once it is whole.
#include "Render/CPendingFile.h"

#include "Render/RenderError.h"

#include <csignal>

#include <unistd.h>

namespace qel::tools {

std::atomic<bool> CPendingFile::interrupted = false;

CPendingFile::CPendingFile(std::filesystem::path target) : target_(std::move(target)), path_(target_)
{
    static std::atomic<unsigned> nextNumber = 0;
    path_.replace_filename("." + target_.filename().string() + "." + std::to_string(getpid()) + "-" +
                           std::to_string(nextNumber++) + ".partial");
}

CPendingFile::~CPendingFile()
{
    std::error_code ignored;
    std::filesystem::remove(path_, ignored);
}

void CPendingFile::commit()
{
    std::error_code error;
    std::filesystem::rename(path_, target_, error);
    if (error) {
        throw CRenderError(CExitCode::kOutput, target_.string() + ": " + error.message());
    }
}

void CPendingFile::catchSignals()
{
    struct sigaction action = {};
    action.sa_handler = [](int) { interrupted = true; };
    action.sa_flags = static_cast<int>(SA_RESETHAND);
    sigemptyset(&action.sa_mask);
    for (const int number : {SIGINT, SIGTERM, SIGHUP}) {
        sigaction(number, &action, nullptr);
    }
}

} // namespace qel::tools
