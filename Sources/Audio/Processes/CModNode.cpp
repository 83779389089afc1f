// A point where streams meet and part.
#include "CModNode.h"

namespace qel {

void CModNode::syncLinks()
{
    output(0).setChannels(input(0).channels());
}

void CModNode::step(int count)
{
    for (const Channel& channel : channels()) {
        output(0).emit(channel.number, input(0).gather(channel.number, count, def().isWeightedInput()), count,
                       channel.format);
    }
}

template class CAudioModuleDef<CModNode>;

} // namespace qel
