#include "tests/tools/Stage.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <map>

namespace k7::test {
namespace {

constexpr int kWide = 72, kHigh = 40;
constexpr float kWhite = 32767.0f;

/// A pseudo-random word from 0 to 32767 for each place.
int NoiseWord(int x, int y, int c) {
    auto state = static_cast<std::uint32_t>((y * kWide + x) * 4 + c + 1) * 2654435761u;
    state ^= state >> 15;
    state *= 2246822519u;
    return static_cast<int>(state >> 13 & 0x7fffu);
}

/// Settings that make a tool's effect visible on so small a picture, and limit flares to lights of the noise.
const std::map<std::string, std::vector<std::pair<const char*, double>>> kStrong = {
    {"K7Clean", {{"XRad", 30}, {"YRad", 30}}},
    {"K7Defocus", {{"RadB", 6}}},
    {"K7DBlur", {{"Leng", 20}, {"Angl", 30}, {"Cent", 1}}},
    {"K7CrashZoom", {{"Spee", 60}}},
    {"K7Dither", {{"DpEd", 1}}},
    {"K7VGaussian", {{"BRGB", 1}, {"BluA", 1}, {"RadX", 20}, {"RadY", 10}, {"RdAX", 10}, {"RDAY", 10}}},
};

struct Floats : testing::Test {
    static std::vector<float> Render(const std::string& name, host::ImageProvider& clip, bool floats = true,
                                     std::vector<std::pair<const char*, double>> more = {}) {
        for (const host::Registry* tool : Tools()) {
            if (tool->GetAttrS(host::kTagRegName) != name) continue;
            Stage stage(*tool, clip, floats);
            const auto strong = kStrong.find(name);
            if (strong != kStrong.end())
                more.insert(more.begin(), strong->second.begin(), strong->second.end());
            for (const auto& [id, value] : more) stage.Write(*stage.op->FindInput(id), value);
            return stage.Render();
        }
        ADD_FAILURE() << name << " is not registered";
        return {};
    }

    static FloatClip Noise(float gain) {
        return {kWide, kHigh, [gain](int x, int y, int c) {
                    return static_cast<float>(NoiseWord(x, y, c)) / kWhite * gain;
                }};
    }
};

double Furthest(const std::vector<float>& a, const std::vector<float>& b, double gain = 1.0) {
    double most = a.size() == b.size() && !a.empty() ? 0.0 : INFINITY;
    for (std::size_t i = 0; i < a.size() && i < b.size(); ++i)
        most = std::max(most, std::abs(static_cast<double>(a[i]) - gain * static_cast<double>(b[i])));
    return most;
}

TEST_F(Floats, AgreeWithWordsOnPicturesOfWords) {
    // In words: one for each rounding, and what the amount and the contrast curve make of it.
    const std::map<std::string, double> most = {
        {"K7Clean", 0},     {"K7Dither", 0},  {"K7Trace", 0},     {"K7DBlur", 1},
        {"K7CrashZoom", 1}, {"K7Defocus", 2}, {"K7VGaussian", 2}, {"K7Sharpen", 3},
        {"K7FlareSpot", 2}, {"K7MoBlur", 1},  {"K7Flare", 4},     {"K7Flare2", 4},
    };
    FloatClip clip = Noise(1.0f);
    for (const auto& [name, limit] : most) {
        std::vector<float> floats = Render(name, clip, true);
        std::vector<float> words = Render(name, clip, false);
        for (std::vector<float>* frame : {&floats, &words})
            for (float& value : *frame) value = std::clamp(std::round(value * kWhite), 0.0f, kWhite);
        EXPECT_LE(Furthest(floats, words), limit) << name;
    }
}

TEST_F(Floats, LinearToolsAreLinear) {
    FloatClip clip = Noise(1.0f);
    for (const char* name :
         {"K7Sharpen", "K7Defocus", "K7VGaussian", "K7DBlur", "K7CrashZoom", "K7Dither", "K7Clean"})
        for (const float gain : {8.0f, 0.001f, -1.0f}) {
            if (gain < 0.0f && name == std::string("K7Clean"))
                continue; // the upper median is not the lower one
            FloatClip scaled = Noise(gain);
            EXPECT_LE(Furthest(Render(name, scaled), Render(name, clip), gain), 1e-5 * std::abs(gain))
                << name << " " << gain;
        }
    for (const auto& exact :
         {std::pair{"K7Defocus", std::pair{"Mode", 2.0}}, {"K7Sharpen", {"RadS", 30.0}}}) {
        FloatClip scaled = Noise(8.0f);
        EXPECT_LE(Furthest(Render(exact.first, scaled, true, {exact.second}),
                           Render(exact.first, clip, true, {exact.second}), 8.0),
                  8e-5)
            << exact.first << " " << exact.second.first;
    }
}

TEST_F(Floats, FlatStaysFlatAboveWhiteAndBelowBlack) {
    for (const float level : {5.0f, -0.25f, 65504.0f}) {
        FloatClip flat(kWide, kHigh, [level](int, int, int) { return level; });
        for (const char* name : {"K7Clean", "K7DBlur", "K7CrashZoom", "K7Dither", "K7MoBlur"})
            for (const float value : Render(name, flat))
                ASSERT_NEAR(value, level, std::abs(level) * 1e-6f) << name;
        const std::vector<float> blurred = Render("K7Defocus", flat, true, {{"Mode", 2.0}, {"DpEd", 1.0}});
        for (const float value : blurred) ASSERT_NEAR(value, level, std::abs(level) * 1e-6f);
    }
}

TEST_F(Floats, FlaresDoNotChangePixelsFarFromEveryLight) {
    // A light in the middle, and values in a corner that no word can hold.
    const float corner[] = {5.0f, -0.25f, 65504.0f, 2.0f};
    FloatClip clip(640, 360, [&](int x, int y, int c) {
        const bool light = std::abs(x - 320) < 2 && std::abs(y - 180) < 2;
        return x < 8 && y < 8 ? corner[c] : light ? 8.0f : 0.0f;
    });
    for (const char* name : {"K7Flare", "K7Flare2", "K7FlareSpot"}) {
        std::vector<std::pair<const char*, double>> settings;
        if (name == std::string("K7Flare")) settings = {{"XSca", 0.1}};
        const std::vector<float> values = Render(name, clip, true, settings);
        for (int y = 0; y < 8; ++y)
            for (int i = 0; i < 32; ++i)
                ASSERT_EQ(values[static_cast<std::size_t>(y * 640 * 4 + i)], corner[i % 4]) << name;
    }
}

TEST_F(Floats, AFlareIsProportionalToItsLight) {
    // With the curve straight and nothing behind it, the flare of a light of 8 is 8 times that of 1.
    const auto flare = [](float light, double high) {
        FloatClip clip(160, 90, [light](int x, int y, int c) {
            return c == 3 ? 1.0f : x == 80 && y == 45 ? light : 0.0f;
        });
        return Render("K7Flare", clip, true,
                      {{"XSca", 2.0}, {"Cont", 100.0}, {"HiLi", high}, {"LoLi", 20.0}});
    };
    std::vector<float> one = flare(1.0f, 100.0);
    std::vector<float> eight = flare(8.0f, 100.0);
    for (std::vector<float>* frame : {&one, &eight}) {
        frame->at((45 * 160 + 80) * 4) = frame->at((45 * 160 + 80) * 4 + 1) =
            frame->at((45 * 160 + 80) * 4 + 2) = 0.0f;
        EXPECT_GT(*std::max_element(frame->begin() + 45 * 160 * 4, frame->begin() + 45 * 160 * 4 + 300),
                  1e-3f);
        for (std::size_t i = 3; i < frame->size(); i += 4) frame->at(i) = 0.0f;
    }
    EXPECT_LE(Furthest(eight, one, 8.0), 1e-4);
    EXPECT_EQ(Furthest(flare(8.0f, 99.0), flare(0.0f, 99.0)), 8.0)
        << "below 100 percent the level has an upper end";
}

TEST_F(Floats, SurviveAnyValueInAnyPlace) {
    const float inf = std::numeric_limits<float>::infinity();
    const float hostile[] = {NAN, inf, -inf, 1e-40f, -1e-40f, 65504.0f, -65504.0f, 0.0f, 1.0f};
    FloatClip clip(kWide, kHigh, [&](int x, int y, int c) {
        return hostile[static_cast<std::size_t>(NoiseWord(x, y, c)) % std::size(hostile)];
    });
    for (const host::Registry* tool : Tools()) {
        const std::string name = tool->GetAttrS(host::kTagRegName);
        for (const bool floats : {false, true}) {
            const std::vector<float> values = Render(name, clip, floats);
            ASSERT_FALSE(values.empty()) << name;
            for (const float value : values) ASSERT_TRUE(std::isfinite(value)) << name;
            EXPECT_EQ(Render(name, clip, floats), values) << name;
        }
    }
}

TEST_F(Floats, AreTheSameOnAnyNumberOfThreads) {
    FloatClip clip = Noise(8.0f);
    for (const host::Registry* tool : Tools()) {
        const std::string name = tool->GetAttrS(host::kTagRegName);
        if (name == "K7Dither" || name == "K7MoBlur") continue; // their frames depend on the division
        std::vector<float> one;
        for (int threads : {1, 2, 7}) {
            const Processors processors(threads);
            std::vector<float> frame = Render(name, clip);
            if (threads == 1) one = frame;
            EXPECT_EQ(frame, one) << name << " on " << threads;
        }
    }
}

} // namespace
} // namespace k7::test
