#include "tests/adapter/TestTool.h"

#include <gtest/gtest.h>

#include <new>

namespace k7::test {
namespace {

class OperatorFrame : public testing::Test {
protected:
    OperatorFrame() { op->FindInput("Clip")->Connect(&clip); }

    void Write(const char* id, double value, double time = 0.0) {
        op->FindInput(id)->SetSource(host::AutoNumber(value).get(), time, 1, nullptr);
    }
    const host::Image* Render(double time = 0.0) {
        request = std::make_unique<host::Request>(time);
        op->Process(request.get());
        return static_cast<const host::Image*>(request->OutputData(op->Outputs()[0]));
    }

    host::FusionDoc document;
    StillClip clip{HostPicture(4, 3, [](int x, int y, int c) { return 1000 * (x + 4 * y) + 2 * c; })};
    host::Ref<DFProbe> op{new DFProbe(&document)};
    Probe& core = op->core;
    std::unique_ptr<host::Request> request;
};

TEST_F(OperatorFrame, ValuesReachTheCoreByTheirKindAndStayForTheFrame) {
    Write("Size", 2.75);
    Write("Flag", 0.25);
    Write("Mode", 1.0);
    core.OnProcess = [this] {
        Write("Size", 8.0);
        EXPECT_EQ(core.Size.Value, 2.75);
        EXPECT_EQ(core.Count.Value, 3);
        EXPECT_EQ(core.Flag.Value, 1);
        EXPECT_EQ(core.Mode.Value, 2);
        EXPECT_EQ(core.Centre.Value.x, 0.2);
        EXPECT_EQ(core.Centre.Value.y, 0.3);
        EXPECT_EQ(core.Colour.Value[1], 16383);
        EXPECT_EQ(core.File.Value, "a.txt");
    };
    EXPECT_TRUE(Render());
    EXPECT_EQ(core.Frames, 1);
    EXPECT_EQ(core.Size.Value, 8.0);
}

TEST_F(OperatorFrame, TheCoreFindsItsPicturesAndTheOutputStartsAsACopy) {
    op->SetExtent({2.0, 9.0, 1.0});
    core.OnProcess = [this] {
        ASSERT_TRUE(core.Input.Image && core.Output.Image && core.Second.Image);
        EXPECT_NE(core.Input.Image, core.Output.Image);
        for (const K7Image* image : {core.Input.Image, core.Output.Image, core.Second.Image})
            EXPECT_EQ(image->Rows[2][4 * 3 + 1],
                      (11000 + 2) / 2); // if nothing is linked the main one is used
        EXPECT_EQ(core.Time, 5.0);
        EXPECT_EQ(core.ExtentStart, 2.0);
        EXPECT_EQ(core.ExtentEnd, 9.0);
        EXPECT_TRUE(core.ProcessAlpha);
        core.Output.Image->Rows[0][0] = 32767;
    };
    const host::Image* result = Render(5.0);
    ASSERT_TRUE(result);
    EXPECT_EQ(PixelAt(*result, 0, 0).Red, 65535);
    EXPECT_EQ(PixelAt(*result, 1, 0).Red, 1000);
    EXPECT_TRUE(!core.Input.Image && !core.Second.Image && !core.Output.Image);
}

TEST_F(OperatorFrame, ControlsAreRefreshedOnceAndAFrameThatFailsHasNoOutput) {
    EXPECT_TRUE(Render() && Render());
    EXPECT_EQ(core.Refreshes, 1);
    core.OnProcess = [this] { op->AbortFlag = true; };
    EXPECT_EQ(Render(), nullptr);
    EXPECT_EQ(core.Frames, 3);
    clip.Fails = true;
    EXPECT_EQ(Render(), nullptr);
    EXPECT_EQ(core.Frames, 3);
}

TEST_F(OperatorFrame, AFailedAllocationLeavesTheFrameWithoutOutput) {
    core.OnProcess = [this] {
        Write("Size", 7.0);
        throw std::bad_alloc();
    };
    EXPECT_EQ(Render(), nullptr);
    EXPECT_TRUE(!core.Input.Image && !core.Second.Image && !core.Output.Image);
    EXPECT_EQ(core.Size.Value, 7.0); // mirrored after the frame, as always
    core.OnProcess = {};
    EXPECT_TRUE(Render());
}

TEST_F(OperatorFrame, ChangesAreMirroredAndReactedToWithoutAnEcho) {
    Write("Size", 4.0, 7.0);
    EXPECT_EQ(core.Size.Value, 4.0);
    EXPECT_EQ(op->SizeChanges, std::vector<double>{7.0});
    Write("Flag", 1.0);
    EXPECT_EQ(core.Flag.Value, 0); // never mirrored: still the initial value
    Write("LooG", 0.75);
    EXPECT_EQ(op->ColourChanges, 1);
    EXPECT_FALSE(core.Colour.Changing);
    EXPECT_NEAR(core.Colour.Value[2], 300, 1); // through a float and back, truncated
}

TEST_F(OperatorFrame, NoValueNoTimeAndASilentDocumentChangeNothing) {
    host::Input* size = op->FindInput("Size");
    const int counted = op->ChangeCount();
    op->NotifyChanged(size, nullptr, 0.0, nullptr);
    document.Silent = true;
    Write("Size", 9.0);
    EXPECT_EQ(op->ChangeCount(), counted);
    EXPECT_TRUE(op->SizeChanges.empty());
    document.Silent = false;
    core.Size.Value = -1.0;
    op->NotifyChanged(size, host::AutoNumber(9.0).get(), host::kTimeUndefined, nullptr);
    EXPECT_EQ(core.Size.Value, -1.0); // not mirrored without a time
    EXPECT_EQ(op->ChangeCount(), counted + 1);
}

TEST_F(OperatorFrame, InputsCarryTheirTags) {
    EXPECT_EQ(op->FindInput("Size")->GetAttrI(host::kTagReacts), 1);
    EXPECT_FALSE(op->FindInput("Size")->HasAttr(host::kTagInteger));
    EXPECT_EQ(op->FindInput("Mode")->GetAttrI(host::kTagShown, 1), 0);
    EXPECT_EQ(op->FindInput("LooB")->GetAttrI(host::kTagColourChannel, -1), 2);
    EXPECT_FALSE(op->FindInput("LooA")->HasAttr(host::kTagColourGroup));
    EXPECT_EQ(op->FindInput("LooA")->GetAttrI(host::kTagShown, 1), 0);
    EXPECT_TRUE(op->FindInput("Light")->HasAttr(host::kTagOptional));
    EXPECT_EQ(op->Pages(), (std::vector<std::string>{"K7 Probe", "More"}));
}

TEST(OperatorSecondImage, IsBroughtToTheSizeOfTheMainOne) {
    const host::Ref<DFProbe> op(new DFProbe(nullptr));
    StillClip clip(HostPicture(4, 3, [](int, int, int) { return 0; }));
    StillClip light(HostPicture(9, 9, [](int, int, int) { return 40000; }));
    op->FindInput("Clip")->Connect(&clip);
    op->FindInput("Light")->Connect(&light);
    op->core.OnProcess = [&] {
        EXPECT_EQ(op->core.Second.Image->Width, 4);
        EXPECT_EQ(op->core.Second.Image->Height, 3);
        EXPECT_EQ(op->core.Second.Image->Rows[1][4], 20000);
    };
    host::Request request(0.0);
    op->Process(&request);
    EXPECT_EQ(op->core.Frames, 1);
}

TEST(OperatorSecondImage, CanBeReadAtOtherTimes) {
    const host::Ref<DFProbe> op(new DFProbe(nullptr, SecondImage::AtOtherTimes));
    StillClip clip(HostPicture(4, 3, [](int, int, int) { return 2000; }));
    StillClip matte(HostPicture(4, 3, [](int, int, int) { return 6000; }));
    op->FindInput("Clip")->Connect(&clip);
    op->SetExtent({10.0, 20.0, 1.0});
    const std::unique_ptr<K7Image> buffer = K7Image::Make(4, 3);
    buffer->Fill(1, 1, 1, 1);
    int want = 1000;
    op->core.OnProcess = [&] {
        EXPECT_EQ(op->core.Second.Image, nullptr);
        EXPECT_TRUE(op->core.Second.Input->ReadInputAtTime(3.0, *buffer));
        EXPECT_EQ(buffer->Pixels[0], want);
        EXPECT_TRUE(op->core.Second.Input->ReadInputAtTime(99.0, *buffer));
        clip.Fails = matte.Fails = true;
        EXPECT_FALSE(op->core.Second.Input->ReadInputAtTime(12.0, *buffer));
        EXPECT_EQ(buffer->Pixels[0], want); // a failed read leaves the buffer unchanged
        clip.Fails = matte.Fails = false;
    };
    host::Request first(12.0);
    op->Process(&first);
    EXPECT_EQ(clip.Asked, (std::vector<double>{12.0, 10.0, 19.0, 12.0})); // clamped to the clip

    op->FindInput("Light")->Connect(&matte);
    want = 3000;
    host::Request second(12.0);
    op->Process(&second);
    EXPECT_EQ(matte.Asked.size(), 4u);
}

} // namespace
} // namespace k7::test
