// Trace lines: conditions that are no user errors, for whoever debugs a tree.
#include "Trace.h"

#include "CFile.h"
#include "FileSystem.h"

#include <atomic>
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

// A trace that cannot be written is lost: there is nobody to tell.
void appendToFile(TraceState& trace, const CString& line)
{
    if (!trace.isFileStarted) {
        (void)platform::removeFile(trace.filePath);
        trace.isFileStarted = true;
    }
    CFile file;
    if (file.open(trace.filePath, CFile::Access::kAppend) == 0) {
        const std::string text = line.toUtf8() + "\r\n";
        std::size_t written = 0;
        (void)file.write(text.data(), text.size(), written);
        (void)file.close();
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
