#pragma once

#include <cstdint>

namespace host {

/// The number of an attribute. Its two highest hexadecimal digits are the type of the value: 0x1x integer,
/// 0x2x double, 0x3x text, 0x6x pointer, 0x8x FuID.
using Tag = std::uint64_t;

// Inputs and outputs.
inline constexpr Tag kTagDataType = 0x88020000;    ///< "Number", "Point", "Text" or "Image"
inline constexpr Tag kTagControlKind = 0x80030000; ///< "SliderControl", "ComboControl", ...
inline constexpr Tag kTagShownLow = 0x20030000;    ///< displayed range; of a combo box 0 to entries - 1
inline constexpr Tag kTagShownHigh = 0x20030001;
inline constexpr Tag kTagLowest = 0x20030002; ///< values are clamped to these if given
inline constexpr Tag kTagHighest = 0x20030003;
inline constexpr Tag kTagDefault = 0x20030004;
inline constexpr Tag kTagDefaultX = 0x20030005; ///< of a point, in fractions of the frame
inline constexpr Tag kTagDefaultY = 0x20030006;
inline constexpr Tag kTagInteger = 0x1003000c;
inline constexpr Tag kTagEntry = 0x38040000; ///< one entry of a combo box; repeated
inline constexpr Tag kTagDefaultText = 0x30030003;
inline constexpr Tag kTagColourLabel = 0x30040000;   ///< label of the four channels of a colour
inline constexpr Tag kTagColourGroup = 0x10030006;   ///< number of the colour on its page; not on alpha
inline constexpr Tag kTagColourChannel = 0x10030007; ///< 0 red, 1 green, 2 blue; not on alpha
inline constexpr Tag kTagPage = 0x10040005;
inline constexpr Tag kTagDisabled = 0x10030005;  ///< 1: greyed
inline constexpr Tag kTagShown = 0x10040008;     ///< 0: hidden
inline constexpr Tag kTagReacts = 0x1003000a;    ///< a change of this input may change other controls
inline constexpr Tag kTagReactsToo = 0x1003000b; ///< goes with kTagReacts, always 0
inline constexpr Tag kTagCheckbox = 0x10030000;  ///< set to 0 on check boxes
inline constexpr Tag kTagMainLink = 0x10020001;  ///< number of an image among the main links, from 1
inline constexpr Tag kTagOptional = 0x10030002;  ///< set to 0 on an image input that may stay empty
inline constexpr Tag kTagPixels = 0x10030022;    ///< 1: a length in pixels of the frame
inline constexpr Tag kTagIdleAt =
    0x20030023; ///< a tool whose own inputs all have this passes its main image through
inline constexpr Tag kTagAidAt = 0x20030024;  ///< at this value frames show an aid, not the effect
inline constexpr Tag kTagCommon = 0x10030010; ///< set to 0 on an input that every tool has

// Operators.
inline constexpr Tag kTagFramesBefore = 0x10030020; ///< earlier frames of its images that a frame reads
inline constexpr Tag kTagVaries = 0x10030021;       ///< 1: frames differ even if its images do not

// Objects.
inline constexpr Tag kTagOpaque = 0x10020002;    ///< set to 0 on an image whose file has no alpha
inline constexpr Tag kTagImageLike = 0x60020000; ///< Image to take size and format from
inline constexpr Tag kTagOwner = 0x60050000;     ///< Operator of an OperatorControl
inline constexpr Tag kTagDocument = 0x60050001;  ///< FusionDoc of a new operator

// Registrations.
inline constexpr Tag kTagRegInit = 0x60000001;
inline constexpr Tag kTagRegCleanup = 0x60000002;
inline constexpr Tag kTagRegKind = 0x10000000;
inline constexpr Tag kTagRegBase = 0x60000011;
inline constexpr Tag kTagRegScript = 0x60000005;
inline constexpr Tag kTagRegCreate = 0x60000000;
inline constexpr Tag kTagRegNumber = 0x10000004;
inline constexpr Tag kTagRegName = 0x30000002;
inline constexpr Tag kTagRegCategory = 0x30000003;
inline constexpr Tag kTagRegShortName = 0x30000004;
inline constexpr Tag kTagRegDescription = 0x30000005;
inline constexpr Tag kTagRegHelp = 0x3000000c;
inline constexpr Tag kTagRegMaker = 0x30000009;
inline constexpr Tag kTagRegWeb = 0x3000000a;
inline constexpr Tag kTagRegVersion = 0x30000008;
inline constexpr Tag kTagRegFlagA = 0x10000019;
inline constexpr Tag kTagRegFlagB = 0x10000033;
inline constexpr Tag kTagRegShowsDivision = 0x10000042; ///< set to 0: frames depend on Application's Division
inline constexpr Tag kTagRegCarriesOver =
    0x10000041; ///< set to 0: what its first frame draws at random is kept
inline constexpr Tag kTagRegWritesControls = 0x10000040; ///< set to 0: a frame may write controls

} // namespace host
