#pragma once

#include "library/K7Image.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <functional>
#include <memory>
#include <string>

namespace k7::test {

using Picture = std::unique_ptr<K7Image>;
using FloatPicture = std::unique_ptr<FloatImageK7>;

/// A picture from a function word(x, y, channel).
inline Picture MakePicture(int width, int height, const std::function<int(int, int, int)>& word) {
    Picture picture = K7Image::Make(width, height);
    for (int y = 0; y < height; ++y)
        for (int x = 0; x < width; ++x)
            for (int c = 0; c < 4; ++c) picture->Rows[y][4 * x + c] = static_cast<u16>(word(x, y, c));
    return picture;
}

inline Picture Flat(int width, int height, int red, int green, int blue, int alpha) {
    const int words[4] = {red, green, blue, alpha};
    return MakePicture(width, height, [&](int, int, int c) { return words[c]; });
}

inline Picture Flat(int width, int height, int word) {
    return Flat(width, height, word, word, word, word);
}

/// Pseudo-random words from 0 to 32767; the same for the same seed everywhere.
inline Picture Noise(int width, int height, std::uint32_t seed = 1) {
    std::uint32_t state = seed * 2654435761u + 1u;
    return MakePicture(width, height, [&](int, int, int) {
        state ^= state << 13;
        state ^= state >> 17;
        state ^= state << 5;
        return static_cast<int>(state >> 8 & 0x7fffu);
    });
}

/// A word picture as floats, each value times a gain.
inline FloatPicture Floats(const K7Image& words, float gain = 1.0f) {
    FloatPicture floats = FloatImageK7::Make(words.Width, words.Height);
    for (int i = 0; i < words.Width * words.Height * words.Channels; ++i)
        floats->Pixels[i] = static_cast<float>(words.Pixels[i]) * gain;
    floats->AspectX = words.AspectX;
    floats->AspectY = words.AspectY;
    return floats;
}

/// EXPECT_TRUE(Same(a, b)): every sample agrees; otherwise the first place that differs, with both values.
template <class Sample>
testing::AssertionResult Same(const PictureK7<Sample>& got, const PictureK7<Sample>& want) {
    if (got.Width != want.Width || got.Height != want.Height)
        return testing::AssertionFailure() << "sizes " << got.Width << " x " << got.Height << " and "
                                           << want.Width << " x " << want.Height;
    for (int y = 0; y < got.Height; ++y)
        for (int x = 0; x < got.Width; ++x)
            for (int c = 0; c < 4; ++c)
                if (got.Rows[y][4 * x + c] != want.Rows[y][4 * x + c])
                    return testing::AssertionFailure()
                           << "at x " << x << " y " << y << " channel " << c << ": got "
                           << got.Rows[y][4 * x + c] << ", want " << want.Rows[y][4 * x + c];
    return testing::AssertionSuccess();
}

} // namespace k7::test
