// A compound process: building it, which links are active, and running a step of it.
#include "CAudioProcess.h"

#include "CGraphVisitor.h"
#include "Definitions/CAudioProcessDef.h"
#include "Definitions/CAudioProcessLinkDef.h"
#include "Trace.h"

#include <algorithm>

namespace qel {

CAudioProcess::CAudioProcess(const CAudioProcessDef& def) : CAudioProcessBase(def), compoundDef_(def) {}

CAudioProcess::~CAudioProcess()
{
    // Links unhook themselves from ports of processes that are still there.
    CAudioProcess::disconnectAll();
}

// --- building

CError CAudioProcess::init()
{
    QEL_TRY(compoundDef_.checkShape(), fullName());
    QEL_TRY(CAudioProcessBase::init(), fullName());
    ownSource(0);
    ownSink(0);
    QEL_TRY(buildChildren(), fullName());
    QEL_TRY(readLinks(), fullName());
    buildLinks();
    return {};
}

CError CAudioProcess::buildChildren()
{
    for (const CAudioProcessDefBase* childDef : compoundDef_.processDefs()) {
        if (childDef->isPrototype()) {
            continue;
        }
        const CString name = childDef->getName();
        std::unique_ptr<CAudioProcessBase> process = childDef->createProcess();
        if (!process) {
            QEL_FAIL(fullName(), "@qelstr_CAudioProcess_init_ProcessDefClassInvalid "
                                 "Audio process def of invalid class supplied.");
        }
        process->place(graph(), fullName() + "." + name, group());
        QEL_TRY(process->init(), fullName());
        QEL_TRY(addProcess(name, std::move(process)), fullName());
    }
    order_.reserve(children_.size());
    return {};
}

CError CAudioProcess::addProcess(const CString& name, std::unique_ptr<CAudioProcessBase> process)
{
    if (findChild(name)) {
        QEL_FAIL(fullName(), "@qelstr_CAudioProcess_addProcess_DupeName Duplicate audio process name '%1'.",
                 name);
    }
    auto child = std::make_unique<Child>();
    child->isNode = process->def().getTag() == "audio:modNode";
    child->process = std::move(process);
    children_.push_back(std::move(child));
    return {};
}

CAudioProcessBase* CAudioProcess::findProcess(const CString& name) const
{
    const Child* const child = findChild(name);
    return child ? child->process.get() : nullptr;
}

CAudioProcess::Child* CAudioProcess::findChild(const CString& name) const
{
    const CString wanted = fullName() + (name.startsWith(".") ? name : "." + name);
    const auto entry = std::find_if(children_.begin(), children_.end(),
                                    [&](const auto& child) { return child->process->fullName() == wanted; });
    return entry == children_.end() ? nullptr : entry->get();
}

// The definition has checked the names against its children; a prototype is a child of the definition alone,
// so a link to one leads nowhere.
CError CAudioProcess::readLinks()
{
    explicitLinks_.reserve(compoundDef_.linkDefs().size());
    for (const CAudioProcessLinkDef* link : compoundDef_.linkDefs()) {
        const CAudioPortRef& from = link->source();
        const CAudioPortRef& to = link->destination();
        Child* const source = from.isSelf ? nullptr : findChild(from.name);
        Child* const destination = to.isSelf ? &sink_ : findChild(to.name);
        if ((!from.isSelf && !source) || !destination) {
            continue;
        }
        if (from.port >= kMaxPorts || to.port >= kMaxPorts) {
            QEL_FAIL(link->getFullName(),
                     "@qelstr_CAudioProcess_buildLinks_Port A process has ports 0 to %1 only.",
                     kMaxPorts - 1);
        }
        explicitLinks_.push_back({source, from.port, destination, to.port, link->bypassStateId()});
        if (from.isSelf) {
            ownSource(from.port);
        }
        if (to.isSelf) {
            ownSink(to.port);
        }
    }
    return {};
}

// In the order in which they are summed.
void CAudioProcess::buildLinks()
{
    if (compoundDef_.isAutoLinks()) {
        for (std::size_t i = 0; i < children_.size(); ++i) {
            if (!children_[i]->process->def().isOutOfOrder()) {
                buildAutoLinksInto(*children_[i], i);
            }
        }
        buildAutoLinksInto(sink_, children_.size());
    }
    for (std::size_t i = 0; i < explicitLinks_.size(); ++i) {
        const ExplicitLink& link = explicitLinks_[i];
        record(*link.destination, link.destinationPort, link.source, link.sourcePort, static_cast<int>(i));
    }
    forEachSink([this](Child& child) {
        child.links.shrink_to_fit();
        for (LinkRecord& each : child.links) {
            CAudioOutputPort& source =
                each.source ? each.source->process->output(each.sourcePort) : ownSource(each.sourcePort);
            each.link = std::make_unique<CAudioLink>(graph(), source);
            portInto(child, each.destinationPort).makeRoom(child.links.size());
        }
    });
}

// From the child before it, and where that may be bypassed, also from the one before that.
void CAudioProcess::buildAutoLinksInto(Child& destination, std::size_t place)
{
    while (place-- > 0) {
        const CAudioProcessDefBase& def = children_[place]->process->def();
        if (def.isOutOfOrder()) {
            continue;
        }
        record(destination, 0, children_[place].get(), 0, kImplicit);
        if (def.bypassStateId() < 0) {
            return;
        }
    }
    record(destination, 0, nullptr, 0, kImplicit);
}

CError CAudioProcess::bindParams()
{
    QEL_TRY(CAudioProcessBase::bindParams(), fullName());
    for (const CAudioProcessBypassStateDef* stateDef : compoundDef_.bypassStateDefs()) {
        CAudioBypassState state(*stateDef);
        QEL_TRY(state.bind(slots(), fullName(), graph().params), fullName());
        states_.push_back(state);
    }
    for (const auto& child : children_) {
        QEL_TRY(child->process->bindParams(), fullName());
    }
    return {};
}

void CAudioProcess::followParams()
{
    CAudioProcessBase::followParams();
    for (const auto& child : children_) {
        child->process->followParams();
    }
}

void CAudioProcess::registerKernels()
{
    for (const auto& child : children_) {
        child->process->registerKernels();
    }
}

void CAudioProcess::resolveKernels()
{
    for (const auto& child : children_) {
        child->process->resolveKernels();
    }
}

void CAudioProcess::prepareGroups(std::uint32_t groups)
{
    for (const auto& child : children_) {
        child->process->prepareGroups(groups);
    }
}

void CAudioProcess::disconnectAll()
{
    for (const auto& child : children_) {
        child->process->disconnectAll();
    }
    for (const auto& port : ownSinks_) {
        for (CAudioLink* link : port->links()) {
            if (link->isConnected()) {
                link->disconnect();
            }
        }
        port->clearLinks();
    }
    CAudioProcessBase::disconnectAll();
    clearRoles();
    areLinksDirty_ = true;
}

void CAudioProcess::reset(double positionSec)
{
    CAudioProcessBase::reset(positionSec);
    if (fadeSamplesLeft_ > 0) {
        endFade();
    }
    for (const auto& child : children_) {
        child->process->reset(positionSec);
    }
    for (const auto& port : ownSinks_) {
        for (CAudioLink* link : port->links()) {
            link->clear();
        }
    }
}

CAudioOutputPort& CAudioProcess::ownSource(int port)
{
    while (static_cast<int>(ownSources_.size()) <= port) {
        input(static_cast<int>(ownSources_.size()));
        ownSources_.push_back(std::make_unique<CAudioOutputPort>(graph()));
    }
    return *ownSources_[static_cast<std::size_t>(port)];
}

CAudioInputPort& CAudioProcess::ownSink(int port)
{
    while (static_cast<int>(ownSinks_.size()) <= port) {
        output(static_cast<int>(ownSinks_.size()));
        ownSinks_.push_back(std::make_unique<CAudioInputPort>(graph()));
    }
    return *ownSinks_[static_cast<std::size_t>(port)];
}

// --- audio thread

void CAudioProcess::applyEvents()
{
    for (CAudioBypassState& state : states_) {
        areLinksDirty_ |= state.evaluate(slots(), group() == kGroupOfChannel ? 0 : group());
    }
    takeUpStates();
}

bool CAudioProcess::isStateActive(int id) const
{
    for (const CAudioBypassState& state : states_) {
        if (state.id() == id) {
            return state.isActive();
        }
    }
    return false;
}

int CAudioProcess::limitStep(int count) const
{
    return fadeSamplesLeft_ > 0 ? std::min(count, fadeSamplesLeft_) : count;
}

void CAudioProcess::step(int count)
{
    const bool isWeighted = compoundDef_.isWeightedInput();
    for (std::size_t port = 0; port < ownSources_.size(); ++port) {
        CAudioInputPort& from = input(static_cast<int>(port));
        CAudioOutputPort& to = *ownSources_[port];
        to.setChannels(from.channels());
        forEachChannel(from.channels(), [&](int channel) {
            const CAudioStreamFormat* format = from.format(channel);
            to.emit(channel, from.gather(channel, count, isWeighted), count, format);
        });
    }
    const double startSec = positionSec();
    for (Child* child : order_) {
        graph().positionSec = startSec;
        child->process->process();
    }
    for (const auto& child : children_) {
        if (!child->isPlaced) {
            child->process->idle();
        }
    }
    for (std::size_t port = 0; port < ownSinks_.size(); ++port) {
        ownSinks_[port]->forwardTo(output(static_cast<int>(port)), isWeighted);
    }
    if (fadeSamplesLeft_ > 0 && (fadeSamplesLeft_ -= count) == 0) {
        endFade();
    }
}

void CAudioProcess::beSilent()
{
    CAudioProcessBase::idle();
    if (fadeSamplesLeft_ > 0) {
        endFade();
    }
    step(0);
}

void CAudioProcess::idle()
{
    CAudioProcessBase::idle();
    for (const auto& child : children_) {
        child->process->idle();
    }
}

std::uint32_t CAudioProcess::layout() const
{
    std::uint32_t sum = 0;
    for (const auto& child : children_) {
        sum = sum * 31 + child->process->layout();
    }
    return sum;
}

std::int64_t CAudioProcess::steadySamples(double rateHz) const
{
    const bool isAtRest =
        !areLinksDirty_ && fadeSamplesLeft_ == 0 &&
        std::all_of(ownSinks_.begin(), ownSinks_.end(), [](const auto& port) { return port->isAtRest(); });
    std::int64_t samples = isAtRest ? CAudioProcessBase::steadySamples(rateHz) : 0;
    for (auto child = order_.begin(); child != order_.end() && samples > 0; ++child) {
        samples = std::min(samples, (*child)->process->steadySamples(rateHz));
    }
    return samples;
}

void CAudioProcess::skip(std::int64_t samples, double rateHz)
{
    CAudioProcessBase::skip(samples, rateHz);
    for (Child* child : order_) {
        child->process->skip(samples, rateHz);
    }
}

std::uint32_t CAudioProcess::groupsWanted() const
{
    std::uint32_t groups = 0;
    for (const auto& child : children_) {
        groups |= child->process->groupsWanted();
    }
    return groups;
}

int CAudioProcess::rateFactor() const
{
    int factor = 1;
    for (const auto& child : children_) {
        factor = std::max(factor, child->process->rateFactor());
    }
    return factor;
}

void CAudioProcess::visit(CGraphVisitor& visitor) const
{
    visitor.enterCompound(*this);
    for (const Child* child : order_) {
        child->process->visit(visitor);
    }
    const auto visitLinks = [&](const Child& child) {
        for (const LinkRecord& record : child.links) {
            visitor.link({*this, record.source ? record.source->process.get() : nullptr, record.sourcePort,
                          child.process.get(), record.destinationPort, record.activeCount});
        }
    };
    for (const auto& child : children_) {
        visitLinks(*child);
    }
    visitLinks(sink_);
    visitor.leaveCompound(*this);
}

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

CAudioProcess::LinkRecord& CAudioProcess::record(Child& destination, int destinationPort, Child* source,
                                                 int sourcePort, int order)
{
    for (LinkRecord& known : destination.links) {
        if (known.source == source && known.sourcePort == sourcePort &&
            known.destinationPort == destinationPort) {
            return known;
        }
    }
    return destination.links.emplace_back(LinkRecord{source, sourcePort, destinationPort, order});
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
    for (const LinkRecord& record : child.links) {
        portInto(child, record.destinationPort).clearLinks();
    }
    for (LinkRecord& record : child.links) {
        if (!record.isLive()) {
            if (record.link->isConnected()) {
                record.link->disconnect();
            }
            continue;
        }
        if (!record.link->isConnected()) {
            record.link->connect();
        }
        portInto(child, record.destinationPort).addLink(*record.link);
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
                    trace("link to '" + (child.process ? child.process->fullName() : CString("*")) +
                              "' dropped",
                          fullName());
                }
            }
        }
    });
}

} // namespace qel
