// Trace lines: conditions that are no user errors, for whoever debugs a tree.
#pragma once

#include "CString.h"

#include <functional>

namespace qel {

// Called with each trace line, in the thread that wrote it.
using CTraceHook = std::function<void(const CString& line)>;

// Writes one line to the hook and the trace file, of which neither is set in the delivered program.
// `context`, when not empty, is added behind " // ". Any thread but the audio thread.
void trace(const CString& line, const CString& context = {});
// False if nobody would see a line, so that it need not be built.
bool isTracing();

// Sets or, with an empty function, removes the hook; returns the one that stood.
CTraceHook setTraceHook(CTraceHook hook);
// Appends all further lines, each ended by CR LF, to the file at this UTF-8 path, which is removed at the
// first write. An empty path ends it.
void setTraceFile(const std::string& path);

} // namespace qel
