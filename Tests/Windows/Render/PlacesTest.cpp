// The program with the names, the places and the refusals that Windows has.
#include "RenderFixture.h"

#include <windows.h>

namespace qel::tools {
namespace {

namespace fs = std::filesystem;

constexpr int kWav16 = SF_FORMAT_WAV | SF_FORMAT_PCM_16;

fs::path programFolder()
{
    std::wstring program(32768, L'\0');
    program.resize(GetModuleFileNameW(nullptr, program.data(), static_cast<DWORD>(program.size())));
    return fs::path(program).parent_path();
}

// With the effect that it finds by itself.
DWORD run(const std::vector<std::wstring>& arguments)
{
    std::wstring line = L"\"" + (programFolder() / "drumfell-render.exe").wstring() + L"\" --quiet";
    for (const std::wstring& argument : arguments) {
        line += L" \"" + argument + L"\"";
    }
    STARTUPINFOW startup{};
    startup.cb = sizeof startup;
    PROCESS_INFORMATION process{};
    if (!CreateProcessW(nullptr, line.data(), nullptr, nullptr, FALSE, 0, nullptr, nullptr, &startup,
                        &process)) {
        return ~0U;
    }
    WaitForSingleObject(process.hProcess, 60000);
    DWORD code = ~0U;
    GetExitCodeProcess(process.hProcess, &code);
    CloseHandle(process.hThread);
    CloseHandle(process.hProcess);
    return code;
}

using RenderPlaces = RenderFixture;

TEST_F(RenderPlaces, HaveNamesOfAnyScriptAndAnyLength)
{
    std::wstring deep = folder_.wstring() + L"\\gr\u00F6\u00DFe \u65E5\u672C";
    while (deep.size() < 400) {
        deep += L"\\a folder with a longer name";
    }
    const std::wstring input = writeAudio("in.wav", noise(2, 3000), kWav16).wstring();
    ASSERT_EQ(run({input, L"--output-dir", deep, L"--type", L"flac", L"--json", deep + L"\\\u03A9.json"}),
              0U);
    ASSERT_EQ(run({deep + L"\\in.flac", L"-o", deep + L"\\again.ogg"}), 0U);
    EXPECT_EQ(run({input, deep + L"\\in.flac", L"--output-dir", deep, L"--type", L"flac"}), 2U)
        << "a result would replace a file";
    const CSignal sound = readAudio(deep + L"\\again.ogg");
    ASSERT_EQ(sound.size(), 2U);
    EXPECT_EQ(sound[0].size(), 3000U);
    EXPECT_EQ(run({deep + L"\\none.wav", L"-o", deep + L"\\o.wav"}), 4U);
}

TEST_F(RenderPlaces, AreRefusedWhereTheyCannotBe)
{
    const fs::path input = writeAudio("in.wav", noise(2, 3000), kWav16);
    const CSignal before = readAudio(input);
    EXPECT_EQ(run({input.wstring(), L"-o", (input / "out.wav").wstring()}), 5U);
    EXPECT_EQ(run({input.wstring(), L"--output-dir", input.wstring(), L"--type", L"flac"}), 5U);
    EXPECT_EQ(readAudio(input), before);
    EXPECT_EQ(fileNames(), std::set<std::string>{"in.wav"}) << "no part of a file stays";
}

} // namespace
} // namespace qel::tools
