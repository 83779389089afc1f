// The samples in flight between two processes.
#pragma once

#include "CAudioGraph.h"
#include "CAudioLinkFade.h"
#include "CInlineArray.h"
#include "CKernelContext.h"

#include <array>
#include <bit>
#include <climits>

namespace qel {

class CAudioLink;

// Of one port.
using CAudioLinks = CInlineArray<CAudioLink*, 1>;

// Set of channel numbers, bit by bit.
using CChannelMask = std::uint32_t;
constexpr int kMaxChannels = 16;
constexpr int kMaxPorts = 16;

// Calls function(channel) for every channel of the mask, in rising order.
template <class Function>
void forEachChannel(CChannelMask mask, Function&& function)
{
    for (; mask != 0; mask &= mask - 1) {
        function(std::countr_zero(mask));
    }
}

// Where a process hands on what it has made. Audio thread, as all of this file.
class CAudioOutputPort
{
public:
    explicit CAudioOutputPort(CAudioGraph& graph) : graph_(graph) {}

    // The channels that this port delivers from now on. A channel that is missing here ends downstream as
    // soon as its queued samples are used up.
    void setChannels(CChannelMask mask) { channels_ = mask; }
    CChannelMask channels() const { return channels_; }

    // Hands on `count` samples of one channel to every link. Takes over one reference on the buffer.
    inline void emit(int channel, CBufferRef buffer, int count, const CAudioStreamFormat* format);

    // Of all links that start here, connected or not.
    void makeRoomForOneMore() { links_.reserve(++linkCount_); }
    void connect(CAudioLink& link) { links_.push(&link); }
    void disconnect(CAudioLink& link) { links_.eraseFirst(&link); }
    // Disconnects every link that starts here.
    void disconnectAll();

private:
    void emitToAll(int channel, CBufferRef buffer, int count, const CAudioStreamFormat* format);

    CAudioGraph& graph_;
    CAudioLinks links_;
    std::size_t linkCount_ = 0;
    CChannelMask channels_ = 0;
};

// One connection from an output port to an input port: a queue of chunks for each channel. It owns what is
// queued.
class CAudioLink
{
public:
    CAudioLink(CAudioGraph& graph, CAudioOutputPort& source)
        : graph_(graph), source_(source), fade_(graph.kernels)
    {
        source.makeRoomForOneMore();
    }
    ~CAudioLink() { clear(); }
    CAudioLink(const CAudioLink&) = delete;
    CAudioLink& operator=(const CAudioLink&) = delete;

    // Starts or stops taking what the source emits. What is queued is dropped by a disconnection.
    void connect();
    void disconnect();
    bool isConnected() const { return isConnected_; }

    // What is pushed from now on is faded in, or out, over the length of a cut; behind that it passes, or is
    // silence. A disconnection ends it too.
    void startFade(bool isIn) { fade_.start(isIn); }
    void endFade() { fade_.stop(); }

    CAudioOutputPort& source() const { return source_; }
    // Channels that carry samples, or will.
    CChannelMask channels() const { return source_.channels() | queued_; }
    // The chunk whose samples come next, or null if the channel is dry.
    const CAudioChunk* head(int channel) const
    {
        const CAudioChunk* const tail = tails_[static_cast<std::size_t>(channel)];
        return tail ? tail->next : nullptr;
    }
    // The same if nothing is queued behind it.
    const CAudioChunk* onlyChunk(int channel) const
    {
        const CAudioChunk* const tail = tails_[static_cast<std::size_t>(channel)];
        return tail && tail->next == tail ? tail : nullptr;
    }
    // Nothing is queued and no fade runs.
    bool isAtRest() const { return queued_ == 0 && !fade_.isRunning(); }

    // Takes over one reference on the buffer.
    void push(int channel, CBufferRef buffer, int count, const CAudioStreamFormat* format)
    {
        if (fade_.isRunning()) [[unlikely]] {
            buffer = fade_.apply(channel, buffer, count, format->sampleRateHz);
        }
        CAudioChunk* chunk = graph_.chunks.take();
        CAudioChunk*& tail = tails_[static_cast<std::size_t>(channel)];
        *chunk = {tail ? tail->next : chunk, format, buffer, count};
        if (tail) {
            tail->next = chunk;
        }
        tail = chunk;
        queued_ |= CChannelMask{1} << channel;
    }
    // Drops `count` samples, which the head chunk must hold.
    // True if nothing is left.
    bool consume(int channel, int count)
    {
        CAudioChunk* chunk = tails_[static_cast<std::size_t>(channel)]->next;
        if (chunk->count == count) {
            dropHead(channel);
            return (queued_ >> channel & 1) == 0;
        }
        chunk->buffer = chunk->buffer.advancedBy(count);
        chunk->count -= count;
        return false;
    }
    void clear();

private:
    void dropHead(int channel)
    {
        CAudioChunk*& tail = tails_[static_cast<std::size_t>(channel)];
        CAudioChunk* chunk = tail->next;
        tail->next = chunk->next;
        if (chunk == tail) {
            tail = nullptr;
            queued_ &= ~(CChannelMask{1} << channel);
        }
        graph_.kernels.release(chunk->buffer);
        graph_.chunks.giveBack(chunk);
    }

    CAudioGraph& graph_;
    CAudioOutputPort& source_;
    CAudioLinkFade fade_;
    // The last chunk of each queue; the one behind it is the first.
    std::array<CAudioChunk*, kMaxChannels> tails_{};
    CChannelMask queued_ = 0;
    bool isConnected_ = false;
};

// Where a process takes its samples from: the links that end here, in the order of their declaration, which
// is the order in which they are summed.
class CAudioInputPort
{
public:
    // What available() returns for a port that has no stream at all.
    static constexpr int kNoStream = INT_MAX;

    explicit CAudioInputPort(CAudioGraph& graph) : graph_(graph) {}

    // For as many links at once.
    void makeRoom(std::size_t count) { links_.reserve(count); }
    void clearLinks() { links_.clear(); }
    void addLink(CAudioLink& link) { links_.push(&link); }
    const CAudioLinks& links() const { return links_; }

    CChannelMask channels() const;
    bool isAtRest() const;
    // Samples that every channel of every link can deliver now without a change of chunk; 0 if one is dry.
    int available() const;
    // Format of a channel's next sample, that of the first link that carries it; null if it is dry.
    const CAudioStreamFormat* format(int channel) const;
    // The next `count` samples of a channel, summed over the links or, if `isWeighted`, averaged; none if no
    // link carries the channel. gather() gives the caller one reference. borrow() gives none: a single source
    // lends what it has queued until it is consumed, and a sum is handed over in `outSum`, for the caller to
    // release.
    CBufferRef gather(int channel, int count, bool isWeighted) const;
    CBufferRef borrow(int channel, int count, bool isWeighted, CBufferRef& outSum) const
    {
        if (links_.size() != 1) {
            return borrowSum(channel, count, isWeighted, outSum);
        }
        const CAudioChunk* head = links_[0]->head(channel);
        return head ? head->buffer : CBufferRef();
    }
    // True if a channel has run dry.
    bool consume(int count);
    // Hands all that is there on to an output port, channels and formats as they come; several links as in
    // gather().
    void forwardTo(CAudioOutputPort& to, bool isWeighted = false);

private:
    CBufferRef borrowSum(int channel, int count, bool isWeighted, CBufferRef& outSum) const;

    CAudioGraph& graph_;
    CAudioLinks links_;
};

// Nearly every port has one link.
void CAudioOutputPort::emit(int channel, CBufferRef buffer, int count, const CAudioStreamFormat* format)
{
    if (links_.size() == 1) {
        links_[0]->push(channel, buffer, count, format);
    } else {
        emitToAll(channel, buffer, count, format);
    }
}

} // namespace qel
