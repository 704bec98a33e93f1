/// \file
/// What the library takes for granted of TIFF and JPEG files. It goes wherever their colour profiles say that something
/// is: https://www.color.org/specification/ICC.1-2022-05.pdf
#pragma once

#include <QString>

namespace ztExamples
{

/// \throw std::runtime_error if a profile is wrong, or if a picture doesn't say how many bits a sample has, for which
///     the library takes 8; what() is the reason
void checkTiff(QString const& path);

/// \throw std::runtime_error if the profile is wrong, or what stands before the pixels; what() is the reason
void checkJpeg(QString const& path);

} // namespace ztExamples
