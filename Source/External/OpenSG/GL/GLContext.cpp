#include "GLContext.h"

#include <dlfcn.h>

#include <atomic>

namespace osg::v1
{

namespace
{

/// A function that tells the current context, in a library that may come into the process at any time and then stays.
class ContextQuery
{
  public:
    constexpr ContextQuery(char const* library, char const* function) : _library(library), _function(function) {}

    /// Null while the library isn't known to be there.
    void* ask() const
    {
        auto const query = _query.load(std::memory_order_relaxed);
        return query ? query() : nullptr;
    }

    /// Looks for the library if it isn't known.
    void find()
    {
        if (_query.load(std::memory_order_relaxed))
            return;
        if (void* const library = dlopen(_library, RTLD_LAZY | RTLD_NOLOAD))
            _query.store(reinterpret_cast<void* (*)()>(dlsym(library, _function)), std::memory_order_relaxed);
    }

  private:
    char const* _library;
    char const* _function;
    std::atomic<void* (*)()> _query{nullptr};
};

ContextQuery contextQueries[] = {{"libEGL.so.1", "eglGetCurrentContext"},
                                 {"libGLX.so.0", "glXGetCurrentContext"},
                                 {"libGL.so.1", "glXGetCurrentContext"}};

void* askForContext()
{
    for (ContextQuery const& query : contextQueries)
        if (void* const context = query.ask())
            return context;
    return nullptr;
}

} // namespace

// libepoxy ends the process where a function is called without a context, so it can't be asked.
void* getCurrentGLContext()
{
    if (void* const context = askForContext())
        return context;
    for (ContextQuery& query : contextQueries)
        query.find();
    return askForContext();
}

GLVersion GLVersion::ofCurrentContext()
{
    return {epoxy_gl_version(), epoxy_is_desktop_gl()};
}

Failure describeGLError(GLenum error)
{
    return error == GL_NO_ERROR ? "" : "OpenGL error " + std::to_string(error);
}

Failure takeGLError()
{
    GLenum const error = glGetError();
    // Each of several flags is an error of its own; a lost context reports for ever.
    for (int i = 0; i < 8 && error != GL_NO_ERROR && glGetError() != GL_NO_ERROR; ++i)
        continue;
    return describeGLError(error);
}

} // namespace osg::v1
