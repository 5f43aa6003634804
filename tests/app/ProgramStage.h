#pragma once

#include "app/PictureFile.h"
#include "app/Program.h"
#include "tests/app/Folder.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <filesystem>
#include <iostream>
#include <string>
#include <vector>

namespace app::test {

using Arguments = std::vector<const char*>;

/// What a command came to.
struct Ran {
    int code = 0;
    std::string out, err;
};

/// Carries out a command line in this process: starting k7 takes longer than most of what is asked.
inline Ran RunK7(Arguments arguments) {
    arguments.insert(arguments.begin(), "k7");
    testing::internal::CaptureStdout();
    testing::internal::CaptureStderr();
    Ran ran;
    ran.code = RunProgram(static_cast<int>(arguments.size()), arguments.data());
    std::cout.flush();
    ran.out = testing::internal::GetCapturedStdout();
    ran.err = testing::internal::GetCapturedStderr();
    return ran;
}

/// Tests run in an empty folder of their own.
class Program : public testing::Test {
protected:
    void SetUp() override {
        before_ = std::filesystem::current_path();
        std::filesystem::current_path(folder_.Path());
    }
    void TearDown() override { std::filesystem::current_path(before_); }

    /// Carries out a command in the folder and gives its exit code.
    int Run(const Arguments& arguments) {
        ran_ = RunK7(arguments);
        return ran_.code;
    }
    const std::string& Out() const { return ran_.out; }
    const std::string& Err() const { return ran_.err; }

    /// Writes a picture file whose pixels a function gives: pixel(x, y).
    template <class PixelAt>
    void PutPicture(const std::string& name, int width, int height, PixelAt pixel,
                    host::Depth depth = host::Depth::Int16, int channels = 4) {
        Picture picture;
        picture.channels = channels;
        picture.image = Share(host::Image::Make(width, height, depth));
        const host::Image::Plane& plane = picture.image->PlaneAccess[0];
        for (int y = 0; y < height; ++y)
            for (int x = 0; x < width; ++x) {
                const host::Pixel value = pixel(x, y);
                picture.image->Write(&value, plane.Row(y) + x * plane.Step, nullptr);
            }
        WritePicture(folder_ / name, *picture.image, picture,
                     [](const std::string& text) { ADD_FAILURE() << text; });
    }
    void PutNoise(const std::string& name, int width, int height, host::Depth depth = host::Depth::Int16,
                  int channels = 4) {
        std::uint32_t state = 12345;
        const auto next = [&] { return static_cast<int>((state = state * 1664525u + 1013904223u) >> 16); };
        const auto noise = [&](int, int) {
            host::Pixel pixel{next(), next(), next(), next()};
            if (channels < 3) pixel.Green = pixel.Blue = pixel.Red;
            return pixel;
        };
        PutPicture(name, width, height, noise, depth, channels);
    }
    Picture Get(const std::string& name) const { return ReadPicture(folder_ / name); }

    /// Expects exit code 2 and one line that holds `word`, and no file made.
    void ExpectWrong(const Arguments& arguments, const std::string& word) {
        const std::size_t files = folder_.Count();
        EXPECT_EQ(Run(arguments), 2) << word;
        ExpectOneLine(word);
        EXPECT_EQ(Out(), "");
        EXPECT_EQ(folder_.Count(), files);
    }
    void ExpectOneLine(const std::string& word) {
        const std::string text = Err();
        EXPECT_EQ(std::count(text.begin(), text.end(), '\n'), 1) << text;
        EXPECT_EQ(text.rfind("k7: ", 0), 0u) << text;
        EXPECT_NE(text.find(word), std::string::npos) << text;
    }

    Folder folder_;

private:
    std::filesystem::path before_;
    Ran ran_;
};

inline host::Pixel At(const host::Image& image, int x, int y) {
    host::Pixel pixel;
    image.Read(&pixel, image.PlaneAccess[0].Row(y) + x * image.PlaneAccess[0].Step, nullptr);
    return pixel;
}

} // namespace app::test
