/// \file
/// Pictures for the benchmarks of pixel operations.
#pragma once

#include "ztImage.h"

#include <QImage>

#include <memory>
#include <random>

namespace ztBenchmarks
{

/// Premultiplied pixels with colours at random, and with an alpha at random unless one is given.
inline QImage randomPicture(int width, int height, int alpha = -1)
{
    std::mt19937 random(unsigned(width * height));
    QImage picture(width, height, QImage::Format_RGBA8888_Premultiplied);
    for (int y = 0; y < height; ++y)
        for (uchar* pixel = picture.scanLine(y); pixel != picture.scanLine(y) + 4 * width; pixel += 4)
        {
            unsigned const opacity = alpha < 0 ? random() % 256 : unsigned(alpha);
            for (int c = 0; c < 3; ++c)
                pixel[c] = uchar(random() % (opacity + 1));
            pixel[3] = uchar(opacity);
        }
    return picture;
}

/// Makes an image of the library, or one that uses the bytes of a picture in place.
inline std::shared_ptr<osg::ImagePtr> makeImage(QImage* picture = nullptr)
{
    osg::ImagePtr const image =
        picture ? ztImage::createOver(picture->width(), picture->height(), picture->bits()) : ztImage::create(0, 0);
    osg::addRef(image);
    return {new osg::ImagePtr(image), [](osg::ImagePtr* held) {
                osg::subRef(*held);
                delete held;
            }};
}

} // namespace ztBenchmarks
