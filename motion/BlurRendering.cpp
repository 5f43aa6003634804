#include "motion/BlurRendering.h"

#include "frame/PluginK7.h"
#include "library/K7Image.h"
#include "motion/Float4.h"
#include "motion/WorkBuffer.h"

#include <algorithm>
#include <cmath>

namespace k7 {

namespace {

constexpr int kChannels = K7Image::Channels;

/// Vectors shorter than this in both directions stay where they are.
constexpr float kStill = 0.0001f;

/// Limits beyond which sums of a frame could leave the range of a float.
constexpr float kMostWeight = 1e25f;
constexpr float kMostScale = 1e9f;

/// Weight from which a pixel needs nothing from the coarser levels, and below which it counts as empty.
constexpr double kFullWeight = 0.9995;
constexpr double kNoWeight = 0.0001;

float Bound(float value, float low, float high) {
    return value > low ? std::min(value, high) : low; // NaN becomes low
}

std::size_t Cell(int x, int y, int width) {
    return static_cast<std::size_t>(y) * static_cast<std::size_t>(width) + static_cast<std::size_t>(x);
}

void StoreMean(float* pixel, Float4 mean) {
    StoreFloat4(pixel, mean);
}
void StoreMean(u16* pixel, Float4 mean) {
    // Compare the fraction with a half: adding the half in float could carry into the next word.
    const Int4 words = __builtin_convertvector(mean, Int4);
    const Int4 roundsUp = mean - __builtin_convertvector(words, Float4) >= 0.5f; // -1 where it does
    for (int c = 0; c < kChannels; ++c) pixel[c] = ClampWord(words[c] - roundsUp[c]);
}

/// The mean of what a pixel has received, rounded for words; opaque black if it has received nothing.
template <class Sample>
void StorePixel(Sample* pixel, Float4 sum, float weight) {
    if (weight <= kNoWeight) {
        pixel[0] = pixel[1] = pixel[2] = 0;
        pixel[3] = kFullScale;
        return;
    }
    StoreMean(pixel, sum / weight);
}

} // namespace

/// Lays the paths of a frame into some rows of the canvas.
template <class Sample>
class BlurRenderer::Splatter {
public:
    /// Fills rows `first` to `last`, which lie in `part`.
    Splatter(const Level& canvas, const PictureK7<Sample>& previous, const PictureK7<Sample>& current,
             const MotionField& field, const BlurPaths& paths, PartRows part, int first, int last)
        : canvas_(canvas)
        , previous_(previous)
        , current_(current)
        , field_(field)
        , paths_(paths)
        , part_(part)
        , first_(first)
        , last_(last)
        , endX_(static_cast<float>(field.Width - 2))
        , endY_(static_cast<float>(field.Height - 2)) {}

    void ClearRow(int y) const {
        const std::size_t start = Cell(0, y, canvas_.Width);
        const auto cells = static_cast<std::size_t>(canvas_.Width);
        std::fill_n(canvas_.Colour + kChannels * start, kChannels * cells, 0.0f);
        std::fill_n(canvas_.Weight + start, cells, 0.0f);
    }

    /// Whether anything that starts in a row can reach the rows to be filled.
    bool Touches(int y, RowReach reach) const {
        const float a = PathEnd(y, paths_.Scale * reach.low, endY_);
        const float b = PathEnd(y, paths_.Scale * reach.high, endY_);
        return Touches(y, std::min(a, b), std::max(a, b));
    }

    void SplatRow(int y) const {
        const std::size_t start = Cell(0, y, field_.Width);
        const float* dx = field_.Dx + start;
        const float* dy = field_.Dy + start;
        const bool own = y >= first_ && y <= last_;
        for (int x = 0; x < field_.Width; ++x)
            if (std::abs(dx[x]) >= kStill || std::abs(dy[x]) >= kStill)
                SplatPath(x, y, dx[x], dy[x]);
            else if (own)
                Add(Cell(x, y, canvas_.Width), 1.0f, LoadPixel(previous_.Rows[y] + kChannels * x));
    }

private:
    static float PathEnd(int start, float length, float end) {
        float position = static_cast<float>(start) + length;
        if (position < 1.0f) position = 1.0f;
        if (position > end) position = end;
        return position;
    }

    /// Which paths a part draws; the same for all of its rows.
    bool Takes(int y, float end) const {
        const float start = static_cast<float>(y);
        return std::max(start, end) >= static_cast<float>(part_.first) &&
               std::min(start, end) <= static_cast<float>(part_.last + 1);
    }

    /// Whether a path comes near the rows to be filled, with a row to spare.
    bool Touches(int y, float lowEnd, float highEnd) const {
        const float start = static_cast<float>(y);
        return std::max(start, highEnd) >= static_cast<float>(first_ - 2) &&
               std::min(start, lowEnd) <= static_cast<float>(last_ + 2);
    }

    /// The later frame between its pixels.
    Float4 Between(float x, float y) const {
        const int ix = static_cast<int>(x);
        const int iy = static_cast<int>(y);
        const float fx = x - static_cast<float>(ix);
        const float fy = y - static_cast<float>(iy);
        const Sample* lower = current_.Rows[iy] + kChannels * ix;
        const Sample* upper = current_.Rows[iy + 1] + kChannels * ix;
        return (LoadPixel(lower) * (1.0f - fx) + LoadPixel(lower + kChannels) * fx) * (1.0f - fy) +
               (LoadPixel(upper) * (1.0f - fx) + LoadPixel(upper + kChannels) * fx) * fy;
    }

    void SplatPath(int x, int y, float dx, float dy) const {
        const float endY = PathEnd(y, paths_.Scale * dy, endY_);
        if (!Takes(y, endY) || !Touches(y, endY, endY)) return;
        const float endX = PathEnd(x, paths_.Scale * dx, endX_);
        const float startX = static_cast<float>(x);
        const float startY = static_cast<float>(y);

        // The colour changes into what the vector points at, however far the path goes.
        const Float4 colour = LoadPixel(previous_.Rows[y] + kChannels * x);
        const Float4 change = Between(PathEnd(x, dx, endX_), PathEnd(y, dy, endY_)) - colour;

        // Lay one and a half samples per pixel of the path.
        const float pathX = endX - startX;
        const float pathY = endY - startY;
        const float wanted = (std::sqrt(pathX * pathX + pathY * pathY) + 1.0f) * 1.5f;
        const int count = std::clamp(static_cast<int>(wanted), 2, paths_.StepLimit);
        const float lastStep = static_cast<float>(count - 1);
        for (int i = 0; i < count; ++i) {
            const float t = static_cast<float>(i) / lastStep;
            const float weight = (paths_.EndWeight - paths_.StartWeight) * t + paths_.StartWeight;
            LaySample(pathX * t + startX, pathY * t + startY, weight, change * t + colour);
        }
    }

    void LaySample(float x, float y, float weight, Float4 colour) const {
        const int iy = static_cast<int>(y);
        if (iy > last_ || iy + 1 < first_) return;
        const int ix = static_cast<int>(x);
        const float fx = x - static_cast<float>(ix);
        const float fy = y - static_cast<float>(iy);
        const float left = weight * (1.0f - fx);
        const float right = weight * fx;
        const bool both = ix + 1 < canvas_.Width;
        const std::size_t cell = Cell(ix, iy, canvas_.Width);
        if (iy >= first_) AddPair(cell, left * (1.0f - fy), right * (1.0f - fy), both, colour);
        if (iy < last_)
            AddPair(cell + static_cast<std::size_t>(canvas_.Width), left * fy, right * fy, both, colour);
    }

    void AddPair(std::size_t cell, float left, float right, bool both, Float4 colour) const {
        Add(cell, left, colour);
        if (both) Add(cell + 1, right, colour);
    }

    void Add(std::size_t cell, float share, Float4 colour) const {
        float* sum = canvas_.Colour + kChannels * cell;
        StoreFloat4(sum, LoadFloat4(sum) + share * colour);
        canvas_.Weight[cell] += share;
    }

    Level canvas_;
    const PictureK7<Sample>& previous_;
    const PictureK7<Sample>& current_;
    const MotionField& field_;
    BlurPaths paths_;
    PartRows part_;
    int first_;
    int last_;
    float endX_; ///< paths end at most here
    float endY_;
};

bool BlurRenderer::MakeBuffers(int width, int height, int number) {
    // Halve until a side is empty or the table is full.
    std::size_t starts[kLevels] = {};
    std::size_t coarse = 0;
    levelCount_ = 0;
    for (int l = 0; l < kLevels && width >> l >= 1 && height >> l >= 1; ++l, ++levelCount_) {
        levels_[l] = {width >> l, height >> l, nullptr, nullptr};
        starts[l] = coarse;
        if (l > 0) coarse += Cell(0, height >> l, width >> l);
    }
    const std::size_t cells = Cell(0, height, width);
    coarse = std::max<std::size_t>(coarse, 1);
    if (!MakeWorkBuffer(colour_, kChannels * cells, number) || !MakeWorkBuffer(weight_, cells, number + 1) ||
        !MakeWorkBuffer(coarseColour_, kChannels * coarse, number + 2) ||
        !MakeWorkBuffer(coarseWeight_, coarse, number + 3) ||
        !MakeWorkBuffer(reach_, static_cast<std::size_t>(height), number + 4))
        return false;
    for (int l = 0; l < levelCount_; ++l) {
        levels_[l].Colour = l == 0 ? colour_.data() : coarseColour_.data() + kChannels * starts[l];
        levels_[l].Weight = l == 0 ? weight_.data() : coarseWeight_.data() + starts[l];
    }
    return true;
}

template <class Sample>
void BlurRenderer::RenderBlur(PluginK7& core, PictureK7<Sample>& output, const PictureK7<Sample>& previous,
                              const PictureK7<Sample>& current, const MotionField& field, BlurPaths paths) {
    // Clamp the settings to what the sums can hold.
    paths.StepLimit = std::max(paths.StepLimit, 2);
    paths.StartWeight = Bound(paths.StartWeight, 1.0f, kMostWeight);
    paths.EndWeight = Bound(paths.EndWeight, 1.0f, kMostWeight);
    paths.Scale = std::isnan(paths.Scale) ? 0.0f : std::clamp(paths.Scale, -kMostScale, kMostScale);

    // Fill the canvas. A worker owns its rows of it, but paths enter them from anywhere in the frame.
    const int parts = core.Division();
    const int height = field.Height;
    RunRows(core, height, [&](int first, int last) {
        for (int y = first; y <= last && !core.IsAborted(); ++y) FindReach(field, y);
    });
    RunRows(core, height, [&](int first, int last) {
        for (int next = first; next <= last;) {
            const PartRows part = PartRows::Around(next, parts, height);
            const int end = std::min(part.last, last);
            const Splatter<Sample> splatter(levels_[0], previous, current, field, paths, part, next, end);
            for (int y = next; y <= end && !core.IsAborted(); ++y) splatter.ClearRow(y);
            for (int y = 0; y < height && !core.IsAborted(); ++y)
                if (splatter.Touches(y, reach_[static_cast<std::size_t>(y)])) splatter.SplatRow(y);
            next = end + 1;
        }
    });

    // Make the coarser levels and take each pixel from all of them.
    for (int l = 1; l < levelCount_; ++l)
        RunRows(core, levels_[l].Height, [&](int first, int last) {
            for (int y = first; y <= last && !core.IsAborted(); ++y) HalveRow(levels_[l - 1], levels_[l], y);
        });
    RunRows(core, height, [&](int first, int last) {
        for (int y = first; y <= last && !core.IsAborted(); ++y) ResolveRow(output, y);
    });
}

template void BlurRenderer::RenderBlur(PluginK7&, K7Image&, const K7Image&, const K7Image&,
                                       const MotionField&, BlurPaths);
template void BlurRenderer::RenderBlur(PluginK7&, FloatImageK7&, const FloatImageK7&, const FloatImageK7&,
                                       const MotionField&, BlurPaths);

void BlurRenderer::FindReach(const MotionField& field, int y) {
    const float* dy = field.Dy + Cell(0, y, field.Width);
    RowReach reach = {0.0f, 0.0f};
    for (int x = 0; x < field.Width; ++x) {
        reach.low = dy[x] < reach.low ? dy[x] : reach.low;
        reach.high = dy[x] > reach.high ? dy[x] : reach.high;
    }
    reach_[static_cast<std::size_t>(y)] = reach;
}

void BlurRenderer::HalveRow(const Level& source, const Level& target, int y) {
    for (int x = 0; x < target.Width; ++x) {
        const std::size_t a = Cell(2 * x, 2 * y, source.Width);
        const std::size_t c = a + static_cast<std::size_t>(source.Width);
        const std::size_t to = Cell(x, y, target.Width);
        const auto colour = [&](std::size_t cell) { return LoadFloat4(source.Colour + kChannels * cell); };
        StoreFloat4(target.Colour + kChannels * to,
                    (colour(a) + colour(a + 1) + colour(c) + colour(c + 1)) * 0.25f);
        const float* weight = source.Weight;
        target.Weight[to] = (weight[a] + weight[a + 1] + weight[c] + weight[c + 1]) * 0.25f;
    }
}

template <class Sample>
void BlurRenderer::ResolveRow(PictureK7<Sample>& output, int y) const {
    const float* colour = levels_[0].Colour + kChannels * Cell(0, y, output.Width);
    const float* weights = levels_[0].Weight + Cell(0, y, output.Width);
    Sample* pixel = output.Rows[y];
    for (int x = 0; x < output.Width; ++x, pixel += kChannels) {
        Float4 sum = LoadFloat4(colour + kChannels * x);
        float weight = weights[x];
        // Top up with the weight that is still missing, level by level.
        for (int l = 1; l < levelCount_ && weight <= kFullWeight; ++l) {
            const Level& level = levels_[l];
            const std::size_t cell =
                Cell(std::min(x >> l, level.Width - 1), std::min(y >> l, level.Height - 1), level.Width);
            const float missing = 1.0f - weight;
            sum += missing * LoadFloat4(level.Colour + kChannels * cell);
            weight += missing * level.Weight[cell];
        }
        StorePixel(pixel, sum, weight);
    }
}

} // namespace k7
