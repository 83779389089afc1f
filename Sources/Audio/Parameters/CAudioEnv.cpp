// The clock and the state that one instance's audio side shares with its other threads.
#include "CAudioEnv.h"

namespace qel {

void CAudioEnv::buildClassInfo(CClassInfo& info)
{
    CObject::buildClassInfo(info);
    info.bind<&CAudioEnv::vizFps_>("viz-fps", kDefaultVizFps);
}

} // namespace qel
