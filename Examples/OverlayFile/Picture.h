/// \file
/// Pictures from files, and their pixels as an osg::Image has them.
#pragma once

#include "OSGImage.h"

#include <QImage>

namespace ztExamples
{

/// A picture from a file, turned as its file says.
/// \throw std::runtime_error if it can't be read; what() is the reason
QImage readPicture(QString const& path);

/// The result of an operation of QImage, which gives a null image where there is no memory for it.
/// \throw std::runtime_error for a null image
QImage allocated(QImage image);

/// The pixels in the layout of an osg::Image: red, green, blue, alpha, premultiplied, bottom row first, no
/// gaps.
/// \throw std::runtime_error without the memory for it
QImage toPixels(QImage picture);

/// A new image, its count 0, that uses the bytes of such pixels in place: they have to outlive it.
osg::ImagePtr createImageOver(QImage& pixels);

} // namespace ztExamples
