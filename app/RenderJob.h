#pragma once

#include "app/Console.h"
#include "app/Interrupt.h"
#include "media/FilePattern.h"
#include "media/Stack.h"

#include <chrono>
#include <functional>
#include <future>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace app {

/// Renders frames of a stack into files. While a frame is rendered, the one before it is written.
class RenderJob {
public:
    RenderJob(media::Stack& stack, Console& console, std::string output, bool skipExisting,
              media::WriteOptions options = {});

    /// Renders all frames, whatever becomes of single ones, and lists the failures on standard error. The
    /// program's exit code.
    int Run(const std::vector<int>& frames);

private:
    using Clock = std::chrono::steady_clock;

    /// A frame on its way to the disk.
    struct Writing {
        int frame;
        std::string path;
        Clock::time_point start;
        std::future<void> done;
    };

    void RunFrame(int frame);
    void RenderFrame(int frame, const std::string& path);
    /// Waits for the frame that is being written, if there is one.
    void FinishWriting();
    /// Does a part of the work on a frame; a failure is noted and told.
    void Attempt(int frame, const std::string& path, const std::function<void()>& work);

    media::Stack& stack_;
    Console& console_;
    const media::FilePattern output_;
    const bool skipExisting_;
    const media::WriteOptions options_;
    std::optional<Writing> writing_;
    int written_ = 0;
    std::vector<std::pair<int, std::string>> failures_;
};

} // namespace app
