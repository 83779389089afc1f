// A compound process: which links are active, and the order of the children.
#include "CAudioProcess.h"

#include "CTrace.h"
#include "Definitions/CAudioProcessDef.h"

#include <algorithm>

namespace qel {

void CAudioProcess::beginStep()
{
    if (areLinksDirty_) {
        schedule();
    }
}

void CAudioProcess::schedule()
{
    areLinksDirty_ = false;
    clearActiveCounts();
    for (const auto& child : children_) {
        const int stateId = child->process->def().bypassStateId();
        child->isBypassed = stateId >= 0 && isStateActive(stateId);
    }
    if (compoundDef_.isAutoLinks()) {
        activateAutoLinks();
    }
    activateExplicitLinks();
    prune();
    for (const auto& child : children_) {
        reconnect(*child);
    }
    reconnect(sink_);
    orderChildren();
}

void CAudioProcess::clearActiveCounts()
{
    const auto clear = [](Child& child) {
        for (LinkRecord& record : child.links) {
            record.previousCount = record.activeCount;
            record.activeCount = 0;
        }
    };
    for (const auto& child : children_) {
        clear(*child);
    }
    clear(sink_);
}

void CAudioProcess::activate(Child& destination, int destinationPort, Child* source, int sourcePort,
                             int order)
{
    for (LinkRecord& record : destination.links) {
        if (record.source == source && record.sourcePort == sourcePort &&
            record.destinationPort == destinationPort) {
            ++record.activeCount;
            return;
        }
    }
    const auto place = std::find_if(destination.links.begin(), destination.links.end(),
                                    [order](const LinkRecord& record) { return record.order > order; });
    LinkRecord record{source, sourcePort, destinationPort, order};
    record.activeCount = 1;
    destination.links.insert(place, std::move(record));
}

// Children are chained in their order, from the compound's input to its output.
void CAudioProcess::activateAutoLinks()
{
    Child* previous = nullptr;
    for (const auto& child : children_) {
        if (!child->process->def().isOutOfOrder() && !child->isBypassed) {
            activate(*child, 0, previous, 0, kImplicit);
            previous = child.get();
        }
    }
    activate(sink_, 0, previous, 0, kImplicit);
}

void CAudioProcess::activateExplicitLinks()
{
    for (std::size_t i = 0; i < explicitLinks_.size(); ++i) {
        const ExplicitLink& link = explicitLinks_[i];
        const bool isCut = (link.bypassStateId >= 0 && isStateActive(link.bypassStateId)) ||
                           (link.source && link.source->isBypassed) || link.destination->isBypassed;
        if (!isCut) {
            activate(*link.destination, link.destinationPort, link.source, link.sourcePort,
                     static_cast<int>(i));
        }
    }
}

// Follows the first active link into port 0, child by child. More steps than children are a cycle.
bool CAudioProcess::reachesInput(const Child& start) const
{
    const Child* child = &start;
    for (std::size_t steps = 0; steps <= children_.size(); ++steps) {
        const auto link =
            std::find_if(child->links.begin(), child->links.end(), [](const LinkRecord& record) {
                return record.destinationPort == 0 && record.activeCount > 0;
            });
        if (link == child->links.end()) {
            return false;
        }
        if (!link->source) {
            return true;
        }
        child = link->source;
    }
    return false;
}

// A child fed by one that has no signal could only wait for it for ever, so it goes too, and what it feeds
// after it.
void CAudioProcess::prune()
{
    const auto isDead = [this](const LinkRecord& record) {
        return record.activeCount > 0 && record.source && !reachesInput(*record.source);
    };
    for (bool hasChanged = true; hasChanged;) {
        hasChanged = false;
        for (const auto& child : children_) {
            if (std::any_of(child->links.begin(), child->links.end(), isDead)) {
                for (LinkRecord& record : child->links) {
                    record.activeCount = 0;
                }
                hasChanged = true;
            }
        }
    }
    for (LinkRecord& record : sink_.links) {
        if (isDead(record)) {
            record.activeCount = 0;
        }
    }
}

void CAudioProcess::reconnect(Child& child)
{
    const auto portOf = [&](int port) -> CAudioInputPort& {
        return child.process ? child.process->input(port) : ownSink(port);
    };
    bool wasFed = false;
    bool isFed = false;
    for (LinkRecord& record : child.links) {
        portOf(record.destinationPort).clearLinks();
        wasFed |= record.previousCount > 0;
        isFed |= record.activeCount > 0;
    }
    for (LinkRecord& record : child.links) {
        if (record.activeCount > 0) {
            if (!record.link) {
                CAudioOutputPort& source = record.source ? record.source->process->output(record.sourcePort)
                                                         : ownSource(record.sourcePort);
                record.link = std::make_unique<CAudioLink>(graph(), source);
            }
            if (!record.link->isConnected()) {
                record.link->connect();
            }
            portOf(record.destinationPort).addLink(*record.link);
        } else if (record.link && record.link->isConnected()) {
            record.link->disconnect();
        }
    }
    if (child.process && isFed && !wasFed) {
        // It comes back into a stream that has gone on without it: what it remembers would click.
        child.process->reset(positionSec());
    }
}

void CAudioProcess::orderChildren()
{
    order_.clear();
    std::size_t unfed = 0;
    for (const auto& child : children_) {
        child->isPlaced = false;
        unfed += std::none_of(child->links.begin(), child->links.end(),
                              [](const LinkRecord& record) { return record.activeCount > 0; });
    }
    const auto isReady = [](const Child& child) {
        bool isFed = false;
        for (const LinkRecord& record : child.links) {
            if (record.activeCount > 0) {
                isFed = true;
                if (record.source && !record.source->isPlaced) {
                    return false;
                }
            }
        }
        return isFed;
    };
    for (bool hasPlaced = true; hasPlaced;) {
        hasPlaced = false;
        for (const auto& child : children_) {
            if (!child->isPlaced && isReady(*child)) {
                child->isPlaced = true;
                order_.push_back(child.get());
                hasPlaced = true;
            }
        }
    }
    if (order_.size() + unfed != children_.size() && isTracing()) {
        trace("process seq err", fullName());
    }
}

} // namespace qel
