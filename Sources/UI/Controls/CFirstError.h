// The outcome of several actions of which none stops the others.
#pragma once

#include "CError.h"

namespace qel {

// Keeps the first error for the caller and traces those after it.
class CFirstError
{
public:
    void add(CError error) { collectError(first_, std::move(error)); }
    CError take() { return std::move(first_); }

private:
    CError first_;
};

} // namespace qel
