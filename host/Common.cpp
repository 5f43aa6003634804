#include "host/Common.h"

#include "host/Application.h"
#include "host/Matte.h"
#include "host/Operator.h"

#include <algorithm>
#include <new>
#include <vector>

namespace host {

namespace {

/// What a frame is mixed from, row by row.
struct Mix {
    const Image& source;
    const Image& frame;
    const std::vector<float>& matte; ///< empty: 1 everywhere
    float blend;
    const bool (&process)[4];
    bool inverted;
    bool multiply; ///< the frame's colours by its alpha

    float Weight(std::size_t pixel) const {
        if (matte.empty()) return blend;
        return blend * (inverted ? 1.0f - matte[pixel] : matte[pixel]);
    }

    /// Exactly the source where the weight is 0 and exactly the frame where it is 1.
    static float Between(float source, float frame, float weight) {
        if (weight == 0.0f) return source;
        return weight == 1.0f ? frame : source + (frame - source) * weight;
    }

    void WriteRow(int y, Image& to) const {
        const auto width = static_cast<std::size_t>(source.Width);
        std::vector<float> below(width * 4), above(width * 4);
        source.ReadRow(y, below.data());
        frame.ReadRow(y, above.data());
        for (std::size_t x = 0; x < width; ++x) {
            float* rgba = &below[x * 4];
            const float* effect = &above[x * 4];
            const float weight = Weight(static_cast<std::size_t>(y) * width + x);
            for (int c = 0; c < 4; ++c) {
                const float value = multiply && c < 3 ? effect[c] * effect[3] : effect[c];
                if (process[c]) rgba[c] = Between(rgba[c], value, weight);
            }
        }
        to.WriteRow(y, below.data());
    }

    /// A new picture of the source's kind; null if allocation fails.
    Image* Make() const {
        Image* to = Image::NewImage({{kTagImageLike, &source}});
        if (!to) return nullptr;
        constexpr int band = 16;
        GetApp()->RunOnThreads((source.Height + band - 1) / band, [&](long index) {
            const int first = static_cast<int>(index) * band;
            for (int y = first; y < std::min(first + band, source.Height); ++y) WriteRow(y, *to);
        });
        return to;
    }

    /// Whether anything of the frame is visible.
    bool ShowsFrame() const {
        if (blend == 0.0f || std::none_of(process, process + 4, [](bool on) { return on; })) return false;
        const float hidden = inverted ? 1.0f : 0.0f;
        return matte.empty() || std::any_of(matte.begin(), matte.end(), [&](float m) { return m != hidden; });
    }
};

} // namespace

CommonControls::CommonControls(Operator& op) : operator_(op) {
    for (Input* input : op.Inputs())
        if (input->DataType() == Input::Type::Image && input->GetAttrI(kTagMainLink) == 1) main_ = input;
    const int page = op.AddControlPage("Common");
    blend_ = op.AddInput(FuID("Blend"), FuID("Blend"),
                         {{kTagDataType, FuID("Number")},
                          {kTagControlKind, FuID("SliderControl")},
                          {kTagCommon, 0},
                          {kTagPage, page},
                          {kTagShownLow, 0.0},
                          {kTagShownHigh, 1.0},
                          {kTagLowest, 0.0},
                          {kTagHighest, 1.0},
                          {kTagIdleAt, 0.0},
                          {kTagDefault, 1.0}});
    mask_ =
        op.AddInput(FuID("Effect Mask"), FuID("EffectMask"),
                    {{kTagDataType, FuID("Image")}, {kTagCommon, 0}, {kTagPage, page}, {kTagOptional, 0}});
    channel_ = op.AddInput(FuID("Mask Channel"), FuID("MaskChannel"),
                           {{kTagDataType, FuID("Number")},
                            {kTagControlKind, FuID("ComboControl")},
                            {kTagCommon, 0},
                            {kTagPage, page},
                            {kTagInteger, 1},
                            {kTagShownLow, 0.0},
                            {kTagShownHigh, 4.0},
                            {kTagDefault, 0.0},
                            {kTagEntry, "Alpha"},
                            {kTagEntry, "Red"},
                            {kTagEntry, "Green"},
                            {kTagEntry, "Blue"},
                            {kTagEntry, "Luminance"}});
    inverted_ = AddCheck("Apply Mask Inverted", "ApplyMaskInverted", false);
    process_[0] = AddCheck("Process Red", "ProcessRed", true);
    process_[1] = AddCheck("Process Green", "ProcessGreen", true);
    process_[2] = AddCheck("Process Blue", "ProcessBlue", true);
    process_[3] = AddCheck("Process Alpha", "ProcessAlpha", true);
    divide_ = AddCheck("Pre-Divide/Post-Multiply", "PreDividePostMultiply", false);
    if (main_) main_->SetFilter([this](Image* picture, double time) { return Divided(picture, time); });
}

Input* CommonControls::AddCheck(const char* label, const char* id, bool on) {
    return operator_.AddInput(FuID(label), FuID(id),
                              {{kTagDataType, FuID("Number")},
                               {kTagControlKind, FuID("CheckboxControl")},
                               {kTagCommon, 0},
                               {kTagPage, static_cast<int>(operator_.Pages().size()) - 1},
                               {kTagInteger, 1},
                               {kTagCheckbox, 0},
                               {kTagDefault, on ? 1.0 : 0.0}});
}

double CommonControls::Number(Request& request, Input* input) const {
    const auto* number = dynamic_cast<const host::Number*>(request.GetInputData(input, 0));
    return number && number->Value == number->Value ? number->Value : input->GetAttrD(kTagDefault);
}

CommonControls::Settings CommonControls::Read(Request& request) const {
    Settings settings{};
    settings.blend = Number(request, blend_);
    for (int c = 0; c < 4; ++c) settings.process[c] = Number(request, process_[c]) != 0.0;
    settings.divide = Number(request, divide_) != 0.0;
    settings.inverted = Number(request, inverted_) != 0.0;
    settings.channel = static_cast<int>(std::clamp(Number(request, channel_), 0.0, 4.0));
    return settings;
}

/// The picture as the tool sees it: itself, or a copy in floats with its colours divided by alpha.
Image* CommonControls::Divided(Image* picture, double time) const {
    const Ref<Parameter> divide(divide_->GetSource(time));
    const auto* on = dynamic_cast<const host::Number*>(divide.get());
    if (!on || on->Value == 0.0) return picture;
    const Ref<Image> held(picture);
    Image* divided = Image::Make(picture->Width, picture->Height, Depth::Float);
    if (!divided) return nullptr;
    divided->AspectX = picture->AspectX;
    divided->AspectY = picture->AspectY;
    std::vector<float> row(static_cast<std::size_t>(picture->Width) * 4);
    for (int y = 0; y < picture->Height; ++y) {
        picture->ReadRow(y, row.data());
        for (std::size_t i = 0; i < row.size(); i += 4)
            for (std::size_t c = 0; c < 3 && row[i + 3] != 0.0f; ++c) row[i + c] /= row[i + 3];
        divided->WriteRow(y, row.data());
    }
    return divided;
}

void CommonControls::Render(Request& request) try {
    const Settings settings = Read(request);
    const bool all = std::all_of(settings.process, settings.process + 4, [](bool on) { return on; });
    const auto* mask = dynamic_cast<const Image*>(request.GetInputData(mask_, 0));
    const bool plain = settings.blend == 1.0 && all && !settings.divide && !mask;
    const Ref<Parameter> main(plain || !main_ ? nullptr : main_->Unfiltered(request.Time));
    auto* source = dynamic_cast<Image*>(main.get());
    if (!source || operator_.Outputs().empty()) return operator_.Process(&request);

    std::vector<float> matte;
    if (mask)
        matte = MakeMatte(*mask, static_cast<MatteChannel>(settings.channel), source->Width, source->Height);
    Output* const output = operator_.Outputs().front();
    const auto mixed = [&](const Image& frame) {
        return Mix{
            *source,           frame,          matte, static_cast<float>(settings.blend), settings.process,
            settings.inverted, settings.divide};
    };
    const bool seen = mixed(*source).ShowsFrame();
    const Registry* const tool = operator_.Class();
    if (seen || (tool && tool->HasAttr(kTagRegWritesControls))) {
        operator_.Process(&request);
        if (operator_.AbortFlag || !request.OutputData(output)) return;
    }
    if (!seen) {
        source->Retain();
        return request.SetOutputData(output, source);
    }
    const auto* frame = dynamic_cast<const Image*>(request.OutputData(output));
    if (frame) request.SetOutputData(output, mixed(*frame).Make());
} catch (const std::bad_alloc&) {
    // The host gets a frame without output, not an exception.
    for (Output* output : operator_.Outputs()) request.SetOutputData(output, nullptr);
}

} // namespace host
