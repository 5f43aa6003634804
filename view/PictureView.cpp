#include "view/PictureView.h"

#include "view/PixelText.h"

#include <QMouseEvent>
#include <QOpenGLContext>

#include <GL/gl.h>

#include <cmath>

namespace view {

namespace {

constexpr double kReach = 6.0; ///< pixels around the wipe line

/// The size of a picture with square pixels; the longer side of its pixels is widened.
QSizeF SquareSize(const host::Image& picture) {
    const double ratio = picture.AspectX / picture.AspectY;
    const bool known = std::isfinite(ratio) && ratio > 0.0;
    return {picture.Width * (known ? std::max(1.0, ratio) : 1.0),
            picture.Height * (known ? std::max(1.0, 1.0 / ratio) : 1.0)};
}

} // namespace

void AskForOpenGL() {
    QSurfaceFormat format;
    format.setVersion(2, 1);
    QSurfaceFormat::setDefaultFormat(format);
}

bool HasOpenGL() {
    QOpenGLContext context;
    return context.create();
}

PictureView::PictureView(QWidget* parent) : QOpenGLWidget(parent) {
    setMouseTracking(true);
    setFocusPolicy(Qt::StrongFocus);
    setMinimumSize(160, 120);
    setAccessibleName(tr("Picture"));
}

PictureView::~PictureView() {
    if (!context()) return;
    disconnect(context(), nullptr, this, nullptr); // it goes after this part of the object
    DropContext();
}

void PictureView::SetLook(Look* look) {
    drag_ = Drag::None;
    handles_.reset();
    look_ = look;
    tool_ = nullptr;
    if (look) Refresh();
}

void PictureView::Refresh() {
    if (tool_ != &look_->Op()) {
        tool_ = &look_->Op();
        handles_.emplace(look_->Op());
    }
    update();
}

void PictureView::Show(const ShotPtr& shot) {
    shot_ = shot;
    Place();
    update();
}

void PictureView::SetShowing(const Showing& showing) {
    showing_ = showing;
    update();
}

void PictureView::ToggleHandles() {
    showHandles_ = !showHandles_;
    update();
}

void PictureView::Place() {
    if (!shot_ || !shot_->before) return;
    const double zoom = placement_.Zoom();
    placement_.SetSizes(SquareSize(*shot_->before), Pixels());
    if (handles_) handles_->Place(*shot_->before, placement_, Pixels().height());
    if (zoom != placement_.Zoom()) emit ZoomChanged(placement_.Zoom());
}

void PictureView::Moved() {
    Place();
    emit ZoomChanged(placement_.Zoom());
    update();
}

void PictureView::Fit() {
    placement_.Fit();
    Moved();
}

void PictureView::ZoomTo(double zoom) {
    const QSizeF pixels = Pixels();
    placement_.ZoomTo(zoom, {pixels.width() / 2, pixels.height() / 2});
    Moved();
}

QPoint PictureView::PlaceOf(const QPointF& fractions) const {
    return (placement_.ToView(fractions) / devicePixelRatioF()).toPoint();
}

// OpenGL.

void PictureView::initializeGL() {
    connect(context(), &QOpenGLContext::aboutToBeDestroyed, this, &PictureView::DropContext,
            Qt::DirectConnection);
    works_ = painter_.Start();
    if (!works_) emit Failed(tr("Pictures cannot be shown: OpenGL 2.1 is not available."));
}

void PictureView::DropContext() {
    makeCurrent();
    painter_.Stop();
    works_ = false;
    doneCurrent();
}

void PictureView::paintGL() {
    glClearColor(0.11f, 0.11f, 0.11f, 1.0f);
    glClear(GL_COLOR_BUFFER_BIT);
    if (!works_ || !shot_ || !shot_->after) return;
    Place();
    painter_.Paint(shot_->before, shot_->after, placement_, Pixels(), showing_);
    if (handles_ && showHandles_) handles_->Draw(std::max(1.0, devicePixelRatioF()));
    if (showing_.wipe > 0.0 && showing_.wipe < 1.0) DrawWipe();
}

void PictureView::DrawWipe() {
    const double x = placement_.ToView({showing_.wipe, 0}).x();
    const double middle = Pixels().height() / 2;
    glLineWidth(static_cast<float>(std::max(1.0, devicePixelRatioF())));
    glColor4ub(255, 255, 255, 255);
    glBegin(GL_LINES);
    glVertex2d(x, 0.0);
    glVertex2d(x, Pixels().height());
    glEnd();
    const double grip = 5.0 * devicePixelRatioF();
    glBegin(GL_QUADS);
    glVertex2d(x - grip, middle);
    glVertex2d(x, middle - grip);
    glVertex2d(x + grip, middle);
    glVertex2d(x, middle + grip);
    glEnd();
}

// The pointer.

bool PictureView::OnWipe(const QPointF& place) const {
    if (showing_.wipe <= 0.0 || showing_.wipe >= 1.0) return false;
    return std::abs(placement_.ToView({showing_.wipe, 0}).x() - place.x()) < kReach * devicePixelRatioF();
}

void PictureView::mousePressEvent(QMouseEvent* event) {
    last_ = InPixels(event->position());
    if (!shot_) return;
    const bool left = event->button() == Qt::LeftButton;
    if (left && showHandles_ && handles_) {
        makeCurrent();
        if (handles_->Press(placement_.ToPicture(last_))) {
            drag_ = Drag::Handle;
            emit DragBegan();
            return;
        }
    }
    drag_ = left && OnWipe(last_) ? Drag::Wipe : Drag::Pan;
    if (drag_ == Drag::Pan) setCursor(Qt::ClosedHandCursor);
}

void PictureView::mouseMoveEvent(QMouseEvent* event) {
    const QPointF place = InPixels(event->position());
    if (drag_ == Drag::Handle) {
        makeCurrent();
        handles_->Move(placement_.ToPicture(place));
        look_->Tell();
    } else if (drag_ == Drag::Wipe) {
        showing_.wipe = std::clamp(placement_.ToPicture(place).x(), 0.001, 0.999);
        emit WipeMoved(showing_.wipe);
    } else if (drag_ == Drag::Pan) {
        placement_.Pan(place - last_);
        Place();
    } else {
        Hover(place);
    }
    last_ = place;
    Report(place);
    update();
}

void PictureView::mouseReleaseEvent(QMouseEvent* event) {
    const Drag ended = std::exchange(drag_, Drag::None);
    if (ended == Drag::Handle) {
        makeCurrent();
        handles_->Release(placement_.ToPicture(InPixels(event->position())));
        emit DragEnded();
        look_->Tell();
    }
    Hover(InPixels(event->position()));
    update();
}

void PictureView::mouseDoubleClickEvent(QMouseEvent* event) {
    if (event->button() == Qt::MiddleButton) Fit();
}

void PictureView::wheelEvent(QWheelEvent* event) {
    placement_.ZoomBy(std::exp2(event->angleDelta().y() / 480.0), InPixels(event->position()));
    Moved();
}

void PictureView::leaveEvent(QEvent*) {
    emit Pointed({});
}

host::Input* PictureView::InputAt(const QPointF& position) {
    if (!showHandles_ || !handles_ || !shot_) return nullptr;
    makeCurrent();
    return handles_->At(placement_.ToPicture(InPixels(position)));
}

void PictureView::Hover(const QPointF& place) {
    const bool handle = InputAt(place / devicePixelRatioF());
    setCursor(handle ? Qt::PointingHandCursor : OnWipe(place) ? Qt::SplitHCursor : Qt::ArrowCursor);
}

void PictureView::Report(const QPointF& place) {
    if (!shot_ || !shot_->after) return;
    const QPointF at = placement_.ToPicture(place);
    const bool source = at.x() >= showing_.wipe && showing_.wipe < 1.0;
    emit Pointed(PixelText(source ? *shot_->before : *shot_->after, at));
}

} // namespace view
