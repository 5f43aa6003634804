#include "view/PicturePainter.h"

#include <QOpenGLContext>
#include <QOpenGLFunctions>

#include <GL/gl.h>

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

constexpr const char* kFragments = R"(#version 120
uniform sampler2D before, after;
uniform float wipe, gain, power;
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
    vec4 pixel = at.x < wipe ? texture2D(after, at) : texture2D(before, at);
    vec3 colour = Chosen(pixel);
    if (channels != 4) colour = pow(max(colour * gain, 0.0), vec3(power));
    if (channels == 6) {
        vec2 square = floor(gl_FragCoord.xy / 12.0);
        float check = mod(square.x + square.y, 2.0) < 0.5 ? 0.36 : 0.5;
        colour = clamp(colour, 0.0, 1.0) + check * (1.0 - clamp(pixel.a, 0.0, 1.0));
    }
    gl_FragColor = vec4(colour, 1.0);
})";

constexpr int kHalfFloats = 0x881A;  // GL_RGBA16F
constexpr int kClampToEdge = 0x812F; // GL_CLAMP_TO_EDGE

QOpenGLFunctions& GL() {
    return *QOpenGLContext::currentContext()->functions();
}

/// A view whose coordinates are its pixels, y upwards.
void SetView(const QSizeF& view) {
    glMatrixMode(GL_PROJECTION);
    glLoadIdentity();
    glOrtho(0.0, view.width(), 0.0, view.height(), -1.0, 1.0);
    glMatrixMode(GL_MODELVIEW);
    glLoadIdentity();
}

void DrawSquare(double left, double bottom, double right, double top) {
    glBegin(GL_TRIANGLE_STRIP);
    for (int i = 0; i < 4; ++i) {
        glTexCoord2d(i & 1, i >> 1);
        glVertex2d(i & 1 ? right : left, i >> 1 ? top : bottom);
    }
    glEnd();
}

} // namespace

void PicturePainter::Texture::Take(const std::shared_ptr<const host::Image>& image) {
    if (of == image) return;
    of = image;
    if (!name) glGenTextures(1, &name);
    const auto width = static_cast<std::size_t>(image->Width);
    std::vector<float> pixels(4 * width * static_cast<std::size_t>(image->Height));
    for (int y = 0; y < image->Height; ++y)
        image->ReadRow(y, &pixels[4 * width * static_cast<std::size_t>(y)]);
    glBindTexture(GL_TEXTURE_2D, name);
    glPixelStorei(GL_UNPACK_ALIGNMENT, 4);
    glTexImage2D(GL_TEXTURE_2D, 0, kHalfFloats, image->Width, image->Height, 0, GL_RGBA, GL_FLOAT,
                 pixels.data());
    glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_WRAP_S, kClampToEdge);
    glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_WRAP_T, kClampToEdge);
}

bool PicturePainter::Start() {
    program_ = std::make_unique<QOpenGLShaderProgram>();
    return program_->addShaderFromSourceCode(QOpenGLShader::Vertex, kVertices) &&
           program_->addShaderFromSourceCode(QOpenGLShader::Fragment, kFragments) && program_->link();
}

void PicturePainter::Stop() {
    for (Texture* texture : {&before_, &after_}) {
        if (texture->name) glDeleteTextures(1, &texture->name);
        *texture = {};
    }
    program_.reset();
}

void PicturePainter::Bind(const Texture& texture, int unit, double zoom) const {
    GL().glActiveTexture(static_cast<unsigned>(GL_TEXTURE0 + unit));
    glBindTexture(GL_TEXTURE_2D, texture.name);
    glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MAG_FILTER, zoom < 2.0 ? GL_LINEAR : GL_NEAREST);
    glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MIN_FILTER, GL_LINEAR);
}

void PicturePainter::Paint(const std::shared_ptr<const host::Image>& before,
                           const std::shared_ptr<const host::Image>& after, const Placement& placement,
                           const QSizeF& view, const Showing& showing) {
    SetView(view);
    before_.Take(before);
    after_.Take(after);
    program_->bind();
    Bind(before_, 1, placement.Zoom());
    Bind(after_, 0, placement.Zoom() * before->Width / after->Width);
    program_->setUniformValue("after", 0);
    program_->setUniformValue("before", 1);
    program_->setUniformValue("wipe", static_cast<float>(showing.wipe >= 1.0 ? 2.0 : showing.wipe));
    program_->setUniformValue("gain", static_cast<float>(std::exp2(showing.exposure)));
    program_->setUniformValue("power", static_cast<float>(1.0 / showing.gamma));
    program_->setUniformValue("channels", static_cast<int>(showing.channels));
    const QPointF corner = placement.Corner();
    const QSizeF shown = placement.Shown();
    const double top = view.height() - corner.y();
    DrawSquare(corner.x(), top - shown.height(), corner.x() + shown.width(), top);
    program_->release();
    GL().glActiveTexture(GL_TEXTURE0);
    glBindTexture(GL_TEXTURE_2D, 0);
}

} // namespace view
