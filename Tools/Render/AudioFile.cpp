// Audio files in and out.
#include "Render/AudioFile.h"

#include "Render/RenderError.h"
#include "Render/RenderSystem.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <cmath>
#include <cstring>

namespace qel::tools {

namespace {

constexpr std::int64_t kLargestWav = 0xFFFFFFFF - 0x10000; // bytes, with room for headers
constexpr double kCodingQuality = 0.8;                     // of Vorbis and the like

struct CFileType
{
    const char* extension;
    int format; // with a subtype where the type has but one that fits
};
constexpr std::array<CFileType, 11> kFileTypes{{{".wav", SF_FORMAT_WAV},
                                                {".wave", SF_FORMAT_WAV},
                                                {".flac", SF_FORMAT_FLAC},
                                                {".ogg", SF_FORMAT_OGG | SF_FORMAT_VORBIS},
                                                {".oga", SF_FORMAT_OGG | SF_FORMAT_VORBIS},
                                                {".aif", SF_FORMAT_AIFF},
                                                {".aiff", SF_FORMAT_AIFF},
                                                {".w64", SF_FORMAT_W64},
                                                {".rf64", SF_FORMAT_RF64},
                                                {".caf", SF_FORMAT_CAF},
                                                {".au", SF_FORMAT_AU}}};

int bitsOf(int subtype)
{
    switch (subtype) {
    case SF_FORMAT_PCM_S8:
    case SF_FORMAT_PCM_U8:
        return 8;
    case SF_FORMAT_PCM_16:
        return 16;
    case SF_FORMAT_PCM_24:
        return 24;
    case SF_FORMAT_PCM_32:
        return 32;
    default:
        return 0;
    }
}

// Best first. Eight bits differ in sign from one file type to the next.
std::vector<int> subtypesFor(CSampleFormat format, int inputSubtype)
{
    switch (format) {
    case CSampleFormat::kPcm16:
        return {SF_FORMAT_PCM_16};
    case CSampleFormat::kPcm24:
        return {SF_FORMAT_PCM_24};
    case CSampleFormat::kPcm32:
        return {SF_FORMAT_PCM_32};
    case CSampleFormat::kFloat:
        return {SF_FORMAT_FLOAT};
    case CSampleFormat::kSame:
        break;
    }
    if (bitsOf(inputSubtype) == 8) {
        return {SF_FORMAT_PCM_U8, SF_FORMAT_PCM_S8};
    }
    if (bitsOf(inputSubtype) != 0 || inputSubtype == SF_FORMAT_FLOAT || inputSubtype == SF_FORMAT_DOUBLE) {
        return {inputSubtype, SF_FORMAT_PCM_24};
    }
    return {SF_FORMAT_PCM_24, SF_FORMAT_PCM_16};
}

std::string lowered(std::string text)
{
    std::ranges::transform(text, text.begin(),
                           [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
    return text;
}

int formatFor(const std::filesystem::path& path, const CAudioFileReader& like, int channelCount,
              CSampleFormat format, std::int64_t frames)
{
    const auto type =
        std::ranges::find(kFileTypes, lowered(path.extension().string()), &CFileType::extension);
    if (type == kFileTypes.end()) {
        throw CRenderError(CExitCode::kOutput,
                           path.string() +
                               ": the name must end in the file type, such as .wav, .flac or .ogg");
    }
    std::vector<int> formats;
    if (type->format & SF_FORMAT_SUBMASK) {
        formats = {type->format};
    } else {
        for (const int subtype : subtypesFor(format, like.subtype())) {
            formats.push_back(type->format | subtype);
        }
    }
    for (int candidate : formats) {
        const int bytes = bitsOf(candidate & SF_FORMAT_SUBMASK) / 8;
        if (type->format == SF_FORMAT_WAV && frames * channelCount * (bytes ? bytes : 8) > kLargestWav) {
            candidate = SF_FORMAT_RF64 | (candidate & SF_FORMAT_SUBMASK);
        }
        if (SndfileHandle::formatCheck(candidate, channelCount, like.rateHz())) {
            return candidate;
        }
    }
    throw CRenderError(CExitCode::kOutput, path.string() + ": a " + type->extension +
                                               " file cannot hold this sample format, " +
                                               std::to_string(channelCount) + " channels or " +
                                               std::to_string(like.rateHz()) + " Hz");
}

std::string subtypeName(int subtype)
{
    SF_FORMAT_INFO info{};
    info.format = subtype;
    sf_command(nullptr, SFC_GET_FORMAT_INFO, &info, sizeof(info));
    return info.name ? info.name : "unknown";
}

} // namespace

CAudioFileReader::CAudioFileReader(const std::filesystem::path& path)
    : name_(path.string()), file_(systemPath(path).c_str())
{
    if (file_.error() != SF_ERR_NO_ERROR) {
        throw CRenderError(CExitCode::kInput, name_ + ": " + file_.strError());
    }
}

std::string CAudioFileReader::formatName() const
{
    return subtypeName(subtype());
}

int CAudioFileReader::read(CSignal& target, int offset, int frames)
{
    const auto channels = static_cast<std::size_t>(channelCount());
    interleaved_.resize(static_cast<std::size_t>(frames) * channels);
    const auto got = static_cast<std::size_t>(file_.readf(interleaved_.data(), frames));
    if (file_.error() != SF_ERR_NO_ERROR) {
        throw CRenderError(CExitCode::kInput, name_ + ": " + file_.strError());
    }
    for (std::size_t channel = 0; channel < channels; ++channel) {
        double* out = target[channel].data() + offset;
        for (std::size_t i = 0; i < got; ++i) {
            out[i] = interleaved_[i * channels + channel];
        }
    }
    return static_cast<int>(got);
}

CAudioFileWriter::CAudioFileWriter(const std::filesystem::path& path, const CAudioFileReader& like,
                                   int channelCount, CSampleFormat format, std::int64_t expectedFrames)
    : pending_(path)
{
    const int chosen = formatFor(path, like, channelCount, format, expectedFrames);
    bits_ = bitsOf(chosen & SF_FORMAT_SUBMASK);
    file_ = SndfileHandle(pending_.path().c_str(), SFM_WRITE, chosen, channelCount, like.rateHz());
    if (file_.error() != SF_ERR_NO_ERROR) {
        throw CRenderError(CExitCode::kOutput, path.string() + ": " + file_.strError());
    }
    // It would hold the time of writing: equal sounds are equal files.
    file_.command(SFC_SET_ADD_PEAK_CHUNK, nullptr, SF_FALSE);
    double quality = kCodingQuality;
    file_.command(SFC_SET_VBR_ENCODING_QUALITY, &quality, sizeof(quality));
    for (int tag = SF_STR_FIRST; tag <= SF_STR_LAST; ++tag) {
        if (const char* text = like.tag(tag); text && tag != SF_STR_SOFTWARE) {
            file_.setString(tag, text);
        }
    }
}

std::string CAudioFileWriter::formatName() const
{
    return subtypeName(file_.format() & SF_FORMAT_SUBMASK);
}

void CAudioFileWriter::write(const CSignal& source, int offset, int frames)
{
    if (frames > 0 && bits_ != 0) {
        writeIntegers(source, offset, frames);
    } else if (frames > 0) {
        writeFloats(source, offset, frames);
    }
}

// The library reads an integer file as n / 2^(bits-1) but would write with another factor, so the steps are
// made here.
void CAudioFileWriter::writeIntegers(const CSignal& source, int offset, int frames)
{
    const std::size_t channels = source.size();
    const double fullScale = std::ldexp(1.0, bits_ - 1);
    const int shift = 32 - bits_;
    integers_.resize(static_cast<std::size_t>(frames) * channels);
    for (std::size_t channel = 0; channel < channels; ++channel) {
        const double* in = source[channel].data() + offset;
        for (std::size_t i = 0; i < static_cast<std::size_t>(frames); ++i) {
            const double step = std::nearbyint(in[i] * fullScale);
            const double limited = std::clamp(step, -fullScale, fullScale - 1.0);
            clippedCount_ += limited != step;
            integers_[i * channels + channel] =
                static_cast<int>(static_cast<unsigned>(static_cast<int>(limited)) << shift);
        }
    }
    require(file_.writef(integers_.data(), frames), frames);
}

void CAudioFileWriter::writeFloats(const CSignal& source, int offset, int frames)
{
    const std::size_t channels = source.size();
    floats_.resize(static_cast<std::size_t>(frames) * channels);
    for (std::size_t channel = 0; channel < channels; ++channel) {
        const double* in = source[channel].data() + offset;
        for (std::size_t i = 0; i < static_cast<std::size_t>(frames); ++i) {
            floats_[i * channels + channel] = in[i];
        }
    }
    require(file_.writef(floats_.data(), frames), frames);
}

void CAudioFileWriter::require(sf_count_t written, int frames)
{
    if (written != frames) {
        throw CRenderError(CExitCode::kOutput, pending_.target().string() + ": " + file_.strError());
    }
    written_ += frames;
}

// Coders write what they hold back when the file is closed, and tell nobody if that fails; so the file is
// read again.
void CAudioFileWriter::finish()
{
    file_ = SndfileHandle();
    SndfileHandle check(pending_.path().c_str());
    std::vector<float> last(static_cast<std::size_t>(check.channels()));
    if (check.frames() != written_ ||
        (written_ > 0 && (check.seek(written_ - 1, SEEK_SET) < 0 || check.readf(last.data(), 1) != 1))) {
        throw CRenderError(CExitCode::kOutput,
                           pending_.target().string() + ": not all of it could be written");
    }
    check = SndfileHandle(); // Windows renames no open file
    pending_.commit();
}

} // namespace qel::tools
