/// \file
/// The current OpenGL context: which it is, what it offers, what went wrong in it.
#pragma once

#include "OSGBase.h"

#include <epoxy/gl.h>

#include <string>

namespace osg::v1
{

/// The context of EGL or GLX that is current on this thread; null for none.
void* getCurrentGLContext();

/// What a context offers.
struct GLVersion
{
    static GLVersion ofCurrentContext();

    /// OpenGL 3.3 or OpenGL ES 3.0.
    bool isEnough() const { return number >= (isDesktop ? 33 : 30); }

    /// Ten times the version: 33 for 3.3.
    int number;
    bool isDesktop;
};

/// Why something can't be drawn; empty if it can.
using Failure = std::string;

/// An error of OpenGL in words.
Failure describeGLError(GLenum error);

/// The first error that OpenGL holds, empty for none. Afterwards it holds none.
Failure takeGLError();

} // namespace osg::v1
