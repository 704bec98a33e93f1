/// \file
/// From the input files to the output files.
#pragma once

#include "Report.h"
#include "Scene.h"
#include "StampOptions.h"

namespace ztExamples
{

/// Reads, stamps and writes all frames and reports on each, in their order. Other threads read and write, so
/// that a few frames are under way at a time; this one stamps.
void stampSequence(StampOptions const& options, Scene& scene, Report& report);

} // namespace ztExamples
