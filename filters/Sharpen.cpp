#include "filters/Sharpen.h"

#include "library/K7Image.h"

namespace k7 {

void Sharpen::Process() {
    if (IsAborted()) return;
    const auto radius = static_cast<float>(RadS.Value);
    const auto amount = static_cast<float>(Powe.Value / 10.0);
    InDepth(Input, Output, [&](const auto& in, auto& out) {
        out.UnsharpMask(radius, amount, &in, ProcessAlpha);
        for (int done = 1; done < Iter.Value && !IsAborted(); ++done)
            out.UnsharpMask(radius, amount, nullptr, ProcessAlpha);
    });
}

} // namespace k7
