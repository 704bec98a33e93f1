/// \file
/// File names as Qt holds them.
#pragma once

namespace ztExamples
{

/// From now on Qt takes file names and arguments for UTF-8, and bytes that aren't come back as they were: with Qt 5.
/// Qt 6 has no place for them.
void keepAnyFileName();

} // namespace ztExamples
