#include "Convert.h"

#include "Colors.h"

#include <OpenImageIO/imagebuf.h>
#include <OpenImageIO/imagebufalgo.h>

#include <QString>

#include <algorithm>
#include <cstring>
#include <stdexcept>

namespace ztExamples
{

namespace
{

using OIIO::ImageBuf;
namespace Algorithm = OIIO::ImageBufAlgo;

/// The depth of a format that comes nearest to that of another one.
OIIO::TypeDesc depth(std::string const& format, OIIO::TypeDesc type)
{
    bool const isByte = type == OIIO::TypeUInt8;
    if (format == "openexr")
        return isByte || type == OIIO::TypeHalf ? OIIO::TypeHalf : OIIO::TypeFloat;
    if (format == "hdr" || (format == "tiff" && type.is_floating_point()))
        return OIIO::TypeFloat;
    bool const holdsMore = format == "png" || format == "tiff" || format == "dpx";
    return holdsMore && !isByte ? OIIO::TypeUInt16 : OIIO::TypeUInt8;
}

/// The channels that show, with a fraction.
ImageBuf visible(Part const& part, Channels const& channels)
{
    std::vector<int> indices(channels.colors.begin(), channels.colors.begin() + (channels.isGray() ? 1 : 3));
    if (channels.alpha >= 0)
        indices.push_back(channels.alpha);
    OIIO::ImageSpec spec = part.spec;
    spec.channelformats.clear();
    spec.set_format(OIIO::TypeFloat);
    spec.nchannels = int(indices.size());
    spec.channelnames = channels.isGray() ? std::vector<std::string>{"Y"} : std::vector<std::string>{"R", "G", "B"};
    spec.alpha_channel = channels.alpha < 0 ? -1 : spec.nchannels - 1;
    if (channels.alpha >= 0)
        spec.channelnames.push_back("A");
    ImageBuf picture(spec, OIIO::InitializePixels::No);
    auto* const target = static_cast<float*>(picture.localpixels());
    std::size_t const step = part.spec.pixel_bytes(true);
    for (std::size_t i = 0; i < indices.size(); ++i)
        withType(part.spec.channelformat(indices[i]), [&](auto sample) {
            std::byte const* source = part.pixels.get() + part.spec.pixel_bytes(0, indices[i], true);
            for (OIIO::imagesize_t pixel = 0; pixel < spec.image_pixels(); ++pixel, source += step)
            {
                std::memcpy(&sample, source, sizeof sample);
                target[pixel * indices.size() + i] = OIIO::convert_type<decltype(sample), float>(sample);
            }
        });
    return picture;
}

ImageBuf checked(ImageBuf picture)
{
    if (picture.has_error())
        throw std::runtime_error(QString::fromStdString(picture.geterror()).simplified().toStdString());
    return picture;
}

ImageBuf displayed(ImageBuf const& picture)
{
    OIIO::ROI const window = picture.roi_full();
    ImageBuf shown = picture.roi() == window ? picture : checked(Algorithm::cut(picture, window));
    return checked(Algorithm::reorient(shown));
}

ImageBuf inSpace(ImageBuf picture, std::string const& from, std::string const& to)
{
    bool const isStraight = picture.spec().get_int_attribute("oiio:UnassociatedAlpha") != 0;
    auto const transform = findTransform(from, to);
    if (!transform)
        return picture;
    for (auto const& processor : *transform)
        picture = checked(Algorithm::colorconvert(picture, processor.get(), !isStraight));
    picture.specmod().attribute("oiio:ColorSpace", to);
    return picture;
}

/// Colour multiplied by alpha for a format that has it so, or that shows it over black.
ImageBuf withoutStraightAlpha(ImageBuf const& picture)
{
    bool const isStraight = picture.spec().get_int_attribute("oiio:UnassociatedAlpha") != 0;
    ImageBuf multiplied = isStraight ? checked(Algorithm::premult(picture)) : picture;
    multiplied.specmod().erase_attribute("oiio:UnassociatedAlpha");
    return multiplied;
}

ImageBuf withoutAlpha(ImageBuf const& picture)
{
    int const indices[] = {0, 1, 2};
    int const count = picture.nchannels() - 1;
    return checked(Algorithm::channels(picture, count, OIIO::cspan<int>(indices, count)));
}

/// For the new format's writer what was said about the old one is wrong.
void describe(OIIO::ImageSpec& spec, std::string const& format)
{
    spec.tile_width = spec.tile_height = spec.tile_depth = 0;
    spec.x = spec.y = spec.full_x = spec.full_y = 0;
    spec.erase_attribute("oiio:BitsPerSample");
    spec.erase_attribute("compression");
    if (format == "webp")
        spec.attribute("compression", "lossless");
    if (format == "jpeg")
        spec.attribute("compression", "jpeg:95");
}

} // namespace

Part converted(Part const& part, Channels const& channels, OIIO::ImageOutput const& output, std::string const& space)
{
    std::string const format = output.format_name();
    OIIO::TypeDesc const type = depth(format, part.spec.channelformat(channels.colors[0]));
    ImageBuf picture = inSpace(displayed(visible(part, channels)), space, type.is_floating_point() ? "linear" : "sRGB");
    bool const losesAlpha = channels.alpha >= 0 && !output.supports("alpha");
    if (losesAlpha || format == "openexr")
        picture = withoutStraightAlpha(picture);
    if (losesAlpha)
        picture = withoutAlpha(picture);
    Part result{picture.spec(), nullptr};
    describe(result.spec, format);
    result.spec.set_format(type);
    result.pixels = allocatePixels(result.spec);
    if (!picture.get_pixels(picture.roi(), type, result.pixels.get()))
        throw std::runtime_error(picture.geterror());
    return result;
}

} // namespace ztExamples
