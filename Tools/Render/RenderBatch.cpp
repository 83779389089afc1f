// Several files, some at the same time.
#include "Render/RenderBatch.h"

#include "Render/RenderError.h"
#include "Render/RenderPlot.h"

#include <algorithm>
#include <atomic>
#include <thread>

namespace qel::tools {

namespace {

CRenderOutcome renderOne(const std::shared_ptr<CGuestLibrary>& library, const CRenderSettings& settings,
                         const CRenderJob& job, const std::string& effectName)
{
    CRenderOutcome outcome;
    try {
        outcome.result = CFileRender(library, settings, job).run();
#ifdef DRUMFELL_PLOTS
        if (!job.plot.empty()) {
            writePlot(*outcome.result, effectName, job.plot);
        }
#else
        static_cast<void>(effectName);
#endif
    } catch (const CRenderError& error) {
        outcome.code = error.code();
        outcome.error = error.what();
    } catch (const std::exception& error) {
        outcome.code = CExitCode::kOutput;
        outcome.error = job.input.string() + ": " + error.what();
    }
    return outcome;
}

} // namespace

std::vector<CRenderOutcome> renderAll(const std::shared_ptr<CGuestLibrary>& library,
                                      const CRenderSettings& settings, const std::vector<CRenderJob>& jobs,
                                      int workers, const std::string& effectName)
{
    std::vector<CRenderOutcome> outcomes(jobs.size());
    std::atomic<std::size_t> next = 0;
    std::vector<std::jthread> threads;
    for (int i = 0; i < std::min(workers, static_cast<int>(jobs.size())); ++i) {
        threads.emplace_back([&] {
            for (std::size_t at = next++; at < jobs.size(); at = next++) {
                outcomes[at] = renderOne(library, settings, jobs[at], effectName);
            }
        });
    }
    threads.clear(); // waits for all
    return outcomes;
}

} // namespace qel::tools
