#pragma once

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>

namespace media::test {

/// An empty folder, removed with the object.
class Folder {
public:
    Folder() {
        std::string name = (std::filesystem::temp_directory_path() / "k7test.XXXXXX").string();
        path_ = ::mkdtemp(name.data());
    }
    ~Folder() {
        std::error_code ignored;
        std::filesystem::remove_all(path_, ignored);
    }
    Folder(const Folder&) = delete;
    Folder& operator=(const Folder&) = delete;

    std::string operator/(const std::string& name) const { return (path_ / name).string(); }
    std::string Path() const { return path_.string(); }

    void Put(const std::string& name, const std::string& text) const { std::ofstream(*this / name) << text; }
    std::string Get(const std::string& name) const {
        std::ifstream file(*this / name, std::ios::binary);
        return {std::istreambuf_iterator<char>(file), {}};
    }
    bool Has(const std::string& name) const { return std::filesystem::exists(*this / name); }
    std::size_t Count() const {
        const std::filesystem::directory_iterator first(path_), last;
        return static_cast<std::size_t>(std::distance(first, last));
    }

private:
    std::filesystem::path path_;
};

} // namespace media::test
