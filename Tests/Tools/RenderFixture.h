// What the renderer's tests share: signals, files, and the test guest in all its moods.
#pragma once

#include "FolderFixture.h"

#include "Render/CFileRender.h"
#include "Render/RenderError.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <functional>
#include <random>
#include <set>

namespace qel::tools {

class RenderFixture : public FolderFixture
{
protected:
    ~RenderFixture() override { behave(""); }

    static void behave(const std::string& words)
    {
#ifdef _WIN32
        _putenv_s("DRUMFELL_TEST_GUEST", words.c_str());
#else
        setenv("DRUMFELL_TEST_GUEST", words.c_str(), 1);
#endif
    }
    static std::shared_ptr<CGuestLibrary> library()
    {
        return std::make_shared<CGuestLibrary>(DRUMFELL_GUEST);
    }

    // Noise at half of full scale that every sample format of at least 16 bits holds exactly.
    static CSignal noise(int channels, int frames)
    {
        std::mt19937 random(7);
        std::uniform_int_distribution<int> steps(-16384, 16383);
        CSignal signal(static_cast<std::size_t>(channels),
                       std::vector<double>(static_cast<std::size_t>(frames)));
        for (std::vector<double>& channel : signal) {
            for (double& sample : channel) {
                sample = steps(random) / 32768.0;
            }
        }
        return signal;
    }
    std::filesystem::path writeAudio(const std::string& name, const CSignal& signal, int format,
                                     int rateHz = 48000)
    {
        const std::filesystem::path path = folder_ / name;
        SndfileHandle file(path.c_str(), SFM_WRITE, format, static_cast<int>(signal.size()), rateHz);
        EXPECT_FALSE(file.error()) << file.strError();
        std::vector<float> frame(signal.size());
        for (std::size_t i = 0; i < signal[0].size(); ++i) {
            for (std::size_t channel = 0; channel < signal.size(); ++channel) {
                frame[channel] = static_cast<float>(signal[channel][i]);
            }
            std::vector<int> steps(signal.size());
            std::ranges::transform(frame, steps.begin(),
                                   [](float sample) { return static_cast<int>(sample * 32768.0f) * 65536; });
            const bool isFloat = (format & SF_FORMAT_SUBMASK) == SF_FORMAT_FLOAT;
            EXPECT_EQ(isFloat ? file.writef(frame.data(), 1) : file.writef(steps.data(), 1), 1);
        }
        return path;
    }
    static CSignal readAudio(const std::filesystem::path& path)
    {
        CAudioFileReader reader(path);
        CSignal signal(static_cast<std::size_t>(reader.channelCount()),
                       std::vector<double>(static_cast<std::size_t>(reader.frameCount())));
        EXPECT_EQ(reader.read(signal, 0, static_cast<int>(reader.frameCount())), reader.frameCount());
        return signal;
    }
    CRenderResult render(const CRenderSettings& settings, const std::filesystem::path& input,
                         const std::string& output = "out.wav")
    {
        return CFileRender(library(), settings, {input, folder_ / output, {}}).run();
    }
    static CExitCode codeOf(const std::function<void()>& action)
    {
        try {
            action();
        } catch (const CRenderError& error) {
            return error.code();
        }
        return CExitCode::kDone;
    }
    std::set<std::string> fileNames() const
    {
        std::set<std::string> names;
        for (const auto& entry : std::filesystem::directory_iterator(folder_)) {
            names.insert(entry.path().filename().string());
        }
        return names;
    }
};

} // namespace qel::tools
