/// \file
/// OpenGL without a window, for tests and benchmarks.
#pragma once

#include <epoxy/egl.h>
#include <epoxy/gl.h>

/// An OpenGL context without a surface, current from its start on.
class SurfacelessContext
{
  public:
    /// \param isES  whether it is of OpenGL ES 3.0 rather than of OpenGL 3.3
    explicit SurfacelessContext(bool isES)
    {
        _display = eglGetPlatformDisplayEXT(EGL_PLATFORM_SURFACELESS_MESA, EGL_DEFAULT_DISPLAY, nullptr);
        if (!eglInitialize(_display, nullptr, nullptr))
            return;
        eglBindAPI(isES ? EGL_OPENGL_ES_API : EGL_OPENGL_API);
        EGLint const attributes[] = {EGL_CONTEXT_MAJOR_VERSION, 3, EGL_CONTEXT_MINOR_VERSION, isES ? 0 : 3, EGL_NONE};
        _context = eglCreateContext(_display, EGL_NO_CONFIG_KHR, EGL_NO_CONTEXT, attributes);
        makeCurrent();
    }

    SurfacelessContext(SurfacelessContext const&) = delete;
    SurfacelessContext& operator=(SurfacelessContext const&) = delete;
    ~SurfacelessContext() { eglDestroyContext(_display, _context); }

    bool isThere() const { return _context != EGL_NO_CONTEXT; }
    void makeCurrent() const { eglMakeCurrent(_display, EGL_NO_SURFACE, EGL_NO_SURFACE, _context); }
    void leave() const { eglMakeCurrent(_display, EGL_NO_SURFACE, EGL_NO_SURFACE, EGL_NO_CONTEXT); }

  private:
    EGLDisplay _display;
    EGLContext _context = EGL_NO_CONTEXT;
};

/// A new object of OpenGL.
template <class Generate>
GLuint make(Generate const& generate)
{
    GLuint name = 0;
    generate(1, &name);
    return name;
}
