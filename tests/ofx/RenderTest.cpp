#include "tests/ofx/Scene.h"

#include "host/Application.h"
#include "host/Operator.h"
#include "tests/tools/Stage.h"

namespace k7::test::ofx {
namespace {

using host::Depth;
using host::Image;
using host::Ref;

/// The same noise for a tool of the host layer.
class NoiseFrames : public host::ImageProvider {
public:
    explicit NoiseFrames(const Layout& layout) : layout_(layout) {}
    Image* ImageAt(double time) override { return Noise(layout_, time).release(); }

private:
    const Layout layout_;
};

void Copy(const Param& from, host::Input& to, std::size_t channel) {
    Ref<host::Parameter> value;
    if (from.kind == "Double2D")
        value = Ref<host::Parameter>(new host::Point(from.value.real[0], from.value.real[1], 0.0));
    else if (from.kind == "String")
        value = Ref<host::Parameter>(new host::Text(from.value.text));
    else if (from.kind == "Double" || from.kind == "RGB")
        value = Ref<host::Parameter>(new host::Number(from.value.real[channel]));
    else
        value = Ref<host::Parameter>(new host::Number(from.value.whole));
    to.SetSource(value.get(), 0.0, 1, nullptr);
}

std::string Alphanumeric(std::string text) {
    std::erase_if(text, [](unsigned char c) { return !std::isalnum(c); });
    return text;
}

/// The tool of the host layer itself, with the same values and pictures as the scene.
class Reference {
public:
    Reference(const std::string& effect, Scene& scene) : frames_(scene.layout) {
        host::GetApp()->Division = 1; // as in all front ends
        host::Registry* tool = host::ClassRegistry().Find(host::FuID(("K7." + effect).c_str()));
        document_.Silent = true; // values are set without reactions
        op = Ref<host::Operator>(tool->NewOperator(&document_));
        op->SetExtent({0.0, 24.0, 1.0});
        for (host::Input* input : op->Inputs()) {
            if (input->DataType() == host::Input::Type::Image) {
                const Clip* clip = scene.effect.FindClip(
                    input->GetAttrI(host::kTagMainLink) == 1 ? "Source" : Alphanumeric(input->Id()));
                if (clip && clip->picture) input->Connect(&frames_);
                continue;
            }
            const std::string id = Alphanumeric(input->Id().empty() ? input->Name() : input->Id());
            const bool channel = input->HasAttr(host::kTagColourChannel);
            if (const Param* param = scene.effect.FindParam(channel ? id.substr(0, id.size() - 1) : id))
                Copy(*param, *input, static_cast<std::size_t>(input->GetAttrI(host::kTagColourChannel)));
        }
        const bool floats = scene.layout.depth == Depth::Half || scene.layout.depth == Depth::Float;
        if (host::Input* depth = op->FindInput("FloatPictures"))
            depth->SetSource(host::AutoNumber(floats && !scene["Words15"].value.whole).get(), 0.0, 1,
                             nullptr);
    }

    const Image* Render(double time) {
        request_ = std::make_unique<host::Request>(time);
        op->Render(request_.get());
        return dynamic_cast<const Image*>(request_->OutputData(op->Outputs().front()));
    }

private:
    host::FusionDoc document_;
    NoiseFrames frames_;

public:
    Ref<host::Operator> op; ///< destroyed before its document

private:
    std::unique_ptr<host::Request> request_;
};

void ExpectSame(const std::string& effect, Scene& scene, double time, double scale = 1.0) {
    const Processors four(4); // as the host reports
    ASSERT_EQ(kOk, scene.Render(time, scale));
    Reference reference(effect, scene);
    const Image* expected = reference.Render(time);
    ASSERT_TRUE(expected);
    EXPECT_EQ("", DifferenceTo(*expected, scene));
}

/// Values of the user: anything within the shown range.
void Shuffle(Scene& scene, unsigned seed) {
    std::minstd_rand random(seed);
    for (const auto& param : scene.effect.params) {
        const PropertySet& p = param->properties;
        const double part = static_cast<double>(random() % 1001) / 1000.0;
        const auto within = [&](auto low, auto high) { return low + part * (high - low); };
        if (param->kind == "Double")
            param->value.real[0] =
                within(p.Of("OfxParamPropDisplayMin", 0.0), p.Of("OfxParamPropDisplayMax", 1.0));
        else if (param->kind == "Double2D")
            param->value.real = {part, 1.0 - part};
        else if (param->kind == "RGB")
            param->value.real = {part, 1.0 - part, 0.5};
        else if (param->kind == "Integer")
            param->value.whole = std::min(40, static_cast<int>(within(p.Of("OfxParamPropDisplayMin", 0),
                                                                      p.Of("OfxParamPropDisplayMax", 1))));
        else if (param->kind == "Choice")
            param->value.whole = static_cast<int>(random() % p.Count("OfxParamPropChoiceOption"));
        else if (param->kind == "Boolean" && param->name != "Words15")
            param->value.whole = static_cast<int>(random() % 2);
    }
}

class OfxFrames : public testing::TestWithParam<std::string> {};

TEST_P(OfxFrames, EachLayoutOfPicturesGivesTheToolsOwnFrame) {
    Opened opened;
    int changed = 0; // frames that are not just their source
    for (const Depth depth : {Depth::Int8, Depth::Int16, Depth::Half, Depth::Float}) {
        for (const int variant : {0, 1, 2}) {
            SCOPED_TRACE(testing::Message() << "depth " << static_cast<int>(depth) << " variant " << variant);
            Layout layout{.depth = depth};
            if (variant > 0) layout = {depth, 3, true, -17, 23, 2};
            if (variant > 1) layout = {depth, 4, true, 5, -9, 0};
            Scene scene(opened, FindPlugin(GetParam()), layout);
            if (variant > 0) Shuffle(scene, static_cast<unsigned>(variant));
            ASSERT_EQ(kOk, scene.Create());
            if (variant > 1)
                for (const auto& clip : scene.effect.clips)
                    if (clip->name != "Output") scene.Connect(clip->name);
            ExpectSame(GetParam(), scene, 3.0);
            changed += !DifferenceTo(*Noise(layout, 3.0), scene).empty();
            scene.Destroy();
        }
    }
    EXPECT_GT(changed, 3);
    EXPECT_TRUE(opened.host.spread > 0 || GetParam() == "Sharpen"); // which works on one thread
}

// A proxy of half and of a quarter of the size, and what hosts report as its scale: the truth, its inverse,
// nothing.
TEST(OfxScale, LengthsInPixelsFollowTheProxy) {
    const struct {
        const char *effect, *param, *companion;
        double full;
    } cases[] = {{"Sharpen", "RadS", "Powe", 8}, {"MoBlur", "Prur", "Prss", 4}, {"Defocus", "", "", 0}};
    Opened opened;
    for (const auto& [effect, param, companion, full] : cases)
        for (const double scale : {1.0, 0.5, 0.25})
            for (const double told : {scale, 1.0 / scale, 1.0}) {
                SCOPED_TRACE(testing::Message() << effect << " at " << scale << ", told " << told);
                const int width = static_cast<int>(240 * scale), height = static_cast<int>(128 * scale);
                Scene scene(opened, FindPlugin(effect), {.width = width, .height = height});
                scene.effect.FindClip("Source")->region = {0.0, 0.0, 240.0, 128.0};
                const auto set = [&](const char* name, double value) {
                    if (!*name) return;
                    scene[name].value.real[0] = value;
                    scene[name].value.whole = static_cast<int>(value);
                };
                ASSERT_EQ(kOk, scene.Create());
                set(companion, 1);
                set(param, full);
                const Processors four(4);
                ASSERT_EQ(kOk, scene.Render(3.0, told));
                set(param, full * scale);
                Reference reference(effect, scene);
                EXPECT_EQ("", DifferenceTo(*reference.Render(3.0), scene));
                scene.Destroy();
            }
}

// A part of the output is filled, and nothing beside it.
TEST(OfxRender, OnlyTheWindowIsWritten) {
    Opened opened;
    Scene scene(opened, FindPlugin("Clean"), {.border = 2});
    ASSERT_EQ(kOk, scene.Create());
    ASSERT_EQ(kOk, scene.Render(3.0));
    const Pixels whole = scene.output;
    const std::array<int, 4> window = {7, 3, 30, 21};
    ASSERT_EQ(kOk, scene.Render(3.0, 1.0, window));
    const Pixels& part = scene.output;
    for (int y = part.bounds[1]; y < part.bounds[3]; ++y)
        for (int x = part.bounds[0]; x < part.bounds[2]; ++x) {
            const bool inside = x >= window[0] && x < window[2] && y >= window[1] && y < window[3];
            const auto at =
                static_cast<std::size_t>((y - part.bounds[1]) * part.rowBytes + (x - part.bounds[0]) * 16);
            ASSERT_EQ(inside ? whole.bytes[at] : std::byte{0xa5}, part.bytes[at]) << x << ", " << y;
        }
    scene.Destroy();
}

// A picture whose pixels are only a part of its region stays in its place.
TEST(OfxRender, MissingPixelsAreEmpty) {
    Opened opened;
    Scene scene(opened, FindPlugin("Defocus"), {.depth = Depth::Int8});
    ASSERT_EQ(kOk, scene.Create());
    Clip& source = *scene.effect.FindClip("Source");
    const auto whole = source.picture;
    source.picture = [&](double time) {
        Pixels* pixels = whole(time);
        pixels->bounds = {0, 0, 61, 20}; // the rows above are missing
        return pixels;
    };
    scene["RadB"].value.real[0] = 0.1;
    ASSERT_EQ(kOk, scene.Render(3.0));
    const auto row = [&](int y) { return scene.output.bottom + y * scene.output.rowBytes; };
    EXPECT_TRUE(std::any_of(row(10), row(11) - 12, [](std::byte b) { return b != std::byte{0}; }));
    EXPECT_TRUE(std::all_of(row(40), row(41) - 12, [](std::byte b) { return b == std::byte{0}; }));
    scene.Destroy();
}

INSTANTIATE_TEST_SUITE_P(All, OfxFrames,
                         testing::Values("Clean", "CrashZoom", "DBlur", "Defocus", "Dither", "Flare",
                                         "Flare2", "FlareSpot", "MoBlur", "Sharpen", "Trace", "VGaussian"),
                         [](const auto& named) { return named.param; });

} // namespace
} // namespace k7::test::ofx
