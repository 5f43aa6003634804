#pragma once

#include "baselib/Buffer.h"
#include "library/Numbers.h"

#include <cstdint>
#include <memory>

namespace k7 {

/// A picture of 4 interleaved words a pixel: red, green, blue, alpha, each from 0 to 32767. Rows lie one
/// behind the other without padding; row 0 is the bottom row of the picture. The type holds no colour space
/// and no premultiplication. It runs one threaded operation at a time.
class K7Image {
public:
    static constexpr int Channels = 4;

    /// A picture with undefined contents, or null where there is no memory or a side is below 1 or
    /// width x height leaves the signed 32-bit range.
    [[nodiscard]] static std::unique_ptr<K7Image> Make(int width, int height);

    /// A picture over memory that the caller owns and keeps alive; null as above.
    [[nodiscard]] static std::unique_ptr<K7Image> MakeOver(u16* pixels, int width, int height);

    /// A copy with a store of its own, of the same size, aspect and WidthScale; null without memory.
    [[nodiscard]] static std::unique_ptr<K7Image> MakeCopy(const K7Image& source);

    K7Image(const K7Image&) = delete;
    K7Image& operator=(const K7Image&) = delete;

    // Two-image operations need images of one size; none checks it.

    /// Takes channel 3 of every pixel from `source`. On all threads.
    void CopyAlpha(const K7Image* source);

    /// Takes channels 0 to 2 of every pixel from `source`. On all threads.
    void CopyColour(const K7Image* source);

    /// Writes `source` into this image with a gain for each channel, truncated and clamped. Gains of exactly
    /// 1 copy every bit.
    void CopyScaled(const K7Image* source, float gain0, float gain1, float gain2, float gain3);

    /// Sets every pixel.
    void Fill(u16 red, u16 green, u16 blue, u16 alpha);

    // Gaussian blurs and unsharp mask. Radii are in pixels of this image. `source` null: the operation works
    // in place; otherwise `source` is another image of the same size and stays unchanged. `direction`: 0
    // along rows, 1 along columns, 2 both; any other value does nothing. Without memory for a kernel this
    // image stays as it was.

    /// Separable Gaussian with an integer kernel that reaches three sigma at `radius`. `dupEdges`: the edge
    /// pixels repeat beyond the frame, otherwise black lies there. Without `withAlpha` channel 3 stays as it
    /// was. On the calling thread.
    void GaussianExact(float radius, bool dupEdges, const K7Image* source, int direction, bool withAlpha);
    void GaussianExactRows(float radius, bool dupEdges, const K7Image* source, bool withAlpha);
    void GaussianExactColumns(float radius, bool dupEdges, const K7Image* source, bool withAlpha);

    /// source + amount x (source - blurred source). Without `withAlpha` channel 3 is the source's. On the
    /// calling thread.
    void UnsharpMask(float radius, float amount, const K7Image* source, bool withAlpha);

    /// Recursive Gaussian of Young and van Vliet (1995), sigma = radius / 4 + 0.05; its time does not depend
    /// on the radius. Without `withAlpha` channel 3 stays as it was. On all threads.
    void GaussianRecursive(float radius, const K7Image* source, int direction, bool withAlpha);

    /// The same on one channel. With a `source` the other channels take its words (`keepOthers`) or 0;
    /// without one they stay as they are.
    void GaussianRecursiveChannel(float radius, const K7Image* source, int direction, int channel,
                                  bool keepOthers);

    std::size_t RowBytes() const { return static_cast<std::size_t>(Width) * Channels * sizeof(u16); }

    u16* Pixels = nullptr; ///< Width x Height pixels, row after row
    u16** Rows = nullptr;  ///< Rows[y] is pixel 0 of row y, and always Pixels + y x Width pixels
    int Width = 0;
    int Height = 0;
    double AspectX = 1.0; ///< pixel aspect of the frame
    double AspectY = 1.0;
    float WidthScale = 1.0f; ///< 720 / Width: from this image's pixels to those of a frame 720 wide

private:
    K7Image(int width, int height);
    bool SetStore(u16* pixels);

    static void CopyAlphaRows(K7Image* image, int first, int last, int threads);
    static void CopyColourRows(K7Image* image, int first, int last, int threads);

    ImageBuffer<u16> store_; ///< null when the caller owns the pixels
    Buffer<u16*> rows_;
    const K7Image* copySource_ = nullptr; ///< working field of the copies: what is copied from

    friend struct RecursiveGaussian; ///< the recursive filter's workers

    const K7Image* passSource_ = nullptr; ///< working fields of the recursive passes
    int firstChannel_ = 0;
    int endChannel_ = 0;
    double sigma_ = 0.0;
};

} // namespace k7
