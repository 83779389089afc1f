// The scanners of hosts that may be installed here.
#include "TemporaryFolder.h"

#include <gtest/gtest.h>

#include <array>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <stdexcept>
#include <string>

namespace {

// What a shell command writes, and how it ended.
std::pair<std::string, int> outputOf(const std::string& command)
{
    std::FILE* const pipe = popen((command + " 2>&1").c_str(), "r");
    std::string output;
    std::array<char, 4096> part;
    while (std::fgets(part.data(), part.size(), pipe)) {
        output += part.data();
    }
    return {output, pclose(pipe)};
}

// The host's answer to a version question decides about the channels: this one claims version 2.
TEST(RealHosts, QtractorListsTheEffect)
{
    const std::string scanner = "/usr/lib/x86_64-linux-gnu/qtractor/qtractor_plugin_scan";
#ifdef DRUMFELL_SANITIZED
    GTEST_SKIP() << "the host does not carry the sanitizer's runtime";
#endif
    if (!std::filesystem::exists(scanner)) {
        GTEST_SKIP() << "not installed";
    }
    const auto [output, status] =
        outputOf("echo VST:" DRUMFELL_LIBRARY " | env -u DISPLAY timeout 60 " + scanner);
    EXPECT_EQ(status, 0);
    EXPECT_EQ(output, "VST|Drumfell|2:2|1:0|24:0|GUI,EXT,RT|" DRUMFELL_LIBRARY "|0|0x3771747a\n");
}

constexpr const char* kArdour = "/usr/lib/ardour7";

// A home folder with the library in it, so that nobody's settings and plug-ins take part.
class ArdourHome
{
public:
    ArdourHome()
    {
        std::filesystem::create_directory(folder_ + "/vst");
        std::filesystem::copy_file(DRUMFELL_LIBRARY, library());
        // The host trusts what it knows of a library only if that is younger.
        std::filesystem::last_write_time(library(), std::filesystem::file_time_type::clock::now() -
                                                        std::chrono::minutes(1));
    }

    std::string library() const { return folder_ + "/vst/Drumfell.so"; }
    std::pair<std::string, int> run(const std::string& command) const
    {
        const std::string ardour(kArdour);
        return outputOf("env -u DISPLAY HOME=" + folder_ + " LXVST_PATH=" + folder_ +
                        "/vst DRUMFELL_SESSION=" + folder_ + "/session LD_LIBRARY_PATH=" + ardour +
                        " ARDOUR_DLL_PATH=" + ardour +
                        " ARDOUR_DATA_PATH=/usr/share/ardour7 ARDOUR_CONFIG_PATH=/etc/ardour7 timeout 60 " +
                        ardour + "/" + command);
    }

private:
    qel::test::TemporaryFolder temporary_;
    const std::string folder_ = temporary_.root().string();
};

TEST(RealHosts, ArdourListsTheEffectAndKeepsItsState)
{
#ifdef DRUMFELL_SANITIZED
    GTEST_SKIP() << "the host does not carry the sanitizer's runtime";
#endif
    if (!std::filesystem::exists(std::string(kArdour) + "/ardour-vst-scanner")) {
        GTEST_SKIP() << "not installed";
    }
    const ArdourHome home;
    const auto [listed, status] = home.run("ardour-vst-scanner -f -v " + home.library());
    EXPECT_EQ(status, 0) << listed;
    for (const char* expected : {"id=\"930182266\" name=\"Drumfell\" creator=\"Brintal\" category=\"Effect\"",
                                 "n_inputs=\"8\" n_outputs=\"8\""}) {
        EXPECT_NE(listed.find(expected), std::string::npos) << listed;
    }
    for (const char* expected :
         {"added 0\nset true\nplayed true\nvalue 0.75\n", "played true\nvalue 0.75\n"}) {
        const auto [played, rc] = home.run("luasession " DRUMFELL_HOST_TESTS "/ArdourRoundTrip.lua");
        EXPECT_NE(played.find(expected), std::string::npos) << played << rc;
    }
}

} // namespace
