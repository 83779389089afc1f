// The built library: what it shows to a process that loads it.
#include <gtest/gtest.h>

#include <dlfcn.h>
#include <malloc.h>

#include <array>
#include <cstdio>
#include <cstdlib>
#include <memory>
#include <string>

namespace {

#ifdef DRUMFELL_SANITIZED
constexpr int kLoads = 3;
#else
constexpr int kLoads = 400;
#endif

void loadAndUnload()
{
    void* library = dlopen(DRUMFELL_LIBRARY, RTLD_NOW | RTLD_LOCAL);
    ASSERT_NE(library, nullptr) << dlerror();
    EXPECT_EQ(dlclose(library), 0);
}

// A scan loads it and lets it go in one process, again and again.
TEST(Library, LeavesNothingBehindWhenItGoes)
{
    loadAndUnload();
    const std::size_t before = mallinfo2().uordblks + mallinfo2().hblkhd;
    for (int round = 0; round < kLoads; ++round) {
        loadAndUnload();
    }
#ifndef DRUMFELL_SANITIZED
    // Less than the runtime's reserve of one load; the C library keeps some small blocks for the next call.
    EXPECT_LE(mallinfo2().uordblks + mallinfo2().hblkhd, before + 65536);
#else
    static_cast<void>(before);
#endif
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
