// The samples in flight between two processes.
#include "CAudioLink.h"

#include "CAudioSum.h"

#include <algorithm>
#include <functional>

namespace qel {

// --- output port

void CAudioOutputPort::emitToAll(int channel, CBufferRef buffer, int count, const CAudioStreamFormat* format)
{
    if (links_.isEmpty()) {
        graph_.kernels.release(buffer);
        return;
    }
    // The last link takes the caller's reference.
    for (std::size_t i = 0; i + 1 < links_.size(); ++i) {
        graph_.kernels.addRef(buffer);
        links_[i]->push(channel, buffer, count, format);
    }
    links_.last()->push(channel, buffer, count, format);
}

void CAudioOutputPort::disconnectAll()
{
    while (!links_.isEmpty()) {
        links_.last()->disconnect();
    }
}

// --- link

void CAudioLink::connect()
{
    source_.connect(*this);
    isConnected_ = true;
}

void CAudioLink::disconnect()
{
    source_.disconnect(*this);
    isConnected_ = false;
    fade_.stop();
    clear();
}

void CAudioLink::clear()
{
    forEachChannel(queued_, [this](int channel) {
        while (head(channel)) {
            dropHead(channel);
        }
    });
}

// --- input port

CChannelMask CAudioInputPort::channels() const
{
    CChannelMask mask = 0;
    for (const CAudioLink* link : links_) {
        mask |= link->channels();
    }
    return mask;
}

bool CAudioInputPort::isAtRest() const
{
    return std::all_of(links_.begin(), links_.end(), std::mem_fn(&CAudioLink::isAtRest));
}

int CAudioInputPort::available() const
{
    int count = kNoStream;
    for (const CAudioLink* link : links_) {
        forEachChannel(link->channels(), [&](int channel) {
            const CAudioChunk* head = link->head(channel);
            count = std::min(count, head ? head->count : 0);
        });
    }
    return count;
}

const CAudioStreamFormat* CAudioInputPort::format(int channel) const
{
    for (const CAudioLink* link : links_) {
        if (const CAudioChunk* head = link->head(channel)) {
            return head->format;
        }
    }
    return nullptr;
}

CBufferRef CAudioInputPort::gather(int channel, int count, bool isWeighted) const
{
    CBufferRef sum;
    const CBufferRef samples = borrow(channel, count, isWeighted, sum);
    if (sum.isNone() && !samples.isNone()) {
        graph_.kernels.addRef(samples);
    }
    return samples;
}

CBufferRef CAudioInputPort::borrowSum(int channel, int count, bool isWeighted, CBufferRef& outSum) const
{
    CAudioSum sum(graph_.kernels, count);
    CBufferRef only;
    int sources = 0;
    for (const CAudioLink* link : links_) {
        if (const CAudioChunk* head = link->head(channel)) {
            only = head->buffer;
            ++sources;
            graph_.kernels.addRef(head->buffer);
            sum.add(head->buffer);
        }
    }
    if (sources > 1) {
        outSum = isWeighted ? sum.takeMean() : sum.take();
        return outSum;
    }
    return only;
}

bool CAudioInputPort::consume(int count)
{
    bool isDry = false;
    for (CAudioLink* link : links_) {
        forEachChannel(link->channels(), [&](int channel) {
            if (link->head(channel)) {
                const bool isEmpty = link->consume(channel, count);
                isDry |= isEmpty && (link->source().channels() >> channel & 1) != 0;
            }
        });
    }
    return isDry;
}

void CAudioInputPort::forwardTo(CAudioOutputPort& to, bool isWeighted)
{
    to.setChannels(channels());
    for (int count = available(); count != 0 && count != kNoStream; count = available()) {
        forEachChannel(channels(), [&](int channel) {
            const CAudioStreamFormat* channelFormat = format(channel);
            to.emit(channel, gather(channel, count, isWeighted), count, channelFormat);
        });
        consume(count);
        to.setChannels(channels());
    }
}

} // namespace qel
