#pragma once

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <string>

namespace k7::test {

/// A folder for the lens files of one test, removed with this object.
class LensFolder : public testing::Test {
protected:
    LensFolder()
        : folder_(std::filesystem::temp_directory_path() /
                  testing::UnitTest::GetInstance()->current_test_info()->name()) {
        std::filesystem::create_directories(folder_);
    }
    ~LensFolder() override { std::filesystem::remove_all(folder_); }

    std::string Write(const std::string& text) {
        const std::string path = (folder_ / "lens.txt").string();
        std::ofstream(path, std::ios::binary) << text;
        return path;
    }

    std::filesystem::path folder_;
};

} // namespace k7::test
