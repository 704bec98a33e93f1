#include "Parts.h"

#include <OpenImageIO/strutil.h>

#include <algorithm>
#include <cstring>
#include <string>
#include <vector>

namespace ztExamples
{

namespace
{

int indexOf(OIIO::ImageSpec const& spec, std::string const& name)
{
    auto const& names = spec.channelnames;
    auto const found = std::find_if(names.begin(), names.end(),
                                    [&](std::string const& other) { return OIIO::Strutil::iequals(other, name); });
    return found == names.end() ? -1 : int(found - names.begin());
}

/// What stands before the name of a channel: nothing, then those of the layers in their order.
std::vector<std::string> prefixes(OIIO::ImageSpec const& spec)
{
    std::vector<std::string> found = {""};
    for (std::string const& name : spec.channelnames)
        if (OIIO::Strutil::iends_with(name, ".R"))
            found.push_back(name.substr(0, name.size() - 1));
    return found;
}

} // namespace

std::byte* Part::at(int x, int y, int channel) const
{
    auto const pixel = OIIO::imagesize_t(y - spec.y) * OIIO::imagesize_t(spec.width) + OIIO::imagesize_t(x - spec.x);
    return pixels.get() + pixel * spec.pixel_bytes(true) + spec.pixel_bytes(0, channel, true);
}

std::optional<Channels> findChannels(OIIO::ImageSpec const& spec, bool isNamed)
{
    for (std::string const& prefix : prefixes(spec))
    {
        int const red = indexOf(spec, prefix + "R"), green = indexOf(spec, prefix + "G"),
                  blue = indexOf(spec, prefix + "B");
        if (red >= 0 && green >= 0 && blue >= 0)
            return Channels{{red, green, blue}, indexOf(spec, prefix + "A")};
    }
    int const gray = isNamed || spec.nchannels > 2 ? indexOf(spec, "Y") : 0;
    if (gray >= 0)
        return Channels{{gray, gray, gray}, isNamed ? indexOf(spec, "A") : spec.alpha_channel};
    return isNamed ? std::nullopt : std::optional(Channels{{0, 1, 2}, spec.alpha_channel});
}

QRect dataWindow(OIIO::ImageSpec const& spec)
{
    return {spec.x, spec.y, spec.width, spec.height};
}

QRect displayWindow(OIIO::ImageSpec const& spec)
{
    return {spec.full_x, spec.full_y, spec.full_width, spec.full_height};
}

std::unique_ptr<std::byte[]> allocatePixels(OIIO::ImageSpec const& spec)
{
    return std::unique_ptr<std::byte[]>(new std::byte[spec.image_bytes(true)]);
}

void setDataWindow(Part& part, QRect const& window)
{
    QRect const old = dataWindow(part.spec), kept = old & window;
    if (old == window)
        return;
    Part now{part.spec, nullptr};
    now.spec.x = window.x();
    now.spec.y = window.y();
    now.spec.width = window.width();
    now.spec.height = window.height();
    now.pixels = allocatePixels(now.spec);
    std::memset(now.pixels.get(), 0, now.spec.image_bytes(true));
    for (int y = kept.top(); y <= kept.bottom(); ++y)
        std::memcpy(now.at(kept.left(), y, 0), part.at(kept.left(), y, 0),
                    std::size_t(kept.width()) * part.spec.pixel_bytes(true));
    part = std::move(now);
}

Channels splitGray(Part& part, Channels const& gray)
{
    int const channel = gray.colors[0];
    auto const place = channel + 1;
    Part now{part.spec, nullptr};
    auto& [spec, pixels] = now;
    spec.nchannels += 2;
    if (!spec.channelformats.empty())
        spec.channelformats.insert(spec.channelformats.begin() + place, 2, part.spec.channelformat(channel));
    spec.channelnames[std::size_t(channel)] = "R";
    spec.channelnames.insert(spec.channelnames.begin() + place, {"G", "B"});
    if (spec.alpha_channel >= place)
        spec.alpha_channel += 2;
    pixels = allocatePixels(spec);

    std::size_t const before = part.spec.pixel_bytes(0, channel, true), one = spec.channel_bytes(channel, true),
                      all = part.spec.pixel_bytes(true);
    std::byte* target = pixels.get();
    std::byte const* source = part.pixels.get();
    for (OIIO::imagesize_t i = 0; i < spec.image_pixels(); ++i, source += all)
    {
        target = std::copy_n(source, before, target);
        for (int copies = 0; copies < 3; ++copies)
            target = std::copy_n(source + before, one, target);
        target = std::copy_n(source + before + one, all - before - one, target);
    }
    part = std::move(now);
    int const alpha = gray.alpha > channel ? gray.alpha + 2 : gray.alpha;
    return {{channel, channel + 1, channel + 2}, alpha};
}

} // namespace ztExamples
