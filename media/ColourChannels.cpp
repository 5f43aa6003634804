#include "media/ColourChannels.h"

#include "media/Words.h"

#include <algorithm>

namespace media {
namespace {

using OIIO::ImageSpec;

int Find(const ImageSpec& spec, const std::string& name) {
    for (int c = 0; c < spec.nchannels; ++c)
        if (SameWord(spec.channelnames[static_cast<std::size_t>(c)], name)) return c;
    return -1;
}

ColourChannels Grey(int channel, int alpha) {
    return {true, {channel, channel, channel, alpha}};
}

/// Colours by the order of the channels other than alpha.
std::optional<ColourChannels> InOrder(const ImageSpec& spec) {
    std::vector<int> plain;
    for (int c = 0; c < spec.nchannels; ++c)
        if (c != spec.alpha_channel) plain.push_back(c);
    const int alpha = spec.alpha_channel;
    if (plain.empty()) return Grey(alpha, alpha);
    if (plain.size() < 3) return Grey(plain[0], alpha);
    return ColourChannels{false, {plain[0], plain[1], plain[2], alpha}};
}

} // namespace

bool ColourChannels::Uses(int channel) const {
    return std::find(from.begin(), from.end(), channel) != from.end();
}

int ColourChannels::First() const {
    int first = -1;
    for (int channel : from)
        if (channel >= 0 && (first < 0 || channel < first)) first = channel;
    return first;
}

int ColourChannels::End() const {
    return *std::max_element(from.begin(), from.end()) + 1;
}

std::optional<ColourChannels> FindColours(const ImageSpec& spec, const std::string& layer, bool mustBeNamed) {
    const std::string before = layer.empty() ? "" : layer + ".";
    const auto find = [&](const char* name) { return Find(spec, before + name); };
    const int alpha = layer.empty() && spec.alpha_channel >= 0 ? spec.alpha_channel : find("A");
    const ColourChannels named{false, {find("R"), find("G"), find("B"), alpha}};
    if (named.from[0] >= 0 || named.from[1] >= 0 || named.from[2] >= 0) return named;
    if (const int grey = find("Y"); grey >= 0) return Grey(grey, alpha);
    if (!layer.empty() || mustBeNamed) return std::nullopt;
    return InOrder(spec);
}

std::string ChannelList(const ImageSpec& spec) {
    std::string list;
    for (const std::string& name : spec.channelnames) list += (list.empty() ? "" : ", ") + name;
    return list;
}

} // namespace media
