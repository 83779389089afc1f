// The table of all tags.
#pragma once

#include "CreatorRegistry.h"

namespace qel {

// Ended by a row without a tag; handed to registerCreators() when the application starts.
extern const CCreatorRow kCreatorTable[];

} // namespace qel
