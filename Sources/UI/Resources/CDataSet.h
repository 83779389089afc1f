// What all graphics files have in common.
#pragma once

#include "Streams/CInputStream.h"
#include "Streams/COutputStream.h"

namespace qel {

// The contents of one graphics file: images, a font, brushes or a palette. A set is filled by one load() and
// only read from then on, so any thread may read it, and what it hands out by pointer lives as long as the
// set.
//
// The files are outside data: load() checks all that the readers rely on later (sizes, run codes, offsets),
// so that drawing needs no checks. A set of an unknown version loads as an empty one; damaged or cut data
// give an error and leave the set empty. save() writes what is held, in a form that load() takes again: of
// several variants the one that was kept.
class CDataSet : public CCheckedObject
{
public:
    static constexpr std::uint32_t kVersion = 1;

    CDataSet() = default;
    CDataSet(const CDataSet&) = delete;
    CDataSet& operator=(const CDataSet&) = delete;

    virtual CError load(CInputStream& stream) = 0;
    virtual CError save(COutputStream& stream) const = 0;
};

} // namespace qel
