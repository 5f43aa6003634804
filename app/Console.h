#pragma once

#include "media/RenderRun.h"

#include <chrono>
#include <cstdio>
#include <mutex>
#include <set>
#include <string>

namespace app {

/// What the user of a render sees: a progress bar where standard error is a terminal; elsewhere lines on
/// standard output as render farms know them. Warnings and errors go to standard error. Any thread may call.
class Console : public media::RunListener {
public:
    enum class Style {
        Quiet,
        Lines,
        Bar,
        OpenJd, ///< the lines of Open Job Description
    };

    /// The style for the terminal at hand.
    static Style StyleFor(bool quiet);

    /// A run of `total` frames, of which the smallest and largest number are `first` and `last`.
    Console(Style style, int total, int first, int last);
    ~Console() override;
    Console(const Console&) = delete;
    Console& operator=(const Console&) = delete;

    void Start();
    void Rendered(int frame, double seconds) override;
    void Skipped(int frame) override;
    void Failed(int frame, const std::string& why) override;
    void Warned(const std::string& text) override { Warn(text); }
    /// The last word: how many frames are missing from the whole run, and where the others lie.
    void Finish(int missing, const std::string& where);

    /// Writes the farm's lines and the warnings into a file too, with times. Throws std::runtime_error.
    void LogTo(const std::string& path);

    /// Tells a user at a terminal what may be a surprise.
    void Hint(const std::string& text);
    /// Tells each text once a run.
    void Warn(const std::string& text);

private:
    void Done(const std::string& line);
    void Say(const std::string& line);
    void Log(const std::string& line);
    void DrawBar() const;
    void ClearBar() const;

    using Clock = std::chrono::steady_clock;

    std::FILE* const screen_; ///< standard error as it was at the start, whatever libraries do to it
    const Style style_;
    const int total_, first_, last_;
    std::FILE* log_ = nullptr;
    int done_ = 0;
    Clock::time_point start_ = Clock::now();
    std::set<std::string> warned_;
    std::mutex mutex_;
};

} // namespace app
