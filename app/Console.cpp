#include "app/Console.h"

#include "media/Words.h"

#include <algorithm>
#include <ctime>
#include <stdexcept>

#include <unistd.h>

namespace app {

using namespace media;
namespace {

std::string TimeOfDay() {
    const std::time_t now = std::time(nullptr);
    std::tm local = {};
    localtime_r(&now, &local);
    char text[16];
    std::strftime(text, sizeof text, "%H:%M:%S", &local);
    return text;
}

/// A farm reads the lines as they come.
void Say(const std::string& line) {
    std::printf("%s\n", line.c_str());
    std::fflush(stdout);
}

} // namespace

Console::Style Console::StyleFor(bool quiet) {
    if (quiet) return Style::Quiet;
    return ::isatty(STDERR_FILENO) ? Style::Bar : Style::Lines;
}

Console::Console(Style style, int total, int first, int last)
    : screen_(::fdopen(::dup(STDERR_FILENO), "w"))
    , style_(style)
    , total_(total)
    , first_(first)
    , last_(last) {
    if (!screen_) throw std::runtime_error("standard error cannot be written");
    std::setvbuf(screen_, nullptr, _IONBF, 0);
}

Console::~Console() {
    std::fclose(screen_);
}

void Console::Start() {
    const std::lock_guard lock(mutex_);
    start_ = Clock::now();
    if (style_ == Style::Lines)
        Say("Render started at " + TimeOfDay() + " (Range: " + std::to_string(first_) + " to " +
            std::to_string(last_) + ")");
    DrawBar();
}

void Console::Done(const std::string& line) {
    const std::lock_guard lock(mutex_);
    ++done_;
    if (style_ == Style::Lines) Say(line);
    DrawBar();
}

void Console::Rendered(int frame, double seconds) {
    char line[96];
    std::snprintf(line, sizeof line, "Rendered frame %d (%d of %d), took %.2f secs", frame, done_ + 1, total_,
                  seconds);
    Done(line);
}

void Console::Skipped(int frame) {
    Done("Skipped frame " + std::to_string(frame) + " (" + std::to_string(done_ + 1) + " of " +
         std::to_string(total_) + "), it is there");
}

void Console::Failed(int frame, const std::string& why) {
    Done("Frame " + std::to_string(frame) + " failed: " + why);
}

void Console::Finish(int missing) {
    const std::lock_guard lock(mutex_);
    ClearBar();
    if (style_ != Style::Lines) return;
    if (missing)
        Say("Render failed: " + std::to_string(missing) + " of " + std::to_string(total_) + " frames");
    else
        Say("Render completed successfully at " + TimeOfDay());
}

void Console::Warn(const std::string& text) {
    const std::lock_guard lock(mutex_);
    if (!warned_.insert(text).second) return;
    ClearBar();
    std::fprintf(screen_, "k7: warning: %s\n", OneLine(text).c_str());
    DrawBar();
}

void Console::DrawBar() const {
    if (style_ != Style::Bar) return;
    constexpr int kWidth = 30;
    const double seconds = std::chrono::duration<double>(Clock::now() - start_).count();
    const double speed = seconds > 0 ? done_ / seconds : 0;
    const int left = speed > 0 ? static_cast<int>(std::min((total_ - done_) / speed, 359999.0)) : 0;
    const int filled = static_cast<int>(static_cast<long long>(kWidth) * done_ / std::max(total_, 1));
    std::fprintf(screen_, "\r[%s%s] %d of %d frames, %.2f frames/s, %d:%02d:%02d left\x1b[K",
                 std::string(static_cast<std::size_t>(filled), '#').c_str(),
                 std::string(static_cast<std::size_t>(kWidth - filled), '.').c_str(), done_, total_, speed,
                 left / 3600, left / 60 % 60, left % 60);
}

void Console::ClearBar() const {
    if (style_ == Style::Bar) std::fputs("\r\x1b[K", screen_);
}

} // namespace app
