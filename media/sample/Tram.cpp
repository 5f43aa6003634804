#include "media/sample/Tram.h"

#include <cstdint>

namespace media::sample {
namespace {

constexpr float kFloor = 30, kSill = 74, kLintel = 118, kRoof = 136;

void Lay(Paint& paint, Light light, float cover) {
    paint.light = Mix(paint.light, light, cover);
    paint.alpha = paint.alpha + (1 - paint.alpha) * cover;
}

/// Heads and shoulders of the passengers against the lit car.
float Passengers(float x, float y) {
    float cover = 0;
    for (int seat = 0; seat < 16; ++seat) {
        if (Random(seat, 0, 91) < 0.35f) continue;
        const float at = 24 + 22 * static_cast<float>(seat) + 8 * Random(seat, 1, 91);
        const float height = 86 + 9 * Random(seat, 2, 91);
        cover = std::max(cover, Cover(Circle(x, y, at, height, 5.5f)));
        cover = std::max(cover, Cover(Box(x, y, at - 9, 60, at + 9, height - 5, 6)));
    }
    return cover;
}

Light Saloon(float x, float y) {
    Light light = Mix(Rgb(0xc98a3c), Rgb(0xf4dcaa), Ramp(kSill - 6, kLintel, y));
    if (y > kLintel - 7 && std::fmod(x, 46.0f) < 30)
        light = Rgb(0xf0ead8); // ceiling lamps, short of white: they are no light sources
    const float pole = std::fabs(std::fmod(x, 44.0f) - 22);
    light = Mix(light, Rgb(0x8a6a3a), 0.8f * Cover(pole - 1));
    return Mix(light, Rgb(0x1c1210), 0.92f * Passengers(x, y));
}

/// The painted sheet of the body: cream above, red below, a gold line between, grime and rivets.
Light Sheet(float x, float y) {
    const Light red = Rgb(0x9a1c20), cream = Rgb(0xd9c79a);
    Light sheet = Mix(red, cream, Cover(kSill - 10 - y));
    sheet = Mix(sheet, Rgb(0xe0b040), Cover(std::fabs(y - kSill + 12) - 1.5f));
    sheet = Mix(sheet, Rgb(0xe0b040), 0.7f * Cover(std::fabs(y - kFloor - 8) - 1));
    const float rivet = Circle(std::fmod(x, 12.0f), y, 6, kSill - 17, 1.1f);
    sheet = Mix(sheet, sheet * 1.8f, Cover(rivet));
    const float grime = Clouds(x * 0.07f, y * 0.05f, 4, 93);
    const float fall = 0.35f + 0.5f * Ramp(kFloor, kRoof, y); // lamps shine from above
    return sheet * (fall * (0.55f + 0.9f * grime));
}

/// The line's number on a lit plate, the stroke of a seven.
Light Plate(float x, float y, float cx, float cy) {
    const float seven = std::min(Segment(x, y, cx - 4, cy + 6, cx + 4, cy + 6),
                                 Segment(x, y, cx + 4, cy + 6, cx - 2, cy - 7));
    return Mix(Rgb(0xe6dfc4), Rgb(0x14161c), Cover(seven - 1.2f));
}

void Wheels(Paint& paint, float x, float y) {
    for (float at : {62.0f, 104.0f, 276.0f, 318.0f}) {
        Lay(paint, Rgb(0x16171b), Cover(Circle(x, y, at, 15, 15)));
        Lay(paint, Rgb(0x3c3f48), Cover(std::fabs(Circle(x, y, at, 15, 12)) - 1));
        Lay(paint, Rgb(0x50545e), Cover(Circle(x, y, at, 15, 4)));
    }
    for (float at : {83.0f, 297.0f}) Lay(paint, Rgb(0x202228), Cover(Box(x, y, at - 34, 14, at + 34, 22, 3)));
    Lay(paint, Rgb(0x101116), Cover(Box(x, y, 124, 12, 256, 30, 3)));
}

void Windows(Paint& paint, float x, float y) {
    for (int i = 0; i < 8; ++i) {
        const float left = 18 + 43.5f * static_cast<float>(i);
        const bool door = i == 2 || i == 6;
        const float sill = door ? kFloor + 12 : kSill;
        const float pane = Box(x, y, left, sill, left + 37, kLintel, 4);
        Lay(paint, Rgb(0x2a2018), Cover(pane - 1.6f));
        Lay(paint, Saloon(x, y), Cover(pane));
        if (door) Lay(paint, Rgb(0x3a1416), Cover(std::fabs(x - left - 18.5f) - 1.4f) * Cover(pane));
    }
}

void Pantograph(Paint& paint, float x, float y) {
    const Light iron = Rgb(0x777b86);
    Lay(paint, iron, Cover(Segment(x, y, 168, kRoof + 4, 196, 158) - 1.2f));
    Lay(paint, iron, Cover(Segment(x, y, 196, 158, 178, 174) - 1.2f));
    Lay(paint, Rgb(0x9a9ea8), Cover(Segment(x, y, 164, 175, 194, 175) - 1.4f));
}

} // namespace

Paint TramAt(float x, float y) {
    Paint paint;
    Pantograph(paint, x, y);
    Wheels(paint, x, y);

    // The body, with a roof that is narrower than the car and a lit side.
    Lay(paint, Rgb(0x1b1d26), Cover(Box(x, y, 22, kRoof - 12, kTramLength - 22, kRoof + 6, 7)));
    const float body = Box(x, y, 2, kFloor - 6, kTramLength - 2, kRoof, 15);
    Lay(paint, Sheet(x, y), Cover(body));
    Lay(paint, Rgb(0xf0e6c8) * 0.5f, Cover(std::fabs(y - kRoof + 5) - 0.9f) * Cover(body + 6));
    Windows(paint, x, y);

    // Plates with the number, bumpers, head lamp and tail lamp.
    for (float at : {150.0f, 254.0f})
        Lay(paint, Plate(x, y, at, 50), Cover(Box(x, y, at - 10, 38, at + 10, 62, 3)));
    Lay(paint, Rgb(0x17181d), Cover(Box(x, y, 0, kFloor - 2, kTramLength, kFloor + 5, 2)));
    Lay(paint, Rgb(0xfff4d8) * 30.0f, Cover(Circle(x, y, kTramLength - 7, 56, 4.2f)));
    Lay(paint, Rgb(0xff2a1c) * 14.0f, Cover(Circle(x, y, 7, 56, 3.0f)));
    return paint;
}

} // namespace media::sample
