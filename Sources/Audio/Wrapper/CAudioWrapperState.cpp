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

CAudioWrapper::CHostActivation::CHostActivation(CAudioWrapper& wrapper)
    : wrapper_(wrapper), lock_(wrapper.activationLock_),
      outer_(wrapper.activator_.exchange(std::this_thread::get_id()))
{}

CAudioWrapper::CHostActivation::~CHostActivation()
{
    wrapper_.activator_ = outer_;
}

CError CAudioWrapper::saveChunk(CByteBuffer& outBuffer, bool isPreset, bool withHeader)
{
    CByteBuffer body;
    QEL_TRY(acquireState(body, isPreset), {});
    CMemoryWriteBuffer chunk;
    if (withHeader) {
        for (std::size_t i = 0; i < kHeaderBytes / 4; ++i) {
            QEL_TRY(chunk.writeU32(0), {});
        }
    }
    QEL_TRY(chunk.writeCompressedData(body, isPreset ? kPresetId : kBankId), {});
    chunk.copyTo(outBuffer);
    return {};
}

// Values that no processing call has taken yet belong to the state: a host may set parameters of a stopped
// effect.
CError CAudioWrapper::acquireState(CByteBuffer& outBody, bool isPreset)
{
    params_->takeChangesFromAudio();
    extParams_->showPosted();
    CMemoryWriteBuffer body;
    QEL_TRY(isPreset ? registry_->acquirePreset(false, CAudioParamRegistry::kCurrentProgram,
                                                CAudioParamRegistry::kAllGroups, body, true)
                     : registry_->acquireBank(false, body, true),
            {});
    body.copyTo(outBody);
    return {};
}

CError CAudioWrapper::activateState(const CByteBuffer& body, bool isPreset)
{
    CMemoryReader reader(body.bytes());
    QEL_TRY(isPreset ? registry_->activatePreset(reader, true) : registry_->activateBank(reader, true), {});
    return {};
}

CError CAudioWrapper::activateProgram(std::int32_t index)
{
    const CHostActivation activation(*this);
    params_->takeChangesFromAudio();
    extParams_->takePosted();
    QEL_TRY(registry_->setProgram(index, &programBridge_), {});
    return {};
}

void CAudioWrapper::renameProgram(const CString& name)
{
    const CHostActivation activation(*this);
    registry_->setProgramName(registry_->getProgram(), name, false, &programBridge_);
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
    // A chunk can be whole and hold an entry that does not fit, which shows when others are in place already.
    // Programs and their histories the registry keeps itself.
    const CHostActivation activation(*this);
    params_->takeChangesFromAudio();
    extParams_->takePosted();
    CByteBuffer before;
    QEL_TRY(acquireState(before, true), {});
    if (CError error = activateState(body, isPreset)) {
        releaseError(activateState(before, true));
        QEL_TRY(std::move(error), {});
    }
    return {};
}

} // namespace qel
