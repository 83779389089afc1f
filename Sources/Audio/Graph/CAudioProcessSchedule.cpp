// A compound process: which links are active, and the order of the children.
#include "CAudioProcess.h"

#include "Definitions/CAudioProcessDef.h"
#include "Trace.h"

#include <algorithm>

namespace qel {

void CAudioProcess::beginStep()
{
    takeUpStates();
}

void CAudioProcess::takeUpStates()
{
    if (areLinksDirty_ && fadeSamplesLeft_ == 0) {
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
    const bool fades = assignRoles() && orderChildren();
    if (!fades) {
        clearRoles(); // there is no order in which the links of before and after could work together
        if (!orderChildren()) {
            dropUnplaced();
        }
    }
    forEachSink([this](Child& child) { wire(child); });
    for (const auto& child : children_) {
        if (child->isFed() && !child->wasFed()) {
            // It comes back into a stream that has gone on without it: what it remembers would click.
            child->process->reset(positionSec());
        }
    }
    fadeSamplesLeft_ = fades ? cutFadeSamples(sampleRateHz()) : 0;
}

void CAudioProcess::clearActiveCounts()
{
    forEachSink([](Child& child) {
        for (LinkRecord& record : child.links) {
            record.previousCount = record.activeCount;
            record.activeCount = 0;
        }
    });
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

// True if there is something to fade.
bool CAudioProcess::assignRoles()
{
    clearRoles();
    if (isBeginning()) {
        return false;
    }
    bool fades = false;
    forEachSink([&](Child& child) {
        const CAudioProcessDefBase& def = child.process ? child.process->def() : compoundDef_;
        if (!child.isFed() || !child.wasFed() || def.isWeightedInput()) {
            return;
        }
        for (LinkRecord& record : child.links) {
            if (record.isActive() != record.wasActive()) {
                record.role = record.isActive() ? ERole::kJoins : ERole::kLeaves;
                fades = true;
            }
        }
    });
    forEachSink([this](Child& child) {
        for (const LinkRecord& record : child.links) {
            if (record.role == ERole::kLeaves && record.source) {
                keepFeedsOf(*record.source);
            }
        }
    });
    return fades;
}

void CAudioProcess::keepFeedsOf(Child& child)
{
    for (LinkRecord& record : child.links) {
        if (record.role == ERole::kSteady && record.wasActive() && !record.isActive()) {
            record.role = ERole::kFeeds;
            if (record.source) {
                keepFeedsOf(*record.source);
            }
        }
    }
}

void CAudioProcess::clearRoles()
{
    forEachSink([](Child& child) {
        for (LinkRecord& record : child.links) {
            record.role = ERole::kSteady;
        }
    });
    fadeSamplesLeft_ = 0;
}

void CAudioProcess::endFade()
{
    clearRoles();
    forEachSink([this](Child& child) { wire(child); });
    orderChildren();
}

// Brings the ports and links into a child in line with its records.
void CAudioProcess::wire(Child& child)
{
    const auto portOf = [&](int port) -> CAudioInputPort& {
        return child.process ? child.process->input(port) : ownSink(port);
    };
    for (const LinkRecord& record : child.links) {
        portOf(record.destinationPort).clearLinks();
    }
    for (LinkRecord& record : child.links) {
        if (!record.isLive()) {
            if (record.link && record.link->isConnected()) {
                record.link->disconnect();
            }
            continue;
        }
        if (!record.link) {
            CAudioOutputPort& source = record.source ? record.source->process->output(record.sourcePort)
                                                     : ownSource(record.sourcePort);
            record.link = std::make_unique<CAudioLink>(graph(), source);
        }
        if (!record.link->isConnected()) {
            record.link->connect();
        }
        portOf(record.destinationPort).addLink(*record.link);
        if (record.role == ERole::kJoins || record.role == ERole::kLeaves) {
            record.link->startFade(record.role == ERole::kJoins);
        } else {
            record.link->endFade();
        }
    }
}

// False if some child that is fed waits, over any number of others, for itself.
bool CAudioProcess::orderChildren()
{
    order_.clear();
    std::size_t fed = 0;
    for (const auto& child : children_) {
        child->isPlaced = false;
        fed += std::any_of(child->links.begin(), child->links.end(), std::mem_fn(&LinkRecord::isLive));
    }
    const auto isReady = [](const Child& child) {
        bool isFed = false;
        for (const LinkRecord& record : child.links) {
            if (record.isLive()) {
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
    return order_.size() == fed;
}

// What is in a cycle never runs: samples sent there would pile up, and whoever waits for it would stay
// silent.
void CAudioProcess::dropUnplaced()
{
    if (isTracing()) {
        trace("process seq err", fullName());
    }
    forEachSink([this](Child& child) {
        for (LinkRecord& record : child.links) {
            const bool leadsNowhere = child.process && !child.isPlaced;
            if (record.isActive() && (leadsNowhere || (record.source && !record.source->isPlaced))) {
                record.activeCount = 0;
                if (isTracing()) {
                    trace("link to '" + child.name + "' dropped", fullName());
                }
            }
        }
    });
}

} // namespace qel
