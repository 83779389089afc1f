// The banks that come with the plug-in.
#pragma once

#include "CAudioPresetBank.h"

#include <memory>

namespace qel {

// The bank of a file or resource, which all instances share that name the same bytes. What cannot be read is
// traced, and the bank is empty. Any thread but the audio thread; never null.
std::shared_ptr<const CAudioPresetBank> loadFactoryBank(const CString& file);

} // namespace qel
