// What tests of the whole effect have in common.
#pragma once

#include "EffectRig.h"

#include <gtest/gtest.h>

namespace qel::test {

// The application with the delivered tree, for as long as a test runs.
class EffectFixture : public ::testing::Test
{
protected:
    TestApplication application_{deliveredTree()};
};

} // namespace qel::test
