// The table of all tags: the only file that knows every class.
#include "CreatorTable.h"

#include "CAttrDoubler.h"
#include "CAudioEnv.h"
#include "CAudioParamAllocDef.h"
#include "CAudioParamCollector.h"
#include "CAudioParamDef.h"
#include "CAudioParamFilterInvertDef.h"
#include "CAudioParamRemapDef.h"
#include "CAudioProcessBypassStateDef.h"
#include "CAudioProcessDef.h"
#include "CAudioProcessLinkDef.h"
#include "CDCDAWContextObject.h"
#include "CGlobalSettings.h"
#include "CObject.h"
#include "CSharedAttribute.h"
#include "CTimer.h"
#include "Converters/CAudioParamConverterBW.h"
#include "Converters/CAudioParamConverterEnum.h"
#include "Converters/CAudioParamConverterFreq.h"
#include "Converters/CAudioParamConverterGain.h"
#include "Converters/CAudioParamConverterPercent.h"
#include "Converters/CAudioParamConverterRatio.h"
#include "Converters/CAudioParamConverterReal.h"
#include "Converters/CAudioParamConverterText.h"
#include "Converters/CAudioParamConverterTime.h"
#include "Processes/CModArithmetic.h"
#include "Processes/CModBypass.h"
#include "Processes/CModDenorm.h"
#include "Processes/CModGain.h"
#include "Processes/CModMix.h"
#include "Processes/CModMono.h"
#include "Processes/CModMute.h"
#include "Processes/CModNode.h"
#include "Processes/CModOutput.h"

namespace qel {

namespace {

template <class Class>
constexpr CCreatorRow row(const char* tag)
{
    return {tag, &newObject<Class>, &Class::buildClassInfo};
}

} // namespace

const CCreatorRow kCreatorTable[] = {
    row<CAttrDoubler>("core:attr-doubler"),
    row<CGlobalSettings>("core:global-settings"),
    row<CObject>("core:object"),
    row<CSharedAttribute>("core:shared-attribute"),
    row<CTimer>("core:timer"),

    row<CAudioEnv>("audio:audio-env"),
    row<CAudioParamConverterBW>("audio:cvt-bw"),
    row<CAudioParamConverterEnum>("audio:cvt-enum"),
    row<CAudioParamConverterFreq>("audio:cvt-freq"),
    row<CAudioParamConverterGain>("audio:cvt-gain"),
    row<CAudioParamConverterPercent>("audio:cvt-percent"),
    row<CAudioParamConverterRatio>("audio:cvt-ratio"),
    row<CAudioParamConverterReal>("audio:cvt-real"),
    row<CAudioParamConverterText>("audio:cvt-text"),
    row<CAudioParamConverterTime>("audio:cvt-time"),
    row<CDCDAWContextObject>("audio:dcdaw-context"),
    row<CAudioParamDef>("audio:param"),
    row<CAudioParamAllocDef>("audio:param-alloc"),
    row<CAudioParamCollector>("audio:param-collector"),
    row<CAudioParamFilterInvertDef>("audio:param-filter-invert"),
    row<CAudioParamRemapDef>("audio:param-remap"),
    row<CAudioProcessBypassStateDef>("audio:process-bypass-state"),
    row<CAudioProcessDef>("audio:process-def"),
    row<CAudioProcessLinkDef>("audio:process-link"),

    row<CModAbsDef>("audio:modAbs"),
    row<CModBypassDef>("audio:modBypass"),
    row<CModDenormDef>("audio:modDenorm"),
    row<CModGainDef>("audio:modGain"),
    row<CModMixDef>("audio:modMix"),
    row<CModMonoDef>("audio:modMono"),
    row<CModMultDef>("audio:modMult"),
    row<CModMuteDef>("audio:modMute"),
    row<CModNodeDef>("audio:modNode"),
    row<CModOutputDef>("audio:modOutput"),
    row<CModSignalMixDef>("audio:modSignalMix"),

    {nullptr, nullptr, nullptr},
};

} // namespace qel
