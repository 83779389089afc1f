// Random walks through everything that changes an instance's state, beside a model that keeps whole states.
#include "PresetFixture.h"
#include "Streams/ResourceMap.h"

#include <algorithm>
#include <optional>
#include <random>

namespace qel::test {
namespace {

using Groups = std::vector<std::optional<double>>; // of a single number; nothing where the group is empty

// What a preset of the test holds; what it does not name returns to its default.
struct Content
{
    CString title;
    std::optional<Groups> gain;
    std::optional<Groups> drive;
    std::optional<std::vector<double>> routing;
    std::optional<double> oversampling;
    std::optional<double> oldOversampling; // under the key from before it moved
};

// What a user sees.
struct State
{
    Groups gain{1.0};
    Groups drive{2.0};
    std::vector<double> routing{1.0, 2.0, 0.0};
    double oversampling = 1.0;
    CString title = "Default";

    State loaded(const Content& content) const
    {
        State next;
        next.gain = content.gain.value_or(next.gain);
        next.drive = content.drive.value_or(next.drive);
        next.routing = content.routing.value_or(next.routing);
        next.oversampling = content.oversampling.value_or(content.oldOversampling.value_or(oversampling));
        next.title = content.title;
        return next;
    }
    // Into one group; what has one group for all takes no part.
    State loadedInto(std::size_t group, const Content& content) const
    {
        State next = *this;
        replace(next.gain, group, content.gain, 1.0);
        replace(next.drive, group, content.drive, 2.0);
        return next;
    }
    static void replace(Groups& groups, std::size_t group, const std::optional<Groups>& with, double fill)
    {
        const auto value = with ? with->front() : group == 0 ? std::optional(fill) : std::nullopt;
        if (value || group < groups.size()) {
            put(groups, group, value);
        }
    }
    static void put(Groups& groups, std::size_t group, std::optional<double> value)
    {
        groups.resize(std::max(groups.size(), group + 1));
        groups[group] = value;
    }

    friend bool operator==(const State& a, const State& b) = default;
};

// The states before the oldest step and behind each one, and the list that the user sees.
struct History
{
    explicit History(State start = {}) : states{std::move(start)} {}

    // A step of a kind merges into the one before of the same kind; one that changes nothing is none.
    void add(const State& state, const std::string& name, const std::string& kind = {})
    {
        if (state == states[position]) {
            return;
        }
        if (!kind.empty() && position > 0 && position + 1 == states.size() && kinds.back() == kind) {
            states.back() = state;
            return;
        }
        const CString& before = states[position].title;
        const bool isRenamed = before != state.title;
        titles.resize(position);
        titles.push_back(isRenamed ? std::optional(std::pair(before, state.title)) : std::nullopt);
        states.resize(position + 1);
        kinds.resize(position);
        names.resize(position + 1);
        if (kinds.size() == 32) {
            states.erase(states.begin());
            kinds.erase(kinds.begin());
            titles.erase(titles.begin());
            names.erase(names.begin() + 1);
        }
        states.push_back(state);
        kinds.push_back(kind);
        names.push_back(name);
        position = kinds.size();
    }

    // Where that leads from `now`. A step that wrote a title writes it again, others leave it alone.
    State walk(std::size_t target, State now)
    {
        CString title = now.title;
        for (; position > target; --position) {
            title = titles[position - 1] ? titles[position - 1]->first : title;
        }
        for (; position < target; ++position) {
            title = titles[position] ? titles[position]->second : title;
        }
        states[position].title = title;
        return states[position];
    }

    std::vector<State> states;
    std::vector<std::string> kinds;
    std::vector<std::optional<std::pair<CString, CString>>>
        titles; // before and after, of steps that write it
    std::vector<std::string> names{"Undo history start"};
    std::size_t position = 0;
};

// A program, or the other slot of A/B.
struct Place
{
    State state;
    History history;
    std::optional<Content> unvisited;
};

class RegistryModel : public PresetFixture, public ::testing::WithParamInterface<unsigned>
{
protected:
    RegistryModel()
    {
        for (int i = 0; i < 5; ++i) {
            rom_.push_back(anyContent("7qtz:R"));
        }
        const CAudioPresetBank bank = bankOf(rom_);
        CMemoryWriteBuffer chunk;
        EXPECT_OK(chunk.writeCompressedData(CByteBuffer(bodyOf(bank)), CAudioPresetBank::kChunkId));
        CByteBuffer file;
        chunk.copyTo(file);
        registerResource("ModelROM.cbf", file.bytes());
        makeInstance("ModelROM.cbf");
        registerResource("ModelROM.cbf", {});
        takePrograms(rom_);
        EXPECT_OK(master_->startProgram());
    }

    Place& now() { return places_[program_]; }
    State& state() { return now().state; }
    std::size_t any(std::size_t count) { return random_() % count; }
    double anyValue() { return static_cast<double>(any(6)); }

    Groups anyGroups()
    {
        Groups groups(1 + any(3));
        for (auto& value : groups) {
            value = any(4) == 0 ? std::nullopt : std::optional(anyValue());
        }
        return groups;
    }
    Content anyContent(const std::string& name)
    {
        Content content;
        content.title = CString(name.substr(name.find(':') + 1) + std::to_string(any(4)));
        if (any(4) != 0) {
            content.gain = anyGroups();
        }
        if (any(2) == 0) {
            content.drive = anyGroups();
        }
        if (any(2) == 0) {
            content.routing = std::vector<double>(1 + any(5), anyValue());
        }
        if (any(3) == 0) {
            content.oversampling = static_cast<double>(any(5));
        }
        if (any(3) == 0) {
            content.oldOversampling = static_cast<double>(any(5));
        }
        return content;
    }

    static CAudioParamStorage recordOf(const Groups& groups)
    {
        CAudioParamStorage storage;
        storage.format(1, CAudioParamStorage::kFloat);
        for (std::size_t i = 0; i < groups.size(); ++i) {
            const double value = groups[i].value_or(0.0);
            storage.write({.group = static_cast<std::int32_t>(i),
                           .count = groups[i] ? 1 : 0,
                           .resize = true,
                           .values = &value});
        }
        return storage;
    }
    static CAudioPreset presetWith(const char* id, const Content& content, const char* routingKey)
    {
        CAudioPreset preset(CAudioPreset::makeName(id, content.title));
        const auto put = [&](const char* key, const CAudioParamStorage& values) {
            EXPECT_OK(preset.setValues(key, CString("audio.") + key, values));
        };
        if (content.gain) {
            put("gain", recordOf(*content.gain));
        }
        if (content.drive) {
            put("drive", recordOf(*content.drive));
        }
        if (content.routing) {
            CAudioParamStorage storage;
            storage.format(1, CAudioParamStorage::kFloat);
            storage.write({.count = static_cast<std::int32_t>(content.routing->size()),
                           .values = content.routing->data()});
            put(routingKey, storage);
        }
        if (content.oversampling) {
            put("oversampling", valueRecord(*content.oversampling));
        }
        if (content.oldOversampling) {
            put("io-params.oversampling", valueRecord(*content.oldOversampling));
        }
        return preset;
    }
    static CAudioPreset masterPreset(const Content& content)
    {
        return presetWith("7qtz", content, "io-params.routing");
    }
    static CAudioPresetBank bankOf(const std::vector<Content>& contents)
    {
        CAudioPresetBank bank;
        for (const Content& content : contents) {
            bank.add(masterPreset(content));
        }
        return bank;
    }

    void visit()
    {
        if (const auto content = std::exchange(now().unvisited, std::nullopt)) {
            now().state = last_.loaded(*content);
            now().history = History(now().state);
        }
    }
    void takePrograms(const std::vector<Content>& contents)
    {
        places_.clear();
        for (const Content& content : contents) {
            places_.push_back({{}, History(), content});
        }
        program_ = program_ < places_.size() ? program_ : 0;
        visit();
    }

    // --- what a user does

    void editKnob()
    {
        const bool isMergeable = any(2) == 0;
        const std::size_t knob = any(4);
        CAudioParam* const params[] = {gain_, drive_, oversampling_, routing_};
        CAudioParam& param = *params[knob];
        std::string kind = param.getName().toUtf8();
        const double value = knob == 2 ? static_cast<double>(any(5)) : anyValue();
        if (knob == 3) {
            kind += editRouting(value, isMergeable);
        } else {
            const std::size_t group = knob == 2 ? 0 : any(4);
            edit(param, value, static_cast<std::int32_t>(group), isMergeable);
            kind += std::to_string(group);
            if (knob == 2) {
                state().oversampling = value;
            } else {
                State::put(knob == 0 ? state().gain : state().drive, group, value);
            }
        }
        now().history.add(state(), param.getName().toUtf8() + " change", isMergeable ? kind : "");
    }
    // One entry, perhaps behind the end; tells which entries that wrote.
    std::string editRouting(double value, bool isMergeable)
    {
        std::vector<double>& routing = state().routing;
        const std::size_t entry = any(6);
        const std::size_t start = std::min(entry, routing.size());
        CAudioParamUndoStep step(routing_->getName() + " change", routing_, isMergeable);
        CAudioParamContext context;
        context.recorder = &step;
        routing_->setValue(0, static_cast<std::int32_t>(entry), 0, value, context);
        undo_->addStep(std::move(step));
        constexpr double kDefaults[] = {1.0, 2.0, 0.0};
        while (routing.size() <= entry) {
            routing.push_back(routing.size() < 3 ? kDefaults[routing.size()] : 1.0);
        }
        routing[entry] = value;
        return " " + std::to_string(start) + " " + std::to_string(entry);
    }
    // The same control of several groups, or several controls, in one go.
    void editSeveral()
    {
        const bool isMergeable = any(2) == 0;
        const std::size_t first = any(3);
        CAudioParamUndoStep step("Several change", this, isMergeable);
        {
            CAudioParamContext context;
            context.recorder = &step;
            const CAudioParamContext::Scope scope(context);
            for (std::size_t group = first; group < 3; ++group) {
                const double value = anyValue();
                gain_->setValue(static_cast<std::int32_t>(group), 0, 0, value, context);
                drive_->setValue(static_cast<std::int32_t>(group), 0, 0, value, context);
                State::put(state().gain, group, value);
                State::put(state().drive, group, value);
            }
        }
        undo_->addStep(std::move(step));
        now().history.add(state(), "Several change", isMergeable ? "several" + std::to_string(first) : "");
    }
    void loadPreset()
    {
        const Content content = anyContent("7qtz:L");
        ASSERT_OK(activate(*master_, masterPreset(content)));
        state() = state().loaded(content);
        now().history.add(state(), "Master preset activate");
    }
    void loadIntoGroup()
    {
        const std::size_t group = any(4);
        const Content content = anyContent("7qtz:G");
        ASSERT_OK(activate(*master_, masterPreset(content), false, static_cast<std::int32_t>(group)));
        state() = state().loadedInto(group, content);
        // Nothing declares names for groups, so they go by their numbers.
        now().history.add(state(), "Master preset (" + std::to_string(group + 1) + ") activate");
    }
    void loadRouting()
    {
        Content content = anyContent("QLIO:I");
        content.gain = content.drive = std::nullopt;
        content.oversampling = content.oldOversampling = std::nullopt;
        ASSERT_OK(activate(*io_, presetWith("QLIO", content, "routing")));
        state().routing = content.routing.value_or(State().routing);
        now().history.add(state(), "Routing preset activate");
    }
    void loadFactory()
    {
        const std::size_t index = any(rom_.size());
        ASSERT_OK(master_->activateROMPreset(static_cast<std::int32_t>(index)));
        state() = state().loaded(rom_[index]);
        now().history.add(state(), "ROM preset activate");
    }
    void resetAll()
    {
        master_->masterReset();
        state() = State();
        now().history.add(state(), "Master reset");
    }
    void rename()
    {
        state().title = CString("N" + std::to_string(any(3)));
        master_->setProgramName(static_cast<std::int32_t>(program_), state().title, true);
        now().history.add(state(), "Program name change");
    }
    void walk()
    {
        const std::size_t target = any(now().history.states.size() + 1);
        undo_->moveTo(static_cast<std::int32_t>(target));
        if (target < now().history.states.size()) {
            state() = now().history.walk(target, state());
        }
    }
    void changeProgram()
    {
        last_ = state();
        program_ = any(places_.size());
        ASSERT_OK(master_->setProgram(static_cast<std::int32_t>(program_)));
        visit();
    }
    void loadBank()
    {
        std::vector<Content> contents;
        for (std::size_t i = 0; i < 1 + any(6); ++i) {
            contents.push_back(anyContent("7qtz:B"));
        }
        last_ = state();
        ASSERT_OK(activateBank(*master_, bankOf(contents)));
        takePrograms(contents);
        alternate_.reset();
        isB_ = false;
    }
    void swapAB()
    {
        ASSERT_OK(master_->abSwap());
        isB_ = !isB_;
        if (!alternate_) {
            alternate_ = Place{state(), History(state()), {}};
        }
        const CString title = state().title;
        std::swap(now(), *alternate_);
        // Its name stays.
        state().title = title;
        now().history.states[now().history.position].title = title;
    }
    void storeAB()
    {
        ASSERT_OK(master_->abStore());
        alternate_ = now();
    }

    void step()
    {
        using Deed = void (RegistryModel::*)();
        constexpr Deed kDeeds[] = {
            &RegistryModel::editKnob,    &RegistryModel::editKnob,      &RegistryModel::editKnob,
            &RegistryModel::editKnob,    &RegistryModel::editKnob,      &RegistryModel::editSeveral,
            &RegistryModel::editSeveral, &RegistryModel::loadPreset,    &RegistryModel::loadIntoGroup,
            &RegistryModel::loadRouting, &RegistryModel::loadFactory,   &RegistryModel::resetAll,
            &RegistryModel::rename,      &RegistryModel::walk,          &RegistryModel::walk,
            &RegistryModel::walk,        &RegistryModel::changeProgram, &RegistryModel::swapAB,
            &RegistryModel::storeAB,
        };
        const Deed deed = any(200) == 0 ? &RegistryModel::loadBank : kDeeds[any(std::size(kDeeds))];
        (this->*deed)();
    }

    static Groups groupsOf(const CAudioParam& param)
    {
        const CAudioParamStorage& values = param.getCurrent();
        Groups groups;
        for (std::int32_t group = 0; group < values.getGroupCount(); ++group) {
            groups.push_back(values.getCount(group) ? std::optional(values.get(group, 0)) : std::nullopt);
        }
        return groups;
    }
    State seen() const
    {
        const auto routing = routing_->getCurrent().getValues(0);
        return {.gain = groupsOf(*gain_),
                .drive = groupsOf(*drive_),
                .routing = {routing.begin(), routing.end()},
                .oversampling = oversampling_->getValue(0, 0),
                .title = presetName_->getString(0, 0)};
    }

    std::mt19937 random_{GetParam()};
    std::vector<Content> rom_;
    std::size_t program_ = 0;
    std::vector<Place> places_;
    std::optional<Place> alternate_;
    bool isB_ = false;
    State last_; // of the program that was left
};

TEST_P(RegistryModel, RandomWalksEndWhereTheModelSays)
{
    Slot gain1(*gain_, 1);
    Slot drive(*drive_, 0);
    for (int i = 0; i < 5000; ++i) {
        step();
        SCOPED_TRACE("step " + std::to_string(i));
        ASSERT_EQ(position(), static_cast<std::int32_t>(now().history.position));
        ASSERT_EQ(steps(), now().history.names);
        ASSERT_TRUE(seen() == state());
        ASSERT_EQ(master_->getProgram(), static_cast<std::int32_t>(program_));
        ASSERT_EQ(master_->getCurrentProgramName(), state().title);
        ASSERT_EQ(master_->isB(), isB_);
        if (i % 7 == 0) {
            callAudio();
            gain1.drain();
            drive.drain();
            ASSERT_EQ(gain1.storage.get(1, 0), gain_->getValue(1, 0));
            ASSERT_EQ(drive.storage.get(0, 0), drive_->getValue(0, 0));
        }
    }
}

INSTANTIATE_TEST_SUITE_P(Seeds, RegistryModel, ::testing::Values(1u, 2u, 3u, 20240517u));

} // namespace
} // namespace qel::test
