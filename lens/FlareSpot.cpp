#include "lens/FlareSpot.h"

#include "baselib/Buffer.h"
#include "baselib/Directory.h"
#include "lens/GhostAdd.h"
#include "lens/GhostScan.h"
#include "lens/GhostTrace.h"
#include "lens/Hsv.h"
#include "lens/LensFile.h"
#include "library/K7Image.h"
#include "library/Numbers.h"

#include <algorithm>
#include <cmath>

namespace k7 {

namespace {

constexpr int kUserLens = kBuiltInLenses + 1;

// A ghost that reaches farther than this many samples from the frame's corner is not drawn: its clipped
// outline would be nothing but rounding errors.
constexpr float kFarthest = 1e9f;

u16 HueOf(const ColourControlK7& colour) {
    u16 hue, saturation, value;
    RgbToHsv(colour.Value, &hue, &saturation, &value);
    return hue;
}

/// A control's value in units of the frame.
float Scaled(const FloatControlK7& control, double unit) {
    return static_cast<float>(control.Value / unit);
}
float LensSpace(double fraction) {
    return static_cast<float>(fraction * 2.0 - 1.0);
}

/// Whether all of a ghost, in samples, is finite and near enough to be clipped meaningfully.
bool IsDrawable(const GhostPolygon& ghost) {
    const auto near = [](float x, float y) { return std::abs(x) <= kFarthest && std::abs(y) <= kFarthest; };
    return near(ghost.CentreX, ghost.CentreY) &&
           std::all_of(ghost.Vertices, ghost.Vertices + ghost.Count,
                       [&](const GhostPoint& p) { return near(p.X, p.Y); });
}

} // namespace

FlareSpot::FlareSpot() : LensDirectory(DataFolder()) {}

void FlareSpot::Process() {
    if (IsAborted()) return;
    InDepth(Input, Output, [&](const auto& in, auto& out) { Shine(in, out); });
}

template <class Sample>
void FlareSpot::Shine(const PictureK7<Sample>& in, const PictureK7<Sample>& out) {
    ReadControls(in.Width, in.Height, out.AspectX, out.AspectY);
    const std::size_t cells = static_cast<std::size_t>(Width) * static_cast<std::size_t>(Height);
    ImageBuffer<int> sums(3 * cells, "FlareSpot");
    if (!sums) return; // the output already holds the background
    Sums.Red = sums.data();
    Sums.Green = Sums.Red + cells;
    Sums.Blue = Sums.Green + cells;
    RunRows(*this, Height, [&](int first, int last) {
        if (first > last) return;
        DrawGhosts(first, last);
        for (int y = first; y <= last && !IsAborted(); ++y)
            AddGhosts(Sums, y, ProcessAlpha, in.Rows[y], out.Rows[y]);
    });
}

void FlareSpot::ReadControls(int width, int height, double aspectX, double aspectY) {
    Width = width;
    Height = height;
    Sums.Width = Width;
    Sums.HighX = 2 * Width - 1;
    Sums.AspectX = static_cast<float>(aspectX);
    Sums.AspectY = static_cast<float>(aspectY);

    StartX = LensSpace(StartControl.Value.x);
    StartY = LensSpace(StartControl.Value.y);
    EndX = LensSpace(EndControl.Value.x);
    EndY = LensSpace(EndControl.Value.y);
    SourceRadius = Scaled(RadiusControl, 1000.0);
    MinScale = Scaled(MinScaleControl, 100.0);
    MaxScale = Scaled(MaxScaleControl, 10.0);
    Gain = Scaled(BrightnessControl, 10.0);
    Falloff = Scaled(DefocusControl, 10.0);
    Saturation = Scaled(SaturationControl, 100.0);
    EdgeBoost = EdgeBoostControl.Value != 0;
    ColourOverride = OverrideControl.Value != 0;
    HueStart = HueOf(ColourStartControl);
    HueEnd = HueOf(ColourEndControl);

    Sides = std::clamp(SidesControl.Value, 0, GhostPolygon::kMaxSides);
    for (int k = 0; k < Sides; ++k) {
        const double angle = k * (6.283185 / Sides);
        RimCos[k] = std::cos(angle);
        RimSin[k] = std::sin(angle);
    }

    RandomState = static_cast<std::uint32_t>(RandomControl.Value);
    Lens = GetLens(LensControl.Value, MoreControl.Value);
}

const LensTable* FlareSpot::GetLens(int lens, int moreElements) {
    const LensTable* table = lens >= kUserLens && LoadUserLens() ? &UserLens : nullptr;
    if (!table) table = &BuiltInLens(lens >= kUserLens ? 1 : lens);
    const int more = std::min(moreElements, LensTable::kMoreElements);
    if (more < 1) return table;
    ExtendLens(*table, more, &RandomState, &ExtendedLens);
    return &ExtendedLens;
}

bool FlareSpot::LoadUserLens() {
    const std::string path = LensFilePath(LensDirectory, FileControl.Value);
    const LensFileResult result = ReadLensFile(path, &UserLens);
    if (result == LensFileResult::Read) return true;
    const std::string failure = result == LensFileResult::OpenFailed
                                    ? "Lens file OPEN failed! using a standard lens......\n"
                                    : "Lens file READ failed! using a standard lens......\n";
    ReportMessage((failure + path).c_str());
    LensControl.Set(Time, 1);
    return false;
}

/// Draws what falls on some rows.
void FlareSpot::DrawGhosts(int first, int last) const {
    const std::size_t width = static_cast<std::size_t>(Width);
    for (int* plane : {Sums.Red, Sums.Green, Sums.Blue})
        std::fill_n(plane + static_cast<std::size_t>(first) * width,
                    static_cast<std::size_t>(last - first + 1) * width, 0);
    for (int i = 0; i < Lens->Count && !IsAborted(); ++i) {
        GhostPolygon ghost;
        if (TraceGhost(*Lens, i, &ghost)) DrawGhost(&ghost, i, first, last + 1, Lens->Count - 1);
    }
}

bool FlareSpot::TraceGhost(const LensTable& lens, int surface, GhostPolygon* ghost) const {
    const float dx = EndX - StartX;
    const float dy = EndY - StartY;
    const float length = std::sqrt(dx * dx + dy * dy + 4.0f);
    float ray[6] = {StartX, StartY, 1.0f, dx / length, dy / length, -2.0f / length};
    float hit[3] = {};

    const float growth = (MaxScale - MinScale) / static_cast<float>(lens.Count - 1);
    const float size = (growth * static_cast<float>(surface) + MaxScale) * lens.Surfaces[surface].Diameter;
    const double radius = size * SourceRadius;
    for (int k = 0; k < Sides; ++k) {
        ray[0] = static_cast<float>(radius * RimCos[k] / Sums.AspectX + StartX);
        ray[1] = static_cast<float>(radius * RimSin[k] / Sums.AspectY + StartY);
        if (!IntersectSurface(lens, surface, ray, hit)) return false;
        ghost->Vertices[k] = {hit[0], hit[1]};
    }
    ghost->Count = Sides;
    ghost->DirX = -ray[3];
    ghost->DirY = -ray[4];

    ray[0] = StartX;
    ray[1] = StartY;
    IntersectSurface(lens, surface, ray, hit); // on a miss the last vertex serves as the centre
    ghost->CentreX = hit[0];
    ghost->CentreY = hit[1];
    ghost->InnerRadius = SourceRadius;
    ghost->OuterRadius = 0.0f;
    for (int k = 0; k < Sides; ++k) {
        const float x = ghost->Vertices[k].X - hit[0];
        const float y = ghost->Vertices[k].Y - hit[1];
        ghost->OuterRadius = std::max(ghost->OuterRadius, std::sqrt(x * x + y * y));
    }
    return Sides > 0;
}

void FlareSpot::ColourGhost(GhostPolygon* ghost, int surface, int lastSurface) const {
    const int hue = ColourOverride ? (HueEnd - HueStart) * surface / lastSurface + HueStart
                                   : (Trunc(surface % 10 * 33.15 + surface * 25.0) & 255) << 7;
    u16 rgb[3];
    HsvToRgb(rgb, static_cast<u16>(hue), Saturate<u16>(Saturation * 32767.0), kFullScale);
    const float level = std::min(1.0f, ghost->InnerRadius / ghost->OuterRadius) * (Gain * 2.0f);
    ghost->Red = Trunc(static_cast<float>(rgb[0]) * level);
    ghost->Green = Trunc(static_cast<float>(rgb[1]) * level);
    ghost->Blue = Trunc(static_cast<float>(rgb[2]) * level);
    ghost->Peak = std::max({ghost->Red, ghost->Green, ghost->Blue});
}

void FlareSpot::DrawGhost(GhostPolygon* ghost, int surface, int firstRow, int endRow, int lastSurface) const {
    const float width = static_cast<float>(Width);
    const float height = static_cast<float>(Height);
    for (int k = 0; k < ghost->Count; ++k) {
        GhostPoint& p = ghost->Vertices[k];
        p = {width * p.X + width, height * p.Y + height};
    }
    ghost->CentreX = width * ghost->CentreX + width;
    ghost->CentreY = height * ghost->CentreY + height;
    const float mean = (width + height) / 2.0f;
    ghost->InnerRadius *= mean;
    ghost->OuterRadius *= mean;
    ghost->Falloff = Falloff;
    ghost->EdgeBoost = EdgeBoost;
    ColourGhost(ghost, surface, lastSurface);

    if (!IsDrawable(*ghost)) return;
    const float right = 2.0f * width - 1.0f;
    const auto sampleRow = [](int row) { return 2.0f * static_cast<float>(row); };
    if (!RejectPolygon(ghost, {0.0f, right, sampleRow(firstRow), sampleRow(endRow)})) return;
    if (ClipPolygon(ghost, {0.0f, right, 0.0f, 2.0f * height})) DrawFan(*ghost, firstRow, endRow);
}

void FlareSpot::DrawFan(const GhostPolygon& ghost, int firstRow, int endRow) const {
    GhostPoint centroid{0.0f, 0.0f};
    for (int k = 0; k < ghost.Count; ++k) {
        centroid.X += ghost.Vertices[k].X;
        centroid.Y += ghost.Vertices[k].Y;
    }
    centroid.X /= static_cast<float>(ghost.Count);
    centroid.Y /= static_cast<float>(ghost.Count);

    GhostCanvas canvas = Sums;
    canvas.LowY = 2 * firstRow;
    canvas.HighY = 2 * endRow - 1;
    const auto vertex = [&](int k) { return ghost.Vertices[(k + ghost.Count) % ghost.Count]; };
    for (int k = 0; k < ghost.Count; ++k)
        ScanTriangle(canvas, {&ghost, {centroid, vertex(k), vertex(k + 1)}, vertex(k - 1), vertex(k + 2)});
}

void FlareSpot::RefreshControls() {
    int on = 0;
    OverrideControl.Get(kTimeNow, &on);
    ColourStartControl.SetHidden(on == 0);
    ColourEndControl.SetHidden(on == 0);
}

void FlareSpot::Draw() {
    const PositionControlK7::Position& start = StartControl.Shown;
    const PositionControlK7::Position& end = EndControl.Shown;
    if (Line.Visible) {
        Line.X1 = static_cast<float>(end.x);
        Line.Y1 = static_cast<float>(end.y);
        Line.X2 = static_cast<float>(start.x);
        Line.Y2 = static_cast<float>(start.y);
        Line.Draw();
        const float width = static_cast<float>(ImageWidth);
        const float height = static_cast<float>(ImageHeight);
        OverlayColour(*this, 0, 65535, 0);
        OverlayArrow(*this, Line.X1 * width, Line.Y1 * height, Line.X2 * width, Line.Y2 * height);
    }
    Source.DrawAt(start);
    Target.DrawAt(end);
}

void FlareSpot::Event(int event, float x, float y) {
    Line.Event(event, x, y);
    Source.Event(event, x, y);
    Target.Event(event, x, y);
}

} // namespace k7
