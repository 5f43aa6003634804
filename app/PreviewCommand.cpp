#include "app/Commands.h"
#include "app/Describe.h"
#include "app/Listener.h"
#include "app/PictureOptions.h"
#include "app/PreviewView.h"
#include "app/StackOptions.h"
#include "media/Errors.h"
#include "media/PictureDepth.h"
#include "media/Settings.h"
#include "media/Stack.h"
#include "media/Words.h"

#include <nlohmann/json.hpp>

#include <algorithm>
#include <cmath>
#include <iostream>

namespace app {

using namespace media;
namespace {

using nlohmann::ordered_json;

constexpr int kLargestView = 8192; ///< pixels of a side

ViewSize ParseSize(const std::string& text) {
    const std::vector<std::string> sides = Split(text, 'x');
    const auto side = [&](std::size_t i) {
        return i < sides.size() ? ParseInteger(sides[i]).value_or(0) : 0;
    };
    const ViewSize size{side(0), side(1)};
    if (sides.size() != 2 || std::min(size.width, size.height) < 1 ||
        std::max(size.width, size.height) > kLargestView)
        throw UsageError("'" + text + "' is not a view size: write WxH with sides from 1 to " +
                         std::to_string(kLargestView));
    return size;
}

struct DragPath {
    Spot from, to;
};

DragPath ParseDrag(const std::string& text) {
    std::vector<double> numbers;
    const std::vector<std::string> ends = Split(text, ':');
    bool good = ends.size() == 2;
    for (const std::string& end : ends) {
        const std::vector<std::string> pieces = Split(end, ',');
        good = good && pieces.size() == 2;
        for (const std::string& piece : pieces) numbers.push_back(ParseNumber(piece).value_or(NAN));
    }
    const bool finite =
        std::all_of(numbers.begin(), numbers.end(), [](double n) { return std::isfinite(n); });
    if (!good || !finite)
        throw UsageError("'" + text + "' is not a drag: write X1,Y1:X2,Y2 in fractions of the picture");
    return {{numbers[0], numbers[1]}, {numbers[2], numbers[3]}};
}

/// The natural size of a picture, made smaller where it is too large for a view.
ViewSize DefaultSize(const host::Image& picture) {
    const ViewSize natural = PreviewView::NaturalSize(picture);
    const double shrink =
        std::min(1.0, static_cast<double>(kLargestView) / std::max(natural.width, natural.height));
    const auto side = [&](int pixels) { return std::max(1, static_cast<int>(pixels * shrink)); };
    return {side(natural.width), side(natural.height)};
}

/// Carries out a drag and describes its result.
ordered_json PerformDrag(host::Operator& op, const host::FusionDoc& document, PreviewView& view,
                         const DragPath& path) {
    const ordered_json before = SaveSettings(op)["controls"];
    const std::size_t steps = document.UndoTitles().size();
    const bool hit = view.Drag(path.from, path.to);

    const ordered_json after = SaveSettings(op)["controls"];
    ordered_json changed = ordered_json::array();
    for (const auto& [id, value] : after.items())
        if (value != before[id])
            changed.push_back({{"id", id}, {"label", FindControl(op, id).Name()}, {"value", value}});
    const std::vector<std::string> titles = document.UndoTitles();
    return {{"from", {path.from.x, path.from.y}},
            {"to", {path.to.x, path.to.y}},
            {"hit", hit},
            {"changed", changed},
            {"undo", titles.size() > steps ? ordered_json(titles.back()) : ordered_json()}};
}

void Print(const ordered_json& drags) {
    for (std::size_t i = 0; i < drags.size(); ++i) {
        std::cout << "Drag " << i + 1;
        if (drags[i]["hit"] == false) std::cout << ": nothing to drag there";
        std::cout << '\n';
        for (const ordered_json& control : drags[i]["changed"])
            std::cout << "  " << std::string(control["label"]) << " (" << std::string(control["id"])
                      << ") = " << Plain(control["value"]) << '\n';
        if (!drags[i]["undo"].is_null()) std::cout << "  Undo: " << std::string(drags[i]["undo"]) << '\n';
    }
}

class PreviewCommand : public Command {
public:
    explicit PreviewCommand(CLI::App& k7)
        : Command(k7.add_subcommand("preview", "Shows a frame with a tool's on-screen controls over it")) {
        CLI::App& line = *Line();
        tools_.AddTo(line);
        line.add_option("-o,--output", output_, "FILE to write")->required();
        line.add_option("-f,--frame", frame_, "FRAME to show");
        line.add_option("--size", size_, "WxH: pixels of the view, into which the picture is fitted");
        AddEach("--drag", drags_,
                "X1,Y1:X2,Y2: press, move and release, in fractions of the picture, y upward");
        line.add_option("--aspect", aspect_, "X:Y: width and height of a pixel");
        line.add_option("--on", on_, "N: show the widgets of the Nth tool; by default of the last")
            ->check(CLI::PositiveNumber);
        line.add_option("--exposure", exposure_, "STOPS by which to show the picture brighter or darker")
            ->check(CLI::Range(-60.0, 60.0));
        line.add_flag("--json", json_, "Write an array with the result of each drag");
        pictures_.AddTo(line, false);
    }

    void SetLaterStages(std::vector<StageWords> stages) override { tools_.SetLater(std::move(stages)); }

    int Run() override {
        const std::optional<ViewSize> size = size_.empty() ? std::nullopt : std::optional(ParseSize(size_));
        std::vector<DragPath> paths;
        for (const std::string& drag : drags_) paths.push_back(ParseDrag(drag));
        CheckCanWrite(output_);
        const std::unique_ptr<Stack> made = tools_.Make(Missing::Error, aspect_, pictures_.Reading());
        Stack& stack = *made;
        const std::size_t on = on_ ? static_cast<std::size_t>(*on_) : stack.Size();
        if (on > stack.Size()) throw UsageError("--on " + std::to_string(on) + ": there are fewer tools");
        host::Operator& op = stack.Op(on - 1);
        const int frame = SetFrame(stack);
        Console console(Console::Style::Quiet, 1, frame, frame);
        tools_.Apply(stack, pictures_.Working(), frame, console);
        const Listener listener(console);

        std::shared_ptr<host::Image> picture = stack.Render(frame);
        PreviewView view(op, size ? *size : DefaultSize(*picture));
        view.Show(*Exposed(picture, exposure_));
        ordered_json drags = ordered_json::array();
        for (const DragPath& path : paths) drags.push_back(PerformDrag(op, stack.Document(), view, path));
        if (!paths.empty()) {
            picture = stack.Render(frame);
            view.Show(*Exposed(picture, exposure_));
        }
        Write(view, console);
        tools_.Save(stack);

        if (json_)
            std::cout << drags.dump(2) << '\n';
        else
            Print(drags);
        return 0;
    }

private:
    /// The frame to show: the first of a sequence unless another is asked for.
    int SetFrame(Stack& stack) const {
        const std::optional<FrameSpan> span = stack.MainClip().Span();
        const int frame = frame_.value_or(span ? span->first : 0);
        stack.SetExtent(span.value_or(FrameSpan{frame, frame}));
        stack.Document().CurrentTime = frame;
        return frame;
    }

    void Write(const PreviewView& view, Console& console) const {
        Picture like;
        like.image = view.Snapshot();
        like.channels = 3;
        like.depth = {like.image->PixelDepth};
        WritePicture(output_, *like.image, like, [&](const std::string& text) { console.Warn(text); });
    }

    StackOptions tools_;
    std::string output_, size_, aspect_;
    std::vector<std::string> drags_;
    PictureOptions pictures_;
    std::optional<int> frame_, on_;
    double exposure_ = 0.0;
    bool json_ = false;
};

} // namespace

std::unique_ptr<Command> MakePreviewCommand(CLI::App& k7) {
    return std::make_unique<PreviewCommand>(k7);
}

} // namespace app
