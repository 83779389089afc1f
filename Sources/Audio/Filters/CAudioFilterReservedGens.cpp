// Filter generators whose tags are known and whose filters do not exist.
#include "CAudioFilterReservedGens.h"

namespace qel {

CError CAudioFilterReservedGen::init()
{
    QEL_TRY(CAudioFilterGen::init(), getFullName());
    QEL_TRY(checkAttributes(), getFullName());
    QEL_FAIL(getFullName(),
             "@qelstr_CAudioFilterReservedGen_init_NotAvailable Filters of the kind '%1' are not available.",
             getTag());
}

CError CAudioFilterFIRLimGen::checkAttributes()
{
    return checkType(2, "@qelstr_CAudioFilterFIRLimGen_init_InvalidType Invalid filter type '%1' specified.");
}

CError CAudioFilterAPF1Gen::checkAttributes()
{
    return checkType(1,
                     "@qelstr_CAudioFilterAPF1Gen_init_FilterTypeError Invalid filter type '%1' specified.");
}

} // namespace qel
