#include "tests/media/Pictures.h"

#include "media/Errors.h"
#include "tests/fuzz/Fuzz.h"

#include <fstream>
#include <iterator>
#include <vector>

namespace fuzz {

using namespace media;
namespace {

struct Sample {
    std::string path, bytes;
};

/// A small file of each kind. Formats whose decoders are known to crash are left out: those faults are not
/// ours.
std::vector<Sample> MakeSamples(const std::string& folder) {
    using Depth = host::Depth;
    static constexpr struct {
        const char* ending;
        Depth depth;
        int channels;
    } kinds[] = {{"png", Depth::Int8, 4},  {"png", Depth::Int16, 1}, {"jpg", Depth::Int8, 3},
                 {"tif", Depth::Int8, 3},  {"tif", Depth::Float, 4}, {"exr", Depth::Half, 4},
                 {"exr", Depth::Float, 3}, {"tga", Depth::Int8, 4},  {"bmp", Depth::Int8, 3},
                 {"ppm", Depth::Int8, 3},  {"hdr", Depth::Float, 3}};
    std::vector<Sample> samples;
    for (const auto& kind : kinds) {
        const std::string path = folder + "/" + std::to_string(samples.size()) + "." + kind.ending;
        const Picture picture = test::MakeNoise(9, 7, kind.depth, kind.channels);
        WritePicture(path, *picture.image, picture, [](const std::string&) {});
        std::ifstream file(path, std::ios::binary);
        samples.push_back({path, {std::istreambuf_iterator<char>(file), {}}});
    }
    return samples;
}

/// A damaged file is either a picture that can be written again, or an error of its frame.
void ReadOne(const std::vector<Sample>& samples, Chance& chance) {
    using namespace std::string_view_literals;
    const Sample& sample = samples[static_cast<std::size_t>(chance.Below(static_cast<int>(samples.size())))];
    {
        std::ofstream file(sample.path, std::ios::binary);
        file << chance.Damaged(sample.bytes, "\0\x01\x7f\x80\xff"sv);
    }
    ReadOptions options;
    options.limits.maxPixels = 1 << 20;
    options.premultiply = chance.Below(2) == 0;
    try {
        const Picture picture = ReadPicture(sample.path, options);
        Require(picture.image && picture.channels >= 1 && picture.channels <= 4, "a picture of no sense");
        Require(static_cast<long long>(picture.image->Width) * picture.image->Height <=
                    options.limits.maxPixels,
                "more pixels than allowed");
        WritePicture(sample.path + ".copy.exr", *picture.image, picture, [](const std::string&) {});
    } catch (const FrameError&) {
        // as expected
    }
}

} // namespace

Round Pictures(const std::string& folder) {
    OIIO::attribute("threads", 1); // starting some takes longer than reading such files
    OIIO::attribute("exr_threads", -1);
    return [samples = MakeSamples(folder)](Chance& chance) { ReadOne(samples, chance); };
}

} // namespace fuzz
