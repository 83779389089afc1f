// The host-independent half of one plug-in instance: its state as chunks.
#include "CAudioWrapper.h"

#include "CAudioExtParamList.h"
#include "CAudioInterfaceBase.h"
#include "CAudioParam.h"
#include "CAudioParamCollector.h"
#include "CAudioParamRegistry.h"
#include "CAudioParamUndoStep.h"
#include "Streams/CMemoryReader.h"
#include "Streams/CMemoryWriteBuffer.h"

namespace qel {

namespace {

constexpr std::uint32_t kPresetId = 0x73727061; // "aprs"
constexpr std::uint32_t kBankId = 0x6B6E6261;   // "abnk"
constexpr std::size_t kHeaderBytes = 16;

} // namespace

CError CAudioWrapper::saveChunk(CByteBuffer& outBuffer, bool isPreset, bool withHeader)
{
    params_->takeChangesFromAudio();
    extParams_->takePosted();
    CMemoryWriteBuffer body;
    QEL_TRY(isPreset ? registry_->acquirePreset(false, CAudioParamRegistry::kCurrentProgram,
                                                CAudioParamRegistry::kAllGroups, body, true)
                     : registry_->acquireBank(false, body, true),
            {});
    CByteBuffer bytes;
    body.copyTo(bytes);
    CMemoryWriteBuffer chunk;
    if (withHeader) {
        for (std::size_t i = 0; i < kHeaderBytes / 4; ++i) {
            QEL_TRY(chunk.writeU32(0), {});
        }
    }
    QEL_TRY(chunk.writeCompressedData(bytes, isPreset ? kPresetId : kBankId), {});
    chunk.copyTo(outBuffer);
    return {};
}

void CAudioWrapper::importChannelLabels()
{
    CAudioParam& names = params_->getParam("plugin.modMain.io-params.in-channel-names");
    const std::vector<CString> labels = hostChannelLabels();
    CAudioParamUndoStep step("Channel label import", this);
    CAudioParamContext context;
    context.recorder = &step;
    for (std::size_t i = 0; i < labels.size(); ++i) {
        names.setString(0, static_cast<std::int32_t>(i), labels[i], context);
    }
    interfaceBase_->addStep(std::move(step));
}

CError CAudioWrapper::loadChunk(std::span<const std::uint8_t> data, bool isPreset, bool hasHeader)
{
    if (hasHeader) {
        if (data.size() <= kHeaderBytes) {
            return {};
        }
        data = data.subspan(kHeaderBytes);
    }
    CByteBuffer body;
    {
        CMemoryReader chunk(data);
        QEL_TRY(chunk.readCompressedData(body, isPreset ? kPresetId : kBankId), {});
    }
    CMemoryReader reader(body.bytes());
    QEL_TRY(isPreset ? registry_->activatePreset(reader, true) : registry_->activateBank(reader, true), {});
    return {};
}

} // namespace qel
