// What the audio side has to show: levels, messages, spectra.
#pragma once

#include "CCheckedObject.h"
#include "CError.h"
#include "Streams/CInputStream.h"
#include "Streams/COutputStream.h"

#include <memory>
#include <vector>

namespace qel {

// One finding of one visual source (CAudioVizCollector) at one time. A plain value on both sides of the
// audio/UI boundary; the wire form begins with its type, so that a batch can be read without knowing what is
// in it. Reading fails on an unknown type and on data cut short, and gives nothing then.
class CAudioVizData : public CCheckedObject
{
public:
    enum class Type : std::uint32_t
    {
        kMeter = 0,
        kInfo = 1,
        kSpectrum = 2
    };

    virtual Type getType() const = 0;

    CError save(COutputStream& stream) const;
    static CError load(CInputStream& stream, std::unique_ptr<CAudioVizData>& out);

    std::int32_t id = 0; // of the source
    std::int32_t group = 0;
    std::int32_t element = 0; // channel
    double timeSec = 0.0;     // of the source's own clock

protected:
    virtual CError saveBody(COutputStream& stream) const = 0;
    virtual CError loadBody(CInputStream& stream) = 0;
};

// Level and peak as linear factors. The only kind that the audio thread fills in.
class CAudioVizDataMeter : public CAudioVizData
{
public:
    Type getType() const override { return Type::kMeter; }

    double level = 0.0;
    double peak = 0.0;

protected:
    CError saveBody(COutputStream& stream) const override;
    CError loadBody(CInputStream& stream) override;
};

// A message of a module.
class CAudioVizDataInfo : public CAudioVizData
{
public:
    Type getType() const override { return Type::kInfo; }

    CString text;
    std::int32_t kind = 0;

protected:
    CError saveBody(COutputStream& stream) const override;
    CError loadBody(CInputStream& stream) override;
};

class CAudioVizDataSpectrum : public CAudioVizData
{
public:
    static constexpr std::uint32_t kMaxBins = 65536;

    Type getType() const override { return Type::kSpectrum; }

    std::vector<double> bins;
    double sampleRateHz = 0.0;
    std::int32_t spectrumType = 0;
    std::int32_t windowSize = 0;

protected:
    CError saveBody(COutputStream& stream) const override;
    CError loadBody(CInputStream& stream) override;
};

} // namespace qel
