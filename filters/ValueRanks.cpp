#include "filters/ValueRanks.h"

#include <bit>
#include <utility>

namespace k7 {

namespace {

constexpr const char* kSource = "Clean";

/// Integers that are ordered as the floats are.
std::uint32_t OrderedBits(float value) {
    const auto bits = std::bit_cast<std::uint32_t>(value);
    return bits >> 31 ? ~bits : bits | 0x80000000u;
}
float FromOrderedBits(std::uint32_t ordered) {
    return std::bit_cast<float>(ordered >> 31 ? ordered & 0x7fffffffu : ~ordered);
}

} // namespace

ValueRanks::ValueRanks(std::size_t mostPixels)
    : most_(mostPixels)
    , keys_(mostPixels, kSource)
    , sorted_(mostPixels, kSource)
    , ranks_(mostPixels * K7Image::Channels, kSource)
    , values_(mostPixels * K7Image::Channels, kSource) {}

void ValueRanks::Fill(const FloatImageK7& image, const Region& part, int channels) {
    if (channels < K7Image::Channels) ranks_.Zero();
    for (int c = 0; c < channels; ++c) FillChannel(image, part, c);
}

void ValueRanks::FillChannel(const FloatImageK7& image, const Region& part, int channel) {
    std::size_t count = 0;
    for (int y = part.y; y < part.y + part.height; ++y) {
        const float* value = image.Rows[y] + static_cast<std::ptrdiff_t>(part.x) * image.Channels + channel;
        for (int x = 0; x < part.width; ++x, value += image.Channels, ++count)
            keys_[count] = std::uint64_t{OrderedBits(*value)} << 32 | count;
    }
    Sort(count);

    float* values = values_.data() + static_cast<std::size_t>(channel) * most_;
    std::uint32_t rank = 0;
    for (std::size_t i = 0; i < count; ++i) {
        const std::uint64_t key = keys_[i];
        rank += i > 0 && key >> 32 != keys_[i - 1] >> 32;
        values[rank] = FromOrderedBits(static_cast<std::uint32_t>(key >> 32));
        ranks_[(key & 0xffffffffu) * K7Image::Channels + static_cast<std::size_t>(channel)] = rank;
    }
}

/// Sorts keys_ by digits of the values, the lowest first.
void ValueRanks::Sort(std::size_t count) {
    constexpr int bits = 11, passes = 3, digits = 1 << bits;
    std::uint32_t places[passes][digits] = {};
    const auto digit = [](std::uint64_t key, int pass) { return key >> (32 + bits * pass) & (digits - 1); };
    for (std::size_t i = 0; i < count; ++i)
        for (int pass = 0; pass < passes; ++pass) ++places[pass][digit(keys_[i], pass)];
    for (int pass = 0; pass < passes; ++pass) {
        std::uint32_t* place = places[pass];
        if (place[digit(keys_[0], pass)] == count) continue; // all have the same
        std::uint32_t next = 0;
        for (int d = 0; d < digits; ++d) next += std::exchange(place[d], next);
        for (std::size_t i = 0; i < count; ++i) sorted_[place[digit(keys_[i], pass)]++] = keys_[i];
        keys_.swap(sorted_);
    }
}

} // namespace k7
