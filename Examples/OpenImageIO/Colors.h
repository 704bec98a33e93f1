/// \file
/// Colour spaces of frames. Overlays are drawn in sRGB.
#pragma once

#include <OpenImageIO/color.h>
#include <OpenImageIO/imageio.h>

#include <QRgb>

#include <array>
#include <optional>
#include <string>
#include <vector>

namespace ztExamples
{

/// From one space to another, in steps. None: they are the same.
using ColorTransform = std::vector<OIIO::ColorProcessorHandle>;

/// Nothing if one of the spaces isn't known.
std::optional<ColorTransform> findTransform(std::string const& from, std::string const& to);

void apply(ColorTransform const& transform, float* pixels, std::size_t count, int channels);

/// The space of a frame as its file says it: where it doesn't, numbers with a fraction are linear, others sRGB.
std::string spaceOf(OIIO::ImageSpec const& spec);

/// \throw std::runtime_error if overlays can't be brought to a space that is asked for, or if the configuration that
///     the environment names can't be read; what() is a line about it
void requireSpace(std::string const& space);

/// Colours of overlays in a frame's space.
class LayerColors
{
  public:
    /// \param space  one that isn't known is taken for sRGB
    explicit LayerColors(std::string const& space);

    /// \param layer  8 bits a channel with straight alpha, in the bytes of QImage::Format_RGBA8888
    /// \param colors  three for each pixel
    void convert(QRgb const* layer, std::size_t count, float* colors) const;

  private:
    ColorTransform _transform;
    /// Of each channel, if it depends on that one alone.
    std::array<std::vector<float>, 3> _table;
};

} // namespace ztExamples
