#include "tests/ofx/Scene.h"

#include <chrono>

namespace k7::test::ofx {
namespace {

/// What an artist does first: open, set up, change, look, close. True if all of it succeeded.
bool Session(Opened& opened, const std::string& effect) {
    Scene scene(opened, FindPlugin(effect), {.width = 24, .height = 16});
    if (scene.described != kOk || scene.Create() != kOk) return false;
    bool fine = true;
    for (const auto& param : scene.effect.params) fine &= scene.Change(param->name, 3.0) == kOk;
    fine &= scene.Render(3.0) == kOk;
    fine &= scene.Change("Words15", 3.0) == kOk;
    fine &= scene.Call("OfxActionDestroyInstance") == kOk;
    return fine;
}

// Each function of the suites that a session calls fails once, early and late, with each status. The plug-in
// must neither crash nor leak, and work again afterwards.
TEST(OfxFailure, EachFunctionMayFailWithEachStatus) {
    std::map<std::string, int> calls;
    for (const char* effect : {"FlareSpot", "MoBlur"}) {
        {
            Opened opened;
            ASSERT_TRUE(Session(opened, effect));
            calls = opened.host.Calls();
        }
        for (const auto& [function, count] : calls)
            for (const int nth : {1, (count + 1) / 2, count}) {
                for (const int status : {1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 14, 1000}) {
                    SCOPED_TRACE(testing::Message()
                                 << effect << ": " << function << " no. " << nth << " gives " << status);
                    Opened opened;
                    opened.host.FailOn(function, nth, status);
                    Session(opened, effect);
                    opened.host.FailOn("", 0, 0);
                    // What the host refused to release remains the host's.
                    const auto faults = opened.host.TakeFaults();
                    for (const std::string& fault : faults)
                        EXPECT_TRUE(function == "clipReleaseImage" || function == "paramEditEnd") << fault;
                    EXPECT_TRUE(Session(opened, effect));
                    if (testing::Test::HasFailure()) return;
                }
            }
    }
}

TEST(OfxFailure, UnusablePicturesEndWithAStatusAndOneMessage) {
    Opened opened;
    const struct {
        const char* what;
        std::function<Pixels*(Pixels&)> spoil;
        int status;
    } cases[] = {
        {"no picture", [](Pixels&) -> Pixels* { return nullptr; }, kFailed},
        {"alpha only", [](Pixels& p) { return p.components = "OfxImageComponentAlpha", &p; }, kImageFormat},
        {"unknown depth", [](Pixels& p) { return p.depth = "OfxBitDepthNone", &p; }, kImageFormat},
        {"another depth", [](Pixels& p) { return p.depth = "OfxBitDepthByte", &p; }, kImageFormat},
        {"no pixels", [](Pixels& p) { return p.bottom = nullptr, &p; }, kFailed},
        {"empty",
         [](Pixels& p) {
             return p.bounds = {5, 5, 5, 5}, &p;
         },
         kFailed},
        {"endless",
         [](Pixels& p) {
             return p.bounds = {-2147483647, 0, 2147483647, 9}, &p;
         },
         kFailed},
    };
    for (const auto& spoilt : cases) {
        SCOPED_TRACE(spoilt.what);
        Scene scene(opened, FindPlugin("Defocus"));
        ASSERT_EQ(kOk, scene.Create());
        ASSERT_EQ(kOk, scene.Render(3.0));
        Clip& source = *scene.effect.FindClip("Source");
        const auto good = source.picture;
        source.picture = [&](double time) { return spoilt.spoil(*good(time)); };
        EXPECT_EQ(spoilt.status, scene.Render(3.0));
        EXPECT_EQ(1u, scene.effect.messages.size());
        scene.Destroy();
    }
}

TEST(OfxFailure, WithoutASourceTheOutputIsEmpty) {
    Opened opened;
    Scene scene(opened, FindPlugin("Flare2"));
    scene.effect.FindClip("Source")->picture = nullptr;
    scene.effect.FindClip("Source")->properties.Put("OfxImageClipPropConnected", 0);
    ASSERT_EQ(kOk, scene.Create());
    ASSERT_EQ(kOk, scene.Render(3.0));
    const host::Ref<host::Image> empty(
        host::Image::Make(scene.layout.width, scene.layout.height, host::Depth::Float));
    EXPECT_EQ("", DifferenceTo(*empty, scene));
    scene.Destroy();
}

// A host may abort a frame at any time; the render thread must notice soon, whatever the tool is doing.
TEST(OfxFailure, AbortsAreNoticedAtAnyMoment) {
    using Clock = std::chrono::steady_clock;
    Opened opened;
    for (const char* effect : {"Flare", "MoBlur", "Defocus", "CrashZoom"}) {
        SCOPED_TRACE(effect);
        Scene scene(opened, FindPlugin(effect), {.width = 640, .height = 360});
        ASSERT_EQ(kOk, scene.Create());
        if (scene.effect.FindParam("Prss")) scene["Prss"].value.whole = 1;
        for (const int after : {0, 3, 15, 40}) {
            const auto start = Clock::now();
            auto last = start;
            std::chrono::duration<double> longest{};
            scene.effect.aborted = [&] {
                const auto asked = Clock::now();
                longest = std::max(longest, std::chrono::duration<double>(asked - last));
                last = asked;
                return asked - start > std::chrono::milliseconds(after);
            };
            EXPECT_EQ(kOk, scene.Render(3.0));
            RecordProperty(std::string(effect) + std::to_string(after),
                           static_cast<int>(1000 * longest.count()));
            EXPECT_LT(longest.count(), 0.25); // 20 ms, and what a busy machine adds
        }
        scene.effect.aborted = [] { return false; };
        EXPECT_EQ(kOk, scene.Render(3.0));
        EXPECT_TRUE(scene.effect.messages.empty());
        scene.Destroy();
    }
}

TEST(OfxFailure, TwoInstancesRenderAtOnce) {
    Opened opened;
    for (const char* effect : {"Flare2", "VGaussian", "MoBlur"}) {
        SCOPED_TRACE(effect);
        const Layout layout{.width = 90, .height = 50};
        Scene alone(opened, FindPlugin(effect), layout), one(opened, FindPlugin(effect), layout),
            other(opened, FindPlugin(effect), layout);
        for (Scene* scene : {&alone, &one, &other}) ASSERT_EQ(kOk, scene->Create());
        ASSERT_EQ(kOk, alone.Render(3.0));
        const auto render = [](Scene& scene) {
            for (int i = 0; i < 5; ++i) EXPECT_EQ(kOk, scene.Render(3.0));
        };
        std::thread second(render, std::ref(other));
        render(one);
        second.join();
        EXPECT_EQ(alone.output.bytes, one.output.bytes);
        EXPECT_EQ(alone.output.bytes, other.output.bytes);
        for (Scene* scene : {&alone, &one, &other}) scene->Destroy();
    }
}

TEST(OfxHabits, HostsWithoutOptionalPartsGetTheSameFrames) {
    std::vector<std::byte> frame;
    {
        Opened opened;
        Scene scene(opened, FindPlugin("Flare2"));
        ASSERT_EQ(kOk, scene.Create());
        ASSERT_EQ(kOk, scene.Render(3.0));
        frame = scene.output.bytes;
        scene.Destroy();
    }
    const std::pair<const char*, Habits> hosts[] = {{"no threads", {.threads = false}},
                                                    {"no messages", {.messages = false}},
                                                    {"older messages", {.messagesV2 = false}},
                                                    {"no on-screen controls", {.interacts = false}},
                                                    {"no pages", {.pages = 0}},
                                                    {"no half", {.half = false}},
                                                    {"pictures without scale", {.imageScale = false}},
                                                    {"pictures without region", {.imageRegion = false}},
                                                    {"no handles", {.hostHandles = false}},
                                                    {"numbers held", {.clampsUnranged = true}}};
    for (const auto& [what, habits] : hosts) {
        SCOPED_TRACE(what);
        Opened opened(habits);
        Scene scene(opened, FindPlugin("Flare2"));
        ASSERT_EQ(kOk, scene.Create());
        EXPECT_EQ(kOk, scene.Render(3.0));
        EXPECT_EQ(frame, scene.output.bytes);
        EXPECT_EQ(kOk, scene.Change("HalT", 3.0));
        scene.Destroy();
    }
}

} // namespace
} // namespace k7::test::ofx
