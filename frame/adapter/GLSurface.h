#pragma once

#include "frame/Overlay.h"
#include "frame/adapter/HostNames.h"

namespace k7 {

/// Draws widgets in a preview of the host with OpenGL; the context is current.
class GLSurface : public OverlaySurface {
public:
    explicit GLSurface(host::PreviewInfo& preview) : preview_(preview) {}

    void SetColour(int red, int green, int blue) override;
    void DrawSegment(const float from[2], const float to[2]) override;
    void DrawLoop(const float (*points)[2], int count) override;

private:
    void Vertex(const float point[2]);

    host::PreviewInfo& preview_;
};

} // namespace k7
