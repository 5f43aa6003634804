#include "media/RenderRun.h"

#include "host/Application.h"
#include "host/Tags.h"
#include "media/CheckedInput.h"
#include "media/Decoding.h"
#include "media/Errors.h"

#include <OpenImageIO/imageio.h>

#include <algorithm>
#include <exception>
#include <limits>
#include <new>
#include <thread>

#include <unistd.h>

namespace media {
namespace {

/// Whether a file exists that can be opened as a picture.
bool IsWhole(const std::string& path) {
    try {
        const Decoding quiet(path);
        CheckedInput(path, {std::numeric_limits<int>::max(), {}}).Spec(0);
        return true;
    } catch (const FrameError&) {
        return false;
    }
}

bool HasClass(const Stack& stack, host::Tag tag) {
    for (std::size_t i = 0; i < stack.Size(); ++i)
        if (stack.Op(i).Class()->HasAttr(tag)) return true;
    return false;
}

std::uint64_t MachineMemory() {
    return static_cast<std::uint64_t>(::sysconf(_SC_PHYS_PAGES)) *
           static_cast<std::uint64_t>(::sysconf(_SC_PAGE_SIZE));
}

/// Adds its lifetime, in seconds, to a sum.
class Timed {
public:
    Timed(double& sum, std::mutex& mutex) : sum_(sum), mutex_(mutex) {}
    ~Timed() {
        const std::chrono::duration<double> passed = std::chrono::steady_clock::now() - start_;
        const std::lock_guard lock(mutex_);
        sum_ += passed.count();
    }
    Timed(const Timed&) = delete;
    Timed& operator=(const Timed&) = delete;

private:
    double& sum_;
    std::mutex& mutex_;
    const std::chrono::steady_clock::time_point start_ = std::chrono::steady_clock::now();
};

} // namespace

RenderRun::RenderRun(Stack& stack, FilePattern output, RunOptions options, const std::vector<int>& frames,
                     RunListener& listener)
    : stack_(stack)
    , output_(std::move(output))
    , options_(std::move(options))
    , frames_(frames)
    , listener_(listener)
    , inOrder_(HasClass(stack, host::kTagRegWritesControls)) {
    ChooseJobs();
    MakeJobs();
}

/// As many frames at once as threads, memory and the number of frames allow.
void RenderRun::ChooseJobs() {
    threads_ = options_.threads ? options_.threads
                                : static_cast<int>(std::max(1u, std::thread::hardware_concurrency()));
    try {
        // A picture as it was read, copies of it for the tool, its frame, and the file being encoded.
        const host::Image& picture = *stack_.MainClip().At(frames_.front() + options_.shift).image;
        const auto pixels =
            static_cast<std::uint64_t>(picture.Width) * static_cast<std::uint64_t>(picture.Height);
        bytesPerJob_ = pixels * 16 * (4 + 3 * stack_.Size());
    } catch (const FrameError&) {
        // is reported when the frame is rendered
    }
    const std::uint64_t room = options_.memory ? options_.memory : MachineMemory() / 2;
    const std::uint64_t fit = bytesPerJob_ ? std::max<std::uint64_t>(room / bytesPerJob_, 1) : 1;
    const auto most = std::min<std::uint64_t>({fit, static_cast<std::uint64_t>(threads_), frames_.size()});
    jobs_ = options_.jobs ? options_.jobs : static_cast<int>(most);
}

void RenderRun::MakeJobs() {
    workers_.resize(static_cast<std::size_t>(jobs_));
    for (Job& job : workers_) {
        job.stack = &stack_;
        if (inOrder_ || &job == &workers_.front()) continue;
        job.own = std::make_unique<Stack>(stack_);
        job.stack = job.own.get();
    }
    // Threads that wait in a job work on its frame; the pool has the others. Without a limit the tools of a
    // run in order have all processors while files are written in parallel.
    const bool all = inOrder_ && !options_.threads;
    host::GetApp()->SetPoolThreads(static_cast<unsigned>(std::max(threads_ - (all ? 1 : jobs_), 0)));
    const int forFiles = jobs_ > 1 ? -1 : threads_; // -1: only the caller
    OIIO::attribute("threads", jobs_ > 1 ? 1 : threads_);
    OIIO::attribute("exr_threads", forFiles);
}

std::vector<std::atomic<bool>*> RenderRun::StopFlags() {
    std::vector<std::atomic<bool>*> flags = {&stop_};
    for (const Job& job : workers_)
        for (std::atomic<bool>* flag : job.stack->AbortFlags()) flags.push_back(flag);
    return flags;
}

void RenderRun::HearMessages() {
    host::GetApp()->SetMessageListener([this](const host::Operator& op, const std::string& text) {
        const std::lock_guard lock(mutex_);
        messages_[op.Document].push_back(text);
    });
}

void RenderRun::Run() {
    HearMessages();
    // What tools draw at random once, at their first frame, is that of the run's first frame in every job.
    if (!inOrder_ && HasClass(stack_, host::kTagRegCarriesOver))
        for (const Job& job : workers_)
            if (job.own && !stop_) try {
                    job.stack->Render(frames_.front() + options_.shift);
                } catch (const FrameError&) {
                    // is reported when the first job renders it
                }
    std::vector<std::thread> threads;
    for (Job& job : workers_)
        if (&job != &workers_.front()) threads.emplace_back([&] { Work(job); });
    Work(workers_.front());
    for (std::thread& thread : threads) thread.join();
    host::GetApp()->SetMessageListener({});
}

void RenderRun::Work(Job& job) {
    for (;;) {
        const std::size_t index = next_++;
        if (index >= frames_.size()) return;
        Outcome outcome;
        if (!stop_) outcome = RunFrame(job, index);
        PassTurn(index);
        Tell(index, std::move(outcome));
    }
}

RenderRun::Outcome RenderRun::RunFrame(Job& job, std::size_t index) {
    const Clock::time_point start = Clock::now();
    const std::string path = output_.At(frames_[index]);
    Outcome outcome;
    try {
        if (options_.skipExisting && IsWhole(path))
            outcome.kind = Outcome::Kind::Skipped;
        else
            RenderFrame(job, index, path, outcome);
    } catch (const std::bad_alloc&) {
        outcome = {Outcome::Kind::Failed, 0, path + ": there is not enough memory for this frame", {}};
    } catch (const FrameError& error) {
        outcome = {Outcome::Kind::Failed, 0, error.what(), std::move(outcome.warnings)};
    } catch (const std::exception& error) { // of a picture library
        outcome = {Outcome::Kind::Failed, 0, path + ": " + error.what(), std::move(outcome.warnings)};
    }
    if (outcome.kind == Outcome::Kind::Failed && options_.stopAtError) stop_ = true;
    outcome.seconds = std::chrono::duration<double>(Clock::now() - start).count();
    return outcome;
}

void RenderRun::RenderFrame(Job& job, std::size_t index, const std::string& path, Outcome& outcome) {
    const int frame = frames_[index] + options_.shift;
    Picture like;
    {
        const Timed timed(times_.reading, mutex_);
        like = stack_.MainClip().At(frame);
    }
    const std::shared_ptr<host::Image> image = Compute(job, index, frame, outcome);
    if (!image) return; // stopped: the frame in progress is dropped
    const Timed timed(times_.writing, mutex_);
    WritePicture(
        path, *image, like, [&](const std::string& text) { outcome.warnings.push_back(text); },
        options_.writing);
    outcome.kind = Outcome::Kind::Rendered;
}

std::shared_ptr<host::Image> RenderRun::Compute(Job& job, std::size_t index, int frame, Outcome& outcome) {
    if (inOrder_) {
        std::unique_lock lock(mutex_);
        turn_.wait(lock, [&] { return computed_ == index; });
    }
    struct Over { // also if rendering throws
        ~Over() {
            const std::lock_guard lock(run.mutex_);
            outcome.warnings = std::move(run.messages_[document]);
            run.messages_.erase(document);
            run.computed_ = std::max(run.computed_, index + 1);
            run.turn_.notify_all();
        }
        RenderRun& run;
        const host::FusionDoc* document;
        std::size_t index;
        Outcome& outcome;
    } over{*this, &job.stack->Document(), index, outcome};
    const Timed timed(times_.computing, mutex_);
    return stop_ ? nullptr : job.stack->Render(frame);
}

/// Lets the next frame be computed if this one was not.
void RenderRun::PassTurn(std::size_t index) {
    if (!inOrder_) return;
    std::unique_lock lock(mutex_);
    turn_.wait(lock, [&] { return computed_ >= index; });
    computed_ = std::max(computed_, index + 1);
    turn_.notify_all();
}

/// Reports what became of a frame when all before it have been reported.
void RenderRun::Tell(std::size_t index, Outcome outcome) {
    const std::lock_guard lock(mutex_);
    untold_[index] = std::move(outcome);
    for (; !untold_.empty() && untold_.begin()->first == told_; untold_.erase(untold_.begin()), ++told_) {
        const Outcome& next = untold_.begin()->second;
        const int frame = frames_[told_];
        for (const std::string& text : next.warnings) listener_.Warned(text);
        switch (next.kind) {
        case Outcome::Kind::Rendered:
            ++written_;
            listener_.Rendered(frame, next.seconds);
            break;
        case Outcome::Kind::Skipped:
            ++written_;
            listener_.Skipped(frame);
            break;
        case Outcome::Kind::Failed:
            failures_.emplace_back(frame, next.why);
            listener_.Failed(frame, next.why);
            break;
        case Outcome::Kind::Stopped:
            break;
        }
    }
}

} // namespace media
