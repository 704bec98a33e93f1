#include "Guides.h"

#include "ztImage.h"
#include "ztOpenSGUtils.h"

#include <QRgba64>

#include <cmath>
#include <cstring>

namespace ztGuides
{

namespace
{

//! [image over]
/// An image that uses a picture's bytes in place.
osg::RefPtr<osg::Image> createImageOver(QImage& pixels)
{
    return osg::RefPtr<osg::Image>(ztImage::createOver(pixels.width(), pixels.height(), pixels.bits()));
}
//! [image over]

} // namespace

//! [stamp]
void stamp(QImage& frame)
{
    // Premultiplied, bottom row first.
    QImage pixels = frame.convertToFormat(QImage::Format_RGBA8888_Premultiplied).mirrored();
    std::vector<osg::OverlayPtr> visible;
    ztOverlays::getAllVisibleOverlays(visible);
    ztOverlays::blendOverlaysOntoImage(visible, createImageOver(pixels), osg::NullFC);
    frame = pixels.mirrored().convertToFormat(frame.format());
}
//! [stamp]

namespace
{

//! [layer]
/// Stamps onto a frame of 16 bits a channel, whose colour is premultiplied.
void stampDeep(QImage& frame)
{
    QImage layer(frame.size(), QImage::Format_RGBA8888_Premultiplied);
    layer.fill(Qt::transparent);
    stamp(layer);
    for (int y = 0; y < frame.height(); ++y)
    {
        auto* const below = reinterpret_cast<QRgba64*>(frame.scanLine(y));
        auto const* const above = layer.constScanLine(y);
        for (int x = 0; x < frame.width(); ++x)
        {
            auto const* const pixel = above + 4 * x;
            auto const over = [pixel](int channel, int value) {
                return quint16(std::lround(pixel[channel] * 257 + value * (255 - pixel[3]) / 255.0));
            };
            below[x] = qRgba64(over(0, below[x].red()), over(1, below[x].green()), over(2, below[x].blue()),
                               over(3, below[x].alpha()));
        }
    }
}
//! [layer]

QImage filled(int width, int height, QImage::Format format, QColor const& color)
{
    QImage picture(width, height, format);
    picture.fill(color);
    return picture;
}

osg::OverlayPtr addSquare(QColor const& color, osg::Vec2f const& anchor)
{
    osg::OverlayPtr const square = overlayOf(addPicture(filled(48, 48, QImage::Format_ARGB32, color)));
    square->anchor = anchor;
    osg::markChanged(square, osg::Overlay::AnchorFieldMask);
    return square;
}

void checkOrder()
{
    addSquare(Qt::red, {0.5f, 0.5f});
    addSquare(Qt::blue, {0.5f, 0.5f});
    QImage frame = filled(100, 100, QImage::Format_RGB32, Qt::black);
    stamp(frame);
    expect(frame.pixelColor(50, 50) == QColor(Qt::red), "the first child of the pool root comes on top");
}

void checkFarEdge()
{
    osg::OverlayPtr const square = addSquare(Qt::white, {0, 0});
    square->offset = {-10, 0};
    osg::markChanged(square, osg::Overlay::OffsetFieldMask);
    QImage frame = filled(100, 100, QImage::Format_RGB32, Qt::black);
    stamp(frame);
    expect(frame.pixelColor(0, 99) == QColor(Qt::black) && frame.pixelColor(91, 99) == QColor(Qt::white),
           "a negative corner counts from the far edge");
}

void checkDepth()
{
    addSquare(QColor(255, 0, 0, 51), {0, 0}); // a fifth
    QImage frame = filled(100, 100, QImage::Format_RGBA64_Premultiplied, Qt::black);
    frame.setPixelColor(10, 89, QColor::fromRgba64(1001, 2000, 3000));
    frame.setPixelColor(80, 10, QColor::fromRgba64(1001, 2000, 3000));
    stampDeep(frame);
    expect(frame.pixelColor(10, 89).rgba64() == qRgba64(13908, 1600, 2400, 65535), "16 bits are blended");
    expect(frame.pixelColor(80, 10).rgba64() == qRgba64(1001, 2000, 3000, 65535), "and stay where there is nothing");
}

} // namespace

void stamping()
{
    for (auto* const check : {checkOrder, checkFarEdge, checkDepth})
    {
        ztOpenSGUtils::setRoot(createScene());
        check();
    }
}

} // namespace ztGuides
