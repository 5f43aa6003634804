#pragma once

#include <OpenImageIO/imageio.h>

#include <array>
#include <optional>
#include <string>
#include <vector>

namespace media {

/// Which channels of a file become red, green, blue and alpha. -1 means none: alpha is then opaque, a colour
/// black.
struct ColourChannels {
    bool grey = false; ///< red, green and blue are one channel
    std::array<int, 4> from{-1, -1, -1, -1};

    bool HasAlpha() const { return from[3] >= 0; }
    /// 1 grey, 2 grey and alpha, 3 colour, 4 colour and alpha.
    int Count() const { return (grey ? 1 : 3) + (HasAlpha() ? 1 : 0); }
    bool Uses(int channel) const;
    /// The channels from the first to one past the last that is used.
    int First() const;
    int End() const;
};

/// The colours of a layer of a picture. Without a layer they are the plain R, G, B, A, or Y; channels without
/// such names count by their order, unless they `mustBeNamed`. None if there are no colours.
std::optional<ColourChannels> FindColours(const OIIO::ImageSpec& spec, const std::string& layer,
                                          bool mustBeNamed);

/// The names of all channels, comma-separated.
std::string ChannelList(const OIIO::ImageSpec& spec);

} // namespace media
