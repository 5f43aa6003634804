#pragma once

#include "baselib/HeapMonitor.h"
#include "host/Application.h"
#include "host/Document.h"
#include "host/Operator.h"

#include <cstdint>
#include <functional>
#include <memory>
#include <random>
#include <string>
#include <vector>

namespace k7::test {

/// A clip of noise with some very bright and some flat spots, different at every time; the same words for the
/// same arguments.
class NoiseClip : public host::ImageProvider {
public:
    NoiseClip(int width, int height, double aspectX = 1.0)
        : width_(width)
        , height_(height)
        , aspectX_(aspectX) {}

    host::Image* ImageAt(double time) override {
        host::Image* image = host::Image::Make(width_, height_, host::Depth::Int16);
        if (!image) return nullptr;
        image->AspectX = aspectX_;
        std::minstd_rand random(static_cast<unsigned>(static_cast<std::int64_t>(time) + 77));
        for (int y = 0; y < height_; ++y) {
            std::byte* at = image->PlaneAccess[0].Row(y);
            for (int x = 0; x < width_; ++x, at += image->PlaneAccess[0].Step) {
                const auto word = [&] { return static_cast<int>(random() % 65536); };
                const bool bright = random() % 50 == 0;
                const host::Pixel pixel = bright ? host::Pixel{65535, 65535, 65535, 65535}
                                                 : host::Pixel{word(), word(), word(), word()};
                image->Write(&pixel, at, nullptr);
            }
        }
        return image;
    }

private:
    const int width_, height_;
    const double aspectX_;
};

/// A clip of one float picture: value(x, y, channel), where 1.0 is white.
class FloatClip : public host::ImageProvider {
public:
    using Value = std::function<float(int, int, int)>;
    FloatClip(int width, int height, Value value)
        : width_(width)
        , height_(height)
        , value_(std::move(value)) {}

    host::Image* ImageAt(double) override {
        host::Image* image = host::Image::Make(width_, height_, host::Depth::Float);
        std::vector<float> row(static_cast<std::size_t>(width_) * 4);
        for (int y = 0; y < height_; ++y) {
            for (int i = 0; i < 4 * width_; ++i) row[static_cast<std::size_t>(i)] = value_(i / 4, y, i % 4);
            image->WriteRow(y, row.data());
        }
        return image;
    }

private:
    const int width_, height_;
    const Value value_;
};

/// A tool in a document of its own, its main image connected and its effect turned on, in words or in floats.
class Stage {
public:
    Stage(const host::Registry& tool, host::ImageProvider& clip, bool floats = false)
        : op(tool.NewOperator(&document)) {
        if (host::Input* apply = op->FindInput("Prss")) Write(*apply, 1.0);
        if (host::Input* mapOnly = op->FindInput("LMOn")) Write(*mapOnly, 0.0);
        Write(*op->FindInput("FloatPictures"), floats);
        op->SetExtent({0.0, 24.0, 1.0});
        for (host::Input* input : op->Inputs())
            if (input->DataType() == host::Input::Type::Image && input->GetAttrI(host::kTagMainLink) == 1)
                input->Connect(&clip);
    }

    /// Renders a frame; the values of the picture, bottom row first, empty if there was no output.
    std::vector<float> Render(double time = 3.0) {
        host::Request request(time);
        op->Render(&request);
        const auto* image = static_cast<const host::Image*>(request.OutputData(op->Outputs()[0]));
        std::vector<float> values;
        if (!image) return values;
        const std::size_t row = static_cast<std::size_t>(image->Width) * 4;
        values.resize(row * static_cast<std::size_t>(image->Height));
        for (int y = 0; y < image->Height; ++y)
            image->ReadRow(y, values.data() + row * static_cast<std::size_t>(y));
        return values;
    }

    void Write(host::Input& input, double value) {
        if (input.DataType() == host::Input::Type::Point)
            input.SetSource(host::AutoParameter(new host::Point(value, value, 0.0)).get(), 3.0, 1, nullptr);
        else
            input.SetSource(host::AutoNumber(value).get(), 3.0, 1, nullptr);
    }

    /// The tool's own inputs that hold numbers or points.
    std::vector<host::Input*> Settings() const {
        std::vector<host::Input*> settings;
        for (host::Input* input : op->Inputs()) {
            if (input->HasAttr(host::kTagCommon)) continue;
            if (input->DataType() == host::Input::Type::Number ||
                input->DataType() == host::Input::Type::Point)
                settings.push_back(input);
        }
        return settings;
    }

    host::FusionDoc document;
    host::Ref<host::Operator> op;
};

/// All tools, in the order of their numbers.
inline std::vector<host::Registry*> Tools() {
    std::vector<host::Registry*> tools;
    for (host::Registry* entry : host::ClassRegistry().Entries())
        if (entry->HasAttr(host::kTagRegNumber)) tools.push_back(entry);
    return tools;
}

/// Sets the number of chunks for as long as it lives.
class Processors {
public:
    explicit Processors(int count) : before_(host::GetApp()->ProcessorCount.exchange(count)) {}
    ~Processors() { host::GetApp()->ProcessorCount = before_; }

private:
    const int before_;
};

} // namespace k7::test
