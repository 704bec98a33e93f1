// A renderer of one's own: a draw action that paints with QPainter.
#pragma once

#include "OSGPolygonFit.h"
#include "OSGRefPtr.h"
#include "ztImage.h"

#include <QImage>
#include <QPainter>

class PainterDrawAction : public osg::DrawActionBase
{
  public:
    explicit PainterDrawAction(QPainter& painter) : _painter(painter) {}

    void drawPolygon(osg::TexturedPolygon const& polygon, osg::Viewport& viewport) override
    {
        osg::TextureChunk const* const texture = osg::drawChunksOf(polygon.material).texture;
        if (!texture || texture->image == osg::NullFC || !texture->image->isComplete() || polygon.positions.size() < 3)
            return;
        int const width = viewport.getPixelWidth(), height = viewport.getPixelHeight();
        int const left = viewport.pixelLeft, top = _painter.device()->height() - viewport.pixelBottom - height;
        osg::LayoutArea const area = viewport.getLayoutArea();
        osg::PixelFit const fit = osg::fitToPixels(polygon, area, width, height);

        // From the layout's pixels, y up, to the device's, y down.
        auto const toDevice = [&](osg::Pnt2f const& corner) {
            return QPointF(left + double(fit.x(corner.x) - area.left) * width / double(area.right - area.left),
                           top + double(area.top - fit.y(corner.y)) * height / double(area.top - area.bottom));
        };
        QRectF const place = QRectF(toDevice(polygon.positions[0]), toDevice(polygon.positions[2])).normalized();
        _painter.setClipRect(left, top, width, height);
        _painter.setRenderHint(QPainter::SmoothPixmapTransform);
        _painter.drawImage(place, toQImage(texture->image, fit.width, fit.height));
    }

  private:
    // Premultiplied pixels, top row first. Scaled as a stamp scales them, if the renderer is to show a size; a renderer
    // that is asked for many frames would keep them until texture->getImageRevision() grows.
    static QImage toQImage(osg::ImagePtr image, int width, int height)
    {
        osg::RefPtr<osg::Image> scaled(osg::create<osg::Image>());
        if ((image->width != width || image->height != height) &&
            ztImage::scale(image, width, height, scaled, ztImageBilinearFilter()))
            image = scaled;
        QImage const pixels(image->pixelBuffer(), image->width, image->height, QImage::Format_RGBA8888_Premultiplied);
        return pixels.mirrored();
    }

    QPainter& _painter;
};
