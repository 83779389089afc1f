// Number syntax, attribute values, error lines and the array with inline room.
#include "CAttrValue.h"
#include "CError.h"
#include "CInlineArray.h"
#include "NumberSyntax.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <thread>

namespace qel {
namespace {

TEST(NumberSyntax, ParsesIntegersInEveryBaseAndRefusesTheRest)
{
    struct Case
    {
        const char* text;
        std::optional<std::int32_t> value;
    };
    const Case cases[] = {
        {"0", 0},
        {"-0", 0},
        {"12", 12},
        {"-12", -12},
        {"0x1F", 31},
        {"0X1f", 31},
        {"#fF", 255},
        {"$10", 16},
        {"-#10", -16},
        {"010", 8},
        {"2147483647", 2147483647},
        {"-2147483648", -2147483647 - 1},
        {"#FFFFFFFF", -1},
        {"2147483648", {}},
        {"#100000000", {}},
        {"09", {}},
        {"", {}},
        {"-", {}},
        {"0x", {}},
        {"#", {}},
        {"1 ", {}},
        {"+1", {}},
        {"1.0", {}},
        {"--1", {}},
        {"99999999999999999999", {}},
    };
    for (const Case& c : cases) {
        EXPECT_EQ(parseInteger(c.text), c.value) << c.text;
    }
}

TEST(NumberSyntax, ParsesRealsWithoutExponent)
{
    struct Case
    {
        const char* text;
        std::optional<double> value;
    };
    const Case cases[] = {{"1", 1.0},  {"-1.5", -1.5}, {"+.25", 0.25}, {"7.", 7.0}, {"0.1", 0.1},
                          {"", {}},    {"-", {}},      {".", {}},      {"1e3", {}}, {"1,5", {}},
                          {"nan", {}}, {"inf", {}},    {"1.2.3", {}},  {" 1", {}},  {"0x1", {}}};
    for (const Case& c : cases) {
        EXPECT_EQ(parseReal(c.text), c.value) << c.text;
    }
}

TEST(CAttrValue, ConvertsBetweenFormsAsTheTableSays)
{
    EXPECT_EQ(CAttrValue(true).toInteger(), 1);
    EXPECT_EQ(CAttrValue(true).toReal(), std::nullopt);
    EXPECT_EQ(CAttrValue(false).toString(), "false");
    EXPECT_EQ(CAttrValue(2.5).toInteger(), 2);
    EXPECT_EQ(CAttrValue(3.5).toInteger(), 4);
    EXPECT_EQ(CAttrValue(1e10).toInteger(), std::nullopt);
    EXPECT_EQ(CAttrValue(std::nan("")).toInteger(), std::nullopt);
    EXPECT_EQ(CAttrValue(0.5).toBool(), std::nullopt);
    EXPECT_EQ(CAttrValue(-1.00006).toString(), "-1.0001");
    EXPECT_EQ(CAttrValue(std::int32_t{-7}).toReal(), -7.0);
    EXPECT_EQ(CAttrValue(std::int32_t{2}).toBool(), true);
    EXPECT_EQ(CAttrValue("2").toBool(), std::nullopt);
    EXPECT_EQ(CAttrValue("1").toBool(), true);
    EXPECT_EQ(CAttrValue("false").toBool(), false);
    EXPECT_EQ(CAttrValue("true").toInteger(), std::nullopt);
    EXPECT_EQ(CAttrValue("$20").toInteger(), 32);

    const CAttrValue value("12");
    EXPECT_EQ(value.toReal(), 12.0);
    EXPECT_EQ(value.toInteger(), 12);
    CAttrValue copy = value;
    copy = CAttrValue("13");
    EXPECT_EQ(copy.toInteger(), 13);
    EXPECT_EQ(value.toInteger(), 12);
}

TEST(CAttrValue, CanBeReadFromManyThreadsAtOnce)
{
    const CAttrValue value("42");
    std::vector<std::thread> readers;
    std::atomic<int> wrong{0};
    for (int i = 0; i < 4; ++i) {
        readers.emplace_back([&] {
            wrong += value.toInteger() != 42 || value.toReal() != 42.0 || value.toBool().has_value();
        });
    }
    for (std::thread& reader : readers) {
        reader.join();
    }
    EXPECT_EQ(wrong, 0);
}

// Counts itself, so that a leaked or twice destroyed element shows.
struct Counted
{
    static inline int alive = 0;
    explicit Counted(int number = 0) : value(number) { ++alive; }
    Counted(const Counted& other) : value(other.value) { ++alive; }
    Counted(Counted&& other) noexcept : value(other.value) { ++alive; }
    Counted& operator=(const Counted&) = default;
    Counted& operator=(Counted&&) noexcept = default;
    ~Counted() { --alive; }
    bool operator==(const Counted& other) const { return value == other.value; }
    int value;
};

TEST(CInlineArray, KeepsOrderAndElementsAcrossTheHeapBorder)
{
    {
        CInlineArray<Counted, 4> array;
        for (int i = 0; i < 20; ++i) {
            array.push(Counted(i));
        }
        EXPECT_EQ(array.capacity(), 39u); // 4, 9, 19, 39: doubling plus one
        array.erase(0);
        EXPECT_TRUE(array.eraseFirst(Counted(10)));
        EXPECT_FALSE(array.eraseFirst(Counted(10)));
        array.push(array[0]);
        ASSERT_EQ(array.size(), 19u);
        EXPECT_EQ(array[9].value, 11);
        EXPECT_EQ(array.last().value, 1);

        CInlineArray<Counted, 4> copy = array;
        CInlineArray<Counted, 4> moved = std::move(array);
        EXPECT_EQ(moved.size(), copy.size());
        copy.resize(2);
        moved = std::move(copy);
        ASSERT_EQ(moved.size(), 2u);
        EXPECT_EQ(moved[1].value, 2);
        moved.resize(5, Counted(7));
        EXPECT_EQ(moved[4].value, 7);
    }
    EXPECT_EQ(Counted::alive, 0);
}

} // namespace
} // namespace qel
