// Pools and storages of parameter values: sparse groups, fall-backs, strings and the binary form.
#include "CAudioParamStorage.h"
#include "Streams/CMemoryReader.h"
#include "Streams/CMemoryWriteBuffer.h"
#include "TreeFixture.h"

#include <cmath>
#include <random>

namespace qel::test {

namespace {

CAudioParamStorage floats(std::int32_t esize, std::vector<double> fill)
{
    CAudioParamStorage storage;
    storage.format(esize, CAudioParamStorage::kFloat);
    storage.setFill(fill);
    return storage;
}

CAudioParamStorage strings(std::vector<const char*> fill)
{
    CAudioParamData pool;
    std::vector<double> ids;
    for (const char* text : fill) {
        ids.push_back(pool.addString(text));
    }
    CAudioParamStorage storage;
    storage.format(1, CAudioParamStorage::kString);
    storage.setFill(ids, &pool);
    return storage;
}

bool put(CAudioParamStorage& storage, std::int32_t group, std::int32_t start, std::vector<double> values,
         bool resize = false)
{
    return storage.write({.group = group,
                          .start = start,
                          .count = static_cast<std::int32_t>(values.size()) / storage.getEsize(),
                          .resize = resize,
                          .esize = storage.getEsize(),
                          .values = values.data()});
}

bool putText(CAudioParamStorage& storage, std::int32_t group, std::int32_t entry, const char* text)
{
    CAudioParamData pool;
    const double id = pool.addString(text);
    return storage.write(
        {.group = group, .start = entry, .count = 1, .dtype = 1, .values = &id, .pool = &pool});
}

std::vector<double> values(const CAudioParamStorage& storage, std::int32_t group)
{
    const std::span<const double> span = storage.getValues(group);
    return {span.begin(), span.end()};
}

} // namespace

TEST(ParamStorage, FallsBackByEntryForModulesAndByGroupForStates)
{
    CAudioParamStorage storage = floats(2, {1, 2, 3, 4});
    put(storage, 1, 0, {10, 20});
    // group, entry, element, module value, state value
    const double cases[][5] = {
        {1, 0, 1, 20, 20}, // stored
        {0, 1, 0, 3, 1},   // hole: fill entry 1, against fill entry of group 0
        {1, 1, 0, 3, 3},   // behind the end of its group
        {5, 1, 1, 4, 2},   // group that is not there
        {0, 9, 1, 2, 2},   // behind the fill: the first fill entry
        {-1, -1, 0, 1, 1}, // nonsense is as good as missing
        {1, 0, 2, 0, 0},   // no such element
    };
    for (const auto& [group, entry, element, module, state] : cases) {
        const auto g = static_cast<std::int32_t>(group);
        const auto e = static_cast<std::int32_t>(entry);
        const auto n = static_cast<std::int32_t>(element);
        EXPECT_EQ(storage.get(g, e, n), module) << g << ' ' << e << ' ' << n;
        EXPECT_EQ(storage.getForState(g, e, n), state) << g << ' ' << e << ' ' << n;
    }
    EXPECT_EQ(CAudioParamStorage().get(0, 0), 0.0);
}

TEST(ParamStorage, ClampsToTheRangeWhicheverEndIsLower)
{
    CAudioParamStorage storage = floats(2, {0.25, 0.75, -0.25, 0.125});
    put(storage, 0, 0, {5, std::nan(""), -5, -5, std::nan(""), 0.5});
    storage.clamp(std::vector<double>{-1, 2}, std::vector<double>{1, -2});
    EXPECT_EQ(values(storage, 0), (std::vector<double>{1, 0.75, -1, -2, 0.25, 0.5}))
        << "NaN is no value: the entry's default stands for it";
}

TEST(ParamStorage, GivesEntriesThatShareAnIdentifierInAFileTheirOwnStrings)
{
    CMemoryWriteBuffer file;
    for (const std::int32_t word : {1, 1, 1, 1, /* pool */ 1, 5, 1}) {
        EXPECT_OK(file.writeI32(word));
    }
    EXPECT_OK(file.writeString("both"));
    for (const std::int32_t word : {2, 5, 5}) {
        EXPECT_OK(file.writeI32(word));
    }
    CByteBuffer bytes;
    file.copyTo(bytes);
    CAudioParamStorage storage = strings({"fill"});
    CMemoryReader reader(bytes.bytes());
    ASSERT_OK(storage.load(reader));
    putText(storage, 0, 0, "changed");
    EXPECT_EQ(storage.getString(0, 1), "both");
}

// A plain model beside the storage: every read must agree after any sequence of writes.
TEST(ParamStorage, AgreesWithAPlainModelOverRandomWrites)
{
    const std::uint32_t seed = 20240;
    std::mt19937 random(seed);
    const auto below = [&random](std::int32_t n) {
        return static_cast<std::int32_t>(random() % static_cast<std::uint32_t>(n));
    };
    const std::vector<double> fill = {-1, -2, -3};
    CAudioParamStorage storage = floats(1, fill);
    std::vector<std::vector<double>> model;
    const auto fillAt = [&fill](std::size_t entry) { return entry < fill.size() ? fill[entry] : fill[0]; };
    for (int step = 0; step < 5000; ++step) {
        const bool whole = below(50) == 0;
        const std::int32_t group = whole ? CAudioParamChange::kWholeParam : below(10);
        const std::int32_t start = below(6);
        const std::vector<double> written(static_cast<std::size_t>(below(5)), static_cast<double>(step));
        const bool resize = below(4) == 0;
        ASSERT_TRUE(put(storage, group, start, written, resize));
        if (whole) {
            model.clear();
        }
        if (!whole || !written.empty()) {
            const auto g = whole ? 0 : static_cast<std::size_t>(group);
            const std::size_t end = static_cast<std::size_t>(start) + written.size();
            model.resize(std::max(model.size(), g + 1));
            while (model[g].size() < end) {
                model[g].push_back(fillAt(model[g].size()));
            }
            std::copy(written.begin(), written.end(), model[g].begin() + start);
            if (resize) {
                model[g].resize(end);
            }
        }
        ASSERT_EQ(storage.getGroupCount(), static_cast<std::int32_t>(model.size()))
            << "seed " << seed << " step " << step;
        for (std::size_t g = 0; g < model.size(); ++g) {
            ASSERT_EQ(values(storage, static_cast<std::int32_t>(g)), model[g])
                << "seed " << seed << " step " << step;
        }
    }
}

} // namespace qel::test
