// k7_fuzz [SECONDS [SEED]]: feeds generated and damaged lens files, picture files and settings to their
// readers, best in a build with sanitizers. Ends with 1 and names the seed if a reader misbehaves.

#include "tests/fuzz/Fuzz.h"

#include <array>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <exception>
#include <filesystem>
#include <utility>

#include <unistd.h>

namespace fuzz {

std::string Chance::Damaged(std::string text, std::string_view bytes) {
    for (int i = Below(6); i >= 0 && !text.empty(); --i) {
        const std::size_t at = Index(text);
        const char byte = Below(4) == 0 ? static_cast<char>(Below(256)) : bytes[Index(bytes)];
        if (Below(4) == 0)
            text.insert(at, text.substr(0, 40));
        else // replaces, inserts or erases
            text.replace(at, static_cast<std::size_t>(Below(5)), static_cast<std::size_t>(Below(2)), byte);
    }
    return text;
}

namespace {

int Run(std::chrono::seconds time, unsigned seed, const std::string& folder) {
    const std::array readers = {std::pair{"lens files", LensFiles()}, std::pair{"pictures", Pictures(folder)},
                                std::pair{"settings", Settings(folder)}};
    std::array<long, readers.size()> rounds{};
    for (std::size_t i = 0; i < readers.size(); ++i) {
        const auto end = std::chrono::steady_clock::now() + time / static_cast<int>(readers.size());
        // Each reader starts from the seed, so that the seed of a failure repeats it at once.
        for (unsigned round = seed; std::chrono::steady_clock::now() < end; ++rounds[i], ++round) {
            Chance chance(round);
            try {
                readers[i].second(chance);
            } catch (const std::exception& error) {
                std::fprintf(stderr, "%s, seed %u: %s\n", readers[i].first, round, error.what());
                return 1;
            }
        }
        std::printf("%s: %ld rounds\n", readers[i].first, rounds[i]);
    }
    return 0;
}

} // namespace
} // namespace fuzz

int main(int count, char** words) {
    const int seconds = count > 1 ? std::atoi(words[1]) : 60;
    const unsigned seed = count > 2 ? static_cast<unsigned>(std::strtoul(words[2], nullptr, 10)) : 1;
    const auto folder = std::filesystem::temp_directory_path() / ("k7_fuzz." + std::to_string(::getpid()));
    std::filesystem::create_directory(folder);
    const int code = fuzz::Run(std::chrono::seconds(seconds), seed, folder.string());
    if (code == 0) std::filesystem::remove_all(folder); // what failed is kept for inspection
    return code;
}
