#pragma once

#include "baselib/Buffer.h"
#include "library/Samples.h"
#include "motion/GreyPyramid.h"
#include "motion/MotionField.h"

namespace k7 {

class PluginK7;

/// What to look for, and where.
struct MotionSearch {
    float PreBlur = 0.0f; ///< reach of the Gaussian on the grey frames, in pixels
    float OutlierLimit =
        0.0f;            ///< ratio of squared lengths from which a vector is replaced by its neighbours' mean
    int FirstColumn = 0; ///< the region, in pixels; ends may be swapped or outside the frame
    int LastColumn = 0;
    int FirstRow = 0;
    int LastRow = 0;
};

/// Motion between two frames by hierarchical block matching on a sparse grid, spread over all pixels. Pixels
/// that have not changed do not move. The same pictures produce the same field on any number of threads.
class MotionEstimator {
public:
    /// The number of buffers that MakeBuffers makes, counted from 0 in its messages.
    static constexpr int kBuffers = 6;

    /// Allocates what frames of a size need. False, after a message, if that fails.
    [[nodiscard]] bool MakeBuffers(int width, int height);

    /// The vectors from `previous` to `current`, both of the buffers' size, or null if the allocation for the
    /// blur fails. The field is valid until the next call. `core` provides the threads.
    template <class Sample>
    const MotionField* EstimateMotion(PluginK7& core, const PictureK7<Sample>& previous,
                                      const PictureK7<Sample>& current, const MotionSearch& search);

private:
    struct Vector {
        float dx;
        float dy;
    };

    /// The grid points first, first + 1, ... before `end` along one axis.
    struct GridSpan {
        int Count() const { return end > first ? end - first : 0; }

        int first;
        int end;
    };

    static GridSpan Region(int low, int high, int points);
    void SearchGrid(PluginK7& core, GridSpan columns, GridSpan rows);
    Vector SearchPoint(int x, int y) const;
    void FilterOutliers(float limit);
    Vector Filtered(const Vector* point, float limit) const;
    void DensifyRow(int y);
    void ClearStill(int y);

    int cellColumns_ = 0; ///< grid cells that lie between grid points
    int cellRows_ = 0;
    MotionField field_;
    GreyPyramid previous_;
    GreyPyramid current_;
    ImageBuffer<float> dx_; ///< the field's planes
    ImageBuffer<float> dy_;
    ImageBuffer<Vector> grid_; ///< (cellColumns_ + 1) x (cellRows_ + 1) points
    ImageBuffer<Vector> filtered_;
};

} // namespace k7
