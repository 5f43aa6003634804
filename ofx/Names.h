#pragma once

// The standard's strings.

namespace ofx {

// Actions.
inline constexpr char kActionLoad[] = "OfxActionLoad";
inline constexpr char kActionUnload[] = "OfxActionUnload";
inline constexpr char kActionDescribe[] = "OfxActionDescribe";
inline constexpr char kActionDescribeInContext[] = "OfxImageEffectActionDescribeInContext";
inline constexpr char kActionCreateInstance[] = "OfxActionCreateInstance";
inline constexpr char kActionDestroyInstance[] = "OfxActionDestroyInstance";
inline constexpr char kActionBeginInstanceChanged[] = "OfxActionBeginInstanceChanged";
inline constexpr char kActionInstanceChanged[] = "OfxActionInstanceChanged";
inline constexpr char kActionEndInstanceChanged[] = "OfxActionEndInstanceChanged";
inline constexpr char kActionSyncPrivateData[] = "OfxActionSyncPrivateData";
inline constexpr char kActionRender[] = "OfxImageEffectActionRender";
inline constexpr char kActionGetClipPreferences[] = "OfxImageEffectActionGetClipPreferences";
inline constexpr char kActionGetRegionOfDefinition[] = "OfxImageEffectActionGetRegionOfDefinition";
inline constexpr char kActionGetRegionsOfInterest[] = "OfxImageEffectActionGetRegionsOfInterest";
inline constexpr char kActionIsIdentity[] = "OfxImageEffectActionIsIdentity";
inline constexpr char kActionGetFramesNeeded[] = "OfxImageEffectActionGetFramesNeeded";
inline constexpr char kInteractDraw[] = "OfxInteractActionDraw";
inline constexpr char kInteractPenMotion[] = "OfxInteractActionPenMotion";
inline constexpr char kInteractPenDown[] = "OfxInteractActionPenDown";
inline constexpr char kInteractPenUp[] = "OfxInteractActionPenUp";

// Properties of anything.
inline constexpr char kPropName[] = "OfxPropName";
inline constexpr char kPropLabel[] = "OfxPropLabel";
inline constexpr char kPropTime[] = "OfxPropTime";
inline constexpr char kPropType[] = "OfxPropType";
inline constexpr char kPropInstanceData[] = "OfxPropInstanceData";
inline constexpr char kPropPluginDescription[] = "OfxPropPluginDescription";
inline constexpr char kPropChangeReason[] = "OfxPropChangeReason";
inline constexpr char kPropEffectInstance[] = "OfxPropEffectInstance";
inline constexpr char kChangeUserEdited[] = "OfxChangeUserEdited";
inline constexpr char kTypeParameter[] = "OfxTypeParameter";

// Properties of effects and clips.
inline constexpr char kGrouping[] = "OfxImageEffectPluginPropGrouping";
inline constexpr char kSupportedContexts[] = "OfxImageEffectPropSupportedContexts";
inline constexpr char kSupportedPixelDepths[] = "OfxImageEffectPropSupportedPixelDepths";
inline constexpr char kSupportedComponents[] = "OfxImageEffectPropSupportedComponents";
inline constexpr char kSupportsTiles[] = "OfxImageEffectPropSupportsTiles";
inline constexpr char kSupportsMultiResolution[] = "OfxImageEffectPropSupportsMultiResolution";
inline constexpr char kTemporalClipAccess[] = "OfxImageEffectPropTemporalClipAccess";
inline constexpr char kRenderThreadSafety[] = "OfxImageEffectPluginRenderThreadSafety";
inline constexpr char kInstanceSafe[] = "OfxImageEffectRenderInstanceSafe";
inline constexpr char kOverlayInteract[] = "OfxImageEffectPluginPropOverlayInteractV1";
inline constexpr char kFrameVarying[] = "OfxImageEffectFrameVarying";
inline constexpr char kContextFilter[] = "OfxImageEffectContextFilter";
inline constexpr char kContextGeneral[] = "OfxImageEffectContextGeneral";
inline constexpr char kClipOptional[] = "OfxImageClipPropOptional";
inline constexpr char kClipIsMask[] = "OfxImageClipPropIsMask";
inline constexpr char kClipConnected[] = "OfxImageClipPropConnected";
inline constexpr char kFrameRange[] = "OfxImageEffectPropFrameRange";
inline constexpr char kSource[] = "Source";
inline constexpr char kOutput[] = "Output";

// Properties of images and of a render.
inline constexpr char kRenderWindow[] = "OfxImageEffectPropRenderWindow";
inline constexpr char kRenderScale[] = "OfxImageEffectPropRenderScale";
inline constexpr char kPixelDepth[] = "OfxImageEffectPropPixelDepth";
inline constexpr char kComponents[] = "OfxImageEffectPropComponents";
inline constexpr char kImageData[] = "OfxImagePropData";
inline constexpr char kImageBounds[] = "OfxImagePropBounds";
inline constexpr char kImageRegion[] = "OfxImagePropRegionOfDefinition";
inline constexpr char kImageRowBytes[] = "OfxImagePropRowBytes";
inline constexpr char kPixelAspect[] = "OfxImagePropPixelAspectRatio";
inline constexpr char kRegionOfDefinition[] = "OfxImageEffectPropRegionOfDefinition";
inline constexpr char kDepthByte[] = "OfxBitDepthByte";
inline constexpr char kDepthShort[] = "OfxBitDepthShort";
inline constexpr char kDepthHalf[] = "OfxBitDepthHalf";
inline constexpr char kDepthFloat[] = "OfxBitDepthFloat";
inline constexpr char kComponentsRgba[] = "OfxImageComponentRGBA";
inline constexpr char kComponentsRgb[] = "OfxImageComponentRGB";

// Parameters.
inline constexpr char kParamInteger[] = "OfxParamTypeInteger";
inline constexpr char kParamDouble[] = "OfxParamTypeDouble";
inline constexpr char kParamDouble2D[] = "OfxParamTypeDouble2D";
inline constexpr char kParamBoolean[] = "OfxParamTypeBoolean";
inline constexpr char kParamChoice[] = "OfxParamTypeChoice";
inline constexpr char kParamRgb[] = "OfxParamTypeRGB";
inline constexpr char kParamString[] = "OfxParamTypeString";
inline constexpr char kParamGroup[] = "OfxParamTypeGroup";
inline constexpr char kParamPage[] = "OfxParamTypePage";
inline constexpr char kParamDefault[] = "OfxParamPropDefault";
inline constexpr char kParamMin[] = "OfxParamPropMin";
inline constexpr char kParamMax[] = "OfxParamPropMax";
inline constexpr char kParamShownMin[] = "OfxParamPropDisplayMin";
inline constexpr char kParamShownMax[] = "OfxParamPropDisplayMax";
inline constexpr char kParamChoiceOption[] = "OfxParamPropChoiceOption";
inline constexpr char kParamDoubleType[] = "OfxParamPropDoubleType";
inline constexpr char kParamPlain[] = "OfxParamDoubleTypePlain";
inline constexpr char kParamStringMode[] = "OfxParamPropStringMode";
inline constexpr char kParamFilePath[] = "OfxParamStringIsFilePath";
inline constexpr char kParamFileExists[] = "OfxParamPropStringFilePathExists";
inline constexpr char kParamHostHandle[] = "kOfxParamPropUseHostOverlayHandle";
inline constexpr char kParamScriptName[] = "OfxParamPropScriptName";
inline constexpr char kParamHint[] = "OfxParamPropHint";
inline constexpr char kParamParent[] = "OfxParamPropParent";
inline constexpr char kParamSecret[] = "OfxParamPropSecret";
inline constexpr char kParamEnabled[] = "OfxParamPropEnabled";
inline constexpr char kParamPageChild[] = "OfxParamPropPageChild";
inline constexpr char kHostMaxPages[] = "OfxParamHostPropMaxPages";

// On-screen controls.
inline constexpr char kPenPosition[] = "OfxInteractPropPenPosition";
inline constexpr char kPixelScale[] = "OfxInteractPropPixelScale";

} // namespace ofx
