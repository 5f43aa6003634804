#include "tests/ofx/Scene.h"

#include <cstring>

namespace k7::test::ofx {

using host::Depth;
using host::Image;
using host::Ref;

namespace {

constexpr std::byte kPoison{0xa5};
constexpr int kPadding = 12; ///< bytes between rows

const char* NameOf(Depth depth) {
    switch (depth) {
    case Depth::Int8:
        return "OfxBitDepthByte";
    case Depth::Int16:
        return "OfxBitDepthShort";
    case Depth::Half:
        return "OfxBitDepthHalf";
    case Depth::Float:
        break;
    }
    return "OfxBitDepthFloat";
}

int BytesOf(Depth depth) {
    return depth == Depth::Int8 ? 1 : depth == Depth::Float ? 4 : 2;
}

/// Poisoned pixels.
std::unique_ptr<Pixels> Blank(const Layout& layout, int border) {
    auto pixels = std::make_unique<Pixels>();
    const int width = layout.width + 2 * border, height = layout.height + 2 * border;
    const int row = width * layout.channels * BytesOf(layout.depth) + kPadding;
    pixels->bytes.assign(static_cast<std::size_t>(row * height), kPoison);
    pixels->bottom = pixels->bytes.data() + (layout.downwards ? row * (height - 1) : 0);
    pixels->rowBytes = layout.downwards ? -row : row;
    pixels->bounds = {layout.x - border, layout.y - border, layout.x - border + width,
                      layout.y - border + height};
    pixels->region = pixels->bounds;
    pixels->depth = NameOf(layout.depth);
    pixels->components = layout.channels == 4 ? "OfxImageComponentRGBA" : "OfxImageComponentRGB";
    return pixels;
}

} // namespace

Ref<Image> Noise(const Layout& layout, double time) {
    Ref<Image> image(Image::Make(layout.width, layout.height, layout.depth));
    std::minstd_rand random(static_cast<unsigned>(time) * 7u + 77u);
    std::vector<float> row(static_cast<std::size_t>(layout.width) * 4);
    for (int y = 0; y < layout.height; ++y) {
        for (int x = 0; x < layout.width; ++x) {
            const bool bright = random() % 50 == 0;
            for (int c = 0; c < 4; ++c) {
                const float noise = static_cast<float>(random() % 1000) / 1000.0f;
                row[static_cast<std::size_t>(4 * x + c)] =
                    bright || (c == 3 && layout.channels == 3) ? 1.0f : noise;
            }
        }
        image->WriteRow(y, row.data());
    }
    return image;
}

Scene::Scene(Opened& opened, PluginStruct* plugin, const Layout& l, const std::string& context)
    : layout(l)
    , fullRegion{static_cast<double>(l.x), static_cast<double>(l.y), static_cast<double>(l.x + l.width),
                 static_cast<double>(l.y + l.height)}
    , opened_(opened)
    , plugin_(plugin) {
    CopyDefinitions(*opened_.Describe(plugin, context, &described));
    effect.properties.Put("OfxImageEffectPropContext", context);
    opened_.host.Enter(&effect, "effect");
    opened_.host.Enter(&effect.properties, "properties");
    for (const auto& clip : effect.clips) {
        opened_.host.Enter(clip.get(), "clip");
        opened_.host.Enter(&clip->properties, "properties");
        clip->properties.Put("OfxImageClipPropConnected", 0);
        clip->properties.Put("OfxImagePropPixelAspectRatio", 1.0);
        clip->properties.Put("OfxImageEffectPropFrameRange", 0.0, 0);
        clip->properties.Put("OfxImageEffectPropFrameRange", 23.0, 1);
    }
    for (const auto& param : effect.params) {
        opened_.host.Enter(param.get(), "parameter");
        opened_.host.Enter(&param->properties, "properties");
    }
    if (described == kOk) Connect("Source");
}

void Scene::CopyDefinitions(const Effect& definition) {
    for (const auto& clip : definition.clips) {
        effect.clips.push_back(std::make_unique<Clip>(kClip, clip->name));
        effect.clips.back()->properties.values = clip->properties.values;
        effect.clips.back()->effect = &effect;
    }
    for (const auto& from : definition.params) {
        effect.params.push_back(std::make_unique<Param>(kParam, "OfxParamType" + from->kind, from->name));
        Param& to = *effect.params.back();
        to.effect = &effect;
        to.properties.values = from->properties.values;
        for (std::size_t i = 0; i < 3; ++i)
            to.value.real[i] = to.properties.Of("OfxParamPropDefault", 0.0, i);
        to.value.whole = to.properties.Of("OfxParamPropDefault", 0);
        to.value.text = to.properties.Of("OfxParamPropDefault", std::string());
    }
}

Scene::~Scene() {
    StrictHost& host = opened_.host;
    if (effect.editDepth != 0) host.Fault("an edit that was not ended");
    for (const auto& clip : effect.clips) host.Leave(clip.get()), host.Leave(&clip->properties);
    for (const auto& param : effect.params) host.Leave(param.get()), host.Leave(&param->properties);
    host.Leave(&effect.properties);
    host.Leave(&effect);
}

int Scene::Create() {
    return Call("OfxActionCreateInstance");
}
void Scene::Destroy() {
    EXPECT_EQ(kOk, Call("OfxActionDestroyInstance"));
}

void Scene::Connect(const std::string& name) {
    Clip& clip = *effect.FindClip(name);
    clip.picture = [this](double time) { return Source(time); };
    clip.region = fullRegion;
    clip.properties.Put("OfxImageClipPropConnected", 1);
}

Pixels* Scene::Source(double time) {
    std::unique_ptr<Pixels>& source = sources_[time];
    if (source) return source.get();
    source = Blank(layout, 0);
    const Ref<Image> noise = Noise(layout, time);
    const auto pixel = static_cast<std::size_t>(BytesOf(layout.depth));
    for (int y = 0; y < layout.height; ++y)
        for (int x = 0; x < layout.width; ++x)
            std::memcpy(source->bottom + y * source->rowBytes + static_cast<int>(pixel) * layout.channels * x,
                        noise->PlaneAccess[0].Row(y) + static_cast<int>(pixel) * 4 * x,
                        pixel * static_cast<std::size_t>(layout.channels));
    return source.get();
}

PropertySet Scene::At(double time) {
    PropertySet in(kArguments);
    in.Put("OfxPropTime", time);
    for (std::size_t i = 0; i < 2; ++i) in.Put("OfxImageEffectPropRenderScale", 1.0, i);
    return in;
}

int Scene::Render(double time, double scale, std::optional<std::array<int, 4>> window) {
    output = std::move(*Blank(layout, layout.border));
    effect.FindClip("Output")->picture = [this](double) { return &output; };
    PropertySet in = At(time);
    for (std::size_t i = 0; i < 2; ++i) in.Put("OfxImageEffectPropRenderScale", scale, i);
    in.Put("OfxImageEffectPropFieldToRender", std::string("OfxFieldNone"));
    for (std::size_t i = 0; i < 4; ++i)
        in.Put("OfxImageEffectPropRenderWindow", window ? (*window)[i] : output.bounds[i], i);
    for (const char* flag :
         {"OfxImageEffectPropSequentialRenderStatus", "OfxImageEffectPropInteractiveRenderStatus"})
        in.Put(flag, 0);
    return Call("OfxImageEffectActionRender", &in);
}

int Scene::Change(const std::string& param, double time, const char* reason) {
    PropertySet reasons(kArguments);
    reasons.Put("OfxPropChangeReason", std::string(reason));
    Call("OfxActionBeginInstanceChanged", &reasons);
    PropertySet in = At(time);
    in.Put("OfxPropType", std::string("OfxTypeParameter"));
    in.Put("OfxPropName", param);
    in.Put("OfxPropChangeReason", std::string(reason));
    const int status = Call("OfxActionInstanceChanged", &in);
    Call("OfxActionEndInstanceChanged", &reasons);
    return status;
}

std::string DifferenceTo(const Image& reference, const Scene& scene) {
    const Layout& layout = scene.layout;
    const int sample = BytesOf(layout.depth);
    const int pixel = sample * layout.channels;
    const std::vector<std::byte> empty(16);
    const Pixels& out = scene.output;
    for (int y = out.bounds[1]; y < out.bounds[3]; ++y) {
        const std::byte* row = out.bottom + (y - out.bounds[1]) * out.rowBytes;
        for (int x = out.bounds[0]; x < out.bounds[2]; ++x) {
            const int ix = x - layout.x, iy = y - layout.y;
            const bool inside = ix >= 0 && iy >= 0 && ix < reference.Width && iy < reference.Height;
            const std::byte* expected =
                inside ? reference.PlaneAccess[0].Row(iy) + 4 * sample * ix : empty.data();
            if (std::memcmp(row + (x - out.bounds[0]) * pixel, expected, static_cast<std::size_t>(pixel)) !=
                0)
                return "differs at " + std::to_string(x) + ", " + std::to_string(y);
        }
        for (int i = 0; i < kPadding; ++i)
            if (row[(out.bounds[2] - out.bounds[0]) * pixel + i] != kPoison) return "writes between the rows";
    }
    return {};
}

} // namespace k7::test::ofx
