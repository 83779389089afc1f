// The window classes that the library registers when it starts, for tests of a layer alone.
#include "WindowClasses.h"

#include <gtest/gtest.h>

#include <string>

namespace qel::test {
namespace {

// Anew for each test, as one that starts the application leaves none behind; under new names, as the classes
// that the application's took the place of stay.
class RegisteredClasses : public testing::EmptyTestEventListener
{
public:
    RegisteredClasses() { testing::UnitTest::GetInstance()->listeners().Append(this); }

    void OnTestStart(const testing::TestInfo&) override
    {
        platform::WindowClass failed{};
        EXPECT_EQ(platform::registerWindowClasses("Test", std::to_string(++count_), failed), 0);
    }
    void OnTestEnd(const testing::TestInfo&) override { platform::unregisterWindowClasses(); }

private:
    int count_ = 0;
};

// GoogleTest owns it.
[[maybe_unused]] auto* const registeredClasses = new RegisteredClasses;

} // namespace
} // namespace qel::test
