// A folder of its own for one test.
#pragma once

#include <filesystem>
#include <random>
#include <string>

namespace qel::test {

// Made empty by the constructor, under a name that no other process has, and removed with its content by the
// destructor.
class TemporaryFolder
{
public:
    TemporaryFolder()
    {
        std::random_device random;
        do {
            root_ = std::filesystem::temp_directory_path() / ("drumfell-" + std::to_string(random()));
        } while (!std::filesystem::create_directory(root_));
    }
    TemporaryFolder(const TemporaryFolder&) = delete;
    TemporaryFolder& operator=(const TemporaryFolder&) = delete;
    ~TemporaryFolder()
    {
        std::error_code ignored;
#ifdef _WIN32
        // The form of a path that may be longer than others.
        std::filesystem::remove_all(LR"(\\?\)" + root_.make_preferred().wstring(), ignored);
#else
        std::filesystem::remove_all(root_, ignored);
#endif
    }

    const std::filesystem::path& root() const
    {
        return root_;
    }
    std::string path(const std::string& name = {}) const
    {
        return (root_ / name).generic_string();
    }

private:
    std::filesystem::path root_;
};

} // namespace qel::test
