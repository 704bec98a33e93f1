/// \file
/// The programs of shader chunks.
#pragma once

#include "GLContext.h"
#include "OSGChunk.h"

#include <map>
#include <memory>
#include <unordered_map>
#include <utility>
#include <vector>

namespace osg::v1
{

/// What all chunks with the same sources are compiled to.
struct GLProgram
{
    /// 0 if the sources don't compile or link.
    GLuint name = 0;
    GLint pixelsToClip = -1;
    bool isTried = false;
    Failure failure;
    std::size_t users = 0;
};

/// Keeps programs for as long as there are chunks with their sources.
class GLPrograms
{
  public:
    /// The program of a chunk. A new one is tried out with the vertex array and the framebuffer that are bound.
    GLProgram const& of(ShaderChunk const& chunk);

    /// Lets go what belongs to chunks that have ended.
    void sweep();

    /// Ends the use of all programs that have been asked for: deletes what has gone meanwhile.
    void endUse();
    void clear();

    std::size_t size() const { return _programs.size(); }

  private:
    /// From vertex and fragment programs.
    using Programs = std::map<std::pair<std::string, std::string>, GLProgram>;

    struct Use
    {
        std::weak_ptr<void const> life;
        Programs::iterator program;
        /// Those of the program. A chunk that has them shares their text, which isn't compared then.
        SharedString vertexProgram, fragmentProgram;
    };

    GLProgram& find(ShaderChunk const& chunk);
    void drop(Use const& use);

    Programs _programs;
    std::unordered_map<StateChunk const*, Use> _uses;
    std::vector<GLuint> _retired;
};

} // namespace osg::v1
