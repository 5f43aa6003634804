#include "filters/Sharpen.h"

#include "library/K7Image.h"

namespace k7 {

void Sharpen::Process() {
    if (IsAborted()) return;
    const auto radius = static_cast<float>(RadS.Value);
    const auto amount = static_cast<float>(Powe.Value / 10.0);
    Output.Image->UnsharpMask(radius, amount, Input.Image, ProcessAlpha);
    for (int done = 1; done < Iter.Value && !IsAborted(); ++done)
        Output.Image->UnsharpMask(radius, amount, nullptr, ProcessAlpha);
}

} // namespace k7
