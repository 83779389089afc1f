// A picture of what an effect did.
#pragma once

#include "Render/RenderReport.h"

#include <filesystem>

namespace qel::tools {

// Writes a PNG: the waveform before and after, one below the other on the same scales (peaks, and within them
// the RMS), and both spectra, as power in sixths of an octave on a logarithmic axis. Throws CRenderError
// (kOutput).
void writePlot(const CRenderResult& result, const std::string& effectName, const std::filesystem::path& path);

} // namespace qel::tools
