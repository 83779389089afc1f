// The built library: what it shows to a process that loads it.
#include <gtest/gtest.h>

#include <dlfcn.h>

#include <array>
#include <cstdio>
#include <cstdlib>
#include <memory>
#include <string>

namespace {

TEST(Library, LoadsAndUnloadsAgainAndAgain)
{
    for (int round = 0; round < 3; ++round) {
        void* library = dlopen(DRUMFELL_LIBRARY, RTLD_NOW | RTLD_LOCAL);
        ASSERT_NE(library, nullptr) << dlerror();
        EXPECT_EQ(dlclose(library), 0);
    }
}

TEST(Library, LoadsWithoutAHomeFolderOrADisplay)
{
    unsetenv("HOME");
    unsetenv("XDG_DATA_HOME");
    unsetenv("DISPLAY");
    void* library = dlopen(DRUMFELL_LIBRARY, RTLD_NOW | RTLD_LOCAL);
    ASSERT_NE(library, nullptr) << dlerror();
    EXPECT_EQ(dlclose(library), 0);
}

#ifndef DRUMFELL_SANITIZED
TEST(Library, ExportsItsTwoEntriesAndNothingOfItsInside)
{
    const std::unique_ptr<std::FILE, int (*)(std::FILE*)> nm(
        popen("nm -D --defined-only --format=just-symbols " DRUMFELL_LIBRARY, "r"), &pclose);
    std::string exported;
    std::array<char, 256> line;
    while (std::fgets(line.data(), line.size(), nm.get())) {
        exported += line.data();
    }
    EXPECT_EQ(exported, "VSTPluginMain\nmain\n");
}
#endif

} // namespace
