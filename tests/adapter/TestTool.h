#pragma once

#include "frame/adapter/OperatorK7.h"
#include "host/Document.h"
#include "library/K7Image.h"

#include <functional>

namespace k7::test {

/// A core that does what a test requests.
class Probe : public PluginK7 {
public:
    void Process() override {
        ++Frames;
        if (OnProcess) OnProcess();
    }
    void RefreshControls() override { ++Refreshes; }

    ImageInputK7 Input, Second;
    ImageOutputK7 Output;
    FloatControlK7 Size;
    IntegerControlK7 Count;
    CheckboxControlK7 Flag;
    ListControlK7 Mode;
    PositionControlK7 Centre;
    ColourControlK7 Colour;
    FileControlK7 File;
    std::function<void()> OnProcess;
    int Frames = 0;
    int Refreshes = 0;
};

inline const host::ScriptVal kNoScript;

/// An operator with one control of each kind.
class DFProbe : public OperatorK7 {
public:
    explicit DFProbe(host::FusionDoc* document, SecondImage use = SecondImage::FitToMain)
        : OperatorK7({nullptr, kNoScript, {{host::kTagDocument, document}}})
        , core(MakeCore<Probe>()) {
        Page("K7 Probe");
        Add(core.Size, {"Size", "Size", kChange}, Slider{1.5, 0.0, 10.0});
        Add(core.Count, {"Count", "Coun"}, Slider{3, 1, 5});
        Add(core.Flag, {"Flag", "Flag", kUnmirrored}, Check{3});
        Add(core.Mode, {"Mode", "Mode", kHidden}, Combo{{"Box", "Clip"}});
        Page("More");
        Add(core.Centre, {"Centre", "Cent"}, Offset{0.2, 0.3});
        Add(core.Colour, {"Low", "Loo", kChange}, ColourSwatch{1.0, 0.5, 0.0, 0.25, 1});
        Add(core.File, {"File", "File"}, FileName{"a.txt"});
        AddMainImage(core.Input, "Clip");
        AddSecondImage(core.Second, "Light", use);
        AddImageOutput(core.Output);
        OnChange(core.Size, [this](double time) { SizeChanges.push_back(time); });
        OnChange(core.Colour, [this](double time) {
            ++ColourChanges;
            core.Colour.Set(time, 100, 200, 300, 0); // echoes four times
        });
    }

    Probe& core;
    std::vector<double> SizeChanges;
    int ColourChanges = 0;
};

/// Provides one picture at all times, and records the times at which it was read.
class StillClip : public host::ImageProvider {
public:
    explicit StillClip(host::Image* image) : image_(image) {}
    host::Image* ImageAt(double time) override {
        Asked.push_back(time);
        if (Fails) return nullptr;
        image_->Retain();
        return image_.get();
    }

    bool Fails = false;
    std::vector<double> Asked;

private:
    host::Ref<host::Image> image_;
};

/// A picture in the host's 16 bits from a function word(x, y, channel).
inline host::Image* HostPicture(int width, int height, const std::function<int(int, int, int)>& word,
                                host::Planes planes = host::Planes::One) {
    host::Image* image = host::Image::Make(width, height, host::Depth::Int16, planes);
    for (int y = 0; y < height; ++y)
        for (int x = 0; x < width; ++x) {
            const host::Pixel pixel{word(x, y, 2), word(x, y, 1), word(x, y, 0), word(x, y, 3)};
            std::byte* second = image->PlaneAccess[1].Row(y);
            if (second) second += x * image->PlaneAccess[1].Step;
            image->Write(&pixel, image->PlaneAccess[0].Row(y) + x * image->PlaneAccess[0].Step, second);
        }
    return image;
}

inline host::Pixel PixelAt(const host::Image& image, int x, int y) {
    host::Pixel pixel;
    const std::byte* second = image.PlaneAccess[1].Row(y);
    if (second) second += x * image.PlaneAccess[1].Step;
    image.Read(&pixel, image.PlaneAccess[0].Row(y) + x * image.PlaneAccess[0].Step, second);
    return pixel;
}

} // namespace k7::test
