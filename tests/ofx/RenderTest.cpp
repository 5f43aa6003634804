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
        host::Registry* tool = host::ClassRegistry().Find(host::FuID(("K7." + effect).c_str()));
        document_.Silent = true; // values come as they are, without reactions
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
        op->Process(request_.get());
        return dynamic_cast<const Image*>(request_->OutputData(op->Outputs().front()));
    }

    Ref<host::Operator> op;

private:
    host::FusionDoc document_;
    NoiseFrames frames_;
    std::unique_ptr<host::Request> request_;
};

void ExpectSame(const std::string& effect, Scene& scene, double time, double scale = 1.0) {
    const Processors four(4); // as the host says
    ASSERT_EQ(kOk, scene.Render(time, scale));
    Reference reference(effect, scene);
    const Image* expected = reference.Render(time);
    ASSERT_TRUE(expected);
    EXPECT_EQ("", DifferenceTo(*expected, scene));
}

/// Values of the user: anything within the range that is shown.
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

class OfxRender : public testing::TestWithParam<std::string> {};

TEST_P(OfxRender, EachLayoutOfPicturesGivesTheToolsOwnFrame) {
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

INSTANTIATE_TEST_SUITE_P(All, OfxRender,
                         testing::Values("Clean", "CrashZoom", "DBlur", "Defocus", "Dither", "Flare",
                                         "Flare2", "FlareSpot", "MoBlur", "Sharpen", "Trace", "VGaussian"),
                         [](const auto& named) { return named.param; });

} // namespace
} // namespace k7::test::ofx
