#pragma once

#include "view/Handles.h"
#include "view/Look.h"
#include "view/PicturePainter.h"
#include "view/Shot.h"

#include <QOpenGLWidget>

#include <optional>

namespace view {

/// Asks for the OpenGL that the tools' widgets are drawn with. Before the program's QApplication is made.
void AskForOpenGL();

/// Whether there is any. Without it a PictureView must not stand in a window.
bool HasOpenGL();

/// Shows a rendered frame beside its source, with the tool's widgets over it.
class PictureView : public QOpenGLWidget {
    Q_OBJECT

public:
    explicit PictureView(QWidget* parent = nullptr);
    ~PictureView() override;

    /// The look of whose chosen tool the widgets are drawn; it outlives this or is replaced. Null: none.
    void SetLook(Look* look);
    /// Follows a change of the look.
    void Refresh();
    void Show(const ShotPtr& shot);
    void SetShowing(const Showing& showing);
    const Showing& How() const { return showing_; }

    void Fit();
    void ZoomTo(double zoom); ///< about the middle of the view
    double Zoom() const { return placement_.Zoom(); }
    void ToggleHandles();

    /// Where a place of the picture, in fractions, y upwards, lies in this widget.
    QPoint PlaceOf(const QPointF& fractions) const;
    /// What a press at a place of this widget would move; null if nothing.
    host::Input* InputAt(const QPointF& position);

signals:
    void DragBegan();
    void DragEnded();
    void ZoomChanged(double zoom);
    void WipeMoved(double wipe);
    /// What is under the pointer; empty beside the picture.
    void Pointed(const QString& text);
    void Failed(const QString& why);

protected:
    void initializeGL() override;
    void paintGL() override;
    void mousePressEvent(QMouseEvent* event) override;
    void mouseMoveEvent(QMouseEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;
    void mouseDoubleClickEvent(QMouseEvent* event) override;
    void wheelEvent(QWheelEvent* event) override;
    void leaveEvent(QEvent* event) override;

private:
    enum class Drag { None, Handle, Wipe, Pan };

    void Place();
    void Moved();
    void DropContext();
    void Hover(const QPointF& place);
    void Report(const QPointF& place);
    bool OnWipe(const QPointF& place) const;
    void DrawWipe();
    QPointF InPixels(const QPointF& position) const { return position * devicePixelRatioF(); }
    QSizeF Pixels() const { return QSizeF(size()) * devicePixelRatioF(); }

    Look* look_ = nullptr;
    std::optional<Handles> handles_;
    bool showHandles_ = true, works_ = false;
    ShotPtr shot_;
    Showing showing_;
    PicturePainter painter_;
    Placement placement_;
    Drag drag_ = Drag::None;
    const host::Operator* tool_ = nullptr; ///< whose widgets are drawn
    QPointF last_;
};

} // namespace view
