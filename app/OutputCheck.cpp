#include "app/OutputCheck.h"

#include "media/Errors.h"
#include "media/Words.h"

#include <cerrno>
#include <cstring>
#include <filesystem>
#include <set>
#include <stdexcept>
#include <utility>

#include <sys/stat.h>
#include <unistd.h>

namespace app {

using namespace media;
namespace {

/// What identifies a file, whatever names lead to it.
using FileNumber = std::pair<dev_t, ino_t>;

std::set<FileNumber> NumbersOf(const std::vector<std::string>& names) {
    std::set<FileNumber> numbers;
    struct stat status = {};
    for (const std::string& name : names)
        if (::stat(name.c_str(), &status) == 0 && S_ISREG(status.st_mode))
            numbers.emplace(status.st_dev, status.st_ino);
    return numbers;
}

std::string InputFault(const std::string& name) {
    struct stat status = {};
    if (::stat(name.c_str(), &status) != 0)
        return name + ": " + (errno == ENOENT ? "there is no such file" : std::strerror(errno));
    if (S_ISDIR(status.st_mode)) return name + ": is a folder";
    if (::access(name.c_str(), R_OK) != 0) return name + ": " + std::strerror(errno);
    return "";
}

std::string FolderFault(const std::string& output, bool make) {
    namespace fs = std::filesystem;
    fs::path folder = fs::path(output).parent_path();
    if (folder.empty()) folder = ".";
    std::error_code error;
    if (!fs::exists(folder, error)) {
        if (!make) return "'" + output + "': its folder is missing";
        fs::create_directories(folder, error);
        if (error) return "'" + output + "': its folder cannot be made: " + error.message();
    }
    if (!fs::is_directory(folder, error)) return "'" + output + "': " + folder.string() + " is not a folder";
    if (::access(folder.c_str(), W_OK | X_OK) != 0)
        return "'" + output + "': its folder cannot be written: " + std::strerror(errno);
    return "";
}

std::string OverwriteFault(const OutputCheck& check, const FilePattern& output,
                           const std::vector<std::string>& inputs) {
    // A tool that reads earlier frames would find its own output, even if no file exists yet.
    if (check.stack.ReadsSequence(output.At(check.frames.front()), check.frames.front()))
        return "'" + check.output + "' would overwrite the sequence that is read";
    const std::set<FileNumber> read = NumbersOf(inputs);
    struct stat status = {};
    for (int frame : check.frames) {
        const std::string name = output.At(frame);
        if (::stat(name.c_str(), &status) == 0 && read.count({status.st_dev, status.st_ino}))
            return "'" + name + "' would overwrite a file that is read";
        if (!output.IsSequence()) break;
    }
    return "";
}

} // namespace

void CheckBeforeWork(const OutputCheck& check) {
    const FilePattern output(check.output);
    std::string wrong, missing; // what is wrong with the command, and which files are missing
    const auto note = [](std::string& faults, const std::string& fault) {
        if (!faults.empty() && !fault.empty()) faults += '\n';
        faults += OneLine(fault); // a name may hold line breaks
    };
    try {
        CheckCanWrite(check.output, check.options);
    } catch (const UsageError& error) {
        note(wrong, error.what());
    }
    if (check.frames.size() > 1 && !output.IsSequence())
        note(wrong, "'" + check.output + "' has room for one frame, not for " +
                        std::to_string(check.frames.size()) + ": write %04d or #### for the frame's number");
    note(wrong, OverwriteFault(check, output, check.stack.FilesRead()));
    for (const std::string& name : check.stack.SingleFiles()) note(missing, InputFault(name));
    if (wrong.empty() && missing.empty()) note(missing, FolderFault(check.output, check.makeFolder));
    if (!wrong.empty()) {
        if (!missing.empty()) wrong += '\n' + missing;
        throw UsageError(wrong);
    }
    if (!missing.empty()) throw std::runtime_error(missing);
}

} // namespace app
