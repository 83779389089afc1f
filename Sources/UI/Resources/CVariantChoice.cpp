// Which of the stored variants is kept.
#include "CVariantChoice.h"

#include <cmath>

namespace qel {

CError CVariantChoice::load(CInputStream& stream, double wantedScale)
{
    QEL_TRY(stream.readU32(count), {});
    double nearest = 99999.0;
    bool isFound = false;
    for (std::uint32_t i = 0; i < count; ++i) {
        double candidate = 0.0;
        QEL_TRY(stream.readF64(candidate), {});
        const double distance = std::fabs(candidate - wantedScale);
        if (distance < nearest) {
            nearest = distance;
            index = i;
            scale = candidate;
            isFound = true;
        }
    }
    if (!isFound) {
        QEL_FAIL({}, "@qelstr_CVariantChoice_load_NoVariant No variant for the interface scale among %1.",
                 count);
    }
    return {};
}

} // namespace qel
