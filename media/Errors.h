#pragma once

#include <stdexcept>
#include <string>

namespace media {

/// The command was wrong: one line that names the wrong word. k7 ends with 2.
struct UsageError : std::runtime_error {
    using std::runtime_error::runtime_error;
};

/// A frame cannot be produced: one line that says why. The frame counts as failed and k7 ends with 1.
struct FrameError : std::runtime_error {
    using std::runtime_error::runtime_error;
};

} // namespace media
