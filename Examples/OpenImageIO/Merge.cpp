#include "Merge.h"

#include <OpenImageIO/fmath.h>

#include <algorithm>
#include <cstring>

namespace ztExamples
{

namespace
{

bool isCovered(QRgb pixel)
{
    return pixel != 0;
}

bool hasColor(Span const& span)
{
    return std::any_of(span.pixels, span.pixels + span.place.width(), [](QRgb const& pixel) {
        auto const* const bytes = reinterpret_cast<uchar const*>(&pixel);
        return bytes[0] != bytes[1] || bytes[1] != bytes[2];
    });
}

bool needsColor(Channels const& channels, std::vector<Span> const& spans)
{
    return channels.isGray() && std::any_of(spans.begin(), spans.end(), hasColor);
}

QRect windowFor(OIIO::ImageSpec const& spec, std::vector<Span> const& spans)
{
    QRect window = dataWindow(spec);
    for (Span const& span : spans)
        window |= span.place;
    return window;
}

template <class Sample>
void mergeChannel(std::byte* target, std::size_t step, float const* over, int overStep, std::vector<float> const& kept)
{
    for (float const part : kept)
    {
        if (part < 1.0f)
        {
            Sample sample;
            std::memcpy(&sample, target, sizeof sample);
            // What is hidden may be infinite.
            float const below = part > 0.0f ? OIIO::convert_type<Sample, float>(sample) * part : 0.0f;
            sample = OIIO::convert_type<float, Sample>(*over + below);
            std::memcpy(target, &sample, sizeof sample);
        }
        target += step;
        over += overStep;
    }
}

/// Works on a span at a time.
class Merger
{
  public:
    Merger(Part const& part, Channels const& channels, LayerColors const& colors)
        : _part(part), _channels(channels), _colors(colors),
          _isStraight(channels.alpha >= 0 && part.spec.get_int_attribute("oiio:UnassociatedAlpha") != 0)
    {
    }

    void merge(Span const& span)
    {
        load(span);
        if (_isStraight)
            weighByAlpha(span.place);
        int const colorCount = _channels.isGray() ? 1 : 3;
        for (int i = 0; i < colorCount; ++i)
            mergeInto(_channels.colors[std::size_t(i)], span.place, &_over[std::size_t(i)], 3, _keptColor);
        if (_channels.alpha >= 0)
            mergeInto(_channels.alpha, span.place, _alpha.data(), 1, _kept);
    }

  private:
    void load(Span const& span)
    {
        auto const count = std::size_t(span.place.width());
        _straight.resize(count);
        _over.resize(3 * count);
        _alpha.resize(count);
        _kept.resize(count);
        for (std::size_t i = 0; i < count; ++i)
            _straight[i] = qUnpremultiply(span.pixels[i]); // red and blue stand the other way round, which is the same
        _colors.convert(_straight.data(), count, _over.data());
        for (std::size_t i = 0; i < count; ++i)
        {
            _alpha[i] = float(reinterpret_cast<uchar const*>(&span.pixels[i])[3]) / 255.0f;
            _kept[i] = 1.0f - _alpha[i];
            for (std::size_t channel = 0; channel < 3; ++channel)
                _over[3 * i + channel] *= _alpha[i];
        }
        _keptColor = _kept;
    }

    /// Colour that isn't multiplied by alpha counts by its share of the new alpha.
    void weighByAlpha(QRect const& place)
    {
        std::vector<float> below(_alpha.size());
        std::size_t const step = _part.spec.pixel_bytes(true);
        std::byte const* source = _part.at(place.x(), place.y(), _channels.alpha);
        withType(_part.spec.channelformat(_channels.alpha), [&](auto sample) {
            for (float& alpha : below)
            {
                std::memcpy(&sample, source, sizeof sample);
                alpha = OIIO::convert_type<decltype(sample), float>(sample);
                source += step;
            }
        });
        for (std::size_t i = 0; i < below.size(); ++i)
        {
            if (_kept[i] >= 1.0f)
                continue;
            float const alpha = _alpha[i] + below[i] * _kept[i];
            _keptColor[i] = below[i] * _kept[i] / alpha;
            for (std::size_t channel = 0; channel < 3; ++channel)
                _over[3 * i + channel] /= alpha;
        }
    }

    void mergeInto(int channel, QRect const& place, float const* over, int overStep, std::vector<float> const& kept)
    {
        std::byte* const target = _part.at(place.x(), place.y(), channel);
        withType(_part.spec.channelformat(channel), [&](auto sample) {
            mergeChannel<decltype(sample)>(target, _part.spec.pixel_bytes(true), over, overStep, kept);
        });
    }

    Part const& _part;
    Channels const& _channels;
    LayerColors const& _colors;
    bool _isStraight;
    std::vector<QRgb> _straight;
    std::vector<float> _over;
    std::vector<float> _alpha;
    /// How much of what is below stays: of alpha, and of colour.
    std::vector<float> _kept;
    std::vector<float> _keptColor;
};

} // namespace

std::vector<Span> coveredSpans(QImage const& layer, QPoint const& origin)
{
    std::vector<Span> spans;
    for (int y = 0; y < layer.height(); ++y)
    {
        auto const* const row = reinterpret_cast<QRgb const*>(layer.constScanLine(layer.height() - 1 - y));
        auto const* const end = row + layer.width();
        auto const* const first = std::find_if(row, end, isCovered);
        if (first == end)
            continue;
        auto const* last = end - 1;
        while (!isCovered(*last))
            --last;
        spans.push_back({first, QRect(int(first - row), y, int(last - first) + 1, 1).translated(origin)});
    }
    return spans;
}

bool hasRoom(OIIO::ImageSpec const& spec, Channels const& channels, std::vector<Span> const& spans)
{
    return !needsColor(channels, spans) && windowFor(spec, spans) == dataWindow(spec);
}

Channels makeRoom(Part& part, Channels const& channels, std::vector<Span> const& spans)
{
    setDataWindow(part, windowFor(part.spec, spans));
    return needsColor(channels, spans) ? splitGray(part, channels) : channels;
}

void merge(Part& part, Channels const& channels, std::vector<Span> const& spans, LayerColors const& colors)
{
    Merger merger(part, channels, colors);
    for (Span const& span : spans)
        merger.merge(span);
}

} // namespace ztExamples
