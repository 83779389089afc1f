// Kernels that do in one loop what several calls do one after the other.
#pragma once

#include <cstddef>
#include <span>

namespace qel {

struct CKernelCall;
struct CKernelEntry;

// As in CKernelCall.h.
using CKernelFunction = void (*)(const CKernelCall& call);

// Leaves in outputs and states what the kernels of calls[0], calls[1] ... would leave one after the other, to
// the last bit: the same operations in the same order for each channel, with two or four channels in the
// lanes of one register, or a sample's way through a chain in one turn of the loop. Any states are right:
// where two channels cannot go side by side (shifters whose heads stand apart), it runs them in turn. Of a
// call it reads the count, the scalar and the addresses.
//
// The calls of one channel stand together, those of the next channel behind them. All have the same counts;
// scalars and states may differ.
//
// Memory: what one channel's calls write, another's must neither read nor write, in any of their calls. An
// output may be the input of its channel where the single kernels allow that and no rate changes.
using CKernelGroupFunction = void (*)(const CKernelCall* calls);

// One call of a join.
struct CKernelPart
{
    static constexpr int kInput = -1;

    CKernelFunction function;
    // The part whose output is this part's input, or kInput: what part 0 reads.
    int source;
};

// Calls of one channel that can be one. The input of a part is its call's last operand, or, where that is
// written (see CKernelEntry::writeMask), operand 0, in place. The output of a part that is another's source
// may be read by that part alone; the joined function need not write it, and its address need not be valid.
// All other outputs are written.
//
// The counts are those the single calls would have: a filter between two rates has twice that of its
// interpolator or decimator. Outside of that, a decimator that takes every first sample begins with the
// filter's first.
struct CKernelJoin
{
    std::span<const CKernelPart> parts;
    CKernelGroupFunction one;  // parts.size() calls
    CKernelGroupFunction pair; // twice as many
    CKernelGroupFunction quad; // four times as many; null if there is none. Only where hasWideLanes()
};

// Whether the processor has registers of four samples.
bool hasWideLanes();
// --- for tests, while no kernel runs
// Whether they may be used; they may from the start. The bits are the same.
void allowWideLanes(bool isAllowed);

} // namespace qel
