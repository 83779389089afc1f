// A file that takes its name only once it is whole.
#include "Render/CPendingFile.h"

#include "Render/RenderError.h"
#include "Render/RenderSystem.h"

namespace qel::tools {

std::atomic<bool> CPendingFile::interrupted = false;

CPendingFile::CPendingFile(std::filesystem::path target) : target_(std::move(target))
{
    static std::atomic<unsigned> nextNumber = 0;
    std::filesystem::path name = ".";
    name += target_.filename();
    name += "." + std::to_string(processNumber()) + "-" + std::to_string(nextNumber++) + ".partial";
    path_ = systemPath(std::filesystem::path(target_).replace_filename(name));
}

CPendingFile::~CPendingFile()
{
    std::error_code ignored;
    std::filesystem::remove(path_, ignored);
}

void CPendingFile::commit()
{
    std::error_code error;
    std::filesystem::rename(path_, systemPath(target_), error);
    if (error) {
        throw CRenderError(CExitCode::kOutput, target_.string() + ": " + error.message());
    }
}

void CPendingFile::catchSignals()
{
    onInterruption([] { interrupted = true; });
}

} // namespace qel::tools
