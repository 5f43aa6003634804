#include "lens/Streaks.h"

#include "lens/LineStepper.h"
#include "library/Chunks.h"
#include "library/Numbers.h"

#include <algorithm>
#include <cmath>

namespace k7 {

namespace {

constexpr std::size_t kMostKeptBytes = std::size_t{256} << 20;

/// The step from which a streak of `major` steps fades out: over its last 15 percent.
std::int64_t FadeStart(std::int64_t major) {
    const double steps = static_cast<double>(major);
    const auto start = static_cast<std::int64_t>(steps - steps * 0.15);
    return start < major ? start : major + 2;
}

/// The whole pixels from a light at `from` to the end of an arm.
template <class Real>
std::int64_t EndFrom(int from, Real along) {
    return static_cast<std::int64_t>(Trunc(along + static_cast<Real>(from))) - from;
}

} // namespace

template <class Real>
int StreakEntries(const StreakSetup<Real>& setup) {
    const float most =
        PixelDistance(static_cast<float>(setup.Width), static_cast<float>(setup.Height), setup.Aspect);
    const std::int64_t reachable = static_cast<std::int64_t>(Trunc(most)) + 2;
    return static_cast<int>(std::min<std::int64_t>(Trunc(setup.Length), reachable));
}

template <class Real>
bool StreakSet<Real>::Prepare(const StreakSetup<Real>& setup, const StreakPairs<Real>& pairs,
                              const DiffractionTable<Real>& table, const PixelBox& lights) {
    setup_ = setup;
    colours_ = table.Entries.data();
    entries_ = static_cast<int>(table.Entries.size());
    length_ = static_cast<Real>(Trunc(setup.Length));
    Free();
    if (setup.Count < 1 || length_ < 1) return true;

    const auto count = static_cast<std::size_t>(std::min(setup.Count, kMostStreaks));
    arms_ = Buffer<Arm>(2 * count, kFlareSource<Real>);
    if (!arms_) return false;
    for (std::size_t k = 0; k < count; ++k) {
        const Real reach = length_ * pairs[k].Length + length_;
        Real theta = static_cast<Real>(setup.Rotation / 180.0 * kFlarePi + pairs[k].Angle);
        for (std::size_t i = 0; i < 2; ++i) {
            const float angle = std::isfinite(static_cast<float>(theta)) ? static_cast<float>(theta) : 0.0f;
            const Real c = std::cos(angle);
            const Real s = std::sin(angle);
            arms_[2 * k + i] = {reach, c * reach, s * reach / setup.Aspect, 0, 0, 0, 0};
            theta = static_cast<Real>(theta + kFlarePi);
        }
    }
    KeepSteps(lights);
    return true;
}

template <class Real>
void StreakSet<Real>::Free() {
    arms_ = {};
    steps_ = {};
}

template <class Real>
int StreakSet<Real>::ReachX() const {
    Real most = 0;
    for (const Arm& arm : arms_) most = std::max(most, std::abs(arm.AlongX));
    return Trunc(most + Real(3));
}

template <class Real>
int StreakSet<Real>::ReachY() const {
    Real most = 0;
    for (const Arm& arm : arms_) most = std::max(most, std::abs(arm.AlongY));
    return Trunc(most + Real(3));
}

/// Stores the steps of each arm for the end that most lights share. An end depends on the light only by
/// truncation: if it lies beyond the left or bottom edge it is one pixel nearer. If allocation fails, nothing
/// is stored.
template <class Real>
void StreakSet<Real>::KeepSteps(const PixelBox& lights) {
    const Window reachable = {1 - lights.Right, setup_.Width - 1 - lights.Left, -lights.Top,
                              setup_.Height - lights.Bottom};
    const std::int64_t longest = static_cast<std::int64_t>(setup_.Width) + setup_.Height;
    std::size_t most = 0;
    for (Arm& arm : arms_) {
        arm.Dx = Trunc(std::floor(arm.AlongX));
        arm.Dy = Trunc(std::floor(arm.AlongY));
        const std::int64_t major = std::max(std::abs(arm.Dx), std::abs(arm.Dy));
        most += static_cast<std::size_t>(std::min(major, longest)) + 1;
    }
    if (most > kMostKeptBytes / sizeof(Step)) return;
    steps_ = Buffer<Step>(most, kFlareSource<Real>);
    if (!steps_) return;

    std::size_t next = 0;
    for (Arm& arm : arms_) {
        if (AbortRequested()) return;
        arm.First = next;
        Walk(arm, arm.Dx, arm.Dy, reachable, [&](const Step& step) { steps_[next++] = step; });
        arm.Count = next - arm.First;
    }
}

template <class Real>
typename StreakSet<Real>::Step StreakSet<Real>::StepAt(const Arm& arm, const LineStepper<Real>& line,
                                                       std::int64_t fade) const {
    // The first entries of the table are stretched over the length of the arm.
    const float distance =
        PixelDistance(static_cast<float>(line.X), static_cast<float>(line.Y), setup_.Aspect);
    const int i = std::min(Trunc(length_ * (distance / arm.Reach)), entries_ - 1);
    DiffractionEntry<Real> colour = colours_[i];
    if (line.Step > fade) {
        const Real t = static_cast<float>(line.Step - fade) / static_cast<float>(line.Major - fade);
        const Real left = 1 - (3 - 2 * t) * (t * t);
        colour = {colour.R * left, colour.G * left, colour.B * left, 0};
    }
    const Real coverage = line.Coverage();
    const int x = static_cast<int>(line.X);
    const int y = static_cast<int>(line.Y);
    return {x, y, x + line.SideX(coverage), y + line.SideY(coverage), std::abs(coverage), colour};
}

/// Calls visit(step) for the steps within the window, outward from the light.
template <class Real>
template <class Visit>
void StreakSet<Real>::Walk(const Arm& arm, std::int64_t dx, std::int64_t dy, const Window& window,
                           Visit visit) const {
    LineStepper<Real> line(dx, dy);
    if (line.Major == 0) return;
    const std::int64_t fade = FadeStart(line.Major);
    for (; line.Step <= line.Major; line.Next()) {
        if (line.X < window.Left || line.X > window.Right) return; // the light lies within
        if (line.StepY > 0 ? line.Y > window.Top : line.Y < window.Bottom) return;
        if (line.Y < window.Bottom || line.Y > window.Top) continue;
        visit(StepAt(arm, line, fade));
    }
}

/// Moves `step` to the first stored step of an arm within the rows of the window, and returns the end of
/// those.
template <class Real>
const typename StreakSet<Real>::Step* StreakSet<Real>::RowsOf(const Arm& arm, const Window& window,
                                                              const Step*& step) const {
    const Step* const end = step + arm.Count;
    const bool up = arm.Dy >= 0;
    const int last = end[-1].Y;
    if (up ? last < window.Bottom || window.Top < 0 : last > window.Top || window.Bottom > 0) return step;
    const auto before = [&](const Step& s) { return up ? s.Y < window.Bottom : s.Y > window.Top; };
    const auto within = [&](const Step& s) { return up ? s.Y <= window.Top : s.Y >= window.Bottom; };
    step = std::partition_point(step, end, before);
    return std::partition_point(step, end, within);
}

template <class Real>
void StreakSet<Real>::Add(const Light& light, const LightPlanes<Real>& planes, int first, int last) const {
    using Four = Lanes<Real>;
    const typename Four::Vector gains = {light.R * 0.125f, light.G * 0.125f, light.B * 0.125f, 0};
    const auto draw = [&](const Step& step) {
        const int y = light.Y + step.Y;
        const int sideX = light.X + step.SideX;
        const int sideY = light.Y + step.SideY;
        const auto& colour = Four::Of(step.Colour);
        if (sideX >= 0 && sideX < setup_.Width && sideY >= first && sideY <= last)
            Four::Of(planes.At(sideX, sideY)) += colour * step.Side * gains;
        if (y >= first && y <= last)
            Four::Of(planes.At(light.X + step.X, y)) += colour * (1 - step.Side) * gains;
    };

    const Window window = {-light.X, setup_.Width - 1 - light.X, first - 1 - light.Y, last + 1 - light.Y};
    for (const Arm& arm : arms_) {
        if (AbortRequested()) return;
        const std::int64_t dx = EndFrom(light.X, arm.AlongX);
        const std::int64_t dy = EndFrom(light.Y, arm.AlongY);
        if (arm.Count == 0 || dx != arm.Dx || dy != arm.Dy) {
            Walk(arm, dx, dy, window, draw);
            continue;
        }
        const Step* step = steps_.begin() + arm.First;
        const Step* const end = RowsOf(arm, window, step);
        for (; step < end && step->X >= window.Left && step->X <= window.Right; ++step) draw(*step);
    }
}

#define K7_STREAKS(Real)                                                                                     \
    template int StreakEntries(const StreakSetup<Real>&);                                                    \
    template class StreakSet<Real>;
K7_STREAKS(double)
K7_STREAKS(float)
#undef K7_STREAKS

} // namespace k7
