/// \file
/// From one file format to another.
#pragma once

#include "Parts.h"

#include <string>

namespace ztExamples
{

/// What of a part another format can hold: the channels that show within the display window, upright, in its depth.
/// Whole numbers are brought to sRGB, others to linear light, if the part's space is known.
/// \param output  of the format
/// \param space  of the part
/// \throw std::runtime_error if the part can't be converted; what() is the reason
Part converted(Part const& part, Channels const& channels, OIIO::ImageOutput const& output, std::string const& space);

} // namespace ztExamples
