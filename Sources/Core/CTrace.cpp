// Trace lines: conditions that are no user errors, for whoever debugs a tree.
#include "CTrace.h"

#include <atomic>
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
    std::atomic<bool> isOn{false};

    void update() { isOn = hook || !filePath.empty(); }
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
    if (!isTracing()) {
        return;
    }
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

bool isTracing()
{
    return state().isOn.load(std::memory_order_relaxed);
}

CTraceHook setTraceHook(CTraceHook hook)
{
    const std::lock_guard lock(state().mutex);
    std::swap(state().hook, hook);
    state().update();
    return hook;
}

void setTraceFile(const std::string& path)
{
    const std::lock_guard lock(state().mutex);
    state().filePath = path;
    state().isFileStarted = false;
    state().update();
}

} // namespace qel
