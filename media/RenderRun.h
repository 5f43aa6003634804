#pragma once

#include "media/FilePattern.h"
#include "media/Stack.h"

#include <atomic>
#include <chrono>
#include <condition_variable>
#include <cstdint>
#include <map>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

namespace media {

/// Listens to what becomes of the frames of a run. Calls come one at a time, in the order of the frames.
class RunListener {
public:
    virtual ~RunListener() = default;
    virtual void Rendered(int frame, double seconds) = 0;
    virtual void Skipped(int frame) = 0;
    virtual void Failed(int frame, const std::string& why) = 0;
    virtual void Warned(const std::string& text) = 0;
};

struct RunOptions {
    WriteOptions writing;
    bool skipExisting = false; ///< skip frames whose files exist and can be opened
    bool stopAtError = false;  ///< start no frame after one has failed
    int shift = 0;             ///< file n holds the tools' frame n + shift
    int threads = 0;           ///< at most this many work; 0: those of the machine
    int jobs = 0;              ///< frames in progress at once; 0: what threads and memory allow
    std::uint64_t memory = 0;  ///< bytes that the jobs may take; 0: half of the machine's
};

/// Seconds that all jobs together spent.
struct RunTimes {
    double reading = 0, computing = 0, writing = 0;
};

/// Renders frames of a stack into files, several at once. The files are the same as with one frame at a time:
/// each job has tools of its own with the same settings. If frames of a tool write controls, the frames are
/// computed in order, and only reading and writing run in parallel.
class RenderRun {
public:
    /// `stack` is linked and set. Its clips are shared by all jobs.
    RenderRun(Stack& stack, FilePattern output, RunOptions options, const std::vector<int>& frames,
              RunListener& listener);

    /// Renders all frames, whatever becomes of single ones.
    void Run();

    /// Raising them all stops the run; complete files stay.
    std::vector<std::atomic<bool>*> StopFlags();

    int Jobs() const { return jobs_; }
    /// The estimated memory of a job, in bytes.
    std::uint64_t BytesPerJob() const { return bytesPerJob_; }
    /// The number of frames that exist at the end.
    int Written() const { return written_; }
    const std::vector<std::pair<int, std::string>>& Failures() const { return failures_; }
    const RunTimes& Times() const { return times_; }

private:
    using Clock = std::chrono::steady_clock;

    /// What became of a frame, until its turn to be reported.
    struct Outcome {
        enum class Kind { Rendered, Skipped, Failed, Stopped } kind = Kind::Stopped;
        double seconds = 0;
        std::string why;
        std::vector<std::string> warnings;
    };

    struct Job {
        Stack* stack = nullptr;
        std::unique_ptr<Stack> own; ///< null if it works on the run's stack
    };

    void ChooseJobs();
    void MakeJobs();
    void Work(Job& job);
    Outcome RunFrame(Job& job, std::size_t index);
    void RenderFrame(Job& job, std::size_t index, const std::string& path, Outcome& outcome);
    std::shared_ptr<host::Image> Compute(Job& job, std::size_t index, int frame, Outcome& outcome);
    void PassTurn(std::size_t index);
    void Tell(std::size_t index, Outcome outcome);
    void HearMessages();

    Stack& stack_;
    const FilePattern output_;
    const RunOptions options_;
    const std::vector<int>& frames_;
    RunListener& listener_;
    const bool inOrder_; ///< frames are computed one at a time, on the stack itself
    int threads_ = 1;
    int jobs_ = 1;
    std::uint64_t bytesPerJob_ = 0;
    std::vector<Job> workers_;
    std::atomic<std::size_t> next_ = 0;
    std::atomic<bool> stop_ = false;

    std::mutex mutex_; ///< guards all below
    std::condition_variable turn_;
    std::size_t computed_ = 0; ///< frames whose turn to be computed is over
    std::map<const host::FusionDoc*, std::vector<std::string>> messages_; ///< of the tools of each stack
    std::map<std::size_t, Outcome> untold_;
    std::size_t told_ = 0;
    int written_ = 0;
    std::vector<std::pair<int, std::string>> failures_;
    RunTimes times_;
};

} // namespace media
