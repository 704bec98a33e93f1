/// \file
/// Pictures from framebuffers of the current context.
#pragma once

#include <QImage>
#include <QOpenGLFramebufferObject>
#include <QRect>

#include <functional>

namespace ztExamples
{

/// A framebuffer whose edges are smooth on any screen.
class SmoothFramebuffer
{
  public:
    explicit SmoothFramebuffer(QSize const& size);

    QSize size() const { return _drawn.size(); }

    /// What is drawn from now on goes here.
    void bind() { _drawn.bind(); }

    /// Binds what has been drawn for reading.
    void resolve();

    /// Binds the window's framebuffer and shows there what has been drawn.
    void present();

  private:
    QOpenGLFramebufferObject _drawn;
    /// The samples come together here: not every window's format can take them.
    QOpenGLFramebufferObject _resolved;
};

/// Reads the framebuffer that is bound into a part of a picture, which is in the layout of an osg::Image.
void readPixels(QImage& picture, QRect const& part);

/// A picture in the layout of an osg::Image, tile by tile.
/// \param draw  draws a tile, given in pixels of the picture, y up, into the framebuffer that is bound
/// \throw std::runtime_error if the context, or the memory, isn't up to the size
QImage renderPicture(QSize const& size, std::function<void(QRect const& tile)> const& draw);

} // namespace ztExamples
