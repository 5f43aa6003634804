#include "view/PicturePainter.h"

#include <QRectF>

#include <GL/gl.h>

#include <algorithm>
#include <cmath>
#include <vector>

namespace view {

namespace {

constexpr const char* kVertices = R"(#version 120
varying vec2 at;
void main() {
    at = gl_MultiTexCoord0.xy;
    gl_Position = gl_ModelViewProjectionMatrix * gl_Vertex;
})";

constexpr const char* kPlainFragments = R"(#version 120
uniform sampler2D picture;
varying vec2 at;
void main() {
    gl_FragColor = vec4(texture2D(picture, at).rgb, 1.0);
})";

constexpr const char* kFragments = R"(#version 120
uniform sampler2D picture;
uniform float gain, power;
uniform int channels;
varying vec2 at;

vec3 Chosen(vec4 pixel) {
    if (channels == 1) return pixel.rrr;
    if (channels == 2) return pixel.ggg;
    if (channels == 3) return pixel.bbb;
    if (channels == 4) return pixel.aaa;
    if (channels == 5) return vec3(dot(pixel.rgb, vec3(0.2126, 0.7152, 0.0722)));
    return pixel.rgb;
}

void main() {
    vec4 pixel = texture2D(picture, at);
    vec3 colour = Chosen(pixel);
    if (channels != 4) colour = pow(max(colour * gain, 0.0), vec3(power));
    if (channels == 6) {
        vec2 square = floor(gl_FragCoord.xy / 12.0);
        float check = mod(square.x + square.y, 2.0) < 0.5 ? 0.36 : 0.5;
        colour = clamp(colour, 0.0, 1.0) + check * (1.0 - clamp(pixel.a, 0.0, 1.0));
    }
    gl_FragColor = vec4(colour, 1.0);
})";

constexpr int kHalfFloats = 0x881A;     // GL_RGBA16F
constexpr unsigned kHalfFloat = 0x140B; // GL_HALF_FLOAT
constexpr int kClampToEdge = 0x812F;    // GL_CLAMP_TO_EDGE

/// A view whose coordinates are its pixels, y upwards.
void SetView(const QSizeF& view) {
    glMatrixMode(GL_PROJECTION);
    glLoadIdentity();
    glOrtho(0.0, view.width(), 0.0, view.height(), -1.0, 1.0);
    glMatrixMode(GL_MODELVIEW);
    glLoadIdentity();
}

/// How the pixels of a depth are handed to OpenGL, and kept there.
struct PixelFormat {
    int kept;
    unsigned given;
};

PixelFormat FormatOf(host::Depth depth) {
    switch (depth) {
    case host::Depth::Int8:
        return {GL_RGBA8, GL_UNSIGNED_BYTE};
    case host::Depth::Int16:
        return {GL_RGBA16, GL_UNSIGNED_SHORT};
    case host::Depth::Half:
        return {kHalfFloats, kHalfFloat};
    default:
        return {kHalfFloats, GL_FLOAT};
    }
}

/// The part of a picture between two fractions of its width.
void DrawPart(const QRectF& shown, double from, double to) {
    glBegin(GL_TRIANGLE_STRIP);
    for (int i = 0; i < 4; ++i) {
        const double x = i & 1 ? to : from;
        glTexCoord2d(x, i >> 1);
        glVertex2d(shown.x() + x * shown.width(), shown.y() + (i >> 1) * shown.height());
    }
    glEnd();
}

std::unique_ptr<QOpenGLShaderProgram> Program(const char* fragments) {
    auto program = std::make_unique<QOpenGLShaderProgram>();
    const bool made = program->addShaderFromSourceCode(QOpenGLShader::Vertex, kVertices) &&
                      program->addShaderFromSourceCode(QOpenGLShader::Fragment, fragments) && program->link();
    return made ? std::move(program) : nullptr;
}

} // namespace

void PicturePainter::Texture::Take(const std::shared_ptr<const host::Image>& image) {
    if (of == image) return;
    const bool sameKind = of && of->Width == image->Width && of->Height == image->Height &&
                          of->PixelDepth == image->PixelDepth && of->PixelPlanes == image->PixelPlanes;
    of = image;
    if (!name) glGenTextures(1, &name);
    glBindTexture(GL_TEXTURE_2D, name);
    glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_WRAP_S, kClampToEdge);
    glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_WRAP_T, kClampToEdge);
    glPixelStorei(GL_UNPACK_ALIGNMENT, 1);
    const int width = image->Width, height = image->Height;
    const host::Image::Plane& plane = image->PlaneAccess[0];
    const bool asItIs = image->PixelPlanes == host::Planes::One && // and rows lie one behind the other
                        (height == 1 || plane.Row(1) - plane.Row(0) == width * plane.Step);
    const PixelFormat format = FormatOf(asItIs ? image->PixelDepth : host::Depth::Float);
    std::vector<float> pixels;
    const void* data = plane.Row(0);
    if (!asItIs) {
        const std::size_t row = 4 * static_cast<std::size_t>(width);
        pixels.resize(row * static_cast<std::size_t>(height));
        for (int y = 0; y < height; ++y) image->ReadRow(y, &pixels[row * static_cast<std::size_t>(y)]);
        data = pixels.data();
    }
    if (sameKind)
        glTexSubImage2D(GL_TEXTURE_2D, 0, 0, 0, width, height, GL_RGBA, format.given, data);
    else
        glTexImage2D(GL_TEXTURE_2D, 0, format.kept, width, height, 0, GL_RGBA, format.given, data);
}

bool PicturePainter::Start() {
    plain_ = Program(kPlainFragments);
    full_ = Program(kFragments);
    return plain_ && full_;
}

void PicturePainter::Stop() {
    for (Texture* texture : {&before_, &after_}) {
        if (texture->name) glDeleteTextures(1, &texture->name);
        *texture = {};
    }
    plain_.reset();
    full_.reset();
}

void PicturePainter::Bind(const Texture& texture, double zoom) const {
    glBindTexture(GL_TEXTURE_2D, texture.name);
    glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MAG_FILTER, zoom < 2.0 ? GL_LINEAR : GL_NEAREST);
    glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MIN_FILTER, zoom == 1.0 ? GL_NEAREST : GL_LINEAR);
}

void PicturePainter::Paint(const std::shared_ptr<const host::Image>& before,
                           const std::shared_ptr<const host::Image>& after, const Placement& placement,
                           const QSizeF& view, const Showing& showing) {
    SetView(view);
    const bool plain =
        showing.channels == Channels::Colour && showing.exposure == 0.0 && showing.gamma == 1.0;
    QOpenGLShaderProgram& program = plain ? *plain_ : *full_;
    program.bind();
    program.setUniformValue("picture", 0);
    if (!plain) {
        program.setUniformValue("gain", static_cast<float>(std::exp2(showing.exposure)));
        program.setUniformValue("power", static_cast<float>(1.0 / showing.gamma));
        program.setUniformValue("channels", static_cast<int>(showing.channels));
    }
    const QSizeF size = placement.Shown();
    const QRectF shown({placement.Corner().x(), view.height() - placement.Corner().y() - size.height()},
                       size);
    if (showing.wipe > 0.0) {
        after_.Take(after);
        Bind(after_, placement.Zoom() * before->Width / after->Width);
        DrawPart(shown, 0.0, std::min(showing.wipe, 1.0));
    }
    if (showing.wipe < 1.0) {
        before_.Take(before);
        Bind(before_, placement.Zoom());
        DrawPart(shown, showing.wipe, 1.0);
    }
    program.release();
    glBindTexture(GL_TEXTURE_2D, 0);
}

} // namespace view
