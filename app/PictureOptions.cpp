#include "app/PictureOptions.h"

#include "media/Errors.h"
#include "media/FormatRules.h"
#include "media/Words.h"

namespace app {

using namespace media;

void PictureOptions::AddTo(CLI::App& line, bool writing) {
    constexpr const char* group = "Picture files";
    const auto add = [&](CLI::Option* option) { option->group(group); };
    add(line.add_option("--layer", layer_, "NAME: the layer of an OpenEXR file to work on"));
    add(line.add_flag("--premultiply", premultiply_,
                      "Multiply straight colours by alpha before the tool, and divide them after it"));
    add(line.add_option("--max-pixels", maxPixels_, "Largest picture to read")
            ->check(CLI::PositiveNumber)
            ->capture_default_str());
    add(line.add_option("--formats", formats_, "Read only these formats, comma-separated: png,openexr"));
    CLI::Option* words = line.add_flag("--words", words_, "Work in 15-bit words, whatever the picture is");
    CLI::Option* floats = line.add_flag("--float", floats_, "Work in floats, whatever the picture is");
    add(words->excludes(floats));
    add(floats);
    if (!writing) return;
    add(line.add_option("--proxy", proxy_, "2 or 4: render at half or quarter size, with the same look")
            ->check(CLI::IsMember({2, 4})));
    add(line.add_option("--depth", depth_, "Depth of the files: 8, 10, 12, 16, half or float"));
    add(line.add_option("--compression", compression_, "NAME[:LEVEL] of a compression that the format has"));
    add(line.add_option("--quality", quality_, "1 to 100, for lossy formats")->check(CLI::Range(1, 100)));
}

ReadOptions PictureOptions::Reading() const {
    ReadOptions options;
    options.layer = layer_;
    options.premultiply = premultiply_;
    options.proxy = proxy_;
    options.limits.maxPixels = maxPixels_;
    if (!formats_.empty()) options.limits.formats = Split(formats_, ',');
    if (!depth_.empty()) options.atLeast = ParseDepth(depth_).depth;
    return options;
}

WorkingDepth PictureOptions::Working() const {
    return words_ ? WorkingDepth::Words : floats_ ? WorkingDepth::Floats : WorkingDepth::OfPicture;
}

WriteOptions PictureOptions::Writing() const {
    WriteOptions options;
    if (!depth_.empty()) options.depth = ParseDepth(depth_);
    options.compression = compression_;
    options.quality = quality_;
    return options;
}

} // namespace app
