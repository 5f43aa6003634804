#include "lens/GhostScan.h"

#include "library/Numbers.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace k7 {

namespace {

/// One side of a triangle on the way up from its lowest vertex.
struct EdgeWalker {
    /// Takes the next edge; x is then that of sample row y.
    void NextEdge(const GhostPoint (&vertices)[3], int y) {
        const GhostPoint from = vertices[vertex];
        vertex = (vertex + step) % 3;
        const GhostPoint to = vertices[vertex];
        float rise = to.Y - from.Y;
        if (std::abs(rise) < level) rise = 1.0f;
        slope = (to.X - from.X) / rise;
        x = (static_cast<float>(y) + 0.5f - from.Y) * slope + from.X;
        end = Trunc(std::floor(to.Y + 0.5f));
    }

    int step;    ///< to the index of the next vertex
    float level; ///< a rise below this counts as 1
    int vertex;
    int end; ///< the row at which the edge has ended
    float x = 0.0f;
    float slope = 0.0f;
};

} // namespace

void ScanTriangle(const GhostCanvas& canvas, const GhostTriangle& triangle) {
    const GhostPoint(&vertices)[3] = triangle.Vertices;
    const auto lower = [](const GhostPoint& a, const GhostPoint& b) { return a.Y < b.Y; };
    const int lowest = static_cast<int>(std::min_element(vertices, vertices + 3, lower) - vertices);
    int y = Trunc(std::ceil(vertices[lowest].Y - 0.5f));

    EdgeWalker falling{2, 1e-5f, lowest, y};
    EdgeWalker rising{1, std::numeric_limits<float>::denorm_min(), lowest, y};
    for (int edges = 3; edges > 0 && y <= canvas.HighY;) {
        for (; falling.end <= y && edges > 0; --edges) falling.NextEdge(vertices, y);
        for (; rising.end <= y && edges > 0; --edges) rising.NextEdge(vertices, y);
        for (const int end = std::min({falling.end, rising.end, canvas.HighY + 1}); y < end; ++y) {
            if (y >= canvas.LowY)
                ShadeSpan(canvas, triangle, y, std::min(falling.x, rising.x), std::max(falling.x, rising.x));
            falling.x += falling.slope;
            rising.x += rising.slope;
        }
    }
}

} // namespace k7
