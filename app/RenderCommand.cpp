#include "app/Commands.h"
#include "app/Interrupt.h"
#include "app/OutputCheck.h"
#include "app/PictureOptions.h"
#include "app/StackOptions.h"
#include "host/Application.h"
#include "host/Idle.h"
#include "media/Errors.h"
#include "media/PlugIns.h"
#include "media/RenderRun.h"
#include "media/Settings.h"
#include "media/Stack.h"
#include "media/Words.h"

#include <algorithm>
#include <cstdio>
#include <map>

namespace app {

using namespace media;
namespace {

Missing ParseMissing(const std::string& text) {
    static const std::map<std::string, Missing> words = {
        {"error", Missing::Error}, {"hold", Missing::Hold}, {"black", Missing::Black}};
    const auto found = words.find(text);
    if (found == words.end()) throw UsageError("--missing takes error, hold or black, not '" + text + "'");
    return found->second;
}

/// Bytes of `8G`, `512M` or a plain number. Throws UsageError.
std::uint64_t ParseSize(const std::string& text) {
    const std::string units = "kMGT";
    const std::size_t unit = text.empty() ? std::string::npos : units.find(text.back());
    const std::optional<double> number =
        ParseNumber(unit == std::string::npos ? text : text.substr(0, text.size() - 1));
    if (!number || !(*number > 0) || *number > 1e15)
        throw UsageError("'" + text + "' is not a size: write 8G or 512M");
    const int shift = unit == std::string::npos ? 0 : 10 * static_cast<int>(unit + 1);
    return static_cast<std::uint64_t>(*number * static_cast<double>(std::uint64_t{1} << shift));
}

/// Hints at a first frame that does not show the tool's effect: not an error, but seldom what was meant.
void HintAtSurprises(const host::Operator& op, int frame, Console& console) {
    if (host::IsIdle(op, frame))
        console.Hint(PlainName(*op.Class()) + " leaves the picture as it is with these settings");
    if (const host::Input* aid = host::AidShown(op, frame))
        console.Hint(PlainName(*op.Class()) + " shows an aid instead of its effect: see " + aid->Name() +
                     ", as in -s " + KeyOf(*aid) + "=0");
}

/// Warns, before hours of work, of frames that will fail because their picture is missing.
void WarnOfMissing(const Clip& clip, const std::vector<int>& frames, int shift, Console& console) {
    std::vector<FrameSpan> gaps;
    int count = 0;
    for (int frame : frames) {
        if (clip.Has(frame + shift)) continue;
        ++count;
        if (!gaps.empty() && gaps.back().last + 1 == frame + shift)
            ++gaps.back().last;
        else
            gaps.push_back({frame + shift, frame + shift});
    }
    if (gaps.empty() || frames.size() == 1) return;
    constexpr std::size_t kMostNamed = 8;
    std::string text = std::to_string(count) + (count == 1 ? " frame" : " frames") + " of the clip missing:";
    for (std::size_t i = 0; i < std::min(gaps.size(), kMostNamed); ++i)
        text += (i ? ", " : " ") + Describe(gaps[i]);
    console.Warn(text + (gaps.size() > kMostNamed ? ", ..." : ""));
}

class RenderCommand : public Command {
public:
    explicit RenderCommand(CLI::App& k7)
        : Command(k7.add_subcommand("render", "Renders frames of a clip with one tool or several")) {
        CLI::App& line = *Line();
        tools_.AddTo(line);
        line.add_option("-o,--output", output_, "FILE to write; %04d or #### stand for the frame's number")
            ->required();
        AddFrameOptions();
        AddSpeedOptions();
        AddReportOptions();
        pictures_.AddTo(line, true);
    }

    void SetLaterStages(std::vector<StageWords> stages) override { tools_.SetLater(std::move(stages)); }

    int Run() override {
        const std::unique_ptr<Stack> made = tools_.Make(ParseMissing(missing_), aspect_, pictures_.Reading());
        Stack& stack = *made;
        const std::vector<int> frames = ChooseFrames(stack);
        CheckBeforeWork({stack, output_, frames, pictures_.Writing(), !noFolder_});
        if (run_.threads) host::GetApp()->ProcessorCount = host::GetApp()->Division = run_.threads;
        stack.Document().CurrentTime = frames.front();
        const auto [least, most] = std::minmax_element(frames.begin(), frames.end());
        const Console::Style style = progress_.empty() ? Console::StyleFor(quiet_) : Console::Style::OpenJd;
        Console console(style, static_cast<int>(frames.size()), *least, *most);
        if (!logFile_.empty()) console.LogTo(logFile_);
        tools_.Apply(stack, pictures_.Working(), frames.front(), console);
        for (std::size_t i = 0; i < stack.Size(); ++i) HintAtSurprises(stack.Op(i), frames.front(), console);
        if (ParseMissing(missing_) == Missing::Error && stack.MainClip().IsSequence())
            WarnOfMissing(stack.MainClip(), frames, run_.shift, console);
        // Lengths in pixels are smaller in a proxy, but saved as they were set.
        const double proxy = pictures_.Proxy();
        for (std::size_t i = 0; i < stack.Size(); ++i) ScaleLengths(stack.Op(i), 1.0 / proxy);
        const int code = Render(stack, frames, console);
        for (std::size_t i = 0; i < stack.Size(); ++i) ScaleLengths(stack.Op(i), proxy);
        tools_.Save(stack);
        return code;
    }
    bool PrintsResult() const override { return false; }

private:
    void AddFrameOptions() {
        const auto add = [](CLI::Option* option) { return option->group("Frames"); };
        CLI::App& line = *Line();
        add(line.add_option("-f,--frames", frames_, "FRAMES to render: 7, 1-100, 1-100x5, comma-separated"));
        add(line.add_option("--shift", run_.shift, "N: the file of frame n holds the tool's frame n + N"))
            ->check(CLI::Range(-1000000, 1000000));
        add(line.add_option("--extent", extent_, "A-B: first and last frame of the clip"));
        add(line.add_option("--aspect", aspect_, "X:Y: width and height of a pixel"));
        add(line.add_option("--missing", missing_, "What to do about a missing frame: error, hold or black"));
        add(line.add_flag("--skip-existing", run_.skipExisting,
                          "Skip frames whose files exist and can be read"));
        add(line.add_flag("--stop-at-error", run_.stopAtError, "Start no frame after one has failed"));
        add(line.add_flag("--no-mkdir", noFolder_, "Fail if the output folder is missing"));
    }

    void AddSpeedOptions() {
        const auto add = [](CLI::Option* option) { return option->group("Speed"); };
        CLI::App& line = *Line();
        add(line.add_option("--jobs", run_.jobs,
                            "Frames in progress at once; by default as cores and memory allow"))
            ->check(CLI::Range(1, 1024));
        add(line.add_option("-t,--threads", run_.threads,
                            "Most threads at work, and processors that tools see"))
            ->check(CLI::Range(1, 4096));
        add(line.add_option("--memory", memory_,
                            "SIZE that jobs may take, such as 8G; by default half of the machine's"));
    }

    void AddReportOptions() {
        const auto add = [](CLI::Option* option) { return option->group("Reports"); };
        CLI::App& line = *Line();
        add(line.add_flag("--quiet", quiet_, "Print only warnings and errors"));
        add(line.add_option("--log", logFile_, "FILE for the run's lines and warnings, with times"));
        add(line.add_option("--progress", progress_, "openjd: progress in the lines of Open Job Description"))
            ->check(CLI::IsMember({"openjd"}));
        add(line.add_flag("--stats", stats_, "Print the time for reading, computing and writing at the end"));
    }

    /// Renders all frames and lists the failures on standard error. Returns the program's exit code.
    int Render(Stack& stack, const std::vector<int>& frames, Console& console) {
        run_.writing = pictures_.Writing();
        if (!memory_.empty()) run_.memory = ParseSize(memory_);
        RenderRun run(stack, FilePattern(output_), run_, frames, console);
        const Interrupt interrupt(run.StopFlags());
        console.Start();
        run.Run();
        const int missing = static_cast<int>(frames.size()) - run.Written();
        console.Finish(missing, output_);
        for (const auto& [frame, why] : run.Failures())
            std::fprintf(stderr, "k7: frame %d: %s\n", frame, OneLine(why).c_str());
        if (stats_)
            std::fprintf(stderr,
                         "k7: %d jobs of about %llu MiB; reading %.2f s, computing %.2f s, writing %.2f s\n",
                         run.Jobs(), static_cast<unsigned long long>(run.BytesPerJob() >> 20),
                         run.Times().reading, run.Times().computing, run.Times().writing);
        if (interrupt.ExitCode())
            std::fprintf(stderr, "k7: stopped; %d of %zu frames are written\n", run.Written(), frames.size());
        return interrupt.ExitCode() ? interrupt.ExitCode() : missing ? 1 : 0;
    }

    /// The frames to render. Also sets the extent of the tools: a single picture exists at all requested
    /// frames.
    std::vector<int> ChooseFrames(Stack& stack) const {
        const bool sequence = stack.MainClip().IsSequence();
        std::optional<FrameSpan> span = stack.MainClip().Span();
        if (!extent_.empty()) span = ParseSpan(extent_);
        if (frames_.empty() && sequence && !span)
            throw UsageError("'" + tools_.MainLink() + "': this clip has no frames");
        std::vector<int> frames = ParseFrames(!frames_.empty() ? frames_ : sequence ? Describe(*span) : "0");
        const auto [least, most] = std::minmax_element(frames.begin(), frames.end());
        stack.SetExtent(span ? *span : FrameSpan{*least, *most});
        return frames;
    }

    StackOptions tools_;
    std::string output_, frames_, extent_, aspect_, logFile_;
    std::string missing_ = "error";
    PictureOptions pictures_;
    RunOptions run_;
    std::string memory_, progress_;
    bool quiet_ = false, noFolder_ = false, stats_ = false;
};

} // namespace

std::unique_ptr<Command> MakeRenderCommand(CLI::App& k7) {
    return std::make_unique<RenderCommand>(k7);
}

} // namespace app
