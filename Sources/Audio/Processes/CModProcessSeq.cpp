// Processes in a row, of which a run works.
#include "CModProcessSeq.h"

#include "CGraphVisitor.h"
#include "Definitions/CAudioProcessDefBase.h"

namespace qel {

// --- building

CError CModProcessSeq::init()
{
    QEL_TRY(CAudioProcessBase::init(), fullName());
    drain_ = std::make_unique<CAudioInputPort>(graph());
    addPort();
    throughLink_ = std::make_unique<CAudioLink>(graph(), *feeds_[0]);
    return {};
}

CError CModProcessSeq::addMember(const CAudioProcessDefBase& definition, const CString& name)
{
    Member member;
    member.process = definition.createProcess();
    if (!member.process) {
        QEL_FAIL(fullName(), "@qelstr_CAudioProcess_init_ProcessDefClassInvalid "
                             "Audio process def of invalid class supplied.");
    }
    member.process->place(graph(), fullName() + "." + name, group());
    QEL_TRY(member.process->init(), fullName());
    for (const auto& port : feeds_) {
        member.feedLinks.push_back(std::make_unique<CAudioLink>(graph(), *port));
    }
    if (!members_.empty()) {
        member.chainLink = std::make_unique<CAudioLink>(graph(), members_.back().process->output(0));
    }
    member.drainLink = std::make_unique<CAudioLink>(graph(), member.process->output(0));
    members_.push_back(std::move(member));
    return {};
}

void CModProcessSeq::addPort()
{
    feeds_.push_back(std::make_unique<CAudioOutputPort>(graph()));
    for (Member& member : members_) {
        member.feedLinks.push_back(std::make_unique<CAudioLink>(graph(), *feeds_.back()));
    }
}

CError CModProcessSeq::bindParams()
{
    QEL_TRY(CAudioProcessBase::bindParams(), fullName());
    for (const Member& member : members_) {
        QEL_TRY(member.process->bindParams(), fullName());
    }
    return {};
}

void CModProcessSeq::registerKernels()
{
    for (const Member& member : members_) {
        member.process->registerKernels();
    }
}

void CModProcessSeq::resolveKernels()
{
    for (const Member& member : members_) {
        member.process->resolveKernels();
    }
}

void CModProcessSeq::disconnectAll()
{
    for (const Member& member : members_) {
        member.process->disconnectAll();
    }
    CAudioProcessBase::disconnectAll();
    isWired_ = false;
}

// --- audio thread

void CModProcessSeq::activate(std::size_t first, std::size_t end)
{
    for (std::size_t i = first; i < end; ++i) {
        if (!isActive(i)) {
            members_[i].process->reset(positionSec());
        }
    }
    first_ = first;
    end_ = end;
    isWired_ = false;
}

// Links that are not in use must be out of the ports too: a port waits for every link that it knows.
void CModProcessSeq::wire()
{
    isWired_ = true;
    while (static_cast<int>(feeds_.size()) < inputCount()) {
        addPort();
    }
    const auto set = [](CAudioLink& link, bool isWanted, CAudioInputPort& destination) {
        if (isWanted != link.isConnected()) {
            isWanted ? link.connect() : link.disconnect();
        }
        if (isWanted) {
            destination.addLink(link);
        }
    };
    drain_->clearLinks();
    set(*throughLink_, first_ == end_, *drain_);
    for (std::size_t i = 0; i < members_.size(); ++i) {
        Member& member = members_[i];
        for (std::size_t port = 0; port < feeds_.size(); ++port) {
            CAudioInputPort& in = member.process->input(static_cast<int>(port));
            in.clearLinks();
            set(*member.feedLinks[port], isActive(i) && i == first_, in);
        }
        if (member.chainLink) {
            set(*member.chainLink, isActive(i) && i != first_, member.process->input(0));
        }
        set(*member.drainLink, isActive(i) && i + 1 == end_, *drain_);
    }
}

void CModProcessSeq::step(int count)
{
    if (!isWired_ || static_cast<int>(feeds_.size()) < inputCount()) {
        wire();
    }
    feed(count);
    const double startSec = positionSec();
    for (std::size_t i = 0; i < members_.size(); ++i) {
        if (isActive(i)) {
            graph().positionSec = startSec;
            members_[i].process->process();
        } else {
            members_[i].process->idle();
        }
    }
    drain_->forwardTo(output(0));
}

void CModProcessSeq::beSilent()
{
    CAudioProcessBase::idle();
    step(0);
}

void CModProcessSeq::feed(int count)
{
    for (std::size_t port = 0; port < feeds_.size(); ++port) {
        const CAudioInputPort& from = input(static_cast<int>(port));
        feeds_[port]->setChannels(from.channels());
        forEachChannel(from.channels(), [&](int channel) {
            const CAudioStreamFormat* channelFormat = from.format(channel);
            feeds_[port]->emit(channel, from.gather(channel, count, def().isWeightedInput()), count,
                               channelFormat);
        });
    }
}

void CModProcessSeq::reset(double positionSec)
{
    CAudioProcessBase::reset(positionSec);
    for (const Member& member : members_) {
        member.process->reset(positionSec);
        member.drainLink->clear();
    }
    throughLink_->clear();
}

void CModProcessSeq::idle()
{
    CAudioProcessBase::idle();
    for (const Member& member : members_) {
        member.process->idle();
    }
}

void CModProcessSeq::visit(CGraphVisitor& visitor) const
{
    visitor.enterCompound(*this);
    const CAudioProcessBase* previous = nullptr;
    for (std::size_t i = first_; i < end_; ++i) {
        members_[i].process->visit(visitor);
    }
    for (std::size_t i = first_; i < end_; ++i) {
        visitor.link({*this, previous, 0, members_[i].process.get(), 0, 1});
        previous = members_[i].process.get();
    }
    visitor.link({*this, previous, 0, nullptr, 0, 1});
    visitor.leaveCompound(*this);
}

} // namespace qel
