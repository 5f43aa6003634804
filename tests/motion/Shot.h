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
        core.ApplyMotionBlur.Value = 1;
        core.MaxSteps.Value = 5;
        core.Threshold.Value = 2.0;
        core.LengthScale.Value = core.StartWeight.Value = core.EndWeight.Value = 1.0;
        core.PreBlur.Value = 2.5;
        core.BoundThreshold.Value = 40.0;
        core.Centre.Value = {0.5, 0.5};
        core.ScaleX.Value = core.ScaleY.Value = 0.5;
        core.Centre.Input[0] = &centre;
        core.ScaleX.Input[0] = &scaleX;
        core.ScaleY.Input[0] = &scaleY;
        core.AutoBound.Input[0] = &autoBound;
        core.BoundThreshold.Input[0] = &threshold;
        core.AutoKey.Input[0] = &autoKey;
        core.MatchScales.Input[0] = &match;
        core.ApplyMotionBlur.Input[0] = &apply;
        core.DisplayVectors.Input[0] = &vectors;
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
