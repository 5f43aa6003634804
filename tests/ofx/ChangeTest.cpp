#include "tests/ofx/Scene.h"

namespace k7::test::ofx {
namespace {

int Flag(Scene& scene, const std::string& param, const std::string& name) {
    return scene[param].properties.Of("OfxParamProp" + name, name == "Enabled" ? 1 : 0);
}

TEST(OfxChange, AnEditByTheUserReactsOnceAndAsOneStep) {
    Opened opened;
    Scene scene(opened, FindPlugin("Flare2"));
    ASSERT_EQ(kOk, scene.Create());
    scene["HalT"].value.whole = 2; // the third style: wide and strong
    EXPECT_EQ(kOk, scene.Change("HalT", 3.0));
    EXPECT_EQ(0.2, scene["Aper"].value.real[0]);
    EXPECT_EQ(4.0, scene["HalS"].value.real[0]);
    EXPECT_EQ(150, scene["HalF"].value.whole);
    EXPECT_EQ(1, scene["Aper"].writes);
    EXPECT_EQ(std::vector<std::string>{"Halo"}, scene.effect.undoSteps);
    scene.Destroy();
}

TEST(OfxChange, OthersEditsDoNotReact) {
    Opened opened;
    Scene scene(opened, FindPlugin("Flare2"));
    ASSERT_EQ(kOk, scene.Create());
    const double before = scene["Aper"].value.real[0];
    scene["HalT"].value.whole = 2;
    for (const char* reason : {"OfxChangePluginEdited", "OfxChangeTime"})
        EXPECT_EQ(kOk, scene.Change("HalT", 3.0, reason));
    EXPECT_EQ(before, scene["Aper"].value.real[0]);
    EXPECT_TRUE(scene.effect.undoSteps.empty());
    scene.Destroy();
}

TEST(OfxChange, ReactionsHideAndShow) {
    Opened opened;
    Scene scene(opened, FindPlugin("VGaussian"));
    ASSERT_EQ(kOk, scene.Create());
    EXPECT_EQ(1, Flag(scene, "RdAX", "Secret"));
    scene["BluA"].value.whole = 1;
    EXPECT_EQ(kOk, scene.Change("BluA", 0.0));
    EXPECT_EQ(0, Flag(scene, "RdAX", "Secret"));
    EXPECT_EQ(0, Flag(scene, "Sync", "Secret"));
    scene["Sync"].value.whole = 1;
    EXPECT_EQ(kOk, scene.Change("Sync", 0.0));
    EXPECT_EQ(1, Flag(scene, "RdAX", "Secret"));
    scene.Destroy();
}

TEST(OfxChange, AWriteGoesToTheKeysOfAnAnimatedParameter) {
    Opened opened;
    Scene scene(opened, FindPlugin("Flare2"));
    ASSERT_EQ(kOk, scene.Create());
    scene["Aper"].keys[0.0].real[0] = 7.0;
    scene["HalT"].value.whole = 1;
    EXPECT_EQ(kOk, scene.Change("HalT", 5.0));
    EXPECT_EQ(7.0, scene["Aper"].At(4.0).real[0]);
    EXPECT_EQ(1.0, scene["Aper"].At(5.0).real[0]);
    scene.Destroy();
}

TEST(OfxChange, WritesOfARenderWaitUntilTheyAreAllowed) {
    Opened opened;
    Scene scene(opened, FindPlugin("MoBlur"));
    ASSERT_EQ(kOk, scene.Create());
    scene["Prss"].value.whole = 1;
    scene["Aund"].value.whole = 1; // finds the region itself, and writes it
    scene["ABsh"].value.real[0] = 99.0;
    scene["Cere"].value.real = {0.1, 0.1};
    ASSERT_EQ(kOk, scene.Render(3.0));
    EXPECT_EQ(0, scene["XSle"].writes);
    EXPECT_EQ(kOk, scene.Change("Cere", 3.0, "OfxChangeTime"));
    EXPECT_GT(scene["XSle"].writes + scene["Cere"].writes, 0);
    EXPECT_NE(0.1, scene["Cere"].value.real[0]);
    scene.Destroy();
}

TEST(OfxChange, AnUnreadableLensIsReportedOnceAndReplaced) {
    Opened opened;
    Scene scene(opened, FindPlugin("FlareSpot"));
    ASSERT_EQ(kOk, scene.Create());
    Param& lens = scene["Lens"];
    lens.value.whole = static_cast<int>(lens.properties.Count("OfxParamPropChoiceOption")) - 1;
    scene["UseF"].value.text = "no such file";
    ASSERT_EQ(kOk, scene.Render(3.0));
    EXPECT_EQ(0, lens.writes);
    EXPECT_EQ(1u, scene.effect.messages.size());
    EXPECT_EQ(kOk, scene.Change("Brig", 3.0, "OfxChangeTime"));
    EXPECT_EQ(0, lens.value.whole);
    scene.Destroy();
}

/// The times of a clip's pictures that a frame needs.
std::array<double, 2> Needed(Scene& scene, double time) {
    PropertySet in = Scene::At(time), out(kAnswers);
    for (const auto& clip : scene.effect.clips)
        for (std::size_t i = 0; i < 2; ++i) out.Put("OfxImageClipPropFrameRange_" + clip->name, time, i);
    const int status = scene.Call("OfxImageEffectActionGetFramesNeeded", &in, &out);
    EXPECT_TRUE(status == kOk || status == kReplyDefault);
    return {out.Of("OfxImageClipPropFrameRange_Source", -1.0, 0),
            out.Of("OfxImageClipPropFrameRange_Source", -1.0, 1)};
}

TEST(OfxAnswers, FramesNeededAreThoseThatAFrameReads) {
    Opened opened;
    for (PluginStruct* plugin : Plugins()) {
        SCOPED_TRACE(plugin->identifier);
        Scene scene(opened, plugin);
        ASSERT_EQ(kOk, scene.Create());
        if (scene.effect.FindParam("Aund")) scene["Prss"].value.whole = scene["Aund"].value.whole = 1;
        for (const auto& clip : scene.effect.clips)
            if (clip->name != "Output") scene.Connect(clip->name);
        for (const double time : {0.0, 7.0, 23.0, 40.0}) {
            const auto [first, last] = Needed(scene, time);
            for (const auto& clip : scene.effect.clips) clip->asked.clear();
            ASSERT_EQ(kOk, scene.Render(time));
            for (const auto& clip : scene.effect.clips)
                for (const double asked : clip->asked)
                    EXPECT_TRUE(first <= asked && asked <= last)
                        << clip->name << " at " << asked << " for " << time;
        }
        scene.Destroy();
    }
}

TEST(OfxAnswers, RegionsAreTheWholeSource) {
    Opened opened;
    Scene scene(opened, FindPlugin("Defocus"), {.x = -17, .y = 23}, "OfxImageEffectContextGeneral");
    ASSERT_EQ(kOk, scene.Create());
    PropertySet in = Scene::At(3.0), region(kAnswers), interest(kAnswers);
    for (std::size_t i = 0; i < 4; ++i) {
        region.Put("OfxImageEffectPropRegionOfDefinition", 0.0, i);
        in.Put("OfxImageEffectPropRegionOfInterest", 1.0, i);
        interest.Put("OfxImageClipPropRoI_Source", 0.0, i);
    }
    EXPECT_EQ(kOk, scene.Call("OfxImageEffectActionGetRegionOfDefinition", &in, &region));
    EXPECT_EQ(kOk, scene.Call("OfxImageEffectActionGetRegionsOfInterest", &in, &interest));
    for (std::size_t i = 0; i < 4; ++i) {
        EXPECT_EQ(scene.fullRegion[i], region.Of("OfxImageEffectPropRegionOfDefinition", 0.0, i));
        EXPECT_EQ(scene.fullRegion[i], interest.Of("OfxImageClipPropRoI_Source", 0.0, i));
    }
    scene.Destroy();
}

TEST(OfxAnswers, OnlyDitherVariesFromFrameToFrame) {
    Opened opened;
    for (PluginStruct* plugin : Plugins()) {
        Scene scene(opened, plugin);
        ASSERT_EQ(kOk, scene.Create());
        PropertySet out(kAnswers);
        out.Put("OfxImageEffectFrameVarying", 0);
        scene.Call("OfxImageEffectActionGetClipPreferences", nullptr, &out);
        EXPECT_EQ(plugin == FindPlugin("Dither"), out.Of("OfxImageEffectFrameVarying", 0) == 1);
        scene.Destroy();
    }
}

/// Whether a plug-in reports that it does nothing.
bool IsIdentity(Scene& scene, double time) {
    PropertySet in = Scene::At(time), out(kAnswers);
    in.Put("OfxImageEffectPropFieldToRender", std::string("OfxFieldNone"));
    for (std::size_t i = 0; i < 4; ++i) in.Put("OfxImageEffectPropRenderWindow", 0, i);
    out.Put("OfxPropName", std::string());
    out.Put("OfxPropTime", 0.0);
    if (scene.Call("OfxImageEffectActionIsIdentity", &in, &out) != kOk) return false;
    EXPECT_EQ("Source", out.Of("OfxPropName", std::string()));
    EXPECT_EQ(time, out.Of("OfxPropTime", -1.0));
    return true;
}

TEST(OfxAnswers, IdentityIsTrue) {
    const std::map<std::string, std::pair<const char*, double>> idle = {
        {"MoBlur", {"Prss", 0}},         {"CrashZoom", {"Spee", 0}}, {"DBlur", {"Leng", 0}},
        {"Dither", {"DitherRadius", 0}}, {"Sharpen", {"Powe", 0}},   {"VGaussian", {"BRGB", 0}},
        {"Clean", {"Blend", 0}}};
    Opened opened;
    for (PluginStruct* plugin : Plugins()) {
        const std::string name = std::string(plugin->identifier).substr(11);
        SCOPED_TRACE(name);
        Scene scene(opened, plugin, {.depth = host::Depth::Int8});
        ASSERT_EQ(kOk, scene.Create());
        EXPECT_EQ(name == "MoBlur", IsIdentity(scene, 3.0));
        if (const auto found = idle.find(name); found != idle.end()) {
            Param& param = scene[found->second.first];
            param.value.real[0] = found->second.second;
            param.value.whole = static_cast<int>(found->second.second);
            EXPECT_TRUE(IsIdentity(scene, 3.0));
            EXPECT_FALSE(name == "MoBlur" && (scene["Aund"].value.whole = 1) && IsIdentity(scene, 3.0));
            ASSERT_EQ(kOk, scene.Render(3.0));
            EXPECT_EQ("", DifferenceTo(*Noise(scene.layout, 3.0), scene));
        }
        scene.Destroy();
    }
}

} // namespace
} // namespace k7::test::ofx
