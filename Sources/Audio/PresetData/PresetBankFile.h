// Files of one compressed chunk, for presets and banks.
#pragma once

#include "CByteBuffer.h"
#include "CError.h"

namespace qel {

class CMemoryWriteBuffer;

// Unpacks the chunk with this ID from a built-in resource or, where there is none of the name, a file.
CError readChunkFile(const CString& path, std::uint32_t id, CByteBuffer& outBody);
// Writes a file with the chunk beside the old one and puts it in its place when it is complete and on the
// disk, so that neither a full disk nor a power failure costs anybody the preset that was there.
CError writeChunkFile(const CString& path, std::uint32_t id, const CMemoryWriteBuffer& body);

} // namespace qel
