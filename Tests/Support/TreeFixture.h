// A shared tree and an instance tree for tests, built and released as the application does it.
#pragma once

#include "CNodeCursor.h"
#include "CObject.h"
#include "TreeBytes.h"

#include <gtest/gtest.h>

namespace qel::test {

// Releases its object when it goes.
class TreeRoot
{
public:
    TreeRoot() : object_(new CObject()) {}
    ~TreeRoot() { CObject::releaseObject(object_); }
    TreeRoot(const TreeRoot&) = delete;
    TreeRoot& operator=(const TreeRoot&) = delete;

    CObject* operator->() const { return object_; }
    CObject& operator*() const { return *object_; }

    // Loads the node onto the root, as a compiled file's root node.
    CError load(const TreeNode& node)
    {
        const std::vector<std::uint8_t> bytes = node.bytes();
        CNodeCursor cursor(bytes);
        return object_->loadNode(cursor, true, true, false, false);
    }

private:
    CObject* object_;
};

// An empty shared tree stands while the test runs, so that objects stay writable; as in the product, it is
// published before it is loaded.
class TreeFixture : public ::testing::Test
{
protected:
    TreeFixture() { CObject::setSharedObject(&*shared_); }
    ~TreeFixture() override { CObject::setSharedObject(nullptr); }

    TreeRoot shared_;
    TreeRoot root_;
};

} // namespace qel::test

// The operation succeeds; on failure the test prints the whole chain.
#define EXPECT_OK(expression)                                                                                \
    do {                                                                                                     \
        const ::qel::CError okError = (expression);                                                          \
        EXPECT_FALSE(okError) << okError.text();                                                             \
    } while (false)
#define ASSERT_OK(expression)                                                                                \
    do {                                                                                                     \
        const ::qel::CError okError = (expression);                                                          \
        ASSERT_FALSE(okError) << okError.text();                                                             \
    } while (false)
// The operation fails and some line of the chain contains the text.
#define EXPECT_FAILS(expression, expectedText)                                                               \
    do {                                                                                                     \
        const ::qel::CError failError = (expression);                                                        \
        ASSERT_TRUE(failError);                                                                              \
        EXPECT_NE(failError.text().find(expectedText), std::string::npos) << failError.text();               \
    } while (false)
