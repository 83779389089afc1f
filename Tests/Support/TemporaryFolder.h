// A folder of its own for one test.
#pragma once

#include <cstdlib>
#include <filesystem>
#include <stdexcept>
#include <string>

namespace qel::test {

// Made empty by the constructor, under a name that no other process has, and removed with its content by the
// destructor.
class TemporaryFolder
{
public:
    TemporaryFolder()
    {
        std::string name = (std::filesystem::temp_directory_path() / "drumfell-XXXXXX").string();
        if (!mkdtemp(name.data())) {
            throw std::runtime_error("no temporary folder");
        }
        root_ = name;
    }
    TemporaryFolder(const TemporaryFolder&) = delete;
    TemporaryFolder& operator=(const TemporaryFolder&) = delete;
    ~TemporaryFolder()
    {
        std::error_code ignored;
        std::filesystem::remove_all(root_, ignored);
    }

    const std::filesystem::path& root() const { return root_; }
    std::string path(const std::string& name) const { return (root_ / name).generic_string(); }

private:
    std::filesystem::path root_;
};

} // namespace qel::test
