#pragma once

#include "motion/MoBlur.h"
#include "tests/motion/MotionPictures.h"
#include "tests/support/CoreRunner.h"
#include "tests/support/FakeInput.h"

#include <algorithm>
#include <vector>

namespace k7::test {

/// A clip in memory.
struct Clip : FrameSource {
    bool ReadInputAtTime(double time, K7Image& target) override { return Read(time, target); }
    bool ReadInputAtTime(double time, FloatImageK7& target) override { return Read(time, target); }

    template <class Sample>
    bool Read(double time, PictureK7<Sample>& target) {
        Reads.push_back(time);
        if (Broken || Frames.empty()) return false;
        const K7Image& frame = At(time);
        if (frame.Width != target.Width || frame.Height != target.Height) return false;
        std::copy_n(frame.Pixels, frame.Width * frame.Height * frame.Channels, target.Pixels);
        return true;
    }
    K7Image& At(double time) {
        const double last = static_cast<double>(Frames.size()) - 1.0;
        return *Frames[static_cast<std::size_t>(std::clamp(time, 0.0, last))];
    }

    std::vector<Picture> Frames;
    std::vector<double> Reads;
    bool Broken = false;
};

/// MoBlur with the values of a new tool over a clip of a drifting scene.
struct Shot : CoreRunner<MoBlur> {
    explicit Shot(int width = 120, int height = 90, int frames = 4) {
        const Picture scene = Blobs(width + 60, height + 60, 3);
        for (int i = 0; i < frames; ++i)
            clip.Frames.push_back(Window(*scene, 7 * i, 40 - 3 * i, width, height));
        core.ImageInput.Input = core.MatteInput.Input = &clip;
        core.Prss.Value = 1;
        core.Maps.Value = 5;
        core.LTsh.Value = 2.0;
        core.LSle.Value = core.Stht.Value = core.Enht.Value = 1.0;
        core.Prur.Value = 2.5;
        core.ABsh.Value = 40.0;
        core.Cere.Value = {0.5, 0.5};
        core.XSle.Value = core.YSle.Value = 0.5;
        core.Cere.Input[0] = &centre;
        core.XSle.Input[0] = &scaleX;
        core.YSle.Input[0] = &scaleY;
        core.Aund.Input[0] = &autoBound;
        core.ABsh.Input[0] = &threshold;
        core.Auey.Input[0] = &autoKey;
        core.Maes.Input[0] = &match;
        core.Prss.Input[0] = &apply;
        core.Sers.Input[0] = &vectors;
    }

    Picture Frame(double time, int threads = 1) {
        core.Time = time;
        core.ExtentStart = 0.0;
        core.ExtentEnd = static_cast<double>(clip.Frames.size());
        owner.Threads = threads;
        return Run(At(time), core.ImageInput);
    }
    K7Image& At(double time) { return clip.At(time); }

    Clip clip;
    FakeInput centre, scaleX, scaleY, autoBound, threshold, autoKey, match, apply, vectors;
};

} // namespace k7::test
