#pragma once

#include "host/Image.h"
#include "tests/ofx/Bundle.h"

#include <optional>
#include <random>

namespace k7::test::ofx {

/// How a host lays out its pictures.
struct Layout {
    host::Depth depth = host::Depth::Float;
    int channels = 4;
    bool downwards = false; ///< the first row is the upper one
    int x = 0, y = 0;       ///< where the picture's corner lies
    int border = 0;         ///< of the output around the source
    int width = 61, height = 43;
};

/// A frame of noise with bright spots; the same for the same arguments.
host::Ref<host::Image> Noise(const Layout& layout, double time);

/// An instance of a plug-in in a host, with a clip of noise before it.
class Scene {
public:
    Scene(Opened& opened, PluginStruct* plugin, const Layout& layout = {},
          const std::string& context = "OfxImageEffectContextFilter");
    ~Scene();

    int described = 0; ///< the status of the description
    int Create();
    void Destroy();
    void Connect(const std::string& clip);

    int Render(double time, double scale = 1.0, std::optional<std::array<int, 4>> window = {});
    /// The user, or someone else, has edited a parameter.
    int Change(const std::string& param, double time, const char* reason = "OfxChangeUserEdited");
    int Call(const char* action, PropertySet* in = nullptr, PropertySet* out = nullptr) {
        return opened_.Call(plugin_, action, &effect, in, out);
    }
    static PropertySet At(double time);

    Param& operator[](const std::string& name) { return *effect.FindParam(name); }

    Effect effect{kEffect};
    Pixels output; ///< of the last render
    const Layout layout;
    std::array<double, 4> fullRegion{}; ///< of the source, in canonical coordinates

private:
    void CopyDefinitions(const Effect& described);
    Pixels* Source(double time);

    Opened& opened_;
    PluginStruct* const plugin_;
    std::map<double, std::unique_ptr<Pixels>> sources_;
};

/// The first place where the output differs from the reference; empty if none.
std::string DifferenceTo(const host::Image& reference, const Scene& scene);

} // namespace k7::test::ofx
