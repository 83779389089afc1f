// Trace lines: conditions that are no user errors, for whoever debugs a tree.
#include "CTrace.h"

#include <cstdio>
#include <mutex>
#include <utility>

namespace qel {

namespace {

struct TraceState
{
    std::mutex mutex;
    CTraceHook hook;
    std::string filePath;
    bool isFileStarted = false;
};

TraceState& state()
{
    static TraceState instance;
    return instance;
}

void appendToFile(TraceState& trace, const CString& line)
{
    if (!trace.isFileStarted) {
        std::remove(trace.filePath.c_str());
        trace.isFileStarted = true;
    }
    if (std::FILE* file = std::fopen(trace.filePath.c_str(), "ab")) {
        std::fputs((line.toUtf8() + "\r\n").c_str(), file);
        std::fclose(file);
    }
}

} // namespace

void trace(const CString& line, const CString& context)
{
    const CString whole = context.isEmpty() ? line : line + " // " + context;
    CTraceHook hook;
    {
        const std::lock_guard lock(state().mutex);
        hook = state().hook;
        if (!state().filePath.empty()) {
            appendToFile(state(), whole);
        }
    }
    if (hook) {
        hook(whole);
    }
}

CTraceHook setTraceHook(CTraceHook hook)
{
    const std::lock_guard lock(state().mutex);
    return std::exchange(state().hook, std::move(hook));
}

void setTraceFile(const std::string& path)
{
    const std::lock_guard lock(state().mutex);
    state().filePath = path;
    state().isFileStarted = false;
}

} // namespace qel
