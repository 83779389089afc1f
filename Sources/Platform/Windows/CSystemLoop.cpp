// Wake-up calls and timers through the message loop of the thread.
#include "CSystemLoop.h"

#include "CHiddenWindow.h"
#include "WindowsApi.h"

#include <utility>

namespace qel {

namespace {

using platform::CHiddenWindow;

constexpr UINT kWakeMessage = WM_APP + 1;
constexpr DWORD kTimerWindowStyle = WS_EX_TOOLWINDOW; // keeps the window off the task bar
constexpr UINT_PTR kTimerId = 1;

class CMessageWake : public CSystemWake
{
public:
    explicit CMessageWake(std::function<void()> onWake) : window_(kWakeMessage, std::move(onWake)) {}

    int create() { return window_.create(platform::bridgeClassName(), 0, HWND_MESSAGE); }

    int signal() override
    {
        return PostMessageW(window_.handle(), kWakeMessage, 0, 0) ? 0 : platform::lastError();
    }

private:
    CHiddenWindow window_;
};

class CMessageTimer : public CSystemTimer
{
public:
    explicit CMessageTimer(std::function<void()> onTick) : window_(WM_TIMER, std::move(onTick)) {}

    int create() { return window_.create(platform::timerClassName(), kTimerWindowStyle, nullptr); }

    int start(std::uint32_t intervalMs) override
    {
        return SetTimer(window_.handle(), kTimerId, intervalMs, nullptr) ? 0 : platform::lastError();
    }

    void stop() override { KillTimer(window_.handle(), kTimerId); }

private:
    CHiddenWindow window_;
};

template <typename Made, typename Base>
int makeWindow(std::function<void()> handler, std::unique_ptr<Base>& out)
{
    auto made = std::make_unique<Made>(std::move(handler));
    if (const int error = made->create()) {
        return error;
    }
    out = std::move(made);
    return 0;
}

} // namespace

int createSystemWake(std::function<void()> onWake, std::unique_ptr<CSystemWake>& out)
{
    return makeWindow<CMessageWake>(std::move(onWake), out);
}

int createSystemTimer(std::function<void()> onTick, std::unique_ptr<CSystemTimer>& out)
{
    return makeWindow<CMessageTimer>(std::move(onTick), out);
}

} // namespace qel
