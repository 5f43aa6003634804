#include "app/RenderJob.h"

#include "media/CheckedInput.h"
#include "media/Decoding.h"
#include "media/Errors.h"
#include "media/Words.h"

#include <cstdio>
#include <exception>
#include <limits>
#include <new>

namespace app {

using namespace media;

namespace {

/// Whether a file is there that can be opened as a picture.
bool IsWhole(const std::string& path) {
    try {
        const Decoding quiet(path);
        CheckedInput(path, {std::numeric_limits<int>::max(), {}}).Spec(0);
        return true;
    } catch (const FrameError&) {
        return false;
    }
}

} // namespace

RenderJob::RenderJob(Stack& stack, Console& console, std::string output, bool skipExisting,
                     WriteOptions options)
    : stack_(stack)
    , console_(console)
    , output_(std::move(output))
    , skipExisting_(skipExisting)
    , options_(std::move(options)) {}

void RenderJob::Attempt(int frame, const std::string& path, const std::function<void()>& work) {
    std::string why;
    try {
        work();
        return;
    } catch (const FrameError& error) {
        why = error.what();
    } catch (const std::bad_alloc&) {
        why = path + ": there is not enough memory for this frame";
    } catch (const std::exception& error) {
        why = path + ": " + error.what(); // of a picture library
    }
    if (writing_ && writing_->frame != frame) FinishWriting(); // frames are told in their order
    failures_.emplace_back(frame, why);
    console_.Failed(frame, why);
}

void RenderJob::FinishWriting() {
    if (!writing_) return;
    Attempt(writing_->frame, writing_->path, [this] {
        writing_->done.get();
        ++written_;
        console_.Rendered(writing_->frame,
                          std::chrono::duration<double>(Clock::now() - writing_->start).count());
    });
    writing_.reset();
}

void RenderJob::RenderFrame(int frame, const std::string& path) {
    const Clock::time_point start = Clock::now();
    std::shared_ptr<host::Image> image = stack_.Render(frame);
    if (!image) return; // aborted: the frame in work is dropped
    FinishWriting();
    writing_ = {
        frame, path, start, std::async(std::launch::async, [=, this, like = stack_.MainClip().At(frame)] {
            WritePicture(
                path, *image, like, [this](const std::string& text) { console_.Warn(text); }, options_);
        })};
}

void RenderJob::RunFrame(int frame) {
    const std::string path = output_.At(frame);
    if (skipExisting_ && IsWhole(path)) {
        FinishWriting();
        ++written_;
        console_.Skipped(frame);
        return;
    }
    Attempt(frame, path, [&] { RenderFrame(frame, path); });
}

int RenderJob::Run(const std::vector<int>& frames) {
    const Interrupt interrupt(stack_.AbortFlags());
    console_.Start();
    for (int frame : frames) {
        if (interrupt.ExitCode()) break;
        RunFrame(frame);
    }
    FinishWriting();
    const int missing = static_cast<int>(frames.size()) - written_;
    console_.Finish(missing, output_.Path());
    for (const auto& [frame, why] : failures_)
        std::fprintf(stderr, "k7: frame %d: %s\n", frame, OneLine(why).c_str());
    if (interrupt.ExitCode())
        std::fprintf(stderr, "k7: stopped; %d of %zu frames are written\n", written_, frames.size());
    return interrupt.ExitCode() ? interrupt.ExitCode() : missing ? 1 : 0;
}

} // namespace app
