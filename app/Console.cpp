#include "app/Console.h"

#include "media/Words.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
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

std::string Duration(double seconds) {
    const auto whole = static_cast<int>(std::min(seconds, 359999.0));
    char text[32];
    std::snprintf(text, sizeof text, "%d:%02d:%02d", whole / 3600, whole / 60 % 60, whole % 60);
    return text;
}

} // namespace

/// Farms read the lines as they come.
void Console::Say(const std::string& line) {
    Log(line);
    if (style_ == Style::OpenJd) std::printf("openjd_status: ");
    if (style_ != Style::Lines && style_ != Style::OpenJd) return;
    std::printf("%s\n", line.c_str());
    std::fflush(stdout);
}

void Console::Log(const std::string& line) {
    if (!log_) return;
    std::fprintf(log_, "%s %s\n", TimeOfDay().c_str(), line.c_str());
    std::fflush(log_);
}

void Console::LogTo(const std::string& path) {
    log_ = std::fopen(path.c_str(), "we");
    if (!log_) throw std::runtime_error(path + ": the log cannot be written: " + std::strerror(errno));
}

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
    if (log_) std::fclose(log_);
}

void Console::Start() {
    const std::lock_guard lock(mutex_);
    start_ = Clock::now();
    Say("Render started at " + TimeOfDay() + " (Range: " + std::to_string(first_) + " to " +
        std::to_string(last_) + ")");
    DrawBar();
}

/// The lock is held, since the line counts.
void Console::Done(const std::string& line) {
    ++done_;
    Say(line);
    if (style_ == Style::OpenJd) {
        std::printf("openjd_progress: %.1f\n", 100.0 * done_ / std::max(total_, 1));
        std::fflush(stdout);
    }
    DrawBar();
}

void Console::Rendered(int frame, double seconds) {
    const std::lock_guard lock(mutex_);
    char line[96];
    std::snprintf(line, sizeof line, "Rendered frame %d (%d of %d), took %.2f secs", frame, done_ + 1, total_,
                  seconds);
    Done(line);
}

void Console::Skipped(int frame) {
    const std::lock_guard lock(mutex_);
    Done("Skipped frame " + std::to_string(frame) + " (" + std::to_string(done_ + 1) + " of " +
         std::to_string(total_) + "), it exists");
}

void Console::Failed(int frame, const std::string& why) {
    const std::lock_guard lock(mutex_);
    Done("Frame " + std::to_string(frame) + " failed: " + OneLine(why));
}

void Console::Finish(int missing, const std::string& where) {
    const std::lock_guard lock(mutex_);
    ClearBar();
    if (style_ == Style::Bar) {
        const double seconds = std::chrono::duration<double>(Clock::now() - start_).count();
        std::fprintf(screen_, "k7: %d of %d frames in %s: %s\n", total_ - missing, total_,
                     Duration(seconds).c_str(), OneLine(where).c_str());
    }
    if (missing && style_ == Style::OpenJd)
        std::printf("openjd_fail: %d of %d frames are missing\n", missing, total_);
    if (missing)
        Say("Render failed: " + std::to_string(missing) + " of " + std::to_string(total_) + " frames");
    else
        Say("Render completed successfully at " + TimeOfDay());
}

void Console::Warn(const std::string& text) {
    const std::lock_guard lock(mutex_);
    if (!warned_.insert(text).second) return;
    ClearBar();
    Log("Warning: " + OneLine(text));
    std::fprintf(screen_, "k7: warning: %s\n", OneLine(text).c_str());
    DrawBar();
}

void Console::Hint(const std::string& text) {
    if (style_ == Style::Bar) std::fprintf(screen_, "k7: hint: %s\n", OneLine(text).c_str());
}

void Console::DrawBar() const {
    if (style_ != Style::Bar) return;
    constexpr int kWidth = 30;
    const double seconds = std::chrono::duration<double>(Clock::now() - start_).count();
    const double speed = seconds > 0 ? done_ / seconds : 0;
    const double left = speed > 0 ? (total_ - done_) / speed : 0;
    const int filled = static_cast<int>(static_cast<long long>(kWidth) * done_ / std::max(total_, 1));
    std::fprintf(screen_, "\r[%s%s] %d of %d frames, %.2f frames/s, %s left\x1b[K",
                 std::string(static_cast<std::size_t>(filled), '#').c_str(),
                 std::string(static_cast<std::size_t>(kWidth - filled), '.').c_str(), done_, total_, speed,
                 Duration(left).c_str());
}

void Console::ClearBar() const {
    if (style_ == Style::Bar) std::fputs("\r\x1b[K", screen_);
}

} // namespace app
