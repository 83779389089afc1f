// A process that runs module instances on its channels.
#pragma once

#include "CAudioFade.h"
#include "CAudioProcessTerminalBase.h"
#include "CAudioStepPlan.h"

#include <utility>

namespace qel {

// One instance a channel, a group or the whole stream, as the definition says. With smooth updates a change
// of settings does not touch the running instance: a second one takes it up, and the outputs are crossfaded
// over the fade length; steps are cut where a fade ends. A change that comes during a fade starts the next
// one when that is over, with the settings of that moment.
//
// Instances that are no longer needed are kept for the next change. All are in the graph's own memory.
template <class Module>
class CAudioProcessTerminal : public CAudioProcessTerminalBase
{
public:
    using CAudioProcessTerminalBase::CAudioProcessTerminalBase;

    CError init() override
    {
        QEL_TRY(CAudioProcessTerminalBase::init(), fullName());
        units_ = CAudioVector<Unit>(CAudioAllocator<Unit>(memory()));
        spares_ = CAudioVector<CAudioPtr<Module>>(CAudioAllocator<CAudioPtr<Module>>(memory()));
        return {};
    }

    void syncLinks() override
    {
        CAudioProcessTerminalBase::syncLinks();
        const auto& wanted = places();
        while (units_.size() > wanted.size()) {
            retire(units_.back());
            units_.pop_back();
        }
        units_.resize(wanted.size());
        for (std::size_t i = 0; i < wanted.size(); ++i) {
            if (!units_[i].running || hasMoved(i)) {
                retire(units_[i]);
            }
            units_[i].place = &wanted[i];
        }
    }

    void applyEvents() override
    {
        for (Unit& unit : units_) {
            const auto settings = readSettings(*unit.place);
            if (!unit.running) {
                unit.settings = settings;
                unit.running = makeInstance(unit);
            } else if (unit.next) {
                unit.isStale = !(settings == unit.settings);
            } else if (!(settings == unit.settings)) {
                isBeginning() ? begin(unit, settings) : change(unit, settings);
            }
        }
    }

    void reset(double positionSec) override
    {
        CAudioProcessTerminalBase::reset(positionSec);
        for (Unit& unit : units_) {
            if (unit.next) {
                finishFade(unit);
            }
            if (std::exchange(unit.isStale, false)) {
                unit.settings = readSettings(*unit.place);
                unit.running->configure(unit.settings, *unit.place);
            }
            if (unit.running) {
                unit.running->reset();
            }
        }
    }

    std::int64_t steadySamples(double rateHz) const override
    {
        if (!isSettled() || (hasChanges() && !isUnheard(0))) {
            return 0;
        }
        std::int64_t samples = kForever;
        for (const Unit& unit : units_) {
            if (!unit.running) {
                return 0;
            }
            if (unit.next) {
                const double left = unit.fade.samplesLeft() * (rateHz / sampleRateHz());
                samples = std::min(samples, static_cast<std::int64_t>(left));
            }
        }
        return samples;
    }

    void skip(std::int64_t samples, double rateHz) override
    {
        CAudioProcessTerminalBase::skip(samples, rateHz);
        for (Unit& unit : units_) {
            if (unit.next) {
                unit.fade.skip(static_cast<int>(samplesHere(samples, rateHz)));
            }
        }
        if (std::any_of(units_.begin(), units_.end(), isOver)) {
            applyPassedEvents();
            for (Unit& unit : units_) {
                if (isOver(unit)) {
                    goOn(unit);
                }
            }
        }
    }

    bool takeUpSteadily(std::int64_t aheadSamples, double rateHz) override
    {
        return CAudioProcessTerminalBase::takeUpSteadily(aheadSamples, rateHz,
                                                         [&] { return applySteadily(); });
    }

protected:
    int slotCount() const override { return Module::kSlots; }
    // What the parameters mean to the instance at `place`. Overridden where that takes more than the slots.
    virtual typename Module::Settings readSettings(const CAudioModulePlace& place) const
    {
        return Module::readSettings(slots(), place);
    }
    // While instances are faded only the last change counts, when that is over.
    bool isUnheard(int count) const override
    {
        return std::all_of(units_.begin(), units_.end(), [count](const Unit& unit) {
            return unit.next && unit.fade.samplesLeft() > count;
        });
    }
    int limitStep(int count) const override
    {
        for (const Unit& unit : units_) {
            count = unit.next ? std::min(count, unit.fade.samplesLeft()) : count;
        }
        return count;
    }

    void step(int count) override
    {
        for (Unit& unit : units_) {
            CAudioModuleStep moduleStep(graph().kernels, count, unit.place->channels.size());
            CAudioOwnedInputs owned(graph().kernels);
            gatherInputs(moduleStep, owned, *unit.place, Module::kInputPorts);
            unit.running->process(moduleStep);
            if (unit.next) {
                fade(unit, moduleStep);
            }
            emitOutputs(moduleStep, *unit.place);
        }
    }

private:
    struct Unit
    {
        const CAudioModulePlace* place = nullptr; // one of places()
        typename Module::Settings settings;       // of the latest instance
        CAudioPtr<Module> running;
        CAudioPtr<Module> next; // while a fade leads to it
        CAudioFade fade;
        bool isStale = false; // settings changed during the fade
    };

    // For what the unit is set to.
    CAudioPtr<Module> makeInstance(const Unit& unit)
    {
        CAudioPtr<Module> instance;
        if (spares_.empty()) {
            instance = makeAudio<Module>(memory(), graph().kernels);
            instance->resolveKernels(graph().kernels);
        } else {
            instance = std::move(spares_.back());
            spares_.pop_back();
        }
        shareDerived(unit, *instance);
        instance->configure(unit.settings, *unit.place);
        instance->reset();
        return instance;
    }

    // Where a stream begins nothing is heard yet that the new settings could fade from.
    void begin(Unit& unit, const typename Module::Settings& settings)
    {
        unit.settings = settings;
        unit.running->configure(settings, *unit.place);
        unit.running->reset();
    }

    bool applySteadily()
    {
        for (Unit& unit : units_) {
            const auto settings = readSettings(*unit.place);
            const bool isSame = settings == unit.settings;
            if (unit.next) {
                unit.isStale = !isSame;
            } else if (!isSame && !changeSteadily(unit, settings)) {
                return false;
            }
        }
        return true;
    }

    // In place, and under a plan if one runs.
    bool changeSteadily(Unit& unit, const typename Module::Settings& settings)
    {
        if constexpr (Module::kHasFixedCalls) {
            if (!isSmooth()) {
                if (graph().plan) {
                    graph().plan->wakeTwinsOf(graph().kernels.address(unit.running->stateRef()));
                }
                change(unit, settings);
                return true;
            }
        }
        return false;
    }

    void change(Unit& unit, const typename Module::Settings& settings)
    {
        unit.settings = settings;
        if (!isSmooth()) {
            shareDerived(unit, *unit.running);
            unit.running->configure(settings, *unit.place);
            return;
        }
        unit.next = makeInstance(unit);
        unit.next->takeUp(*unit.running);
        startFade(unit.fade);
    }

    // What costs time to work out from settings is worked out for one of the channels that have them alike.
    void shareDerived(const Unit& unit, Module& instance)
    {
        if constexpr (requires { instance.takeDerived(instance); }) {
            for (const Unit* other = units_.data(); other != &unit; ++other) {
                if (other->settings == unit.settings &&
                    other->place->sampleRateHz == unit.place->sampleRateHz) {
                    instance.takeDerived(other->next ? *other->next : *other->running);
                    return;
                }
            }
        }
    }

    void fade(Unit& unit, CAudioModuleStep& moduleStep)
    {
        CAudioModuleStep nextStep(moduleStep);
        unit.next->process(nextStep);
        unit.fade.mix(moduleStep, nextStep);
        if (isOver(unit)) {
            goOn(unit);
        }
    }

    static bool isOver(const Unit& unit) { return unit.next && unit.fade.samplesLeft() == 0; }

    // Behind a fade: on to what has come during it.
    void goOn(Unit& unit)
    {
        finishFade(unit);
        if (unit.isStale) {
            unit.isStale = false;
            change(unit, readSettings(*unit.place));
        }
    }

    void finishFade(Unit& unit)
    {
        spares_.push_back(std::move(unit.running));
        unit.running = std::move(unit.next);
        unit.fade.stop();
    }

    void retire(Unit& unit)
    {
        if (unit.next) {
            finishFade(unit);
        }
        if (unit.running) {
            spares_.push_back(std::move(unit.running));
        }
        unit.isStale = false;
    }

    CAudioVector<Unit> units_;
    CAudioVector<CAudioPtr<Module>> spares_;
};

} // namespace qel
