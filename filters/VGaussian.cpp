#include "filters/VGaussian.h"

#include "library/K7Image.h"

namespace k7 {

void VGaussian::Process() {
    InDepth(Input, Output, [&](const auto& in, auto& out) { Blur(in, out); });
}

template <class Sample>
void VGaussian::Blur(const PictureK7<Sample>& in, PictureK7<Sample>& out) const {
    // A size along one axis takes the pixel aspect of the other.
    const auto pixels = [&](const FloatControlK7& percent, double aspect) {
        return static_cast<float>(percent.Value / 100.0 * out.Width *
                                  static_cast<double>(static_cast<float>(aspect)));
    };
    const float rgbX = pixels(RadX, out.AspectY);
    const float rgbY = pixels(RadY, out.AspectX);
    const float alphaX = Sync.Value ? rgbX : pixels(RdAX, out.AspectY);
    const float alphaY = Sync.Value ? rgbY : pixels(RDAY, out.AspectX);

    if (BRGB.Value && BluA.Value && Sync.Value) {
        out.GaussianRecursive(rgbX, &in, 0, true);
        out.GaussianRecursive(rgbY, nullptr, 1, true);
    } else {
        out.CopyScaled(&in, 1.0f, 1.0f, 1.0f, 1.0f);
        if (BRGB.Value) {
            out.GaussianRecursive(rgbX, nullptr, 0, false);
            out.GaussianRecursive(rgbY, nullptr, 1, false);
        }
        if (BluA.Value) {
            out.GaussianRecursiveChannel(alphaX, nullptr, 0, 3, true);
            out.GaussianRecursiveChannel(alphaY, nullptr, 1, 3, true);
        }
    }
    if (!ProcessAlpha) out.CopyAlpha(&in);
}

void VGaussian::RefreshControls() {
    int rgb = 0;
    int alpha = 0;
    int sync = 0;
    BRGB.Get(kTimeNow, &rgb);
    BluA.Get(kTimeNow, &alpha);
    Sync.Get(kTimeNow, &sync);

    const bool withRgb = alpha && sync; // alpha is blurred by the sizes of colour
    const bool showRgb = rgb || withRgb;
    const bool showAlpha = alpha && !sync;
    Sync.SetHidden(!alpha);
    RadX.SetHidden(!showRgb);
    RadY.SetHidden(!showRgb);
    RdAX.SetHidden(!showAlpha);
    RDAY.SetHidden(!showAlpha);
}

} // namespace k7
