// Audio files in and out.
#pragma once

#include "Render/CPendingFile.h"

#include <cstdint>
#include <filesystem>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include <sndfile.hh>

namespace qel::tools {

using CSignal = std::vector<std::vector<double>>; // [channel][sample], full scale 1.0

// Reads any file that libsndfile knows. Throws CRenderError (kInput).
class CAudioFileReader
{
public:
    explicit CAudioFileReader(const std::filesystem::path& path);

    int channelCount() const { return file_.channels(); }
    int rateHz() const { return file_.samplerate(); }
    std::int64_t frameCount() const { return file_.frames(); }
    int subtype() const { return file_.format() & SF_FORMAT_SUBMASK; }
    // "16-bit PCM" and the like.
    std::string formatName() const;
    const char* tag(int which) const { return file_.getString(which); }

    // Fills every channel of `target` with up to `frames` samples from `offset` on; fewer at the end of the
    // file. `target` must be that long.
    int read(CSignal& target, int offset, int frames);

private:
    std::string name_;
    mutable SndfileHandle file_;
    std::vector<double> interleaved_;
};

enum class CSampleFormat
{
    kSame, // that of the input where the file type has it, else the closest without loss
    kPcm16,
    kPcm24,
    kPcm32,
    kFloat,
};

// Writes a file of the type that its name ends in, under a pending name until finish(). Integer formats are
// rounded to the nearest step, without dither, and limited to full scale; the limited samples are counted.
// What was read from an integer file and is written in the same depth comes out bit for bit. Throws
// CRenderError (kOutput).
class CAudioFileWriter
{
public:
    CAudioFileWriter(const std::filesystem::path& path, const CAudioFileReader& like, int channelCount,
                     CSampleFormat format, std::int64_t expectedFrames);

    void write(const CSignal& source, int offset, int frames);
    void finish();

    std::int64_t clippedCount() const { return clippedCount_; }
    std::string formatName() const;

private:
    void writeIntegers(const CSignal& source, int offset, int frames);
    void writeFloats(const CSignal& source, int offset, int frames);
    void require(sf_count_t written, int frames);

    CPendingFile pending_;
    std::int64_t written_ = 0;
    SndfileHandle file_;
    int bits_ = 0; // 0: floating point or coded
    std::int64_t clippedCount_ = 0;
    std::vector<int> integers_;
    std::vector<double> floats_;
};

} // namespace qel::tools
