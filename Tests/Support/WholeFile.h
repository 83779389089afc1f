// Files of tests, written and read in one go.
#pragma once

#include "CFile.h"

#include <gtest/gtest.h>

#include <string>

namespace qel {

inline void writeWhole(const std::string& path, const std::string& content,
                       CFile::Access access = CFile::Access::kRewrite)
{
    CFile file;
    ASSERT_EQ(file.open(path, access), 0);
    std::size_t written = 0;
    ASSERT_EQ(file.write(content.data(), content.size(), written), 0);
    ASSERT_EQ(written, content.size());
    ASSERT_EQ(file.close(), 0);
}

inline std::string readWhole(const std::string& path)
{
    CFile file;
    std::int64_t size = 0;
    EXPECT_EQ(file.open(path, CFile::Access::kRead), 0);
    EXPECT_EQ(file.getSize(size), 0);
    // Asks for more than there is, so that a wrong size shows too.
    std::string content(static_cast<std::size_t>(size) + 16, '\0');
    std::size_t count = 0;
    EXPECT_EQ(file.read(content.data(), content.size(), count), 0);
    content.resize(count);
    return content;
}

} // namespace qel
