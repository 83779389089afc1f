// The choice between the window and a hook.
#include "FailureWindow.h"

#include "SystemFailureWindow.h"

#include <mutex>
#include <utility>

namespace qel::platform {

namespace {

struct HookState
{
    std::mutex mutex;
    FailureWindowHook hook;
};

HookState& hookState()
{
    static HookState instance;
    return instance;
}

} // namespace

void showFailureWindow(const std::string& title, const std::string& text, const std::string& details)
{
    FailureWindowHook hook;
    {
        const std::lock_guard lock(hookState().mutex);
        hook = hookState().hook;
    }
    if (hook) {
        hook(title, text, details);
    } else {
        showSystemFailureWindow(title, text, details);
    }
}

FailureWindowHook setFailureWindowHook(FailureWindowHook hook)
{
    const std::lock_guard lock(hookState().mutex);
    return std::exchange(hookState().hook, std::move(hook));
}

} // namespace qel::platform
