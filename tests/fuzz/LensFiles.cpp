#include "lens/LensFile.h"
#include "tests/fuzz/Fuzz.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <span>
#include <vector>

namespace fuzz {

using namespace k7;
namespace {

/// A count and numbers, sometimes too few, in all notations and with any white space.
std::string MakeLens(Chance& chance) {
    static const char* const formats[] = {"%g", "%.9g", "%+g", "%e", "%.0f", "%f", "%#.0f", "%+.3E"};
    static const double scales[] = {1.0, 100.0, 1e-3, 1e6, 0.0, 1e30};
    const int count = chance.Below(8) == 0 ? chance.Below(200) - 50 : chance.Below(20);
    const int given = chance.Below(4) == 0 ? chance.Below(200) : 3 * count;
    std::string text = std::to_string(count);
    for (int i = 0; i < given; ++i) {
        do text += " \n\t\r\v\f"[chance.Below(6)];
        while (chance.Below(3) == 0);
        char number[64];
        std::snprintf(number, sizeof number, formats[chance.Below(8)],
                      chance.Normal() * scales[chance.Below(6)]);
        text += number;
    }
    return chance.Below(2) ? text : text + ' ';
}

/// A reader on sscanf; the process is in the "C" locale here.
bool PlainParse(const std::string& text, LensTable* lens) {
    const char* at = text.c_str();
    int used = 0;
    int count = 0;
    if (std::sscanf(at, "%d%n", &count, &used) != 1) return false;
    at += used;
    lens->Count = std::clamp(count, 1, 50);
    for (int i = 0; i < lens->Count; ++i)
        for (float LensSurface::*value :
             {&LensSurface::Position, &LensSurface::Radius, &LensSurface::Diameter}) {
            if (std::sscanf(at, "%f%n", &(lens->Surfaces[i].*value), &used) != 1) return false;
            at += used;
        }
    return NormaliseLens(lens);
}

bool SameSurfaces(const LensTable& a, const LensTable& b) {
    return std::equal(a.Surfaces, a.Surfaces + a.Count, b.Surfaces, b.Surfaces + b.Count,
                      [](const LensSurface& x, const LensSurface& y) {
                          return x.Position == y.Position && x.Radius == y.Radius && x.Diameter == y.Diameter;
                      });
}

void CheckLens(const LensTable& lens) {
    Require(lens.Count >= 2 && lens.Count <= LensTable::kFileSurfaces, "a wrong number of surfaces");
    for (const LensSurface& s : std::span(lens.Surfaces).first(static_cast<std::size_t>(lens.Count)))
        Require(std::isfinite(s.Position) && std::isfinite(s.Radius) && std::isfinite(s.Diameter),
                "a surface that is not finite");
    Require(lens.Surfaces[0].Position != lens.Surfaces[lens.Count - 1].Position, "a lens without length");
}

/// Good texts are read as by scanf, damaged ones become a lens or nothing.
void ReadOne(Chance& chance) {
    using namespace std::string_view_literals;
    const bool damaged = chance.Below(2) == 0;
    std::string text = MakeLens(chance);
    if (damaged) text = chance.Damaged(text, "\0\xff\x80-+.,eExXpPinfNa0123456789 \n%"sv);
    const std::vector<char> exact(text.begin(), text.end()); // the sanitizer sees a read past its end
    LensTable lens, want;
    const bool good = ParseLens({exact.data(), exact.size()}, &lens);
    Require(damaged || good == PlainParse(text, &want), "not read as by scanf: " + text);
    if (!good) return;
    CheckLens(lens);
    Require(damaged || SameSurfaces(lens, want), "other numbers than those of scanf: " + text);
}

} // namespace

Round LensFiles() {
    return ReadOne;
}

} // namespace fuzz
