#pragma once

#include "media/RenderRun.h"

#include <chrono>
#include <cstdio>
#include <mutex>
#include <set>
#include <string>

namespace app {

/// What the user of a render sees: a progress bar where standard error is a terminal; elsewhere lines on
/// standard output in the form that render farms parse. Warnings and errors go to standard error.
/// Thread-safe.
class Console : public media::RunListener {
public:
    enum class Style {
        Quiet,
        Lines,
        Bar,
        OpenJd, ///< the lines of Open Job Description
    };

    /// The style for the current terminal.
    static Style StyleFor(bool quiet);

    /// A run of `total` frames with numbers from `first` to `last`.
    Console(Style style, int total, int first, int last);
    ~Console() override;
    Console(const Console&) = delete;
    Console& operator=(const Console&) = delete;

    void Start();
    void Rendered(int frame, double seconds) override;
    void Skipped(int frame) override;
    void Failed(int frame, const std::string& why) override;
    void Warned(const std::string& text) override { Warn(text); }
    /// The summary: how many frames are missing from the whole run, and where the others are.
    void Finish(int missing, const std::string& where);

    /// Also writes the farm's lines and the warnings to a file, with times. Throws std::runtime_error.
    void LogTo(const std::string& path);

    /// Tells a user at a terminal what may be surprising.
    void Hint(const std::string& text);
    /// Prints each text once per run.
    void Warn(const std::string& text);

private:
    void Done(const std::string& line);
    void Say(const std::string& line);
    void Log(const std::string& line);
    void DrawBar() const;
    void ClearBar() const;

    using Clock = std::chrono::steady_clock;

    std::FILE* const screen_; ///< standard error as it was at the start, whatever libraries redirect
    const Style style_;
    const int total_, first_, last_;
    std::FILE* log_ = nullptr;
    int done_ = 0;
    Clock::time_point start_ = Clock::now();
    std::set<std::string> warned_;
    std::mutex mutex_;
};

} // namespace app
