#include "Offscreen.h"

#include "Picture.h"
#include "View.h"

#include <QOpenGLContext>
#include <QOpenGLExtraFunctions>

#include <stdexcept>

namespace ztExamples
{

namespace
{

constexpr int tileSide = 512;

void requireSize(QSize const& size)
{
    GLint limits[2];
    QOpenGLContext::currentContext()->functions()->glGetIntegerv(GL_MAX_VIEWPORT_DIMS, limits);
    if (size.width() > limits[0] || size.height() > limits[1])
        throw std::runtime_error("can't draw more than " + std::to_string(limits[0]) + " by " +
                                 std::to_string(limits[1]) + " pixels");
}

QOpenGLFramebufferObjectFormat smoothFormat()
{
    QOpenGLFramebufferObjectFormat format;
    format.setSamples(4);
    format.setAttachment(QOpenGLFramebufferObject::Depth);
    return format;
}

} // namespace

SmoothFramebuffer::SmoothFramebuffer(QSize const& size) : _drawn(size, smoothFormat()), _resolved(size)
{
    if (!_drawn.isValid() || !_resolved.isValid())
        throw std::runtime_error("can't draw " + std::to_string(size.width()) + " by " + std::to_string(size.height()) +
                                 " pixels");
}

void SmoothFramebuffer::resolve()
{
    QOpenGLFramebufferObject::blitFramebuffer(&_resolved, &_drawn);
    _resolved.bind();
}

void SmoothFramebuffer::present()
{
    resolve();
    QOpenGLFramebufferObject::blitFramebuffer(nullptr, &_resolved);
    QOpenGLFramebufferObject::bindDefault();
}

void readPixels(QImage& picture, QRect const& part)
{
    QOpenGLExtraFunctions& gl = *QOpenGLContext::currentContext()->extraFunctions();
    gl.glPixelStorei(GL_PACK_ROW_LENGTH, picture.width());
    gl.glReadPixels(0, 0, part.width(), part.height(), GL_RGBA, GL_UNSIGNED_BYTE,
                    picture.scanLine(part.y()) + 4 * part.x());
    gl.glPixelStorei(GL_PACK_ROW_LENGTH, 0);
}

QImage renderPicture(QSize const& size, std::function<void(QRect const& tile)> const& draw)
{
    requireSize(size);
    QImage picture = allocated(QImage(size, QImage::Format_RGBA8888_Premultiplied));
    QSize const tileSize(tileSide, tileSide);
    SmoothFramebuffer framebuffer(tileSize);
    for (QRect const& tile : splitIntoTiles(size, tileSize))
    {
        framebuffer.bind();
        draw(tile);
        framebuffer.resolve();
        readPixels(picture, tile);
    }
    QOpenGLFramebufferObject::bindDefault();
    return picture;
}

} // namespace ztExamples
