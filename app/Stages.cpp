#include "app/Stages.h"

#include "media/Errors.h"

#include <optional>

namespace app {
namespace {

/// The words of a command line, read from the front.
class Words {
public:
    explicit Words(std::vector<std::string> words) : words_(std::move(words)) {}

    bool AtEnd() const { return next_ == words_.size(); }
    const std::string& Front() const { return words_[next_]; }
    std::string Take() { return words_[next_++]; }

    /// The value of an option, in the same word or in the next, if the front is that option.
    std::optional<std::string> TakeOption(const std::string& longName, const std::string& shortName) {
        const std::string word = Front();
        if (word == longName || word == shortName) {
            ++next_;
            if (AtEnd()) throw media::UsageError(word + " needs a value");
            return Take();
        }
        if (word.starts_with(longName + "=")) return Take().substr(longName.size() + 1);
        if (!shortName.empty() && word.starts_with(shortName) && !word.starts_with("--"))
            return Take().substr(shortName.size());
        return std::nullopt;
    }

private:
    std::vector<std::string> words_;
    std::size_t next_ = 0;
};

} // namespace

std::vector<StageWords> TakeStages(std::vector<std::string>& words) {
    std::vector<StageWords> stages;
    std::vector<std::string> rest;
    for (Words line(words); !line.AtEnd();) {
        if (const auto tool = line.TakeOption("--then", "")) {
            if (tool->starts_with('-')) throw media::UsageError("--then needs a tool, not '" + *tool + "'");
            stages.push_back({*tool, {}, {}});
        } else if (stages.empty()) {
            rest.push_back(line.Take());
        } else if (auto setting = line.TakeOption("--set", "-s")) {
            stages.back().settings.push_back(std::move(*setting));
        } else if (auto link = line.TakeOption("--input", "-i")) {
            const bool named = !media::SplitLink(*link).first.empty();
            if (named)
                stages.back().links.push_back(std::move(*link));
            else
                rest.insert(rest.end(), {"-i", std::move(*link)});
        } else {
            rest.push_back(line.Take());
        }
    }
    words.swap(rest);
    return stages;
}

} // namespace app
