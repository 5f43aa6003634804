#pragma once

#include "baselib/Buffer.h"
#include "library/Samples.h"
#include "motion/MotionField.h"

namespace k7 {

class PluginK7;

/// How light is laid along the paths.
struct BlurPaths {
    int StepLimit = 2;        ///< most samples on a path; below 2 counts as 2
    float Scale = 1.0f;       ///< length of a path, in vectors
    float StartWeight = 1.0f; ///< weights at the ends of a path; below 1 counts as 1
    float EndWeight = 1.0f;
};

/// Makes a frame with motion blur. It moves light instead of filtering: every pixel of the earlier frame is
/// laid down along its path again and again, turning into the colour that its vector finds in the later
/// frame. Gaps between the paths are filled from coarser copies of the canvas.
class BlurRenderer {
public:
    /// Allocates what frames of a size need. Messages number the buffers from `number` on. False if
    /// allocation fails.
    [[nodiscard]] bool MakeBuffers(int width, int height, int number);

    /// Fills `output`; all pictures and the field have the buffers' size. Vectors of pictures less than 3
    /// pixels wide or high must be zero. Each part into which the owner divides a frame drops what a path
    /// that ends less than a row below it would add to its first row, so the result depends on the division,
    /// but not on the number of threads. `core` knows both.
    template <class Sample>
    void RenderBlur(PluginK7& core, PictureK7<Sample>& output, const PictureK7<Sample>& previous,
                    const PictureK7<Sample>& current, const MotionField& field, BlurPaths paths);

private:
    static constexpr int kLevels = 10;

    /// A canvas or a coarser copy of it. A cell holds the sum of weight x colour, and the sum of weight.
    struct Level {
        int Width = 0;
        int Height = 0;
        float* Colour = nullptr; ///< 4 channels a cell
        float* Weight = nullptr;
    };

    /// How far the vectors of a row reach up and down.
    struct RowReach {
        float low;
        float high;
    };

    template <class Sample>
    class Splatter;

    void FindReach(const MotionField& field, int y);
    static void HalveRow(const Level& source, const Level& target, int y);
    template <class Sample>
    void ResolveRow(PictureK7<Sample>& output, int y) const;

    int levelCount_ = 0;
    Level levels_[kLevels];
    ImageBuffer<float> colour_; ///< of the canvas
    ImageBuffer<float> weight_;
    ImageBuffer<float> coarseColour_; ///< of the levels above it, contiguous
    ImageBuffer<float> coarseWeight_;
    ImageBuffer<RowReach> reach_;
};

} // namespace k7
