#include "host/Document.h"
#include "host/Operator.h"
#include "host/Tags.h"

#include <gtest/gtest.h>

#include <cmath>
#include <functional>

namespace host::test {
namespace {

using Value = std::function<float(int, int, int)>;

Image* MakeImage(int width, int height, Depth depth, const Value& value) {
    Image* image = Image::Make(width, height, depth);
    std::vector<float> row(static_cast<std::size_t>(width) * 4);
    for (int y = 0; y < height; ++y) {
        for (int i = 0; i < 4 * width; ++i) row[static_cast<std::size_t>(i)] = value(i / 4, y, i % 4);
        image->WriteRow(y, row.data());
    }
    return image;
}

struct Still : ImageProvider {
    explicit Still(Image* picture) : image(picture) {}
    Image* ImageAt(double) override {
        image->Retain();
        return image.get();
    }
    Ref<Image> image;
};

/// A tool that halves colours and alpha and counts its frames.
struct Half : Operator {
    explicit Half(FusionDoc* document) : Operator(nullptr, {}, {{kTagDocument, document}}) {
        main = AddInput(FuID("Input"), FuID("Input"), {{kTagDataType, FuID("Image")}, {kTagMainLink, 1}});
        output = AddOutput(FuID("Output"), FuID("Output"), {{kTagDataType, FuID("Image")}});
        AddCommonControls();
    }
    void Process(Request* request) override {
        ++frames;
        const auto* picture = dynamic_cast<const Image*>(request->GetInputData(main, 0));
        if (!picture || silent) return;
        std::vector<float> row(static_cast<std::size_t>(picture->Width) * 4);
        Image* result = Image::NewImage({{kTagImageLike, picture}});
        for (int y = 0; y < picture->Height; ++y) {
            picture->ReadRow(y, row.data());
            for (float& value : row) value *= 0.5f;
            result->WriteRow(y, row.data());
        }
        request->SetOutputData(output, result);
    }
    Input* main;
    Output* output;
    int frames = 0;
    bool silent = false;
};

float Pattern(int x, int y, int c) {
    return static_cast<float>((x * 37 + y * 101 + c * 59) % 97) / 96.0f;
}

struct Common : testing::Test {
    void Connect(const char* id, Image* image) {
        clips.push_back(std::make_unique<Still>(image));
        op->FindInput(id)->Connect(clips.back().get());
    }
    void Set(const char* id, double value) {
        op->FindInput(id)->SetSource(AutoNumber(value).get(), kTimeNow, 1, nullptr);
    }
    /// The frame's values; empty if there is no frame.
    std::vector<float> Render() {
        Request request(0.0);
        op->Render(&request);
        return Values(dynamic_cast<const Image*>(request.OutputData(op->output)));
    }
    static std::vector<float> Values(const Image* image) {
        std::vector<float> values;
        if (!image) return values;
        values.resize(static_cast<std::size_t>(image->Width) * static_cast<std::size_t>(image->Height) * 4);
        for (int y = 0; y < image->Height; ++y)
            image->ReadRow(y, values.data() + static_cast<std::size_t>(y * image->Width) * 4);
        return values;
    }
    /// Expects value(source, x, y, c) everywhere, to half a step of the picture's depth.
    void Expect(const std::function<float(float source, int x, int y, int c)>& value, float step,
                const std::string& what) {
        const std::vector<float> source = Values(clips.front()->image.get());
        const std::vector<float> frame = Render();
        ASSERT_EQ(frame.size(), source.size()) << what;
        for (std::size_t i = 0; i < frame.size(); ++i) {
            const int pixel = static_cast<int>(i / 4);
            ASSERT_NEAR(frame[i], value(source[i], pixel % kWide, pixel / kWide, static_cast<int>(i % 4)),
                        step * 0.501f)
                << what << " at " << i;
        }
    }

    static constexpr int kWide = 24, kHigh = 10;
    FusionDoc document;
    Ref<Half> op{new Half(&document)};
    std::vector<std::unique_ptr<Still>> clips;
};

TEST_F(Common, MixByThePlainFormulaInEveryDepth) {
    const std::pair<Depth, float> depths[] = {{Depth::Int8, 1.0f / 255},
                                              {Depth::Int16, 1.0f / 65535},
                                              {Depth::Half, 1.0f / 1024},
                                              {Depth::Float, 2e-7f}};
    for (const auto& [depth, step] : depths) {
        op = Ref<Half>(new Half(&document));
        clips.clear();
        Connect("Input", MakeImage(kWide, kHigh, depth, Pattern));
        const float tool = step; // the tool's own rounding, part of which remains
        Expect([](float s, int, int, int) { return s * 0.5f; }, tool, "defaults");
        Set("Blend", 0.25);
        Expect([](float s, int, int, int) { return s - s * 0.125f; }, tool * 1.25f, "blend");
        Connect("EffectMask", MakeImage(kWide, kHigh, Depth::Float, [](int x, int, int c) {
                    return c == 3 ? 1.0f : static_cast<float>(x) / (kWide - 1);
                }));
        Set("MaskChannel", 1.0);
        Set("Blend", 1.0);
        const auto ramp = [](int x) { return static_cast<float>(x) / (kWide - 1); };
        Expect([&](float s, int x, int, int) { return s - s * 0.5f * ramp(x); }, tool * 2.0f, "mask");
        Set("ApplyMaskInverted", 1.0);
        Expect([&](float s, int x, int, int) { return s - s * 0.5f * (1.0f - ramp(x)); }, tool * 2.0f,
               "inverted");
        Set("ProcessGreen", 0.0);
        Set("ProcessAlpha", 0.0);
        Expect([&](float s, int x, int, int c) { return c % 2 ? s : s - s * 0.5f * (1.0f - ramp(x)); },
               tool * 2.0f, "channels");
    }
}

TEST_F(Common, TheToolRunsOnlyIfItIsVisible) {
    Connect("Input", MakeImage(kWide, kHigh, Depth::Int16, Pattern));
    const std::vector<float> source = Values(clips.front()->image.get());
    Set("Blend", 0.0);
    EXPECT_EQ(Render(), source);
    Set("Blend", 1.0);
    Connect("EffectMask", MakeImage(3, 3, Depth::Int8, [](int, int, int) { return 0.0f; }));
    EXPECT_EQ(Render(), source);
    Set("ApplyMaskInverted", 1.0);
    EXPECT_EQ(op->frames, 0);
    EXPECT_NE(Render(), source);
    EXPECT_EQ(op->frames, 1);
    for (const char* id : {"ProcessRed", "ProcessGreen", "ProcessBlue", "ProcessAlpha"}) Set(id, 0.0);
    EXPECT_EQ(Render(), source);
    EXPECT_EQ(op->frames, 1);
    op->silent = true;
    Set("ProcessRed", 1.0);
    EXPECT_TRUE(Render().empty()) << "where the tool gives no picture there is none";
}

TEST_F(Common, MasksOfOtherSizesAreFitted) {
    Connect("Input", MakeImage(kWide, kHigh, Depth::Float, Pattern));
    // Two columns grow: between their middles the mask runs evenly from one to the other.
    Connect("EffectMask",
            MakeImage(2, 1, Depth::Float, [](int x, int, int) { return static_cast<float>(x); }));
    const auto between = [](int x) {
        return std::clamp((static_cast<float>(x) + 0.5f) * 2.0f / kWide - 0.5f, 0.0f, 1.0f);
    };
    Expect([&](float s, int x, int, int) { return s - s * 0.5f * between(x); }, 1e-6f, "grown");
    // Stripes three times as fine shrink to their mean.
    Connect("EffectMask", MakeImage(3 * kWide, 2 * kHigh, Depth::Float, [](int x, int y, int) {
                return x % 3 == 0 && y % 2 == 0 ? 1.0f : 0.0f;
            }));
    Expect([&](float s, int, int, int) { return s - s * 0.5f / 6.0f; }, 1e-6f, "shrunk");
}

TEST_F(Common, AMaskWithoutAlphaCountsByItsLuminance) {
    Connect("Input", MakeImage(kWide, kHigh, Depth::Float, Pattern));
    const float rgb[] = {0.25f, 0.5f, 1.0f, 1.0f};
    Image* mask = MakeImage(kWide, kHigh, Depth::Float, [&](int, int, int c) { return rgb[c]; });
    Connect("EffectMask", mask);
    Expect([](float s, int, int, int) { return s * 0.5f; }, 1e-6f, "alpha");
    mask->SetAttrs({{kTagOpaque, 0}});
    const float luminance = 0.2126f * 0.25f + 0.7152f * 0.5f + 0.0722f;
    Expect([&](float s, int, int, int) { return s - s * 0.5f * luminance; }, 1e-6f, "luminance");
}

TEST_F(Common, TheToolSeesColoursDividedByAlpha) {
    Connect("Input", MakeImage(kWide, kHigh, Depth::Float, Pattern));
    Set("PreDividePostMultiply", 1.0);
    const std::vector<float> source = Values(clips.front()->image.get());
    // Halved colours times halved alpha.
    Expect(
        [&](float s, int x, int y, int c) {
            const float alpha = source[static_cast<std::size_t>((y * kWide + x) * 4 + 3)];
            if (c == 3) return s * 0.5f;
            return alpha == 0.0f ? 0.0f : s / alpha * 0.5f * alpha * 0.5f;
        },
        1e-6f, "divided");
}

} // namespace
} // namespace host::test
