#include "media/Encoder.h"

#include "media/Errors.h"
#include "media/Words.h"

#include <cstring>

namespace media {

using OIIO::ImageSpec;

namespace {

/// Whether a format's encoder writes readable files when it works in memory. That of TIFF does not:
/// directories of metadata follow the pixels, and the first one, to which it seeks back, is lost.
bool WorksInMemory(const OIIO::ImageOutput& output) {
    return output.supports("ioproxy") && std::strcmp(output.format_name(), "tiff") != 0;
}

} // namespace

Encoder::Encoder(const std::string& name) : name_(name) {
    Restart();
}

void Encoder::Restart() {
    output_.reset(); // may still write
    bytes_.clear();
    memory_.emplace(bytes_);
    output_ = OIIO::ImageOutput::create(name_);
    if (!output_) throw FrameError(OneLine(OIIO::geterror()));
}

void Encoder::Prepare() {
    if (WorksInMemory(*output_)) output_->set_ioproxy(&*memory_);
}

bool Encoder::Open(const std::string& path, const ImageSpec& spec) {
    Prepare();
    path_ = path;
    if (output_->open(path, spec)) return true;
    output_->set_ioproxy(nullptr); // otherwise some encoders close what they have not opened
    return false;
}

void Encoder::Encode(const std::string& path, const ImageSpec& spec, const void* pixels) {
    if (!Open(path, spec)) Fail();
    Write(spec.format, pixels);
    Finish();
}

void Encoder::Begin(const std::string& path, const std::vector<ImageSpec>& specs) {
    Prepare();
    path_ = path;
    if (!output_->open(path, static_cast<int>(specs.size()), specs.data())) Fail();
}

void Encoder::Next(const ImageSpec& spec) {
    if (!output_->open(path_, spec, OIIO::ImageOutput::AppendSubimage)) Fail();
}

void Encoder::Write(OIIO::TypeDesc type, const void* pixels) {
    if (!output_->write_image(type, pixels)) Fail();
}

void Encoder::WriteDeep(const OIIO::DeepData& pixels) {
    if (!output_->write_deep_image(pixels)) Fail();
}

void Encoder::Finish() {
    if (!output_->close()) Fail();
}

bool Encoder::Holds(const std::string& path, ImageSpec spec) {
    if (spec.alpha_channel >= 0 && !output_->supports("alpha")) return false;
    if (!Open(path, spec)) return false;
    const ImageSpec& stored = output_->spec();
    const bool holds = stored.nchannels == spec.nchannels && stored.format == spec.format;
    const std::vector<std::byte> black(spec.image_bytes());
    return output_->write_image(spec.format, black.data()) && output_->close() && holds;
}

void Encoder::Fail() const {
    throw FrameError(OneLine(output_->geterror()));
}

} // namespace media
