#include "app/OffscreenGL.h"

#define GL_GLEXT_PROTOTYPES
#include <EGL/egl.h>
#include <EGL/eglext.h>
#include <GL/gl.h>
#include <GL/glext.h>

#include <cstdlib>
#include <stdexcept>
#include <string>

namespace app {

namespace {

void Check(bool good, const char* what) {
    if (!good)
        throw std::runtime_error(std::string("there is no off-screen OpenGL: ") + what + " failed" +
                                 " (is Mesa with EGL installed?)");
}

/// A display that can be opened, or null.
EGLDisplay Opened(EGLDisplay display) {
    return display != EGL_NO_DISPLAY && eglInitialize(display, nullptr, nullptr) ? display : EGL_NO_DISPLAY;
}

/// The first device of the machine that can be opened.
EGLDisplay OpenDevice() {
    const auto queryDevices =
        reinterpret_cast<PFNEGLQUERYDEVICESEXTPROC>(eglGetProcAddress("eglQueryDevicesEXT"));
    EGLDeviceEXT devices[16];
    EGLint count = 0;
    if (!queryDevices || !queryDevices(16, devices, &count)) return EGL_NO_DISPLAY;
    for (EGLint i = 0; i < count; ++i)
        if (const EGLDisplay display =
                Opened(eglGetPlatformDisplay(EGL_PLATFORM_DEVICE_EXT, devices[i], nullptr)))
            return display;
    return EGL_NO_DISPLAY;
}

} // namespace

OffscreenGL::OffscreenGL(int width, int height) : width_(width), height_(height) {
    setenv("LIBGL_ALWAYS_SOFTWARE", "1", 0); // the same strokes on every machine
    try {
        OpenDisplay();
        MakeContext();
        MakePicture();
    } catch (...) {
        Close();
        throw;
    }
}

OffscreenGL::~OffscreenGL() {
    Close();
}

void OffscreenGL::OpenDisplay() {
    display_ = Opened(eglGetPlatformDisplay(EGL_PLATFORM_SURFACELESS_MESA, EGL_DEFAULT_DISPLAY, nullptr));
    if (!display_) display_ = OpenDevice();
    Check(display_ != EGL_NO_DISPLAY, "opening a display");
}

void OffscreenGL::MakeContext() {
    Check(eglBindAPI(EGL_OPENGL_API), "choosing OpenGL");
    const EGLint wishes[] = {EGL_SURFACE_TYPE, 0, EGL_RENDERABLE_TYPE, EGL_OPENGL_BIT, EGL_NONE};
    EGLConfig config = nullptr;
    EGLint count = 0;
    Check(eglChooseConfig(display_, wishes, &config, 1, &count) && count > 0, "choosing a configuration");
    context_ = eglCreateContext(display_, config, EGL_NO_CONTEXT, nullptr);
    Check(context_ != EGL_NO_CONTEXT, "making a context");
    Check(eglMakeCurrent(display_, EGL_NO_SURFACE, EGL_NO_SURFACE, context_), "making a context current");
}

void OffscreenGL::MakePicture() {
    glGenRenderbuffers(1, &colours_);
    glBindRenderbuffer(GL_RENDERBUFFER, colours_);
    glRenderbufferStorage(GL_RENDERBUFFER, GL_RGBA8, width_, height_);
    glGenFramebuffers(1, &frameBuffer_);
    glBindFramebuffer(GL_FRAMEBUFFER, frameBuffer_);
    glFramebufferRenderbuffer(GL_FRAMEBUFFER, GL_COLOR_ATTACHMENT0, GL_RENDERBUFFER, colours_);
    Check(glCheckFramebufferStatus(GL_FRAMEBUFFER) == GL_FRAMEBUFFER_COMPLETE, "making a picture to draw in");

    glViewport(0, 0, width_, height_);
    glMatrixMode(GL_PROJECTION);
    glLoadIdentity();
    glOrtho(0.0, width_, 0.0, height_, -1.0, 1.0);
    glMatrixMode(GL_MODELVIEW);
    glLoadIdentity();
}

void OffscreenGL::Close() {
    if (frameBuffer_) glDeleteFramebuffers(1, &frameBuffer_);
    if (colours_) glDeleteRenderbuffers(1, &colours_);
    if (!display_) return;
    eglMakeCurrent(display_, EGL_NO_SURFACE, EGL_NO_SURFACE, EGL_NO_CONTEXT);
    if (context_) eglDestroyContext(display_, context_);
    eglTerminate(display_);
}

std::vector<std::uint8_t> OffscreenGL::ReadPixels() const {
    std::vector<std::uint8_t> pixels(static_cast<std::size_t>(width_) * static_cast<std::size_t>(height_) *
                                     4);
    glPixelStorei(GL_PACK_ALIGNMENT, 1);
    glReadPixels(0, 0, width_, height_, GL_RGBA, GL_UNSIGNED_BYTE, pixels.data());
    return pixels;
}

} // namespace app
