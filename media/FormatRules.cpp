#include "media/FormatRules.h"

#include "media/Errors.h"
#include "media/Words.h"

#include <algorithm>

namespace media {
namespace {

using host::Depth;
using OIIO::ImageSpec;

/// The options of a format. Lists are separated by blanks.
struct FormatRule {
    const char* format;
    bool straight;            ///< its alpha is never multiplied into the colours
    const char* depths;       ///< that can be chosen
    const char* compressions; ///< names; those with a colon take a level
    const char* quality;      ///< the attribute of the encoder's quality; empty if it has none
};
constexpr FormatRule kRules[] = {
    {"openexr", false, "half float", "none rle zips: zip: piz pxr24 b44 b44a dwaa: dwab:", ""},
    {"tiff", false, "8 10 12 16 float", "none lzw zip: packbits", ""},
    {"png", true, "8 16", "zip:", ""},
    {"jpeg", false, "8", "", "CompressionQuality"},
    {"webp", true, "8", "lossy lossless", "CompressionQuality"},
    {"heif", true, "8", "", "CompressionQuality"},
    {"dpx", false, "8 10 12 16", "", ""},
    {"targa", true, "8", "none rle", ""},
    {"rla", false, "8 16", "", ""},
    {"bmp", true, "8", "", ""},
    {"ico", true, "8", "", ""},
    {"gif", true, "8", "", ""},
    {"psd", true, "", "", ""},
    {"dds", true, "", "", ""},
    {"pnm", false, "8", "", ""},
    {"hdr", false, "float", "", ""},
    {"fits", false, "8 float", "", ""},
    {"zfile", false, "float", "", ""},
};
constexpr FormatRule kPlain = {"", false, "", "", ""};

/// The encoders of these fail, or write unreadable files or, for some sizes, a different picture.
constexpr const char* kUnwritable[] = {"sgi", "jpeg2000", "iff", "null", "term"};

const FormatRule& RuleOf(const std::string& format) {
    const auto* rule =
        std::find_if(std::begin(kRules), std::end(kRules), [&](const auto& r) { return format == r.format; });
    return rule == std::end(kRules) ? kPlain : *rule;
}

/// Splits NAME or NAME:LEVEL.
struct Compression {
    explicit Compression(const std::string& text)
        : name(text.substr(0, text.find(':')))
        , hasLevel(text.find(':') != std::string::npos)
        , level(hasLevel ? ParseInteger(text.substr(name.size() + 1)) : std::nullopt) {}

    std::string name;
    bool hasLevel;
    std::optional<int> level;
};

void CheckCompression(const FormatRule& rule, const std::string& format, const std::string& text) {
    const Compression asked(text);
    std::string known;
    for (const std::string& word : Split(rule.compressions, ' ')) {
        if (word.empty()) continue;
        const bool takesLevel = word.back() == ':';
        const std::string name = takesLevel ? word.substr(0, word.size() - 1) : word;
        known += (known.empty() ? "" : ", ") + name + (takesLevel ? "[:LEVEL]" : "");
        if (name != asked.name) continue;
        if (asked.hasLevel && (!takesLevel || asked.level.value_or(-1) < 0))
            throw UsageError("--compression '" + text + "': " + name +
                             (takesLevel ? " takes a whole number as its level" : " has no level"));
        return;
    }
    throw UsageError("--compression '" + text + "': " + format + " files support " +
                     (known.empty() ? "no choice of compression" : known));
}

} // namespace

bool HasParts(const std::string& format) {
    return format == "openexr";
}

bool HoldsStraightAlpha(const std::string& format, const ImageSpec& spec) {
    return spec.get_int_attribute("oiio:UnassociatedAlpha") || RuleOf(format).straight;
}

bool WritesStraightAlpha(const std::string& format, const Picture& like) {
    return format == "tiff" ? like.straight : RuleOf(format).straight;
}

int FewerBits(const ImageSpec& spec) {
    const int bits = spec.get_int_attribute("oiio:BitsPerSample");
    return bits > 0 && bits < 8 * static_cast<int>(spec.format.size()) && !spec.format.is_floating_point()
               ? bits
               : 0;
}

void CheckOptions(const std::string& format, const WriteOptions& options) {
    if (std::find(std::begin(kUnwritable), std::end(kUnwritable), format) != std::end(kUnwritable))
        throw UsageError(format + " files can be read, but not written");
    const FormatRule& rule = RuleOf(format);
    if (!options.compression.empty()) CheckCompression(rule, format, options.compression);
    if (options.quality && !*rule.quality)
        throw UsageError("--quality: " + format + " files have no quality to choose");
    if (options.depth) {
        const std::vector<std::string> held = Split(rule.depths, ' ');
        const auto same = [&](const std::string& word) {
            return !word.empty() && ParseDepth(word) == *options.depth;
        };
        if (std::none_of(held.begin(), held.end(), same))
            throw UsageError("--depth: " + format + " files cannot hold " + Describe(*options.depth) +
                             " pictures, only " + (*rule.depths ? rule.depths : "those of their own depth"));
    }
}

bool Breaks(const std::string& format, const ImageSpec& spec) {
    // This ends in a failed assertion.
    return format == "ico" && (spec.nchannels != 4 || spec.format != OIIO::TypeDesc::UINT8);
}

void SetCompression(ImageSpec& spec, const std::string& format, const WriteOptions& options,
                    const Picture& like) {
    const FormatRule& rule = RuleOf(format);
    if (!options.compression.empty()) {
        const Compression asked(options.compression);
        if (format == "png")
            spec.attribute("png:compressionLevel", asked.level.value_or(6));
        else if (format == "tiff" && asked.level)
            spec.attribute("tiff:zipquality", *asked.level);
        spec.attribute("compression", format == "tiff" ? asked.name : options.compression);
    }
    const int quality = options.quality.value_or(like.format == format ? like.quality : 0);
    if (*rule.quality && quality > 0) spec.attribute(rule.quality, quality);
}

StoredDepth ParseDepth(const std::string& text) {
    static const std::pair<const char*, StoredDepth> depths[] = {
        {"8", {Depth::Int8}},   {"10", {Depth::Int16, 10}}, {"12", {Depth::Int16, 12}},
        {"16", {Depth::Int16}}, {"half", {Depth::Half}},    {"float", {Depth::Float}}};
    for (const auto& [word, depth] : depths)
        if (SameWord(text, word)) return depth;
    throw UsageError("--depth takes 8, 10, 12, 16, half or float, not '" + text + "'");
}

std::string Describe(const StoredDepth& depth) {
    constexpr const char* depths[] = {"8-bit", "16-bit", "half float", "32-bit float"};
    if (depth.bits > 0) return std::to_string(depth.bits) + "-bit";
    return depths[static_cast<int>(depth.depth)];
}

} // namespace media
