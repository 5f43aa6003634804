#pragma once

#include "baselib/Buffer.h"
#include "library/Samples.h"

#include <cstdint>
#include <memory>

namespace k7 {

/// A picture of 4 interleaved samples a pixel: red, green, blue, alpha. A word picture, K7Image, holds words
/// from 0 to 32767, a float picture 32-bit floats on the same scale, neither rounded nor clamped. Rows are
/// contiguous, without padding; row 0 is the bottom row of the picture. The type holds no colour space and no
/// premultiplication. It runs one threaded operation at a time.
template <class Sample>
class PictureK7 {
public:
    static constexpr int Channels = 4;

    /// A picture with undefined contents, or null if allocation fails or a side is below 1 or
    /// width x height leaves the signed 32-bit range.
    [[nodiscard]] static std::unique_ptr<PictureK7> Make(int width, int height);

    /// A picture over memory that the caller owns and keeps alive; null as above.
    [[nodiscard]] static std::unique_ptr<PictureK7> MakeOver(Sample* pixels, int width, int height);

    /// A copy with a store of its own, of the same size, aspect and WidthScale; null if allocation fails. On
    /// all threads.
    [[nodiscard]] static std::unique_ptr<PictureK7> MakeCopy(const PictureK7& source);

    PictureK7(const PictureK7&) = delete;
    PictureK7& operator=(const PictureK7&) = delete;

    // Two-image operations need images of one size; none checks it.

    /// Takes channel 3 of every pixel from `source`. On all threads.
    void CopyAlpha(const PictureK7* source);

    /// Takes channels 0 to 2 of every pixel from `source`. On all threads.
    void CopyColour(const PictureK7* source);

    /// Writes `source` into this image with a gain for each channel; words are truncated and clamped. Gains
    /// of exactly 1 copy every bit.
    void CopyScaled(const PictureK7* source, float gain0, float gain1, float gain2, float gain3);

    /// Sets every pixel.
    void Fill(Sample red, Sample green, Sample blue, Sample alpha);

    // Gaussian blurs and unsharp mask. Radii are in pixels of this image. `source` null: the operation works
    // in place; otherwise `source` is another image of the same size and stays unchanged. `direction`: 0
    // along rows, 1 along columns, 2 both; any other value does nothing. If allocation of a kernel fails,
    // this image stays as it was.

    /// Separable Gaussian with an integer kernel that reaches three sigma at `radius`. `dupEdges`: the edge
    /// pixels repeat beyond the frame, otherwise black lies there. Without `withAlpha` channel 3 stays as it
    /// was. On all threads.
    void GaussianExact(float radius, bool dupEdges, const PictureK7* source, int direction, bool withAlpha);
    void GaussianExactRows(float radius, bool dupEdges, const PictureK7* source, bool withAlpha);
    void GaussianExactColumns(float radius, bool dupEdges, const PictureK7* source, bool withAlpha);

    /// source + amount x (source - blurred source). Without `withAlpha` channel 3 is the source's. Threads
    /// take channels.
    void UnsharpMask(float radius, float amount, const PictureK7* source, bool withAlpha);

    /// Recursive Gaussian of Young and van Vliet (1995), sigma = radius / 4 + 0.05; its time does not depend
    /// on the radius. Without `withAlpha` channel 3 stays as it was. On all threads.
    void GaussianRecursive(float radius, const PictureK7* source, int direction, bool withAlpha);

    /// The same on one channel. With a `source` the other channels take its samples (`keepOthers`) or 0;
    /// without one they stay as they are.
    void GaussianRecursiveChannel(float radius, const PictureK7* source, int direction, int channel,
                                  bool keepOthers);

    std::size_t RowBytes() const { return static_cast<std::size_t>(Width) * Channels * sizeof(Sample); }

    Sample* Pixels = nullptr; ///< Width x Height pixels, row after row
    Sample** Rows = nullptr;  ///< Rows[y] is pixel 0 of row y, and always Pixels + y x Width pixels
    int Width = 0;
    int Height = 0;
    double AspectX = 1.0; ///< pixel aspect of the frame
    double AspectY = 1.0;
    float WidthScale = 1.0f; ///< 720 / Width: from this image's pixels to those of a frame 720 wide

private:
    PictureK7(int width, int height);
    bool SetStore(Sample* pixels);

    ImageBuffer<Sample> store_; ///< null when the caller owns the pixels
    Buffer<Sample*> rows_;
};

} // namespace k7
