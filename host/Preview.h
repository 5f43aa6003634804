#pragma once

#include "host/Object.h"

#include <atomic>
#include <memory>
#include <shared_mutex>
#include <vector>

namespace host {

class FusionDoc;
class Input;
class Operator;

/// A view that shows an operator's picture, as its on-screen controls see it. The view's owner fills the
/// fields and has its OpenGL context current while the operator draws.
class K7HOST_API PreviewInfo {
public:
    virtual ~PreviewInfo() = default;

    /// Converts a position in fractions of the picture to the view's OpenGL coordinates.
    virtual double TransformXOut(double x) const = 0;
    virtual double TransformYOut(double y) const = 0;
    /// Sets the drawing colour.
    virtual void Color4ub(int red, int green, int blue, int alpha) = 0;

    /// No on-screen controls are drawn in this mode.
    static constexpr int kModeBare = 3;

    int ImageWidth = 0; ///< pixels of the picture
    int ImageHeight = 0;
    double DisplayWidth = 0.0; ///< pixels of the view that the picture covers; 0 if unknown
    double DisplayHeight = 0.0;
    double AspectX = 1.0; ///< pixel aspect; 0 if unknown
    double AspectY = 1.0;
    double PointerX = 0.0; ///< fractions of the picture
    double PointerY = 0.0;
    int Mode = 0;
};

/// What a press on on-screen controls starts.
inline constexpr int kDragNone = 0;
inline constexpr int kDragControl = 2; ///< the host goes on with moves and an up for this control

/// An operator's on-screen controls in one view.
class K7HOST_API OperatorControl : public Object {
public:
    OperatorControl() = default;
    /// Tells the view that an input has changed; it redraws when it can.
    virtual void InputChanged(Input* input);

    FusionDoc* Document = nullptr;
    const PreviewInfo* Preview = nullptr;
    bool DrawWhileMoving = false;       ///< the view wants to be redrawn at each move of a drag
    std::atomic<int> RedrawsWanted = 0; ///< counted on any thread
};

/// A lock that readers share and writers hold alone.
class K7HOST_API LockableObject {
public:
    void ObtainLock() { mutex_.lock(); }
    void ReleaseLock() { mutex_.unlock(); }
    void ObtainReadLock() { mutex_.lock_shared(); }
    void ReleaseReadLock() { mutex_.unlock_shared(); }

private:
    std::shared_mutex mutex_;
};

/// The controls of an operator, one for each view that shows them. Lock it before use.
class K7HOST_API OperatorControlList : public LockableObject {
public:
    std::vector<Ref<OperatorControl>> Entries;
};

} // namespace host
