// The table of all tags: the only file that knows every class.
#include "CreatorTable.h"

#include "CAttrDoubler.h"
#include "CAudioCCTable.h"
#include "CAudioEnv.h"
#include "CAudioExtParam.h"
#include "CAudioExtParamList.h"
#include "CAudioFilterGenArray.h"
#include "CAudioFilterHBFGen.h"
#include "CAudioFilterLPHP1Gen.h"
#include "CAudioFilterMagnusGen.h"
#include "CAudioFilterRBJGen.h"
#include "CAudioFilterReservedGens.h"
#include "CAudioFilterSerialGen.h"
#include "CAudioInterfaceBase.h"
#include "CAudioInterfaceBaseConnector.h"
#include "CAudioInterfaceClient.h"
#include "CAudioInterfaceClientConnector.h"
#include "CAudioParamCollector.h"
#include "CAudioParamConverterBW.h"
#include "CAudioParamConverterEnum.h"
#include "CAudioParamConverterFreq.h"
#include "CAudioParamConverterGain.h"
#include "CAudioParamConverterPercent.h"
#include "CAudioParamConverterRatio.h"
#include "CAudioParamConverterReal.h"
#include "CAudioParamConverterText.h"
#include "CAudioParamConverterTime.h"
#include "CAudioParamDef.h"
#include "CAudioParamFilterInvertDef.h"
#include "CAudioParamRegistry.h"
#include "CAudioVizCollector.h"
#include "CBrushSetObject.h"
#include "CButton.h"
#include "CButtonAB.h"
#include "CColorSwatch.h"
#include "CControlArray.h"
#include "CControlSurface.h"
#include "CControlSurfaceGroup.h"
#include "CDCDAWContextObject.h"
#include "CDynamicListPresets.h"
#include "CEditBox.h"
#include "CFileDialog.h"
#include "CFontObject.h"
#include "CFrame.h"
#include "CGlobalSettings.h"
#include "CGradient.h"
#include "CGroupLabel.h"
#include "CHistory.h"
#include "CImageSetObject.h"
#include "CKnob.h"
#include "CKnobLabels.h"
#include "CLevelMeter.h"
#include "CLevelMeterBase.h"
#include "CLevelMeterListener.h"
#include "CMinMax.h"
#include "CModArithmetic.h"
#include "CModBypass.h"
#include "CModCrunchAtk.h"
#include "CModCrunchRls.h"
#include "CModDecimator.h"
#include "CModDenorm.h"
#include "CModDownsampler.h"
#include "CModFilter.h"
#include "CModGain.h"
#include "CModInterpolator.h"
#include "CModLeveler.h"
#include "CModMSCoder.h"
#include "CModMeter.h"
#include "CModMix.h"
#include "CModMono.h"
#include "CModMute.h"
#include "CModNode.h"
#include "CModOutput.h"
#include "CModPShift.h"
#include "CModProcessSwitch.h"
#include "CModRouter.h"
#include "CModSatDRF.h"
#include "CModTrans.h"
#include "CModUpsampler.h"
#include "CObject.h"
#include "CPaletteObject.h"
#include "CParamBridgeAudio.h"
#include "CParamGroupController.h"
#include "CParamGroupSelector.h"
#include "CPicture.h"
#include "CPluginControl.h"
#include "CPresetManager.h"
#include "CQuickPresetSelector.h"
#include "CReadOut.h"
#include "CRuler.h"
#include "CScrollerBar.h"
#include "CSelectorGroup.h"
#include "CSelectorOversampling.h"
#include "CSelectorPalette.h"
#include "CSelectorScale.h"
#include "CSharedAttribute.h"
#include "CStdEventBridge.h"
#include "CTextView.h"
#include "CTextViewAutoScroll.h"
#include "CTimer.h"
#include "CUIParam.h"
#include "CUIParamController.h"
#include "CValueList.h"
#include "CValueListAudio.h"
#include "CView.h"
#include "CViewColorSlot.h"
#include "CViewCommand.h"
#include "CViewState.h"
#include "CViewStateSwitch.h"
#include "CViewStateSwitchObject.h"
#include "CVizExchange.h"
#include "CWinDrag.h"
#include "CWindow.h"
#include "CWindowSharedData.h"
#include "Definitions/CAudioParamAllocDef.h"
#include "Definitions/CAudioParamRemapDef.h"
#include "Definitions/CAudioProcessBypassStateDef.h"
#include "Definitions/CAudioProcessDef.h"
#include "Definitions/CAudioProcessLinkDef.h"

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

    row<CBrushSetObject>("brushset"),
    row<CFontObject>("font"),
    row<CImageSetObject>("imageset"),
    row<CPaletteObject>("palette"),

    row<CButtonAB>("ui:button-ab"),
    row<CButton>("ui:button-base"),
    row<CColorSwatch>("ui:color-swatch"),
    row<CControlArray>("ui:control-array"),
    row<CControlSurface>("ui:control-surface"),
    row<CControlSurfaceGroup>("ui:control-surface-group"),
    row<CDynamicListPresets>("ui:dynamic-list-presets"),
    row<CEditBox>("ui:editbox"),
    row<CFileDialog>("ui:file-dialog"),
    row<CFrame>("ui:frame"),
    row<CGroupLabel>("ui:group-label"),
    row<CHistory>("ui:history"),
    row<CKnob>("ui:knob"),
    row<CKnobLabels>("ui:knob-labels"),
    row<CLevelMeter>("ui:level-meter"),
    row<CLevelMeterBase>("ui:level-meter-base"),
    row<CLevelMeterListener>("ui:level-meter-listener"),
    row<CMinMax>("ui:min-max"),
    row<CGradient>("ui:overlay-gradient"),
    row<CParamBridgeAudio>("ui:param-bridge"),
    row<CParamGroupController>("ui:param-group-controller"),
    row<CParamGroupSelector>("ui:param-group-selector"),
    row<CPicture>("ui:picture"),
    row<CPluginControl>("ui:plugin-control"),
    row<CPresetManager>("ui:preset-manager"),
    row<CQuickPresetSelector>("ui:quick-preset-selector"),
    row<CReadOut>("ui:readout"),
    row<CRuler>("ui:ruler"),
    row<CScrollerBar>("ui:scroller-bar"),
    row<CSelectorGroup>("ui:selector-group"),
    row<CSelectorOversampling>("ui:selector-oversampling"),
    row<CSelectorPalette>("ui:selector-palette"),
    row<CSelectorScale>("ui:selector-scale"),
    row<CTextView>("ui:textview"),
    row<CTextViewAutoScroll>("ui:textview-auto-scroll"),
    row<CStdEventBridge>("ui:ui-event-bridge"),
    row<CUIParam>("ui:ui-param"),
    row<CUIParamController>("ui:ui-param-controller"),
    row<CValueListAudio>("ui:value-list"),
    row<CValueList>("ui:value-list-manual"),
    row<CView>("ui:view"),
    row<CViewColorSlot>("ui:view-color-slot"),
    row<CViewCommand>("ui:view-command"),
    row<CViewState>("ui:view-state"),
    row<CViewStateSwitch>("ui:view-state-switch"),
    row<CVizExchange>("ui:viz-exchange"),
    row<CWinDrag>("ui:window-drag"),
    row<CWindow>("ui:window-renderer"),
    row<CWindowSharedData>("ui:window-shared-data"),
    row<CViewStateSwitchObject>("view-state-switch-object"),

    row<CAudioEnv>("audio:audio-env"),
    row<CAudioCCTable>("audio:cctable"),
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
    row<CAudioExtParam>("audio:ext-param"),
    row<CAudioExtParamList>("audio:ext-param-list"),
    row<CAudioFilterAPF1Gen>("audio:fltgen-apf1"),
    row<CAudioFilterGenArray>("audio:fltgen-array"),
    row<CAudioFilterGenArrayItem>("audio:fltgen-array-item"),
    row<CAudioFilterBypassGen>("audio:fltgen-bypass"),
    row<CAudioFilterFIRHilbGen>("audio:fltgen-firhilb"),
    row<CAudioFilterFIRLimGen>("audio:fltgen-firlim"),
    row<CAudioFilterFIRLPGen>("audio:fltgen-firlp"),
    row<CAudioFilterHBFGen>("audio:fltgen-hbf"),
    row<CAudioFilterLPHP1Gen>("audio:fltgen-lphp1"),
    row<CAudioFilterMagnusGen>("audio:fltgen-magnus"),
    row<CAudioFilterRBJGen>("audio:fltgen-rbj"),
    row<CAudioFilterSerialGen>("audio:fltgen-serial"),
    row<CAudioFilterSerialGenItem>("audio:fltgen-serial-item"),
    row<CAudioInterfaceBase>("audio:interface-base"),
    row<CAudioInterfaceBaseConnectorVST>("audio:interface-base-connector-vst"),
    row<CAudioInterfaceClient>("audio:interface-client"),
    row<CAudioInterfaceClientConnectorVST>("audio:interface-client-connector-vst"),
    row<CAudioParamDef>("audio:param"),
    row<CAudioParamAllocDef>("audio:param-alloc"),
    row<CAudioParamCollector>("audio:param-collector"),
    row<CAudioParamFilterInvertDef>("audio:param-filter-invert"),
    row<CAudioParamRegistry>("audio:param-registry"),
    row<CAudioParamRemapDef>("audio:param-remap"),
    row<CAudioProcessBypassStateDef>("audio:process-bypass-state"),
    row<CAudioProcessDef>("audio:process-def"),
    row<CAudioProcessLinkDef>("audio:process-link"),
    row<CAudioVizCollector>("audio:viz-collector"),

    row<CModAbsDef>("audio:modAbs"),
    row<CModBypassDef>("audio:modBypass"),
    row<CModCrunchAtkDef>("audio:modCrunchAtk"),
    row<CModCrunchRlsDef>("audio:modCrunchRls"),
    row<CModDecimatorDef>("audio:modDecimator"),
    row<CModDenormDef>("audio:modDenorm"),
    row<CModDownsamplerDef>("audio:modDownsampler"),
    row<CModFilterDef>("audio:modFilter"),
    row<CModGainDef>("audio:modGain"),
    row<CModInterpolatorDef>("audio:modInterpolator"),
    row<CModLevelerDef>("audio:modLeveler"),
    row<CModMSCoderDef>("audio:modMSCoder"),
    row<CModMeterDef>("audio:modMeter"),
    row<CModMixDef>("audio:modMix"),
    row<CModMonoDef>("audio:modMono"),
    row<CModMultDef>("audio:modMult"),
    row<CModMuteDef>("audio:modMute"),
    row<CModNodeDef>("audio:modNode"),
    row<CModOutputDef>("audio:modOutput"),
    row<CModPShiftDef>("audio:modPShift"),
    row<CModProcessSwitchDef>("audio:modProcessSwitch"),
    row<CModRouterDef>("audio:modRouter"),
    row<CModSatDRFDef>("audio:modSatDRF"),
    row<CModSignalMixDef>("audio:modSignalMix"),
    row<CModTransDef>("audio:modTrans"),
    row<CModUpsamplerDef>("audio:modUpsampler"),

    {nullptr, nullptr, nullptr},
};

} // namespace qel
