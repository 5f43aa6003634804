#pragma once

#include "media/PictureFile.h"
#include "media/Stack.h"

#include <CLI/CLI.hpp>

#include <optional>
#include <string>

namespace app {

/// The options of a command that say how picture files are read and written.
class PictureOptions {
public:
    /// Adds them to a command; those of writing only if it writes picture files.
    void AddTo(CLI::App& line, bool writing);

    // What was asked for. Throw UsageError.
    media::ReadOptions Reading() const;
    media::WriteOptions Writing() const;
    media::WorkingDepth Working() const;
    /// What the sides of all pictures are divided by.
    int Proxy() const { return proxy_; }

private:
    std::string layer_, formats_, depth_, compression_;
    long long maxPixels_ = media::ReadLimits().maxPixels;
    std::optional<int> quality_;
    int proxy_ = 1;
    bool premultiply_ = false, words_ = false, floats_ = false;
};

} // namespace app
