// The factor of all sizes in the interface.
#include "CInterfaceScale.h"

#include "CApplication.h"

namespace qel {

namespace {

thread_local double theScale = 1.0;

} // namespace

double CInterfaceScale::get()
{
    return theScale;
}

void CInterfaceScale::set(double scale)
{
    theScale = scale;
}

void CInterfaceScale::readSetting()
{
    CApplication* application = CApplication::get();
    set(application ? application->getUIScale() : 1.0);
}

} // namespace qel
