#include "lens/GhostPolygon.h"

#include <algorithm>
#include <array>

namespace k7 {

namespace {

struct Side {
    float GhostPoint::*axis;
    float sign; ///< 1: the rectangle lies below the side, -1: above
};

/// In the order of a GhostRect.
constexpr Side kSides[4] = {
    {&GhostPoint::X, -1.0f}, {&GhostPoint::X, 1.0f}, {&GhostPoint::Y, -1.0f}, {&GhostPoint::Y, 1.0f}};

/// How many vertices lie beyond each side.
std::array<int, 4> CountBeyond(const GhostPolygon& polygon, const GhostRect& rect) {
    std::array<int, 4> beyond{};
    for (int i = 0; i < polygon.Count; ++i)
        for (std::size_t side = 0; side < 4; ++side) {
            const float at = polygon.Vertices[i].*kSides[side].axis;
            beyond[side] += kSides[side].sign < 0.0f ? at < rect[side] : at > rect[side];
        }
    return beyond;
}

/// Keeps the part of the polygon for which sign x p[axis] - offset <= 0.
void ClipPolygonEdge(const GhostPolygon& source, GhostPolygon* target, float GhostPoint::*axis, float sign,
                     float offset) {
    const auto add = [target](GhostPoint point) {
        if (target->Count < GhostPolygon::kRoom) target->Vertices[target->Count++] = point;
    };
    target->Count = 0;
    GhostPoint previous = source.Vertices[source.Count - 1];
    float dp = sign * previous.*axis - offset;
    for (int i = 0; i < source.Count; ++i) {
        const GhostPoint current = source.Vertices[i];
        const float dc = sign * current.*axis - offset;
        if ((dp <= 0.0f) != (dc <= 0.0f))
            add({previous.X + (current.X - previous.X) * dp / (dp - dc),
                 previous.Y + (current.Y - previous.Y) * dp / (dp - dc)});
        if (dc <= 0.0f) add(current);
        previous = current;
        dp = dc;
    }
}

} // namespace

bool RejectPolygon(GhostPolygon* polygon, const GhostRect& rect) {
    for (int beyond : CountBeyond(*polygon, rect))
        if (beyond == polygon->Count) polygon->Count = 0;
    return polygon->Count != 0;
}

bool ClipPolygon(GhostPolygon* polygon, const GhostRect& rect) {
    const std::array<int, 4> beyond = CountBeyond(*polygon, rect);
    if (!RejectPolygon(polygon, rect)) return false;
    for (std::size_t side = 0; side < 4 && polygon->Count != 0; ++side) {
        if (beyond[side] == 0) continue;
        const GhostPolygon whole = *polygon;
        const float sign = kSides[side].sign;
        ClipPolygonEdge(whole, polygon, kSides[side].axis, sign, sign * rect[side]);
    }
    return polygon->Count != 0;
}

} // namespace k7
