#include "ztImage.h"

#include "OSGRefPtr.h"
#include "ztNumeric.h"
#include "ztPixels.h"

#include <algorithm>

namespace ztImage
{

namespace
{

using osg::UInt8;
using ztPixels::channels;

constexpr int maxSide = 1 << 24;
constexpr std::int64_t maxBytes = std::int64_t(1) << 31;

bool hasBytes(osg::ImagePtr const& image)
{
    return image != osg::NullFC && image->isComplete();
}

bool hasPossibleSides(int width, int height)
{
    return width > 0 && height > 0 && width <= maxSide && height <= maxSide;
}

bool isPossible(int width, int height)
{
    return hasPossibleSides(width, height) && std::int64_t(width) * height * channels <= maxBytes;
}

/// \param isCopied  whether the image has bytes of its own
void setBytes(osg::Image& image, int width, int height, osg::UInt8 const* bytes, bool isCopied)
{
    image.set(osg::Image::FormatRGBA, width, height, 1, 1, 1, 0.0, bytes, osg::Image::TypeUInt8, isCopied, 1);
}

ztPixels::Modulation modulationOf(osg::Color4f const& color, float opacity, float additive)
{
    double const alpha = double(color.a) * opacity;
    return {{color.r * alpha, color.g * alpha, color.b * alpha, alpha}, alpha * (1.0 - additive)};
}

/// The part of a row or a column that lies within the target.
struct Span
{
    std::size_t source, target, length;
};

Span clip(int position, int sourceSize, int targetSize)
{
    std::int64_t const begin = std::max<std::int64_t>(position, 0);
    std::int64_t const end = std::min<std::int64_t>(std::int64_t(position) + sourceSize, targetSize);
    if (begin >= end)
        return {0, 0, 0};
    return {std::size_t(begin - position), std::size_t(begin), std::size_t(end - begin)};
}

} // namespace

osg::ImagePtr create(int width, int height, osg::UInt8 const* bytes)
{
    osg::NewPtr<osg::Image> image(osg::create<osg::Image>());
    setBytes(*image, width, height, bytes, true);
    return image.release();
}

osg::ImagePtr createOver(int width, int height, osg::UInt8* bytes)
{
    auto const image = osg::create<osg::Image>();
    setBytes(*image, width, height, bytes, false);
    return image;
}

bool scale(osg::ImagePtr const& source, int width, int height, osg::ImagePtr& destination,
           ztImageGenericFilter const& filter)
{
    if (destination == osg::NullFC)
        return false;
    bool const possible =
        hasBytes(source) && hasPossibleSides(source->width, source->height) && isPossible(width, height);
    std::vector<UInt8> bytes;
    if (possible)
    {
        bytes.resize(std::size_t(width) * std::size_t(height) * channels);
        ztPixels::resample(source->pixelBuffer(), source->width, source->height, bytes.data(), width, height,
                           {filter.support, [&filter](double x) { return filter.filter(x); }});
    }
    destination->pixels.swap(bytes);
    setBytes(*destination, possible ? width : 0, possible ? height : 0, nullptr, true);
    osg::markChanged(destination, osg::AllFieldsMask);
    return possible;
}

bool blendImage(osg::ImagePtr const& target, osg::ImagePtr const& source, osg::Vector<float, 3u> position,
                osg::Color4<float> color, float opacity, float additive)
{
    if (!hasBytes(target) || !hasBytes(source))
        return false;
    Span const x = clip(ztNumeric::truncate(position.x), source->width, target->width);
    Span const y = clip(ztNumeric::truncate(position.y), source->height, target->height);
    if (x.length == 0 || y.length == 0)
        return false;

    UInt8 const* sourceBytes = source->pixelBuffer();
    std::vector<UInt8> copy;
    if (sourceBytes == target->pixelBuffer())
    {
        copy.assign(sourceBytes, sourceBytes + std::size_t(source->width) * std::size_t(source->height) * channels);
        sourceBytes = copy.data();
    }
    bool const asItIs =
        color.r == 1.0f && color.g == 1.0f && color.b == 1.0f && color.a == 1.0f && opacity == 1.0f && additive == 0.0f;
    std::size_t const targetStep = std::size_t(target->width) * channels;
    std::size_t const sourceStep = std::size_t(source->width) * channels;
    UInt8* const below = target->pixelBuffer() + y.target * targetStep + x.target * channels;
    UInt8 const* const above = sourceBytes + y.source * sourceStep + x.source * channels;
    if (asItIs)
        ztPixels::blend(below, targetStep, above, sourceStep, x.length, y.length);
    else
        ztPixels::blendModulated(below, targetStep, above, sourceStep, x.length, y.length,
                                 modulationOf(color, opacity, additive));
    osg::markChanged(target, osg::Image::PixelsFieldMask);
    return true;
}

void premultiply(osg::ImagePtr const& image)
{
    if (!hasBytes(image))
        return;
    ztPixels::premultiply(image->pixelBuffer(), std::size_t(image->width) * std::size_t(image->height));
    osg::markChanged(image, osg::Image::PixelsFieldMask);
}

} // namespace ztImage
