// The scanners of hosts that may be installed here.
#include <gtest/gtest.h>

#include <array>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
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
    const auto [output, status] = outputOf("echo VST:" DRUMFELL_LIBRARY " | env -u DISPLAY timeout 60 " + scanner);
    EXPECT_EQ(status, 0);
    EXPECT_EQ(output, "VST|Drumfell|2:2|1:0|24:0|EXT,RT|" DRUMFELL_LIBRARY "|0|0x3771747a\n");
}

TEST(RealHosts, ArdourListsTheEffect)
{
    const std::string folder = "/usr/lib/ardour7";
#ifdef DRUMFELL_SANITIZED
    GTEST_SKIP() << "the host does not carry the sanitizer's runtime";
#endif
    if (!std::filesystem::exists(folder + "/ardour-vst-scanner")) {
        GTEST_SKIP() << "not installed";
    }
    std::string home = (std::filesystem::temp_directory_path() / "drumfell-ardour-XXXXXX").string();
    ASSERT_NE(mkdtemp(home.data()), nullptr);
    const auto [output, status] =
        outputOf("env -u DISPLAY HOME=" + home + " LD_LIBRARY_PATH=" + folder + " ARDOUR_DLL_PATH=" + folder +
                 " ARDOUR_DATA_PATH=/usr/share/ardour7 ARDOUR_CONFIG_PATH=/etc/ardour7 timeout 60 " + folder +
                 "/ardour-vst-scanner -f -v " DRUMFELL_LIBRARY);
    std::filesystem::remove_all(home);
    EXPECT_EQ(status, 0) << output;
    EXPECT_NE(output.find("id=\"930182266\" name=\"Drumfell\" creator=\"Brintal\" category=\"Effect\""),
              std::string::npos)
        << output;
    EXPECT_NE(output.find("n_inputs=\"8\" n_outputs=\"8\""), std::string::npos) << output;
}

} // namespace
