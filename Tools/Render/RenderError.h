// How drumfell-render gives up, and what its exit code then tells a script.
#pragma once

#include "TreeCompiler/ToolError.h"

namespace qel::tools {

enum class CExitCode : int
{
    kDone = 0,
    kUsage = 2,     // the command line contradicts itself
    kLibrary = 3,   // no VST 2.4 effect could be loaded, or it cannot do what is asked of it
    kInput = 4,     // an audio, automation or state file could not be read
    kOutput = 5,    // a result could not be written
    kSetting = 6,   // the plug-in has no such parameter, value or preset, or refuses a state
    kNotFinite = 7, // the plug-in put out NaN or infinity
    kInterrupted = 130,
};

class CRenderError : public CToolError
{
public:
    CRenderError(CExitCode code, const std::string& text) : CToolError(text), code_(code) {}

    CExitCode code() const { return code_; }

private:
    CExitCode code_;
};

} // namespace qel::tools
