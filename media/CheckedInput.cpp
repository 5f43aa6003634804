#include "media/CheckedInput.h"

#include "media/Errors.h"
#include "media/Words.h"

#include <algorithm>
#include <cstring>
#include <fstream>
#include <limits>
#include <optional>

#include <sys/stat.h>
#include <unistd.h>

namespace media {
namespace {

using OIIO::ImageInput;
using OIIO::ImageSpec;

constexpr int kMostChannels = 1024;
constexpr int kMostPictures = 1 << 20;
constexpr int kFarthest = 1 << 30; ///< of a window's corner from the origin

/// How the files of common formats begin. Other formats are recognised only by their extension: some of their
/// decoders crash on foreign files.
struct Beginning {
    const char* format;
    std::size_t at;
    std::string_view bytes;
};
constexpr Beginning kBeginnings[] = {
    {"png", 0, "\x89PNG"},
    {"jpeg", 0, "\xff\xd8\xff"},
    {"openexr", 0, "\x76\x2f\x31\x01"},
    {"tiff", 0, "II*"},
    {"tiff", 0, "MM"},
    {"gif", 0, "GIF8"},
    {"webp", 8, "WEBP"},
    {"bmp", 0, "BM"},
};

std::string FormatByContent(const std::string& path) {
    char head[16] = {};
    std::ifstream(path, std::ios::binary).read(head, sizeof head);
    for (const Beginning& beginning : kBeginnings)
        if (std::string_view(head + beginning.at, beginning.bytes.size()) == beginning.bytes)
            return beginning.format;
    return "";
}

/// The format that a file's extension names; empty if none.
std::string FormatByEnding(const std::string& path) {
    const std::size_t dot = path.find_last_of("./");
    if (dot == std::string::npos || path[dot] == '/') return "";
    const std::string ending = path.substr(dot + 1);
    for (const std::string& entry : Split(OIIO::get_string_attribute("extension_list"), ';')) {
        const std::size_t colon = entry.find(':');
        if (colon == std::string::npos) continue;
        for (const std::string& known : Split(entry.substr(colon + 1), ','))
            if (SameWord(known, ending)) return entry.substr(0, colon);
    }
    return "";
}

bool IsOneOf(const std::string& word, const std::vector<std::string>& words) {
    return std::any_of(words.begin(), words.end(), [&](const auto& w) { return SameWord(w, word); });
}

long long PhysicalMemory() {
    return static_cast<long long>(::sysconf(_SC_PHYS_PAGES)) * ::sysconf(_SC_PAGESIZE);
}

} // namespace

CheckedInput::CheckedInput(const std::string& path, const ReadLimits& limits)
    : path_(path)
    , maxPixels_(limits.maxPixels) {
    struct stat status = {};
    if (::stat(path.c_str(), &status) != 0)
        Fail(errno == ENOENT ? "there is no such file" : std::strerror(errno));
    if (S_ISDIR(status.st_mode)) Fail("is a folder");
    if (!S_ISREG(status.st_mode)) Fail("is a device or a pipe, which cannot be read as a picture");
    if (::access(path.c_str(), R_OK) != 0) Fail(std::strerror(errno));

    const std::string ending = FormatByEnding(path), content = FormatByContent(path);
    const std::string format = ending.empty() ? content : ending;
    if (format.empty()) Fail("neither its extension nor its content is that of a known picture format");
    if (!limits.formats.empty() && !IsOneOf(format, limits.formats))
        Fail("is a file of the format " + format + ", which is not among --formats");
    try {
        Open(format);
    } catch (const FrameError&) {
        const bool other = !content.empty() && content != format &&
                           (limits.formats.empty() || IsOneOf(content, limits.formats));
        if (!other) throw;
        Open(content); // the extension is wrong
    }
    CountPictures();
}

void CheckedInput::Open(const std::string& format) {
    ImageSpec wishes, first;
    wishes.attribute("oiio:UnassociatedAlpha", 1);
    input_ = ImageInput::create(format);
    if (!input_) Fail(OneLine(OIIO::geterror()));
    if (!input_->open(path_, first, wishes)) Fail(OneLine(input_->geterror()));
}

void CheckedInput::CountPictures() {
    if (const int said = input_->spec(0).get_int_attribute("oiio:subimages"); said > 0) {
        pictures_ = std::min(said, kMostPictures);
        return;
    }
    while (pictures_ < kMostPictures && input_->seek_subimage(pictures_, 0)) ++pictures_;
    input_->geterror(); // the end of the pictures is not an error
    input_->seek_subimage(0, 0);
}

ImageSpec CheckedInput::Spec(int picture) const {
    if (!input_->seek_subimage(picture, 0)) Fail(OneLine(input_->geterror()));
    return Check(input_->spec());
}

ImageSpec CheckedInput::Check(ImageSpec spec) const {
    const auto fits = [&](long long width, long long height) {
        return width > 0 && height > 0 && width <= std::numeric_limits<int>::max() / height;
    };
    const auto near = [](int corner) { return corner > -kFarthest && corner < kFarthest; };
    const auto size = [](int width, int height) {
        return std::to_string(width) + " x " + std::to_string(height);
    };
    if (spec.full_width < 1 || spec.full_height < 1) {
        spec.full_x = spec.x;
        spec.full_y = spec.y;
        spec.full_width = spec.width;
        spec.full_height = spec.height;
    }
    if (!near(spec.x) || !near(spec.y) || !near(spec.full_x) || !near(spec.full_y))
        Fail("its windows are out of bounds");
    for (const auto& [width, height] :
         {std::pair(spec.width, spec.height), {spec.full_width, spec.full_height}}) {
        if (!fits(width, height)) Fail("a picture of " + size(width, height) + " pixels is too large");
        if (static_cast<long long>(width) * height > maxPixels_)
            Fail("a picture of " + size(width, height) + " pixels is more than --max-pixels " +
                 std::to_string(maxPixels_) + " allows");
    }
    if (spec.nchannels < 1 || spec.nchannels > kMostChannels)
        Fail("a picture of " + std::to_string(spec.nchannels) + " channels cannot be read");
    const auto channels = static_cast<std::size_t>(spec.nchannels);
    if (spec.channelnames.size() != channels) spec.default_channel_names();
    if (spec.channelformats.size() != channels) spec.channelformats.clear();
    if (spec.alpha_channel >= spec.nchannels) // an index beyond the last channel means the last one
        spec.alpha_channel = spec.nchannels % 2 ? -1 : spec.nchannels - 1;
    spec.alpha_channel = std::max(spec.alpha_channel, -1);
    const double bytes =
        static_cast<double>(spec.width) * spec.height * static_cast<double>(spec.pixel_bytes(true)) +
        16.0 * spec.full_width * spec.full_height;
    if (bytes > static_cast<double>(PhysicalMemory())) Fail("there is not enough memory for this picture");
    return spec;
}

void CheckedInput::Read(int picture, int first, int end, OIIO::TypeDesc type, void* pixels) const {
    if (!input_->read_image(picture, 0, first, end, type, pixels)) Fail(OneLine(input_->geterror()));
}

void CheckedInput::ReadDeep(int picture, OIIO::DeepData& pixels) const {
    if (!input_->read_native_deep_image(picture, 0, pixels)) Fail(OneLine(input_->geterror()));
}

void CheckedInput::Fail(const std::string& why) const {
    throw FrameError(path_ + ": " + why);
}

} // namespace media
