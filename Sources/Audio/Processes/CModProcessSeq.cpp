// Processes in a row, of which a run works.
#include "CModProcessSeq.h"

#include "CGraphVisitor.h"
#include "Definitions/CAudioProcessDefBase.h"

#include <algorithm>

namespace qel {

// --- building

CError CModProcessSeq::init()
{
    QEL_TRY(CAudioProcessBase::init(), fullName());
    drain_ = std::make_unique<CAudioInputPort>(graph());
    drain_->makeRoom(2); // two runs, while one fades to the other
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

void CModProcessSeq::followParams()
{
    CAudioProcessBase::followParams();
    for (const Member& member : members_) {
        member.process->followParams();
    }
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
    wanted_ = {first, end};
    if (fadeSamplesLeft_ > 0) {
        endFade();
    }
    start(wanted_);
}

void CModProcessSeq::fadeTo(std::size_t first, std::size_t end)
{
    wanted_ = {first, end};
    if (isBeginning()) {
        activate(first, end);
    } else if (fadeSamplesLeft_ == 0 && !(wanted_ == run_)) {
        leaving_ = run_;
        start(wanted_);
        fadeSamplesLeft_ = cutFadeSamples(sampleRateHz());
        wire();
        lastLink(leaving_).startFade(false);
        lastLink(run_).startFade(true);
    }
}

void CModProcessSeq::start(const Run& run)
{
    for (std::size_t i = run.first; i < run.end; ++i) {
        if (!run_.has(i)) {
            members_[i].process->reset(positionSec());
        }
    }
    run_ = run;
    isWired_ = false;
}

void CModProcessSeq::endFade()
{
    fadeSamplesLeft_ = 0;
    lastLink(run_).endFade();
    wire();
}

int CModProcessSeq::limitStep(int count) const
{
    return fadeSamplesLeft_ > 0 ? std::min(count, fadeSamplesLeft_) : count;
}

namespace {

void setLink(CAudioLink& link, bool isWanted, CAudioInputPort& destination)
{
    if (isWanted != link.isConnected()) {
        isWanted ? link.connect() : link.disconnect();
    }
    if (isWanted) {
        destination.addLink(link);
    }
}

} // namespace

// Links that are not in use must be out of the ports too: a port waits for every link that it knows.
void CModProcessSeq::wire()
{
    isWired_ = true;
    while (static_cast<int>(feeds_.size()) < inputCount()) {
        addPort();
    }
    drain_->clearLinks();
    setLink(*throughLink_, run_.isEmpty() || (fadeSamplesLeft_ > 0 && leaving_.isEmpty()), *drain_);
    for (std::size_t i = 0; i < members_.size(); ++i) {
        wireMember(i);
    }
}

void CModProcessSeq::wireMember(std::size_t place)
{
    Member& member = members_[place];
    const Run& run = run_.has(place) ? run_ : leaving_;
    const bool isWanted = isAtWork(place);
    for (std::size_t port = 0; port < feeds_.size(); ++port) {
        CAudioInputPort& in = member.process->input(static_cast<int>(port));
        in.clearLinks();
        setLink(*member.feedLinks[port], isWanted && place == run.first, in);
    }
    if (member.chainLink) {
        setLink(*member.chainLink, isWanted && place != run.first, member.process->input(0));
    }
    setLink(*member.drainLink, isWanted && place + 1 == run.end, *drain_);
}

void CModProcessSeq::step(int count)
{
    if (!isWired_ || static_cast<int>(feeds_.size()) < inputCount()) {
        wire();
    }
    feed(count);
    const double startSec = positionSec();
    for (std::size_t i = 0; i < members_.size(); ++i) {
        if (isAtWork(i)) {
            graph().positionSec = startSec;
            members_[i].process->process();
        } else {
            members_[i].process->idle();
        }
    }
    drain_->forwardTo(output(0));
    if (fadeSamplesLeft_ > 0 && (fadeSamplesLeft_ -= count) == 0) {
        endFade();
        fadeTo(wanted_.first, wanted_.end);
    }
}

void CModProcessSeq::beSilent()
{
    CAudioProcessBase::idle();
    if (fadeSamplesLeft_ > 0) {
        activate(wanted_.first, wanted_.end);
    }
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
    if (fadeSamplesLeft_ > 0) {
        activate(wanted_.first, wanted_.end);
    }
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

std::int64_t CModProcessSeq::steadySamples(double rateHz) const
{
    const bool isAtRest = isWired_ && fadeSamplesLeft_ == 0 && wanted_ == run_ && drain_->isAtRest();
    std::int64_t samples = isAtRest ? CAudioProcessBase::steadySamples(rateHz) : 0;
    for (std::size_t i = run_.first; i < run_.end && samples > 0; ++i) {
        samples = std::min(samples, members_[i].process->steadySamples(rateHz));
    }
    return samples;
}

void CModProcessSeq::skip(std::int64_t samples, double rateHz)
{
    CAudioProcessBase::skip(samples, rateHz);
    for (std::size_t i = run_.first; i < run_.end; ++i) {
        members_[i].process->skip(samples, rateHz);
    }
}

void CModProcessSeq::visit(CGraphVisitor& visitor) const
{
    visitor.enterCompound(*this);
    const CAudioProcessBase* previous = nullptr;
    for (std::size_t i = run_.first; i < run_.end; ++i) {
        members_[i].process->visit(visitor);
    }
    for (std::size_t i = run_.first; i < run_.end; ++i) {
        visitor.link({*this, previous, 0, members_[i].process.get(), 0, 1});
        previous = members_[i].process.get();
    }
    visitor.link({*this, previous, 0, nullptr, 0, 1});
    visitor.leaveCompound(*this);
}

} // namespace qel
