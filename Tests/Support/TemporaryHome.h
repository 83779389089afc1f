// A user's data folder of its own for one test.
#pragma once

#include "TemporaryFolder.h"

#include <cstdlib>

namespace qel::test {

// Stores made while it lives keep their files below it. Put an end to them before it goes.
class TemporaryHome
{
public:
    TemporaryHome() { use(root().string()); }
    TemporaryHome(const TemporaryHome&) = delete;
    TemporaryHome& operator=(const TemporaryHome&) = delete;
    ~TemporaryHome() { use(before_); }

    // Moves the data folder. An empty one counts as unset.
    void use(const std::string& folder) { setenv("XDG_DATA_HOME", folder.c_str(), 1); }
    const std::filesystem::path& root() const { return folder_.root(); }
    std::filesystem::path storeFolder() const { return root() / "Brintal" / "Audio Plug-Ins"; }

private:
    static std::string environment(const char* name)
    {
        const char* value = std::getenv(name);
        return value ? value : "";
    }

    std::string before_ = environment("XDG_DATA_HOME");
    TemporaryFolder folder_;
};

} // namespace qel::test
