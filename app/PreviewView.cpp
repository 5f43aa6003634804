#include "app/PreviewView.h"

#include "media/PictureFile.h"

#define GL_GLEXT_PROTOTYPES
#include <GL/gl.h>
#include <GL/glext.h>

#include <algorithm>
#include <cmath>
#include <cstring>
#include <mutex>
#include <new>

namespace app {

using namespace media;

namespace {

using host::Image;

constexpr int kMovesOfDrag = 8;

double Stretch(double side, double other) {
    const double ratio = side / other;
    return ratio > 1.0 && std::isfinite(ratio) ? ratio : 1.0; // also where the aspect is unknown
}

/// The mean of some of a picture's pixels, in 8 bits.
void MeanOf(const Image& picture, int left, int bottom, int right, int top, std::uint8_t rgba[4]) {
    std::int64_t red = 0, green = 0, blue = 0;
    host::Pixel pixel;
    for (int y = bottom; y < top; ++y) {
        const Image::Plane* planes = picture.PlaneAccess;
        const std::byte* colours = planes[0].Row(y) + left * planes[0].Step;
        const std::byte* alpha = planes[1].Row(y);
        if (alpha) alpha += left * planes[1].Step;
        for (int x = left; x < right; ++x, colours += planes[0].Step) {
            picture.Read(&pixel, colours, alpha);
            red += pixel.Red;
            green += pixel.Green;
            blue += pixel.Blue;
            if (alpha) alpha += planes[1].Step;
        }
    }
    const std::int64_t full = std::int64_t{65535} * (right - left) * (top - bottom);
    const std::int64_t sums[3] = {red, green, blue};
    for (int c = 0; c < 3; ++c) rgba[c] = static_cast<std::uint8_t>((sums[c] * 255 + full / 2) / full);
    rgba[3] = 255;
}

/// Source pixels of one pixel of a scaled line.
struct Reach {
    int first, end;
};
Reach ReachOf(int at, int scaled, int source) {
    const auto place = [&](int i) { return static_cast<int>(std::int64_t{i} * source / scaled); };
    return {place(at), std::max(place(at + 1), place(at) + 1)};
}

/// The picture in the size of its place in the view: pixels repeated where it grows, averaged where it
/// shrinks.
std::vector<std::uint8_t> Scaled(const Image& picture, int width, int height) {
    std::vector<std::uint8_t> pixels(static_cast<std::size_t>(width) * static_cast<std::size_t>(height) * 4);
    std::uint8_t* to = pixels.data();
    for (int y = 0; y < height; ++y) {
        const Reach rows = ReachOf(y, height, picture.Height);
        for (int x = 0; x < width; ++x, to += 4) {
            const Reach columns = ReachOf(x, width, picture.Width);
            MeanOf(picture, columns.first, rows.first, columns.end, rows.end, to);
        }
    }
    return pixels;
}

/// The control that the operator made for a view; null if none.
host::Ref<host::OperatorControl> ControlOf(host::Operator& op, host::PreviewInfo& view) {
    op.AddControls(&view, nullptr);
    host::OperatorControl* found = nullptr;
    op.Controls.ObtainReadLock();
    for (const auto& control : op.Controls.Entries)
        if (control->Preview == &view) found = control.get();
    op.Controls.ReleaseReadLock();
    if (found) found->Retain();
    return host::Ref<host::OperatorControl>(found);
}

} // namespace

PreviewView::PreviewView(host::Operator& op, ViewSize size)
    : operator_(op)
    , size_(size)
    , gl_(size.width, size.height)
    , control_(ControlOf(op, *this)) {}

ViewSize PreviewView::NaturalSize(const Image& picture) {
    return {static_cast<int>(std::lround(picture.Width * Stretch(picture.AspectX, picture.AspectY))),
            static_cast<int>(std::lround(picture.Height * Stretch(picture.AspectY, picture.AspectX)))};
}

void PreviewView::FitTo(const Image& picture) {
    ImageWidth = picture.Width;
    ImageHeight = picture.Height;
    AspectX = Stretch(picture.AspectX, picture.AspectY);
    AspectY = Stretch(picture.AspectY, picture.AspectX);
    const double wide = picture.Width * AspectX;
    const double high = picture.Height * AspectY;
    const double scale = std::min(size_.width / wide, size_.height / high);
    DisplayWidth = std::max(1.0, std::round(wide * scale));
    DisplayHeight = std::max(1.0, std::round(high * scale));
    left_ = (size_.width - static_cast<int>(DisplayWidth)) / 2;
    bottom_ = (size_.height - static_cast<int>(DisplayHeight)) / 2;
}

void PreviewView::DrawPicture(const Image& picture) const {
    const int width = static_cast<int>(DisplayWidth);
    const int height = static_cast<int>(DisplayHeight);
    const std::vector<std::uint8_t> pixels = Scaled(picture, width, height);
    glPixelStorei(GL_UNPACK_ALIGNMENT, 1);
    glWindowPos2i(left_, bottom_);
    glDrawPixels(width, height, GL_RGBA, GL_UNSIGNED_BYTE, pixels.data());
}

void PreviewView::Show(const Image& picture) {
    FitTo(picture);
    glClearColor(0.0f, 0.0f, 0.0f, 1.0f);
    glClear(GL_COLOR_BUFFER_BIT);
    DrawPicture(picture);
    operator_.GLDrawControls(control_.get(), this, nullptr);
}

void PreviewView::PointTo(const Spot& spot) {
    PointerX = spot.x;
    PointerY = spot.y;
}

bool PreviewView::Drag(const Spot& from, const Spot& to) {
    if (!control_) return false;
    const auto pointAt = [](const Spot& spot) {
        return host::Ref<host::Point>(new host::Point(spot.x, spot.y, 0.0));
    };
    PointTo(from);
    if (operator_.ControlDown(control_.get(), this, pointAt(from).get(), nullptr) != host::kDragControl)
        return false;
    for (int i = 1; i <= kMovesOfDrag; ++i) {
        const double part = static_cast<double>(i) / kMovesOfDrag;
        const Spot spot =
            i == kMovesOfDrag ? to : Spot{from.x + (to.x - from.x) * part, from.y + (to.y - from.y) * part};
        PointTo(spot);
        operator_.ControlMove(control_.get(), this, pointAt(spot).get(), nullptr);
    }
    operator_.ControlUp(control_.get(), this, pointAt(to).get(), nullptr);
    return true;
}

std::shared_ptr<Image> PreviewView::Snapshot() const {
    std::shared_ptr<Image> image = Share(Image::Make(size_.width, size_.height, host::Depth::Int8));
    if (!image) throw std::bad_alloc();
    const std::vector<std::uint8_t> pixels = gl_.ReadPixels();
    const std::size_t row = static_cast<std::size_t>(size_.width) * 4;
    for (int y = 0; y < size_.height; ++y)
        std::memcpy(image->PlaneAccess[0].Row(y), pixels.data() + static_cast<std::size_t>(y) * row, row);
    return image;
}

void PreviewView::Color4ub(int red, int green, int blue, int alpha) {
    glColor4ub(static_cast<GLubyte>(red), static_cast<GLubyte>(green), static_cast<GLubyte>(blue),
               static_cast<GLubyte>(alpha));
}

} // namespace app
