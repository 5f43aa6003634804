// Lens files come from outside: generated texts, good ones and damaged ones. K7_FUZZ_SECONDS in the
// environment makes the test go on for so long, under the sanitizers for one.

#include "lens/LensFile.h"

#include <gtest/gtest.h>

#include <chrono>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <random>
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

    std::string Number() {
        static const char* const formats[] = {"%g", "%.9g", "%+g", "%e", "%.0f", "%f", "%#.0f", "%+.3E"};
        static const double scales[] = {1.0, 100.0, 1e-3, 1e6, 0.0, 1e30};
        const double value = std::normal_distribution()(random_) * scales[Below(6)];
        char text[64];
        std::snprintf(text, sizeof text, formats[Below(8)], value);
        return text;
    }

    std::string Space() {
        std::string text;
        do text += " \n\t\r\v\f"[Below(6)];
        while (Below(3) == 0);
        return text;
    }

    std::string Lens() {
        const int count = Below(8) == 0 ? Below(200) - 50 : Below(20);
        std::string text = std::to_string(count);
        const int given = Below(4) == 0 ? Below(200) : 3 * count;
        for (int i = 0; i < given; ++i) text += Space() + Number();
        return Below(2) ? text : text + Space();
    }

    std::string Damaged(std::string text) {
        using namespace std::string_view_literals;
        constexpr std::string_view bytes = "\0\xff\x80-+.,eExXpPinfNa0123456789 \n%"sv;
        for (int i = Below(6); i >= 0 && !text.empty(); --i) {
            const std::size_t at = Index(text);
            const char byte = Below(4) == 0 ? static_cast<char>(Below(256)) : bytes[Index(bytes)];
            switch (Below(4)) {
            case 0:
                text[at] = byte;
                break;
            case 1:
                text.insert(at, 1, byte);
                break;
            case 2:
                text.erase(at, static_cast<std::size_t>(Below(5)));
                break;
            default:
                text.insert(at, text.substr(0, 40));
                break;
            }
        }
        return text;
    }

private:
    std::mt19937 random_{20080528};
};

/// Runs `round` some thousand times, or as long as the environment says.
template <class Round>
void Repeat(Round round) {
    const char* seconds = std::getenv("K7_FUZZ_SECONDS");
    const auto end =
        std::chrono::steady_clock::now() + std::chrono::seconds(seconds ? std::atoi(seconds) : 0);
    Generator generator;
    for (int i = 0; i < 4000 || std::chrono::steady_clock::now() < end; ++i) {
        round(generator);
        if (testing::Test::HasFailure()) return;
    }
}

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

TEST(LensFuzz, NumbersAreThoseOfScanf) {
    int good = 0;
    int bad = 0;
    Repeat([&](Generator& generator) {
        const std::string text = generator.Lens();
        LensTable got, want;
        const bool read = ParseLens(text, &got);
        ASSERT_EQ(read, PlainParse(text, &want)) << text;
        ++(read ? good : bad);
        if (!read) return;
        ASSERT_EQ(got.Count, want.Count) << text;
        for (int i = 0; i < got.Count; ++i) {
            ASSERT_EQ(got.Surfaces[i].Position, want.Surfaces[i].Position) << text;
            ASSERT_EQ(got.Surfaces[i].Radius, want.Surfaces[i].Radius) << text;
            ASSERT_EQ(got.Surfaces[i].Diameter, want.Surfaces[i].Diameter) << text;
        }
    });
    EXPECT_GT(good, 1000); // both kinds were there
    EXPECT_GT(bad, 100);
}

TEST(LensFuzz, WhatIsReadIsALens) {
    int good = 0;
    int bad = 0;
    Repeat([&](Generator& generator) {
        const std::string text = generator.Damaged(generator.Lens());
        const std::vector<char> exact(text.begin(),
                                      text.end()); // a read behind its end is seen by the sanitizer
        LensTable lens;
        const bool read = ParseLens({exact.data(), exact.size()}, &lens);
        ++(read ? good : bad);
        if (!read) return;
        ASSERT_GE(lens.Count, 2) << text;
        ASSERT_LE(lens.Count, LensTable::kFileSurfaces) << text;
        for (int i = 0; i < lens.Count; ++i)
            ASSERT_TRUE(std::isfinite(lens.Surfaces[i].Position) && std::isfinite(lens.Surfaces[i].Radius) &&
                        std::isfinite(lens.Surfaces[i].Diameter))
                << text;
        ASSERT_NE(lens.Surfaces[0].Position, lens.Surfaces[lens.Count - 1].Position) << text;
    });
    EXPECT_GT(good, 100);
    EXPECT_GT(bad, 1000);
}

} // namespace
} // namespace k7
