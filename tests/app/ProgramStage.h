#pragma once

#include "app/Program.h"
#include "tests/media/Folder.h"
#include "tests/media/Pictures.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <iostream>
#include <string>
#include <vector>

namespace app::test {

using namespace media;
using namespace media::test;

using Arguments = std::vector<const char*>;

/// Tests run in an empty folder of their own.
class Program : public testing::Test {
protected:
    void SetUp() override {
        before_ = std::filesystem::current_path();
        std::filesystem::current_path(folder_.Path());
    }
    void TearDown() override { std::filesystem::current_path(before_); }

    /// Runs a command in the folder and returns its exit code. It runs in this process: starting k7 takes
    /// longer than most commands.
    int Run(Arguments arguments) {
        arguments.insert(arguments.begin(), "k7");
        testing::internal::CaptureStdout();
        testing::internal::CaptureStderr();
        const int code = RunProgram(static_cast<int>(arguments.size()), arguments.data());
        std::cout.flush();
        out_ = testing::internal::GetCapturedStdout();
        err_ = testing::internal::GetCapturedStderr();
        return code;
    }
    const std::string& Out() const { return out_; }
    const std::string& Err() const { return err_; }

    void Put(const std::string& name, const Picture& picture) {
        WritePicture(folder_ / name, *picture.image, picture,
                     [](const std::string& text) { ADD_FAILURE() << text; });
    }
    Picture Get(const std::string& name) const { return ReadPicture(folder_ / name); }

    /// Expects exit code 2, one line that contains `word`, and no new file.
    void ExpectWrong(const Arguments& arguments, const std::string& word) {
        const std::size_t files = folder_.Count();
        EXPECT_EQ(Run(arguments), 2) << word;
        ExpectOneLine(word);
        EXPECT_EQ(Out(), "");
        EXPECT_EQ(folder_.Count(), files);
    }
    void ExpectOneLine(const std::string& word) {
        EXPECT_EQ(std::count(err_.begin(), err_.end(), '\n'), 1) << err_;
        EXPECT_TRUE(err_.starts_with("k7: ")) << err_;
        EXPECT_NE(err_.find(word), std::string::npos) << err_;
    }

    Folder folder_;

private:
    std::filesystem::path before_;
    std::string out_, err_;
};

} // namespace app::test
