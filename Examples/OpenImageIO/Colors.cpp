#include "Colors.h"

#include "ztOverlayCheck.h"

#include <OpenImageIO/strutil.h>

#include <QByteArray>
#include <QString>

#include <algorithm>
#include <mutex>
#include <stdexcept>

namespace ztExamples
{

namespace
{

OIIO::ColorConfig& configuration()
{
    static OIIO::ColorConfig instance;
    return instance;
}

OIIO::ColorProcessorHandle findProcessor(std::string const& from, std::string const& to)
{
    static std::mutex mutex;
    std::lock_guard const lock(mutex);
    auto processor = configuration().createColorProcessor(from, to);
    static_cast<void>(configuration().geterror()); // else it is printed
    return processor;
}

void appendBytes(QRgb const* layer, std::size_t count, float* colors)
{
    auto const* const bytes = reinterpret_cast<uchar const*>(layer);
    for (std::size_t i = 0; i < 3 * count; ++i)
        colors[i] = float(bytes[i / 3 * 4 + i % 3]) / 255.0f;
}

std::string oneLine(std::string const& text)
{
    return QString::fromStdString(text).simplified().toStdString();
}

} // namespace

std::optional<ColorTransform> findTransform(std::string const& from, std::string const& to)
{
    if (OIIO::Strutil::iequals(from, to))
        return ColorTransform();
    if (auto const direct = findProcessor(from, to))
        return ColorTransform{direct};
    auto const toLinear = findProcessor(from, "linear"), fromLinear = findProcessor("linear", to);
    if (toLinear && fromLinear)
        return ColorTransform{toLinear, fromLinear};
    return std::nullopt;
}

void apply(ColorTransform const& transform, float* pixels, std::size_t count, int channels)
{
    auto const step = OIIO::stride_t(sizeof(float)) * channels;
    for (auto const& processor : transform)
        processor->apply(pixels, int(count), 1, std::min(channels, 4), sizeof(float), step,
                         step * OIIO::stride_t(count));
}

std::string spaceOf(OIIO::ImageSpec const& spec)
{
    return spec.get_string_attribute("oiio:ColorSpace", spec.format.is_floating_point() ? "linear" : "sRGB");
}

void requireSpace(std::string const& space)
{
    QByteArray const path = qgetenv("OCIO");
    if (!path.isEmpty() && configuration().has_error())
        throw std::runtime_error("OCIO: " + oneLine(configuration().geterror()));
    if (space.empty() || findTransform("sRGB", space))
        return;
    std::vector<std::string> names;
    for (std::string const& name : configuration().getColorSpaceNames())
        if (findTransform("sRGB", name))
            names.push_back(name);
    throw std::runtime_error("--frame-space: expected one of " + OIIO::Strutil::join(names, ", ") + ", got \"" + space +
                             "\", did you mean \"" + ztOverlayCheck::nearestName(space, names) + "\"?");
}

LayerColors::LayerColors(std::string const& space) : _transform(findTransform("sRGB", space).value_or(ColorTransform()))
{
    bool const isMixed = std::any_of(_transform.begin(), _transform.end(),
                                     [](auto const& processor) { return processor->hasChannelCrosstalk(); });
    if (isMixed)
        return;
    constexpr std::size_t count = 256;
    std::vector<float> grays(3 * count);
    for (std::size_t i = 0; i < 3 * count; ++i)
        grays[i] = float(i / 3) / 255.0f;
    apply(_transform, grays.data(), count, 3);
    for (std::size_t channel = 0; channel < 3; ++channel)
        for (std::size_t i = 0; i < count; ++i)
            _table[channel].push_back(grays[3 * i + channel]);
}

void LayerColors::convert(QRgb const* layer, std::size_t count, float* colors) const
{
    if (_table[0].empty())
    {
        appendBytes(layer, count, colors);
        return apply(_transform, colors, count, 3);
    }
    auto const* const bytes = reinterpret_cast<uchar const*>(layer);
    for (std::size_t i = 0; i < 3 * count; ++i)
        colors[i] = _table[i % 3][bytes[i / 3 * 4 + i % 3]];
}

} // namespace ztExamples
