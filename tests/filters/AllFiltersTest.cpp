#include "filters/Clean.h"
#include "filters/CrashZoom.h"
#include "filters/DBlur.h"
#include "filters/Defocus.h"
#include "filters/Dither.h"
#include "filters/Sharpen.h"
#include "filters/Trace.h"
#include "filters/VGaussian.h"

#include "tests/support/CoreRunner.h"

#include <cmath>

namespace k7::test {
namespace {

/// Settings at which a filter changes every channel of noise.
struct Strong {
    static void Set(Clean& core) { core.XRad.Value = core.YRad.Value = 400; }
    static void Set(CrashZoom& core) { core.Spee.Value = 80.0; }
    static void Set(DBlur& core) { core.Leng.Value = 30.0; }
    static void Set(Defocus& core) { core.RadB.Value = 12.5; }
    static void Set(Dither& core) { core.Radius.Value = 3.0; }
    static void Set(Sharpen& core) { core.Powe.Value = 5.0; }
    static void Set(Trace& core) { core.Leve.Value = 40.0; }
    static void Set(VGaussian& core) {
        core.BRGB.Value = core.BluA.Value = core.Sync.Value = 1;
        core.RadX.Value = core.RadY.Value = 30.0;
    }
};

template <class Core>
struct AllFilters : testing::Test {
    AllFilters() { Strong::Set(runner.core); }
    Picture in = Noise(30, 12);
    CoreRunner<Core> runner;
};
using Filters = testing::Types<Clean, CrashZoom, DBlur, Defocus, Dither, Sharpen, Trace, VGaussian>;
TYPED_TEST_SUITE(AllFilters, Filters);

TYPED_TEST(AllFilters, LeaveAlphaAloneWhenAsked) {
    const Picture all = this->runner.Run(*this->in, 2);
    const Picture want = K7Image::MakeCopy(*all);
    want->CopyAlpha(this->in.get());
    EXPECT_FALSE(Same(*want, *all));
    this->runner.core.ProcessAlpha = false;
    EXPECT_TRUE(Same(*this->runner.Run(*this->in, 2), *want));
}

/// All but VGaussian, whose frames run to their end.
template <class Core>
struct StoppableFilters : AllFilters<Core> {};
using Stoppable = testing::Types<Clean, CrashZoom, DBlur, Defocus, Dither, Sharpen, Trace>;
TYPED_TEST_SUITE(StoppableFilters, Stoppable);

TYPED_TEST(StoppableFilters, DoNotTouchAnAbortedFrame) {
    this->runner.owner.Aborted = true;
    EXPECT_TRUE(Same(*this->runner.Run(*this->in), *this->in));
}

TYPED_TEST(AllFilters, TakeAnyPixelAspect) {
    for (auto axis : {&K7Image::AspectX, &K7Image::AspectY})
        for (double aspect : {0.0, -1.0, 1e300, HUGE_VAL, std::nan("")}) {
            const Picture small = Noise(9, 7);
            (*small).*axis = aspect;
            const Picture out = this->runner.Run(*small);
            for (int i = 0; i < 9 * 7 * 4; ++i) ASSERT_LE(out->Pixels[i], kFullScale) << aspect;
        }
}

} // namespace
} // namespace k7::test
