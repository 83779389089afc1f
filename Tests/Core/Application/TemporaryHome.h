// A user's data folder of its own for one test.
#pragma once

#include "CFileSystem.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <string>

namespace qel::test {

// Stores made while it lives keep their files below it. Put an end to them before it goes.
class TemporaryHome
{
public:
    TemporaryHome()
    {
        const auto* test = testing::UnitTest::GetInstance()->current_test_info();
        const std::string name = std::string("drumfell-") + test->test_suite_name() + "-" + test->name() +
                                 "-" + std::to_string(platform::processId());
        root_ = std::filesystem::temp_directory_path() / name;
        std::filesystem::remove_all(root_);
        std::filesystem::create_directories(root_);
        use(root_.string());
    }
    TemporaryHome(const TemporaryHome&) = delete;
    TemporaryHome& operator=(const TemporaryHome&) = delete;
    ~TemporaryHome()
    {
        setenv("XDG_DATA_HOME", before_.c_str(), 1);
        std::filesystem::remove_all(root_);
    }

    // Moves the data folder. An empty one counts as unset.
    void use(const std::string& folder) { setenv("XDG_DATA_HOME", folder.c_str(), 1); }
    std::filesystem::path root() const { return root_; }
    std::filesystem::path storeFolder() const { return root_ / "Brintal" / "Audio Plug-Ins"; }

private:
    static std::string environment(const char* name)
    {
        const char* value = std::getenv(name);
        return value ? value : "";
    }

    std::string before_ = environment("XDG_DATA_HOME");
    std::filesystem::path root_;
};

} // namespace qel::test
