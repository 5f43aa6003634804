#include "media/FrameRange.h"

#include "media/Errors.h"
#include "media/Words.h"

#include <algorithm>
#include <optional>

namespace media {
namespace {

/// More frames than any clip has; a typing error should not exhaust the memory.
constexpr long long kMostFrames = 10'000'000;

std::optional<FrameSpan> TrySpan(const std::string& text) {
    // The dash that separates is the first one after a digit; one before the digits is a sign.
    const std::size_t digit = text.find_first_of("0123456789");
    const std::size_t dash = digit == std::string::npos ? digit : text.find('-', digit);
    if (dash == std::string::npos) {
        const std::optional<int> frame = ParseInteger(text);
        return frame ? std::optional(FrameSpan{*frame, *frame}) : std::nullopt;
    }
    const std::optional<int> first = ParseInteger(text.substr(0, dash)),
                             last = ParseInteger(text.substr(dash + 1));
    if (!first || !last || *first > *last) return std::nullopt;
    return FrameSpan{*first, *last};
}

struct Stretch {
    FrameSpan span;
    int step = 1;

    bool Names(long long frame) const {
        return frame >= span.first && frame <= span.last && (frame - span.first) % step == 0;
    }
};

Stretch ParseStretch(const std::string& text) {
    const std::size_t cross = text.find('x');
    const std::optional<FrameSpan> span = TrySpan(text.substr(0, cross));
    const std::optional<int> step = cross == std::string::npos ? 1 : ParseInteger(text.substr(cross + 1));
    if (!span || !step || *step < 1)
        throw UsageError("'" + text + "' names no frames: write 7, 1-100 or 1-100x5, comma-separated");
    return {*span, *step};
}

} // namespace

std::vector<int> ParseFrames(const std::string& text) {
    std::vector<int> frames;
    std::vector<Stretch> told;
    long long room = kMostFrames;
    for (const std::string& piece : Split(text, ',')) {
        const Stretch stretch = ParseStretch(piece);
        room -= (static_cast<long long>(stretch.span.last) - stretch.span.first) / stretch.step + 1;
        if (room < 0) throw UsageError("'" + OneLine(text) + "' names more than ten million frames");
        for (long long frame = stretch.span.first; frame <= stretch.span.last; frame += stretch.step)
            if (std::none_of(told.begin(), told.end(), [&](const Stretch& s) { return s.Names(frame); }))
                frames.push_back(static_cast<int>(frame));
        told.push_back(stretch);
    }
    return frames;
}

FrameSpan ParseSpan(const std::string& text) {
    if (const std::optional<FrameSpan> span = TrySpan(text)) return *span;
    throw UsageError("'" + text + "' is not a range of frames: write A-B, the first and the last");
}

std::string Describe(const FrameSpan& span) {
    const std::string first = std::to_string(span.first);
    return span.first == span.last ? first : first + "-" + std::to_string(span.last);
}

} // namespace media
