#include "frame/adapter/GLSurface.h"

#ifdef _WIN32
#include <windows.h>
#endif

#include <GL/gl.h>

namespace k7 {

void GLSurface::SetColour(int red, int green, int blue) {
    preview_.Color4ub(red, green, blue, 255);
}

void GLSurface::Vertex(const float point[2]) {
    const float at[2] = {static_cast<float>(preview_.TransformXOut(point[0])),
                         static_cast<float>(preview_.TransformYOut(point[1]))};
    glVertex2fv(at);
}

void GLSurface::DrawSegment(const float from[2], const float to[2]) {
    glBegin(GL_LINES);
    Vertex(from);
    Vertex(to);
    glEnd();
}

void GLSurface::DrawLoop(const float (*points)[2], int count) {
    glBegin(GL_LINE_LOOP);
    for (int i = 0; i < count; ++i) Vertex(points[i]);
    glEnd();
}

} // namespace k7
