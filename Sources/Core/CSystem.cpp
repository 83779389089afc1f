// Platform calls with the words the rest of the system reports them in.
#include "CSystem.h"

#include "CEventLoop.h"
#include "FileSystem.h"

#include <utility>

namespace qel::CSystem {

CString modulePath()
{
    return CString::fromUtf8(platform::modulePath());
}

CError sendEvent(CEventLoop& loop, std::function<void()> call)
{
    if (const int code = loop.post(std::move(call)); code != 0) {
        QEL_FAIL({}, "@qelstr_CSystem_sendEvent_PostMessage Post message error %1.", code);
    }
    return {};
}

} // namespace qel::CSystem
