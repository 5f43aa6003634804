#pragma once

#include <cstdint>
#include <functional>
#include <string>

namespace k7::bench {

/// A call runs one frame of 16-bit noise, 4 channels, through a filter graph of ffmpeg's, as "gblur=sigma=5".
std::function<void()> AvFilterFrame(const std::string& filter, int width, int height, int threads);

/// A call spreads the pixels of such a frame by up to `radius` pixels, by GraphicsMagick. It takes as many
/// threads as the machine has.
std::function<void()> MagickSpreadFrame(unsigned radius, int width, int height, int threads);

} // namespace k7::bench
