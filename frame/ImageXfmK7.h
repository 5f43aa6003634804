#pragma once

#include "baselib/Buffer.h"
#include "frame/PluginK7.h"
#include "library/K7Image.h"

#include <array>
#include <atomic>
#include <cstdint>
#include <tuple>

namespace k7 {

/// Resamples a picture to another size in two separable passes, along rows and then along columns. The first
/// pixels of both sizes coincide, and so do the last. Weights are divided by their sum only where a pass
/// reduces: a flat picture enlarged by a factor that is not whole comes out slightly uneven.
class ImageXfmK7 {
public:
    /// Kernels of SetFilter; any other number is the triangle.
    enum FilterId {
        kTriangle = 1,
        kCubic = 3,      ///< cubic convolution (Keys 1981), a = -0.5
        kSharpCubic = 4, ///< the same with a = -1
        kBSpline = 5,    ///< cubic B-spline
        kWindowedSinc = 6,
    };

    /// Runs a pass over `rows` lines: calls worker(xfm, first, last, threads) for ranges that make up 0 to
    /// rows - 1, and returns when all are done.
    using DispatchHook = void (*)(PluginK7* core, ExternalWorker worker, int rows, ImageXfmK7* xfm);

    ImageXfmK7() { SetFilter(kTriangle); }

    void SetFilter(int id);

    /// Without a core or a hook everything runs on the calling thread.
    void SetDispatch(PluginK7* core, DispatchHook hook);

    /// The hook that spreads the work over the threads of a core's owner.
    static void RunExternalChunks(PluginK7* core, ExternalWorker worker, int rows, ImageXfmK7* xfm);

    /// Writes `source` into `dest`, which keeps its size. Returns 1, or 0 if allocation fails; `dest` is then
    /// undefined.
    template <class Sample>
    [[nodiscard]] int Transfer(const PictureK7<Sample>* source, PictureK7<Sample>* dest);

private:
    static constexpr int kSteps = 512; ///< kernel entries for a distance of one pixel

    /// The weight of a source pixel in a destination pixel.
    struct Tap {
        double weight;
        std::int32_t source;
    };
    /// What a destination pixel is made of: its taps in source order, and what their sum is divided by.
    struct Place {
        std::int64_t firstTap;
        std::int64_t endTap;
        double total;
    };

    bool IsAborted() const;
    void Run(ExternalWorker worker, int lines);
    template <class Sample>
    int RunPass(const PictureK7<Sample>* source, PictureK7<Sample>* dest, bool alongRows);
    bool PlacePixels();
    template <class Sample>
    void CopyRows(int first, int last);
    template <class Sample>
    void ResizeRow(const double* row, Sample* out) const;
    template <class Sample>
    void ResizeRows(int first, int last);
    template <class Sample>
    void ResizeColumns(int first, int last);

    template <void (ImageXfmK7::*Lines)(int, int)>
    static void Worker(void* xfm, int first, int last, int) {
        (static_cast<ImageXfmK7*>(xfm)->*Lines)(first, last);
    }

    int Filter = -1;
    std::array<double, 2 * kSteps + 1> Kernel{}; ///< from the middle outwards
    int Support = 0;                             ///< half width in source pixels

    // Working fields of a pass.
    int DestSize = 0;
    int SourceSize = 0;
    template <class Sample>
    struct PassPictures {
        const PictureK7<Sample>* source = nullptr;
        PictureK7<Sample>* dest = nullptr;
    };
    std::tuple<PassPictures<u16>, PassPictures<float>>
        pictures_;     ///< the current pass's, in one of the depths
    double Step = 0.0; ///< source pixels from one destination pixel to the next
    Buffer<Tap> taps_;
    Buffer<Place> places_;
    std::atomic<bool> outOfMemory_ = false; ///< any worker may raise it

    PluginK7* DispatchContext = nullptr;
    DispatchHook Dispatch = nullptr;
};

} // namespace k7
