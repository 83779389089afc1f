// Random walks through everything that changes an instance's state, beside a model that keeps whole states.
#include "PresetInstance.h"

#include <algorithm>
#include <map>
#include <random>

namespace qel::test {
namespace {

// gain of groups 0 and 1, drive, oversampling, title: what a user sees.
struct State
{
    double gain0 = 1.0;
    double gain1 = 1.0;
    double drive = 2.0;
    double oversampling = 1.0;
    CString title = "Default";

    friend bool operator==(const State& a, const State& b) = default;
};

// The states before the oldest step and behind each one.
struct History
{
    explicit History(State start = {}) : states{std::move(start)} {}

    void add(const State& state, const std::string& kind, bool mergeable)
    {
        if (mergeable && position > 0 && position + 1 == states.size() && kinds.back() == kind) {
            states.back() = state;
            return;
        }
        states.resize(position + 1);
        kinds.resize(position);
        if (kinds.size() == 32) {
            states.erase(states.begin());
            kinds.erase(kinds.begin());
        }
        states.push_back(state);
        kinds.push_back(mergeable ? kind : std::string());
        position = kinds.size();
    }

    std::vector<State> states;
    std::vector<std::string> kinds;
    std::size_t position = 0;
};

struct Slot2
{
    State state;
    History history;
};

class RegistryModel : public PresetInstanceTest
{
protected:
    static constexpr std::size_t kPrograms = 4;

    RegistryModel()
    {
        makeInstance();
        CAudioPresetBank bank;
        for (std::size_t i = 0; i < kPrograms; ++i) {
            const CString title = CString("P") + CString::number(static_cast<std::int64_t>(i));
            const double gain = 10.0 + static_cast<double>(i);
            CAudioPreset preset = presetOf("", {{"gain", gain}});
            preset.setName(CAudioPreset::makeName("7qtz", title));
            bank.add(preset);
            model_[i].state = State{.gain0 = gain, .title = title};
            model_[i].history = History(model_[i].state);
        }
        EXPECT_OK(activateBank(*master_, bank));
    }

    Slot2& now() { return model_[program_]; }
    State& state() { return now().state; }
    double anyValue() { return static_cast<double>(random_() % 6); }

    void editKnob()
    {
        static constexpr const char* kKinds[] = {"gain0", "gain1", "drive", "oversampling"};
        const std::size_t knob = random_() % 4;
        double* const values[] = {&state().gain0, &state().gain1, &state().drive, &state().oversampling};
        CAudioParam* const params[] = {gain_, gain_, drive_, oversampling_};
        const double value = std::min(anyValue(), knob == 3 ? 4.0 : 5.0);
        const bool mergeable = random_() % 2 == 0;
        // The first write to the group brings it into being, even with the value it read as before.
        const bool brings = knob == 1 && gain_->getCurrent().getCount(1) == 0;
        edit(*params[knob], value, knob == 1 ? 1 : 0, mergeable);
        if (*values[knob] != value || brings) {
            *values[knob] = value;
            now().history.add(state(), kKinds[knob], mergeable);
        }
    }

    void loadPreset()
    {
        State loaded{.oversampling = state().oversampling};
        CAudioPreset preset;
        const auto put = [&](const char* key, double& value) {
            value =
                key == std::string_view("io-params.oversampling") ? std::min(anyValue(), 4.0) : anyValue();
            EXPECT_OK(preset.setValues(key, CString("audio.") + key, valueRecord(value)));
        };
        if (random_() % 4 != 0) {
            put("gain", loaded.gain0);
        }
        if (random_() % 2 == 0) {
            put("drive", loaded.drive);
        }
        if (random_() % 4 == 0) {
            put("io-params.oversampling", loaded.oversampling);
        }
        loaded.title = CString("L") + CString::number(static_cast<std::int64_t>(random_() % 3));
        preset.setName(CAudioPreset::makeName("7qtz", loaded.title));
        applyLoaded(preset, loaded);
    }

    void applyLoaded(const CAudioPreset& preset, const State& loaded)
    {
        const bool groupGoes = gain_->getCurrent().getGroupCount() > 1;
        ASSERT_OK(activate(*master_, preset));
        if (loaded != state() || groupGoes) {
            state() = loaded;
            now().history.add(state(), "", false);
        }
    }

    void resetAll()
    {
        const bool groupGoes = gain_->getCurrent().getGroupCount() > 1;
        master_->masterReset();
        if (state() != State() || groupGoes) {
            state() = State();
            now().history.add(state(), "", false);
        }
    }

    void rename()
    {
        const CString title = CString("N") + CString::number(static_cast<std::int64_t>(random_() % 3));
        master_->setProgramName(static_cast<std::int32_t>(program_), title, true);
        if (state().title != title) {
            state().title = title;
            now().history.add(state(), "", false);
        }
    }

    void walk()
    {
        const auto target = static_cast<std::size_t>(random_() % (now().history.states.size() + 1));
        undo_->moveTo(static_cast<std::int32_t>(target));
        if (target < now().history.states.size()) {
            now().history.position = target;
            state() = now().history.states[target];
        }
    }

    void swapAB()
    {
        ASSERT_OK(master_->abSwap());
        if (!alternate_) {
            alternate_ = Slot2{state(), History(state())};
        }
        std::swap(now(), *alternate_);
    }

    void step()
    {
        switch (random_() % 16) {
        case 0:
            loadPreset();
            break;
        case 1:
            program_ = random_() % kPrograms;
            ASSERT_OK(master_->setProgram(static_cast<std::int32_t>(program_)));
            break;
        case 2:
            swapAB();
            break;
        case 3:
            ASSERT_OK(master_->abStore());
            alternate_ = now();
            break;
        case 4:
            resetAll();
            break;
        case 5:
            rename();
            break;
        case 6:
        case 7:
        case 8:
            walk();
            break;
        default:
            editKnob();
        }
    }

    State seen() const
    {
        return {.gain0 = gain_->getValue(0, 0),
                .gain1 = gain_->getValue(1, 0),
                .drive = drive_->getValue(0, 0),
                .oversampling = oversampling_->getValue(0, 0),
                .title = presetName_->getString(0, 0)};
    }

    std::mt19937 random_{20240517};
    std::size_t program_ = 0;
    std::map<std::size_t, Slot2> model_;
    std::optional<Slot2> alternate_;
};

TEST_F(RegistryModel, RandomWalksEndWhereTheModelSays)
{
    Slot gain0(*gain_, 0);
    Slot drive(*drive_, 0);
    for (int i = 0; i < 20000; ++i) {
        step();
        ASSERT_EQ(position(), static_cast<std::int32_t>(now().history.position)) << "step " << i;
        ASSERT_EQ(steps().size(), now().history.states.size()) << "step " << i;
        ASSERT_TRUE(seen() == state()) << "step " << i;
        ASSERT_EQ(master_->getCurrentProgramName(), state().title) << "step " << i;
        if (i % 7 == 0) {
            callAudio();
            gain0.drain();
            drive.drain();
            ASSERT_EQ(gain0.storage.get(0, 0), state().gain0) << "step " << i;
            ASSERT_EQ(drive.storage.get(0, 0), state().drive) << "step " << i;
        }
    }
}

} // namespace
} // namespace qel::test
