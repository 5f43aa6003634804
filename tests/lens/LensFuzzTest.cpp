// Lens files come from outside: generated texts, good ones and damaged ones. K7_FUZZ_SECONDS in the
// environment makes the test go on for so long, under the sanitizers for one.

#include "lens/LensFile.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <chrono>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <random>
#include <span>
#include <string>
#include <vector>

namespace k7 {
namespace {

class Generator {
public:
    int Below(int end) { return std::uniform_int_distribution(0, end - 1)(random_); }
    std::size_t Index(std::string_view text) {
        return static_cast<std::size_t>(Below(static_cast<int>(text.size())));
    }

    /// A count and numbers, now and then not as many as that, in all notations and with any white space.
    std::string Lens() {
        static const char* const formats[] = {"%g", "%.9g", "%+g", "%e", "%.0f", "%f", "%#.0f", "%+.3E"};
        static const double scales[] = {1.0, 100.0, 1e-3, 1e6, 0.0, 1e30};
        const int count = Below(8) == 0 ? Below(200) - 50 : Below(20);
        const int given = Below(4) == 0 ? Below(200) : 3 * count;
        std::string text = std::to_string(count);
        for (int i = 0; i < given; ++i) {
            do text += " \n\t\r\v\f"[Below(6)];
            while (Below(3) == 0);
            char number[64];
            std::snprintf(number, sizeof number, formats[Below(8)],
                          std::normal_distribution()(random_) * scales[Below(6)]);
            text += number;
        }
        return Below(2) ? text : text + ' ';
    }

    std::string Damaged(std::string text) {
        using namespace std::string_view_literals;
        constexpr std::string_view bytes = "\0\xff\x80-+.,eExXpPinfNa0123456789 \n%"sv;
        for (int i = Below(6); i >= 0 && !text.empty(); --i) {
            const std::size_t at = Index(text);
            const char byte = Below(4) == 0 ? static_cast<char>(Below(256)) : bytes[Index(bytes)];
            if (Below(4) == 0)
                text.insert(at, text.substr(0, 40));
            else // replaces, inserts or erases
                text.replace(at, static_cast<std::size_t>(Below(5)), static_cast<std::size_t>(Below(2)),
                             byte);
        }
        return text;
    }

private:
    std::mt19937 random_{20080528};
};

/// A reader on sscanf; the process is in the "C" locale here.
bool PlainParse(const std::string& text, LensTable* lens) {
    const char* at = text.c_str();
    int used = 0;
    int count = 0;
    if (std::sscanf(at, "%d%n", &count, &used) != 1) return false;
    at += used;
    lens->Count = count > 50 ? 50 : count < 1 ? 1 : count;
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

TEST(LensFuzz, TextsAreReadAsByScanfAndDamagedOnesGiveALensOrNothing) {
    const char* seconds = std::getenv("K7_FUZZ_SECONDS");
    const auto end =
        std::chrono::steady_clock::now() + std::chrono::seconds(seconds ? std::atoi(seconds) : 0);
    Generator generator;
    int read[2] = {}, refused[2] = {};
    for (int i = 0; i < 8000 || std::chrono::steady_clock::now() < end; ++i) {
        const int damaged = i % 2;
        const std::string text = damaged ? generator.Damaged(generator.Lens()) : generator.Lens();
        const std::vector<char> exact(text.begin(), text.end()); // the sanitizer sees a read behind its end
        LensTable lens, want;
        const bool good = ParseLens({exact.data(), exact.size()}, &lens);
        ++(good ? read : refused)[damaged];
        ASSERT_TRUE(damaged || good == PlainParse(text, &want)) << text;
        if (!good) continue;
        ASSERT_TRUE(damaged || SameSurfaces(lens, want)) << text;
        ASSERT_GE(lens.Count, 2) << text;
        ASSERT_LE(lens.Count, LensTable::kFileSurfaces) << text;
        for (const LensSurface& s : std::span(lens.Surfaces).first(static_cast<std::size_t>(lens.Count)))
            ASSERT_TRUE(std::isfinite(s.Position) && std::isfinite(s.Radius) && std::isfinite(s.Diameter))
                << text;
        ASSERT_NE(lens.Surfaces[0].Position, lens.Surfaces[lens.Count - 1].Position) << text;
    }
    EXPECT_GT(read[0], 1000); // all kinds were there
    EXPECT_GT(refused[0], 100);
    EXPECT_GT(read[1], 100);
    EXPECT_GT(refused[1], 1000);
}

} // namespace
} // namespace k7
