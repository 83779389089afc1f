// A compound process: building it, and running a step of it.
#include "CAudioProcess.h"

#include "CGraphVisitor.h"
#include "Definitions/CAudioProcessDef.h"
#include "Definitions/CAudioProcessLinkDef.h"

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
    QEL_TRY(buildLinks(), fullName());
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
    if (names_.contains(name)) {
        QEL_FAIL(fullName(), "@qelstr_CAudioProcess_addProcess_DupeName Duplicate audio process name '%1'.",
                 name);
    }
    auto child = std::make_unique<Child>();
    child->name = name;
    child->isNode = process->def().getTag() == "audio:modNode";
    child->process = std::move(process);
    names_[name] = child.get();
    names_["." + name] = child.get();
    children_.push_back(std::move(child));
    return {};
}

CAudioProcessBase* CAudioProcess::findProcess(const CString& name) const
{
    const auto entry = names_.find(name);
    return entry == names_.end() ? nullptr : entry->second->process.get();
}

// The definition has checked the names against its children; a prototype is a child of the definition alone,
// so a link to one leads nowhere.
CError CAudioProcess::buildLinks()
{
    for (const CAudioProcessLinkDef* link : compoundDef_.linkDefs()) {
        const CAudioPortRef& from = link->source();
        const CAudioPortRef& to = link->destination();
        const auto source = names_.find(from.name);
        const auto destination = names_.find(to.name);
        if ((!from.isSelf && source == names_.end()) || (!to.isSelf && destination == names_.end())) {
            continue;
        }
        if (from.port >= kMaxPorts || to.port >= kMaxPorts) {
            QEL_FAIL(link->getFullName(),
                     "@qelstr_CAudioProcess_buildLinks_Port A process has ports 0 to %1 only.",
                     kMaxPorts - 1);
        }
        explicitLinks_.push_back({from.isSelf ? nullptr : source->second, from.port,
                                  to.isSelf ? &sink_ : destination->second, to.port, link->bypassStateId()});
        if (from.isSelf) {
            ownSource(from.port);
        }
        if (to.isSelf) {
            ownSink(to.port);
        }
    }
    return {};
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

} // namespace qel
