#pragma once

#include "tests/ofx/Scene.h"

namespace k7::test::ofx {

/// The on-screen controls of an instance, in a viewport.
class Viewport {
public:
    Viewport(Opened& opened, PluginStruct* plugin, Scene& scene) : opened_(opened), scene_(scene) {
        const auto described = opened.Describe(plugin, "OfxImageEffectContextFilter");
        entry_.mainEntry = reinterpret_cast<MainEntry>(
            described->properties.Of<void*>("OfxImageEffectPluginPropOverlayInteractV1", nullptr));
        if (!entry_.mainEntry) return;
        interact.properties.Put("OfxPropEffectInstance", static_cast<void*>(&scene.effect));
        opened_.host.Enter(&interact, "interact");
        opened_.host.Enter(&interact.properties, "properties");
        EXPECT_EQ(kOk, opened_.Call(&entry_, "OfxActionDescribe"));
        EXPECT_EQ(kOk, opened_.Call(&entry_, "OfxActionCreateInstance", &interact));
    }
    ~Viewport() {
        if (!entry_.mainEntry) return;
        EXPECT_EQ(kOk, opened_.Call(&entry_, "OfxActionDestroyInstance", &interact));
        opened_.host.Leave(&interact);
        opened_.host.Leave(&interact.properties);
    }

    bool HasControls() const { return entry_.mainEntry != nullptr; }

    /// An event at a fraction of the picture.
    int Event(const std::string& name, double x = 0.0, double y = 0.0, double time = 3.0) {
        PropertySet in = Scene::At(time);
        const auto& region = scene_.fullRegion;
        in.Put("OfxPropEffectInstance", static_cast<void*>(&scene_.effect));
        in.Put("OfxInteractPropPenPosition", region[0] + x * (region[2] - region[0]), 0);
        in.Put("OfxInteractPropPenPosition", region[1] + y * (region[3] - region[1]), 1);
        for (std::size_t i = 0; i < 2; ++i) in.Put("OfxInteractPropPixelScale", pixelScale, i);
        in.Put("OfxInteractPropPenPressure", 1.0);
        return opened_.Call(&entry_, ("OfxInteractAction" + name).c_str(), &interact, &in);
    }

    Interact interact;
    double pixelScale = 0.2; ///< each pixel of the picture is five of the view

private:
    Opened& opened_;
    Scene& scene_;
    PluginStruct entry_{};
};

} // namespace k7::test::ofx
