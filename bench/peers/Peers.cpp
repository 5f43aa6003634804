// k7_peers [ROW]: the same work by the effects and by other libraries, turn by turn in one run, as a table in
// Markdown: the least time of each in milliseconds, on one thread and on all. ROW names part of a row's text.

#include "bench/peers/PeerFilters.h"

#include "filters/Clean.h"
#include "filters/CrashZoom.h"
#include "filters/DBlur.h"
#include "filters/Defocus.h"
#include "filters/Dither.h"
#include "filters/Sharpen.h"
#include "filters/VGaussian.h"
#include "frame/ImageXfmK7.h"
#include "tests/support/CoreRunner.h"

#include <opencv2/imgproc.hpp>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <exception>
#include <functional>
#include <limits>
#include <memory>
#include <string>
#include <thread>
#include <vector>

namespace k7::bench {
namespace {

constexpr int kWidth = 1920, kHeight = 1080;
constexpr int kRounds = 5;

using Work = std::function<void()>;
using MakeWork = std::function<Work(int threads)>;

struct Row {
    std::string work;
    MakeWork ours;
    std::string peer;
    MakeWork theirs;
};

/// Frames of an effect on noise.
template <class Core>
MakeWork Ours(std::function<void(Core&)> setUp) {
    return [setUp](int threads) -> Work {
        struct Scene {
            test::Picture in = test::Noise(kWidth, kHeight), out = K7Image::MakeCopy(*in);
            test::CoreRunner<Core> runner;
        };
        const auto scene = std::make_shared<Scene>();
        scene->runner.owner.Threads = threads;
        scene->runner.owner.OnThreads = threads > 1;
        scene->runner.core.Input.Image = scene->in.get();
        scene->runner.core.Output.Image = scene->out.get();
        setUp(scene->runner.core);
        return [scene] {
            const CurrentChunksScope scope(&scene->runner.chunks);
            scene->runner.core.Process();
        };
    };
}

cv::Mat Noise(int type, int width = kWidth, int height = kHeight) {
    cv::Mat noise(height, width, type);
    cv::randu(noise, 0, CV_MAT_DEPTH(type) == CV_8U ? 256 : 32768);
    return noise;
}

/// Calls of OpenCV on noise of a type.
MakeWork OpenCv(int type, std::function<void(const cv::Mat& in, cv::Mat& out)> call) {
    return [type, call](int threads) -> Work {
        const cv::Mat in = Noise(type);
        return [in, call, threads, out = cv::Mat()]() mutable {
            cv::setNumThreads(threads);
            call(in, out);
        };
    };
}

MakeWork AvFilter(const std::string& filter) {
    return [filter](int threads) { return AvFilterFrame(filter, kWidth, kHeight, threads); };
}

// Ours.

MakeWork CleanWindow(int window) {
    return Ours<Clean>([=](Clean& core) {
        core.Input.Image->WidthScale = 1; // the window in pixels
        core.XRad.Value = core.YRad.Value = window;
    });
}
MakeWork DefocusBoth(double percent, int mode) {
    return Ours<Defocus>([=](Defocus& core) {
        core.RadB.Value = percent;
        core.Dire.Value = 1;
        core.Mode.Value = mode;
    });
}
MakeWork VGaussianDefault() {
    return Ours<VGaussian>([](VGaussian& core) {
        core.BRGB.Value = 1;
        core.RadX.Value = 4;
        core.RadY.Value = 60;
    });
}
MakeWork SharpenRadius(int radius) {
    return Ours<Sharpen>([=](Sharpen& core) {
        core.RadS.Value = radius;
        core.Powe.Value = 5;
        core.Iter.Value = 1;
    });
}
MakeWork Streak(double angle) {
    return Ours<DBlur>([=](DBlur& core) {
        core.Leng.Value = 10;
        core.Angl.Value = angle;
        core.Cent.Value = 1;
    });
}
MakeWork Zoom() {
    return Ours<CrashZoom>([](CrashZoom& core) {
        core.Cntr.Value = {0.5, 0.5};
        core.DimX.Value = 0.4;
        core.Spee.Value = 10;
        core.Samp.Value = 1;
    });
}
MakeWork DitherDefault() {
    return Ours<Dither>([](Dither& core) { core.Radius.Value = 0.15; });
}

struct ResizeCore : PluginK7 {
    ImageInputK7 Input;
    ImageOutputK7 Output;
    test::Picture Source;
    void Process() override {
        ImageXfmK7 xfm;
        xfm.SetFilter(ImageXfmK7::kCubic);
        xfm.SetDispatch(this, ImageXfmK7::RunExternalChunks);
        if (!xfm.Transfer<u16>(Source.get(), Output.Image)) throw std::runtime_error("no memory");
    }
};
MakeWork ResizeFrom(int width, int height) {
    return Ours<ResizeCore>([=](ResizeCore& core) { core.Source = test::Noise(width, height); });
}

// Theirs.

MakeWork Median(int type, int window) {
    return OpenCv(type, [=](const cv::Mat& in, cv::Mat& out) { cv::medianBlur(in, out, window); });
}
MakeWork Gaussian(int taps) {
    return OpenCv(CV_16UC4, [=](const cv::Mat& in, cv::Mat& out) {
        cv::GaussianBlur(in, out, {taps, taps}, 0, 0, cv::BORDER_REPLICATE);
    });
}
MakeWork Table(int side) {
    return OpenCv(CV_16UC4, [=](const cv::Mat& in, cv::Mat& out) {
        const cv::Mat line = cv::getGaussianKernel(side, 0, CV_32F);
        cv::filter2D(in, out, -1, line * line.t(), {-1, -1}, 0, cv::BORDER_CONSTANT);
    });
}
MakeWork SixteenWarps() {
    return OpenCv(CV_16UC4, [](const cv::Mat& in, cv::Mat& out) {
        cv::Mat sum = cv::Mat::zeros(in.size(), CV_32FC4), warped;
        for (int i = 0; i < 16; ++i) {
            const cv::Mat turn = cv::getRotationMatrix2D({kWidth / 2.0f, kHeight / 2.0f}, 0, 1 + i * 0.005);
            cv::warpAffine(in, warped, turn, in.size(), cv::INTER_LINEAR, cv::BORDER_REPLICATE);
            cv::accumulate(warped, sum);
        }
        sum.convertTo(out, CV_16U, 1.0 / 16);
    });
}
MakeWork CubicFrom(int width, int height) {
    return [=](int threads) -> Work {
        const cv::Mat in = Noise(CV_16UC4, width, height);
        return [in, threads, out = cv::Mat()]() mutable {
            cv::setNumThreads(threads);
            cv::resize(in, out, {kWidth, kHeight}, 0, 0, cv::INTER_CUBIC);
        };
    };
}

std::vector<Row> Rows() {
    const auto spread = [](int threads) { return MagickSpreadFrame(14, kWidth, kHeight, threads); };
    return {
        {"Clean 3 x 3", CleanWindow(3), "OpenCV medianBlur", Median(CV_16UC4, 3)},
        {"Clean 5 x 5", CleanWindow(5), "OpenCV medianBlur", Median(CV_16UC4, 5)},
        {"Clean 15 x 15", CleanWindow(15), "OpenCV medianBlur, 8 bits", Median(CV_8UC4, 15)},
        {"Clean 51 x 51", CleanWindow(51), "OpenCV medianBlur, 8 bits", Median(CV_8UC4, 51)},
        {"Defocus Constant 3 %", DefocusBoth(3, 1), "ffmpeg gblur", AvFilter("gblur=sigma=14.5")},
        {"VGaussian, default", VGaussianDefault(), "ffmpeg gblur, twice",
         AvFilter("gblur=sigma=4,gblur=sigma=15")},
        {"Defocus Exact 3 %", DefocusBoth(3, 2), "OpenCV GaussianBlur, 117 taps", Gaussian(117)},
        {"Defocus Exact 20 %", DefocusBoth(20, 2), "OpenCV GaussianBlur, 769 taps", Gaussian(769)},
        {"Sharpen radius 3", SharpenRadius(3), "OpenCV filter2D 5 x 5", Table(5)},
        {"Sharpen radius 10", SharpenRadius(10), "OpenCV filter2D 19 x 19", Table(19)},
        {"Sharpen radius 28", SharpenRadius(28), "OpenCV filter2D 55 x 55", Table(55)},
        {"DBlur 10 %, 0 degrees", Streak(0), "ffmpeg dblur, recursive", AvFilter("dblur=angle=0:radius=96")},
        {"DBlur 10 %, 45 degrees", Streak(45), "ffmpeg dblur, recursive",
         AvFilter("dblur=angle=45:radius=96")},
        {"DBlur 10 %, 90 degrees", Streak(90), "ffmpeg dblur, recursive",
         AvFilter("dblur=angle=90:radius=96")},
        {"CrashZoom, default", Zoom(), "OpenCV, 16 warps", SixteenWarps()},
        {"Dither, default", DitherDefault(), "GraphicsMagick spread", spread},
        {"Resampling 3840 x 2160", ResizeFrom(3840, 2160), "OpenCV resize, four taps", CubicFrom(3840, 2160)},
        {"Resampling 1280 x 720", ResizeFrom(1280, 720), "OpenCV resize, four taps", CubicFrom(1280, 720)},
    };
}

double Milliseconds(const Work& work) {
    const auto start = std::chrono::steady_clock::now();
    work();
    return std::chrono::duration<double, std::milli>(std::chrono::steady_clock::now() - start).count();
}

struct Times {
    double ours = std::numeric_limits<double>::infinity();
    double theirs = ours;
};

Times Measure(const Row& row, int threads) {
    const Work ours = row.ours(threads), theirs = row.theirs(threads);
    ours();
    theirs();
    Times least;
    for (int i = 0; i < kRounds; ++i) {
        least.ours = std::min(least.ours, Milliseconds(ours));
        least.theirs = std::min(least.theirs, Milliseconds(theirs));
    }
    return least;
}

int Run(const std::string& wanted) {
    const int all = static_cast<int>(std::thread::hardware_concurrency());
    std::printf("| Work | peer | ours, 1 thread | peer | ratio | ours, %d threads | peer | ratio |\n", all);
    std::printf("| --- | --- | ---: | ---: | ---: | ---: | ---: | ---: |\n");
    for (const Row& row : Rows()) {
        if (row.work.find(wanted) == std::string::npos) continue;
        const Times one = Measure(row, 1), many = Measure(row, all);
        std::printf("| %s | %s | %.1f | %.1f | %.2f | %.1f | %.1f | %.2f |\n", row.work.c_str(),
                    row.peer.c_str(), one.ours, one.theirs, one.ours / one.theirs, many.ours, many.theirs,
                    many.ours / many.theirs);
        std::fflush(stdout);
    }
    return 0;
}

} // namespace
} // namespace k7::bench

int main(int count, char** words) {
    try {
        return k7::bench::Run(count > 1 ? words[1] : "");
    } catch (const std::exception& error) {
        std::fprintf(stderr, "k7_peers: %s\n", error.what());
        return 1;
    }
}
