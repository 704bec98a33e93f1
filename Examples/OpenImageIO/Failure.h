/// \file
/// What ends the work on a frame.
#pragma once

#include <string>

namespace ztExamples
{

/// \param reason  of which the first line counts; none: the file is cut off or damaged
/// \throw std::runtime_error always; what() is the reason in a line
[[noreturn]] void fail(std::string const& reason);

} // namespace ztExamples
