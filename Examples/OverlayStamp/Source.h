/// \file
/// Where frames come from.
#pragma once

#include "Frame.h"
#include "Placeholders.h"
#include "StampOptions.h"

#include <functional>
#include <memory>
#include <optional>

namespace ztExamples
{

/// What a frame is called.
struct FrameNames
{
    FramePaths paths;
    Placeholders values;
};

/// Frames in their order, for one thread.
class Source
{
  public:
    virtual ~Source() = default;

    /// Goes to the next frame, if need be waits for it. \return its names, nothing behind the last one
    virtual std::optional<FrameNames> next() = 0;

    /// Opens it. \return how many pixels it has, nothing if it doesn't tell
    /// \throw std::exception if that fails; what() is the reason
    virtual std::optional<qint64> open() = 0;

    /// Takes what is to be taken in this order. \return what makes a frame of it, in any thread
    /// \throw std::exception if that fails; what() is the reason
    virtual std::function<Frame()> take() = 0;
};

/// \param options  outlive the source
std::unique_ptr<Source> createSource(StampOptions const& options);

} // namespace ztExamples
