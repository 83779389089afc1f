// Several files, some at the same time.
#pragma once

#include "Render/CFileRender.h"
#include "Render/RenderError.h"

#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace qel::tools {

struct CRenderOutcome
{
    std::optional<CRenderResult> result; // also there when only the plot failed
    CExitCode code = CExitCode::kDone;
    std::string error;
};

// Renders every job, `workers` at a time, each with an instance of its own, and draws the plots; one that
// fails does not stop the others, an interruption does. Outcomes are in the order of the jobs.
std::vector<CRenderOutcome> renderAll(const std::shared_ptr<CGuestLibrary>& library,
                                      const CRenderSettings& settings, const std::vector<CRenderJob>& jobs,
                                      int workers, const std::string& effectName);

} // namespace qel::tools
