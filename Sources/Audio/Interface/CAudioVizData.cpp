// What the audio side has to show: levels, messages, spectra.
#include "CAudioVizData.h"

namespace qel {

CError CAudioVizData::save(COutputStream& stream) const
{
    QEL_TRY(stream.writeU32(static_cast<std::uint32_t>(getType())), {});
    QEL_TRY(stream.writeI32(id), {});
    QEL_TRY(stream.writeI32(group), {});
    QEL_TRY(stream.writeI32(element), {});
    QEL_TRY(stream.writeF64(timeSec), {});
    QEL_TRY(saveBody(stream), {});
    return {};
}

CError CAudioVizData::load(CInputStream& stream, std::unique_ptr<CAudioVizData>& out)
{
    out.reset();
    std::uint32_t type = 0;
    QEL_TRY(stream.readU32(type), {});
    std::unique_ptr<CAudioVizData> data;
    switch (static_cast<Type>(type)) {
    case Type::kMeter:
        data = std::make_unique<CAudioVizDataMeter>();
        break;
    case Type::kInfo:
        data = std::make_unique<CAudioVizDataInfo>();
        break;
    case Type::kSpectrum:
        data = std::make_unique<CAudioVizDataSpectrum>();
        break;
    default:
        QEL_FAIL({}, "@qelstr_CAudioVizData_load_InvalidType Invalid visual data type %1.", type);
    }
    QEL_TRY(stream.readI32(data->id), {});
    QEL_TRY(stream.readI32(data->group), {});
    QEL_TRY(stream.readI32(data->element), {});
    QEL_TRY(stream.readF64(data->timeSec), {});
    QEL_TRY(data->loadBody(stream), {});
    out = std::move(data);
    return {};
}

CError CAudioVizDataMeter::saveBody(COutputStream& stream) const
{
    QEL_TRY(stream.writeF64(level), {});
    QEL_TRY(stream.writeF64(peak), {});
    return {};
}

CError CAudioVizDataMeter::loadBody(CInputStream& stream)
{
    QEL_TRY(stream.readF64(level), {});
    QEL_TRY(stream.readF64(peak), {});
    return {};
}

CError CAudioVizDataInfo::saveBody(COutputStream& stream) const
{
    QEL_TRY(stream.writeString(text), {});
    QEL_TRY(stream.writeI32(kind), {});
    return {};
}

CError CAudioVizDataInfo::loadBody(CInputStream& stream)
{
    QEL_TRY(stream.readString(text), {});
    QEL_TRY(stream.readI32(kind), {});
    return {};
}

CError CAudioVizDataSpectrum::saveBody(COutputStream& stream) const
{
    QEL_TRY(stream.writeU32(static_cast<std::uint32_t>(bins.size())), {});
    for (const double bin : bins) {
        QEL_TRY(stream.writeF64(bin), {});
    }
    QEL_TRY(stream.writeF64(sampleRateHz), {});
    QEL_TRY(stream.writeI32(spectrumType), {});
    QEL_TRY(stream.writeI32(windowSize), {});
    return {};
}

CError CAudioVizDataSpectrum::loadBody(CInputStream& stream)
{
    std::uint32_t count = 0;
    QEL_TRY(stream.readU32(count), {});
    if (count > kMaxBins) {
        QEL_FAIL({}, "@qelstr_CAudioVizDataSpectrum_load_TooLong Spectrum length %1 too long.", count);
    }
    bins.resize(count);
    for (double& bin : bins) {
        QEL_TRY(stream.readF64(bin), {});
    }
    QEL_TRY(stream.readF64(sampleRateHz), {});
    QEL_TRY(stream.readI32(spectrumType), {});
    QEL_TRY(stream.readI32(windowSize), {});
    return {};
}

} // namespace qel
