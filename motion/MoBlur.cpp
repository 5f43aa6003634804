#include "motion/MoBlur.h"

#include <algorithm>
#include <cmath>
#include <cstdint>

namespace k7 {

namespace {

/// Spacing of the vectors that are drawn, in pixels, and the size of their heads.
constexpr int kArrowStep = 10;
constexpr float kArrowSize = 0.3f;

/// A percentage of full scale.
double Percent(double value) {
    return value * 32767.0 * 0.01f;
}

template <class Sample>
bool HasSize(const std::unique_ptr<PictureK7<Sample>>& image, int width, int height) {
    return image && image->Width == width && image->Height == height;
}

/// Makes an image of a size unless it exists. False if allocation fails.
template <class Sample>
bool MakeImage(std::unique_ptr<PictureK7<Sample>>& image, int width, int height) {
    if (HasSize(image, width, height)) return true;
    image = nullptr; // first, so that two do not exist at once
    image = PictureK7<Sample>::Make(width, height);
    return image != nullptr;
}

} // namespace

void MoBlur::Process() {
    if (IsAborted()) return;
    Publish(nullptr);
    InDepth(ImageInput, Output, [&](const auto& current, auto& output) { Blur(current, output); });
}

template <class Sample>
void MoBlur::Blur(const PictureK7<Sample>& current, PictureK7<Sample>& output) {
    const Box region = Region(output.Width, output.Height);
    if (ApplyMotionBlur.Value != 0 && MakeBuffers<Sample>(output.Width, output.Height))
        RenderFrame(current, output, region);
    if (!ProcessAlpha) output.CopyAlpha(&current);
}

void MoBlur::RefreshControls() {
    int matched = 0;
    MatchScales.Get(kTimeNow, &matched);
    ScaleY.SetHidden(matched != 0);
    ApplyBlurChanged();
}

void MoBlur::ApplyBlurChanged() {
    int blurred = 0;
    ApplyMotionBlur.Get(kTimeNow, &blurred);
    DisplayVectors.SetHidden(blurred == 0);
}

void MoBlur::AutoBoundChanged(double time) {
    int bound = 0;
    AutoBound.Get(time, &bound);
    BoundThreshold.SetHidden(bound != 1);
    AutoKey.SetHidden(bound != 1);
    AutoKey.SetDisabled(bound != 1);
    if (bound == 1) MatchScales.Set(kTimeNow, 0);
}

template <class Sample>
void MoBlur::RenderFrame(const PictureK7<Sample>& current, PictureK7<Sample>& output, const Box& region) {
    // The first frame, and one whose predecessor cannot be read, is compared with itself.
    PictureK7<Sample>& kept = *std::get<Kept<Sample>>(previousFrame_);
    const bool before = Time > 0.0 && ImageInput.Input && ImageInput.Input->ReadInputAtTime(Time - 1.0, kept);
    const PictureK7<Sample>& previous = before ? kept : current;

    MotionSearch search;
    search.PreBlur = static_cast<float>(PreBlur.Value);
    search.OutlierLimit = static_cast<float>(Percent(Threshold.Value));
    search.FirstColumn = region.FirstColumn;
    search.LastColumn = region.LastColumn;
    search.FirstRow = region.FirstRow;
    search.LastRow = region.LastRow;
    const MotionField* field = estimator_.EstimateMotion(*this, previous, current, search);
    if (!field || IsAborted()) return; // the output is still the copy of the input

    BlurPaths paths;
    paths.StepLimit = Trunc(MaxSteps.Value + 1.0);
    paths.Scale = static_cast<float>(LengthScale.Value);
    paths.StartWeight = static_cast<float>(StartWeight.Value);
    paths.EndWeight = static_cast<float>(EndWeight.Value);
    renderer_.RenderBlur(*this, output, previous, current, *field, paths);
    Publish(field);
}

template <class Sample>
bool MoBlur::MakeBuffers(int width, int height) {
    if (!std::holds_alternative<Kept<Sample>>(previousFrame_)) previousFrame_ = Kept<Sample>();
    auto& kept = std::get<Kept<Sample>>(previousFrame_);
    if (HasSize(kept, width, height)) return true;
    if (MakeImage(kept, width, height) && estimator_.MakeBuffers(width, height) &&
        renderer_.MakeBuffers(width, height, MotionEstimator::kBuffers))
        return true;

    // Free what was made; the next frame tries again.
    kept = nullptr;
    estimator_ = {};
    renderer_ = {};
    return false;
}

MoBlur::Box MoBlur::Region(int width, int height) {
    Box bounds;
    const double frame = std::trunc(Time);
    if (AutoBound.Value == 0 || !FindBounds(frame - 1.0, width, height, &bounds))
        return RegionOfControls(width, height);
    WriteRegion(bounds, width, height);
    return bounds;
}

MoBlur::Box MoBlur::RegionOfControls(double width, double height) const {
    const double scaleY = MatchScales.Value != 0 ? ScaleX.Value : ScaleY.Value;
    return {Trunc((Centre.Value.x - ScaleX.Value * 0.5) * width),
            Trunc((Centre.Value.x + ScaleX.Value * 0.5) * width),
            Trunc(height * Centre.Value.y - width * 0.5 * scaleY),
            Trunc(height * Centre.Value.y + width * 0.5 * scaleY)};
}

bool MoBlur::FindBounds(double frame, int width, int height, Box* bounds) {
    FrameSource* matte = MatteInput.Input;
    if (!matte || !MakeImage(boundsFrame_, width, height)) return false;

    const double lastFrame = std::trunc(ExtentEnd) - 1.0;
    const double first = std::max(std::min(frame, lastFrame), 0.0);
    const double second = std::max(std::min(first + 1.0, lastFrame), 0.0);
    if (!matte->ReadInputAtTime(first, *boundsFrame_)) return false;
    *bounds = BrightBox(*boundsFrame_);
    if (!matte->ReadInputAtTime(second, *boundsFrame_)) return false;
    const Box other = BrightBox(*boundsFrame_);
    bounds->FirstColumn = std::min(bounds->FirstColumn, other.FirstColumn);
    bounds->LastColumn = std::max(bounds->LastColumn, other.LastColumn);
    bounds->FirstRow = std::min(bounds->FirstRow, other.FirstRow);
    bounds->LastRow = std::max(bounds->LastRow, other.LastRow);
    return true;
}

MoBlur::Box MoBlur::BrightBox(const K7Image& picture) const {
    const std::int64_t limit = static_cast<std::int64_t>(Trunc(Percent(BoundThreshold.Value))) * 16;
    const auto bright = [&](int x, int y) {
        const u16* pixel = picture.Rows[y] + static_cast<std::ptrdiff_t>(x) * K7Image::Channels;
        return Brightness16(pixel[0], pixel[1], pixel[2]) > limit;
    };

    // Only pixels outside the box so far can widen it.
    Box box = {picture.Width, -1, picture.Height, -1};
    for (int y = 0; y < picture.Height; ++y) {
        int x = 0;
        while (x < picture.Width && !bright(x, y)) ++x;
        if (x == picture.Width) continue;
        box.FirstColumn = std::min(box.FirstColumn, x);
        for (x = picture.Width - 1; x > box.LastColumn && !bright(x, y);) --x;
        box.LastColumn = std::max(box.LastColumn, x);
        box.FirstRow = std::min(box.FirstRow, y);
        box.LastRow = y;
    }
    if (box.LastRow < 0) return {0, picture.Width - 1, 0, picture.Height - 1};
    return box;
}

void MoBlur::WriteRegion(const Box& bounds, int width, int height) {
    const float w = static_cast<float>(bounds.LastColumn - bounds.FirstColumn);
    const float h = static_cast<float>(bounds.LastRow - bounds.FirstRow);
    const float x = static_cast<float>((w * 0.5 + bounds.FirstColumn) / width);
    const float y = static_cast<float>((h * 0.5 + bounds.FirstRow) / height);
    const auto write = [&](double time) {
        Centre.Set(time, x, y);
        ScaleX.Set(time, w / static_cast<float>(width));
        ScaleY.Set(time, h / static_cast<float>(width));
    };
    write(kTimeNow);
    if (AutoKey.Value != 0) write(Trunc(Time));
}

void MoBlur::Publish(const MotionField* field) {
    const std::lock_guard lock(fieldMutex_);
    field_ = field;
    showVectors_ = DisplayVectors.Value != 0;
}

void MoBlur::Draw() {
    DrawVectors();
    CentreWidget.DrawAt(Centre.Shown);
    if (!RegionWidget.Visible) return;
    RegionWidget.X = static_cast<float>(Centre.Shown.x);
    RegionWidget.Y = static_cast<float>(Centre.Shown.y);
    RegionWidget.Width = static_cast<float>(ScaleX.Shown);
    RegionWidget.Height = static_cast<float>(ScaleY.Shown);
    RegionWidget.Rotation = 0.0f;
    RegionWidget.Square = MatchScales.Value != 0;
    RegionWidget.Draw();
}

void MoBlur::DrawVectors() {
    // The next frame waits with its new field until this one is drawn.
    const std::lock_guard lock(fieldMutex_);
    if (!field_ || !showVectors_) return;
    OverlayColour(*this, 65535, 65535, 65535);
    const float scaleX = static_cast<float>(ImageWidth) / static_cast<float>(field_->Width);
    const float scaleY = static_cast<float>(ImageHeight) / static_cast<float>(field_->Height);
    for (int y = 0; y < field_->Height; y += kArrowStep)
        for (int x = 0; x < field_->Width; x += kArrowStep) {
            const std::ptrdiff_t i = static_cast<std::ptrdiff_t>(y) * field_->Width + x;
            const float dx = field_->Dx[i];
            const float fromX = static_cast<float>(x);
            const float fromY = static_cast<float>(y);
            if (dx != 0.0f)
                DrawArrow(fromX * scaleX, fromY * scaleY, (fromX + dx) * scaleX,
                          (fromY + field_->Dy[i]) * scaleY, kArrowSize);
        }
}

void MoBlur::DrawArrow(float x0, float y0, float x1, float y1, float size) const {
    OverlayLine(*this, x0, y0, x1, y1);
    float ux = x1 - x0;
    float uy = y1 - y0;
    const float length = std::sqrt(ux * ux + uy * uy);
    if (length > 1e-6f) {
        ux /= length;
        uy /= length;
    }
    const float halfHead = 6.0f * size;
    const float headX = x1 - 10.0f * size * ux;
    const float headY = y1 - 10.0f * size * uy;
    OverlayLine(*this, headX - halfHead * uy, headY + halfHead * ux, x1, y1);
    OverlayLine(*this, x1, y1, headX + halfHead * uy, headY - halfHead * ux);
}

void MoBlur::Event(int event, float x, float y) {
    RegionWidget.Event(event, x, y);
    CentreWidget.Event(event, x, y);
}

} // namespace k7
