// Saved parameters, read without their declarations.
#pragma once

#include "CAudioParamStorage.h"
#include "CByteBuffer.h"
#include "CString.h"

namespace qel::tools {

// What an entry of a preset holds. The storage has the format that the record states.
struct CPresetRecord
{
    CString definition;
    CAudioParamStorage values;
};

// Throws CToolError when the block is damaged.
CPresetRecord readPresetRecord(const CByteBuffer& block);

} // namespace qel::tools
