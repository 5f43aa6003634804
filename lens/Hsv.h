#pragma once

#include "library/Numbers.h"

namespace k7 {

// Hue, saturation and value as words, after A. R. Smith, Color Gamut Transform Pairs (1978), in integers with
// 16383 as full scale inside. The hue circle runs from 0 to 32766: red 0, green 10922, blue 21845.

void RgbToHsv(const u16 rgb[3], u16* h, u16* s, u16* v);

/// `h` is below 32768. Outputs are at most 32766, except that the hues 27306 and 27307 reach a few words
/// above `v`.
void HsvToRgb(u16 rgb[3], u16 h, u16 s, u16 v);

} // namespace k7
