// Images scaled, blended and premultiplied, against sums of doubles: any sizes, filters and factors, an image onto
// itself, and bytes that are the image's own or borrowed.
#include "FuzzSupport.h"
#include "WeightedSum.h"

#include "OSGChangeList.h"
#include "OSGRefPtr.h"
#include "OSGThread.h"
#include "ztImage.h"
#include "ztNumeric.h"

#include <cmath>
#include <random>

using namespace ztFuzz;

namespace
{

using Pixels = std::vector<osg::UInt8>;
using ImageRef = osg::RefPtr<osg::Image>;

struct Filter : ztImageGenericFilter
{
    Filter(double radius, double (*function)(double x, double radius)) : ztImageGenericFilter(radius), weigh(function)
    {
    }
    double filter(double x) const override { return weigh(x, support); }

    double (*weigh)(double x, double radius);
};

/// No radius is a distance between pixels.
Filter anyFilter(Bytes& bytes)
{
    double (*const functions[])(double, double) = {
        [](double x, double radius) { return std::max(radius - std::abs(x), 0.0); },
        [](double, double) { return 1.0; },
        [](double x, double) {
            double const t = std::abs(x);
            return t < 1 ? (1.5 * t - 2.5) * t * t + 1 : ((2.5 - 0.5 * t) * t - 4) * t + 2;
        },
        [](double x, double) { return double(x < 0.0); },
        [](double x, double) { return x > 0.0 ? 1.0 : -1.0; },
        [](double, double) { return 0.0; },
        [](double, double) { return std::nan(""); },
        [](double, double) { return HUGE_VAL; }};
    unsigned const function = bytes.below(std::size(functions));
    return {function == 2 ? 2.0 : double(bytes.number()) * 0.7310585786, functions[function]};
}

/// May have a size without bytes.
ImageRef anyImage(Bytes& bytes, Pixels& outside)
{
    int const width = int(bytes.below(70)), height = int(bytes.below(30));
    std::minstd_rand random(bytes.bits<osg::UInt8>());
    outside.resize(std::size_t(width * height * 4));
    for (std::size_t i = 0; i < outside.size(); ++i) // runs that are clear or opaque, too
        outside[i] = i / 160 % 3 == 1 ? 0 : i / 160 % 3 == 2 && i % 4 == 3 ? 255 : osg::UInt8(random() >> 8);
    ImageRef const image(bytes.flip() ? ztImage::create(width, height, outside.data())
                                      : ztImage::createOver(width, height, outside.data()));
    if (!image->externalPixels && bytes.below(8) == 0)
        image->height = bytes.integer();
    return image;
}

Pixels bytesOf(osg::Image& image)
{
    if (!image.isComplete())
        return {};
    return {image.pixelBuffer(), image.pixelBuffer() + std::size_t(image.width) * std::size_t(image.height) * 4};
}

void checkPixel(Pixels const& from, osg::UInt8 const* found, std::vector<double> const& columns,
                std::vector<double> const& rows)
{
    for (std::size_t channel = 0; channel < 4; ++channel)
    {
        require(std::abs(found[channel] - weightedSum(from, columns, rows, channel)) < 0.502,
                "a new pixel is a weighted sum");
    }
}

osg::ChangeList recorded;

void requireMark(osg::FieldContainerPtr const& container, osg::BitVector mask)
{
    auto const entries = std::exchange(recorded, {}).getEntries();
    require(entries.size() == (mask ? 1 : 0), "what is written is marked, once");
    require(!mask || (entries[0].container == container && entries[0].mask == mask), "the right field is marked");
}

void scale(Bytes& bytes, ImageRef const& source, ImageRef const& other)
{
    int width = bytes.integer(), height = bytes.integer();
    Pixels const before = bytesOf(*source);
    int const sourceWidth = source->width, sourceHeight = source->height, most = 1 << 24;
    bool const isPossible = !before.empty() && width > 0 && height > 0 && width <= most && height <= most &&
                            std::int64_t(width) * height <= std::int64_t(1) << 29;
    if (isPossible) // not more than there is time for
    {
        width = width % 60 + 1;
        height = height % 30 + 1;
    }
    osg::ImagePtr destination = bytes.flip() ? source : other;
    Filter const filter = anyFilter(bytes);
    auto const weigh = [&filter](double x) { return filter.filter(x); };
    require(ztImage::scale(source, width, height, destination, filter) == isPossible, "an image is scaled or not");
    requireMark(destination, osg::AllFieldsMask);
    require(source == destination || bytesOf(*source) == before, "the source is left");
    int const newWidth = isPossible ? width : 0, newHeight = isPossible ? height : 0;
    require(destination->width == newWidth && destination->height == newHeight && !destination->externalPixels &&
                destination->pixels.size() == std::size_t(newWidth * newHeight * 4),
            "the new image has its size");
    for (int y = 0; y < newHeight; ++y)
        for (int x = 0; x < newWidth; ++x)
            checkPixel(before, &destination->pixels[std::size_t(y * width + x) * 4],
                       weightsOf(sourceWidth, width, x, filter.support, weigh),
                       weightsOf(sourceHeight, height, y, filter.support, weigh));
}

void blend(Bytes& bytes, ImageRef const& source, ImageRef const& other)
{
    osg::ImagePtr const target = bytes.flip() ? source : other;
    osg::Vec3f const position{bytes.number(), bytes.number(), bytes.number()};
    unsigned const unusual = bytes.below(14); // a factor, or all, or none
    auto factor = [&, i = 0u](float usual) mutable { return unusual == i++ || unusual == 6 ? bytes.number() : usual; };
    osg::Color4f const color{factor(1), factor(1), factor(1), factor(1)};
    float const opacity = factor(1), additive = factor(0);
    double const alpha = double(color.a) * opacity;
    double const factors[] = {color.r * alpha, color.g * alpha, color.b * alpha, alpha};
    Pixels const above = bytesOf(*source), below = bytesOf(*target);
    bool const blended = ztImage::blendImage(target, source, position, color, opacity, additive);
    Pixels const found = bytesOf(*target);
    require(found.size() == below.size(), "a target keeps its size");
    bool meets = false;
    for (std::size_t i = 0; i < found.size(); ++i)
    {
        double const x = double(i / 4 % unsigned(target->width)) - ztNumeric::truncate(position.x);
        double const y = double(i / 4 / unsigned(target->width)) - ztNumeric::truncate(position.y);
        double sum = below[i];
        if (!above.empty() && x >= 0 && x < source->width && y >= 0 && y < source->height)
        {
            std::size_t const at = (std::size_t(y) * unsigned(source->width) + std::size_t(x)) * 4;
            sum = above[at + i % 4] * factors[i % 4] +
                  below[i] * (1.0 - alpha * (1.0 - additive) * above[at + 3] / 255.0);
            meets = true;
        }
        require(std::abs(found[i] - (sum == sum ? std::clamp(sum, 0.0, 255.0) : 0.0)) < 0.5001, "a pixel is blended");
    }
    require(blended == meets, "images meet or not");
    requireMark(target, meets ? osg::Image::PixelsFieldMask : 0);
}

void premultiply(ImageRef const& image)
{
    Pixels const straight = bytesOf(*image);
    ztImage::premultiply(image);
    requireMark(image, straight.empty() ? 0 : osg::Image::PixelsFieldMask);
    Pixels const found = bytesOf(*image);
    require(found.size() == straight.size(), "a premultiplied image keeps its size");
    for (std::size_t i = 0; i < found.size(); ++i)
        require(found[i] == (i % 4 == 3 ? straight[i] : std::lround(straight[i] * straight[i | 3] / 255.0)),
                "colour is multiplied by alpha");
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(osg::UInt8 const* data, std::size_t size)
{
    Bytes bytes(data, size);
    {
        Pixels outside, outsideOfOther;
        ImageRef const image = anyImage(bytes, outside), other = anyImage(bytes, outsideOfOther);
        osg::UInt8 pixel[4] = {};
        ImageRef const wide(ztImage::createOver((1 << 24) + 1, 1, pixel)), narrow(ztImage::create(1, 2)),
            possible(ztImage::createOver(1, 1, pixel));
        osg::ImagePtr none;
        osg::PThreadBase::setCurrentChangeList(&recorded);
        ztImage::premultiply(none);
        require(!ztImage::scale(image, 1, 1, none, ztImageBilinearFilter()) &&
                    !ztImage::blendImage(none, image, {}, {}, 1, 0) && !ztImage::blendImage(image, none, {}, {}, 1, 0),
                "nothing happens to null");
        for (auto const& [source, side] : {std::pair{none, 1}, {wide, 1}, {possible, 23171}}) // beyond 2 GiB
        {
            osg::ImagePtr destination = narrow;
            require(!ztImage::scale(source, side, side, destination, ztImageBilinearFilter()) && narrow->width == 0 &&
                        narrow->height == 0,
                    "what can't be scaled gives nothing");
            requireMark(narrow, osg::AllFieldsMask);
        }
        unsigned const operation = bytes.below(8);
        if (operation == 0)
            premultiply(image);
        else
            (operation < 5 ? blend : scale)(bytes, image, other);
        osg::PThreadBase::setCurrentChangeList(nullptr);
    }
    requireNoContainers();
    return 0;
}
