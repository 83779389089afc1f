// The factor of all sizes in the interface.
#include "CInterfaceScale.h"

#include "CApplication.h"

#include <atomic>

namespace qel {

namespace {

std::atomic<double> theScale{1.0};

} // namespace

double CInterfaceScale::get()
{
    return theScale.load(std::memory_order_relaxed);
}

void CInterfaceScale::set(double scale)
{
    theScale.store(scale, std::memory_order_relaxed);
}

void CInterfaceScale::readSetting()
{
    CApplication* application = CApplication::get();
    set(application ? application->getUIScale() : 1.0);
}

} // namespace qel
