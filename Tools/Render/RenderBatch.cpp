// Several files, some at the same time.
#include "Render/RenderBatch.h"

#include "Render/RenderError.h"
#include "Render/RenderPlot.h"

#include <algorithm>
#include <chrono>
#include <condition_variable>
#include <cstdio>
#include <mutex>
#include <thread>

#include <sys/ioctl.h>
#include <unistd.h>

namespace qel::tools {

namespace {

constexpr auto kBarInterval = std::chrono::milliseconds(100);
constexpr int kLongestBar = 60; // columns
constexpr int kBarMargin = 24;  // for what stands beside it

// One line that is drawn over again, and gone in the end.
class CProgressBar
{
public:
    explicit CProgressBar(bool isWanted) : isShown_(isWanted && isatty(STDERR_FILENO) == 1) {}
    ~CProgressBar()
    {
        if (isDrawn_) {
            std::fputs("\r\033[K", stderr);
        }
    }
    void draw(double share, std::size_t doneCount, std::size_t count)
    {
        if (!isShown_) {
            return;
        }
        winsize size{};
        const int columns =
            ioctl(STDERR_FILENO, TIOCGWINSZ, &size) == 0 && size.ws_col > 0 ? size.ws_col : 80;
        const int width = std::clamp(columns - kBarMargin, 5, kLongestBar);
        const double limited = std::clamp(share, 0.0, 1.0);
        const auto full = static_cast<std::size_t>(limited * width);
        const std::string bar =
            std::string(full, '#') + std::string(static_cast<std::size_t>(width) - full, '.');
        std::fprintf(stderr, "\r\033[K%s %3d %%  %zu of %zu", bar.c_str(), static_cast<int>(100.0 * limited),
                     doneCount, count);
        isDrawn_ = true;
    }

private:
    const bool isShown_;
    bool isDrawn_ = false;
};

CRenderOutcome renderOne(const std::shared_ptr<CGuestLibrary>& library, const CRenderSettings& settings,
                         const CRenderJob& job, const std::string& effectName,
                         std::atomic<std::int64_t>& progress)
{
    CRenderOutcome outcome;
    try {
        outcome.result = CFileRender(library, settings, job).run(progress);
        if (!job.plot.empty()) {
            writePlot(*outcome.result, effectName, job.plot);
        }
    } catch (const CRenderError& error) {
        outcome.code = error.code();
        outcome.error = error.what();
    } catch (const std::exception& error) {
        outcome.code = CExitCode::kOutput;
        outcome.error = job.input.string() + ": " + error.what();
    }
    return outcome;
}

// Files that cannot be read count nothing here; they say so when their turn comes.
std::int64_t totalFrames(const std::vector<CRenderJob>& jobs)
{
    std::int64_t total = 0;
    for (const CRenderJob& job : jobs) {
        const SndfileHandle file(job.input.c_str());
        total += std::max<sf_count_t>(0, file.frames());
    }
    return total;
}

} // namespace

std::vector<CRenderOutcome> renderAll(const std::shared_ptr<CGuestLibrary>& library,
                                      const CRenderSettings& settings, const std::vector<CRenderJob>& jobs,
                                      int workers, const std::string& effectName, bool showsProgress)
{
    std::vector<CRenderOutcome> outcomes(jobs.size());
    std::atomic<std::size_t> next = 0;
    std::atomic<std::int64_t> progress = 0;
    std::mutex lock;
    std::condition_variable changed;
    std::size_t doneCount = 0;
    const auto work = [&] {
        for (std::size_t i = next++; i < jobs.size(); i = next++) {
            outcomes[i] = renderOne(library, settings, jobs[i], effectName, progress);
            const std::scoped_lock hold(lock);
            ++doneCount;
            changed.notify_one();
        }
    };
    const auto total = static_cast<double>(std::max<std::int64_t>(1, totalFrames(jobs)));
    std::vector<std::jthread> threads;
    for (int i = 0; i < std::min(workers, static_cast<int>(jobs.size())); ++i) {
        threads.emplace_back(work);
    }
    CProgressBar bar(showsProgress);
    std::unique_lock hold(lock);
    while (!changed.wait_for(hold, kBarInterval, [&] { return doneCount == jobs.size(); })) {
        bar.draw(static_cast<double>(progress) / total, doneCount, jobs.size());
    }
    return outcomes;
}

} // namespace qel::tools
