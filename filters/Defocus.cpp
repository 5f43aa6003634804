#include "filters/Defocus.h"

#include "library/K7Image.h"

namespace k7 {

void Defocus::Process() {
    if (IsAborted()) return;
    InDepth(Input, Output, [&](const auto& in, auto& out) { Blur(in, out); });
}

template <class Sample>
void Defocus::Blur(const PictureK7<Sample>& in, PictureK7<Sample>& out) const {
    // A size along one axis takes the pixel aspect of the other.
    const double wide = out.Width * (RadB.Value / 100.0);
    const auto radiusX = static_cast<float>(wide * out.AspectY);
    const auto radiusY = static_cast<float>(wide * out.AspectX);

    const auto blur = [&](float radius, const PictureK7<Sample>* source, int direction) {
        if (Mode.Value == 1)
            out.GaussianRecursive(radius, source, direction, ProcessAlpha);
        else
            out.GaussianExact(radius, DpEd.Value != 0, source, direction, ProcessAlpha);
    };
    const bool alongRows = Dire.Value != 3;
    const bool alongColumns = Dire.Value != 2;
    if (alongRows) blur(radiusX, &in, 0);
    if (alongColumns) blur(radiusY, alongRows ? nullptr : &in, 1);

    if (!ProcessAlpha) out.CopyAlpha(&in);
}

void Defocus::RefreshControls() {
    ShowDupEdges(0.0);
}

void Defocus::ShowDupEdges(double time) {
    int mode = 1;
    Mode.Get(time, &mode);
    DpEd.SetHidden(mode == 1);
}

} // namespace k7
