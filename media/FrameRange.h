#pragma once

#include <string>
#include <vector>

namespace media {

/// First and last frame of a clip or a run.
struct FrameSpan {
    int first = 0;
    int last = 0;
};

/// The frames that a text names: `7`, `1-100`, `1-100x5`, comma-separated. Each frame comes once, in the
/// order given. Throws UsageError.
std::vector<int> ParseFrames(const std::string& text);

/// `A-B`. Throws UsageError.
FrameSpan ParseSpan(const std::string& text);

/// `first-last`, or one number.
std::string Describe(const FrameSpan& span);

} // namespace media
