#pragma once

#include <array>
#include <cstdint>
#include <vector>

namespace media {

/// The clip behind `sample:`, a tram that crosses a street at night: small bright lights of many colours,
/// textured walls, setts and clouds, speckle noise, and the tram's matte in alpha. It needs no file and has
/// the same words on every machine.
namespace SampleClip {

inline constexpr int kWidth = 960;
inline constexpr int kHeight = 540;
inline constexpr int kFrames = 24;

/// A frame's words: red, green, blue, alpha of each pixel, rows bottom up. Frames outside 0 to 23 are the
/// nearest one. Thread-safe.
std::vector<std::uint16_t> Frame(int frame);

} // namespace SampleClip
} // namespace media
