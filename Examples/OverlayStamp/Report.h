/// \file
/// What the user is told.
#pragma once

#include "StampOptions.h"

#include <atomic>
#include <chrono>

namespace ztExamples
{

/// Reports on the frames of a sequence as they come: a line each on the standard output stream unless pictures go
/// there, or a progress bar if there are several and the standard error stream is a terminal. Should the process end
/// early, they are counted.
class Report
{
  public:
    explicit Report(StampOptions const& options);
    Report(Report const&) = delete;
    Report& operator=(Report const&) = delete;
    ~Report();

    void done(FramePaths const& frame);
    void failed(FramePaths const& frame, QString const& reason);

    /// Takes the bar away and counts the failures. \return whether there are none
    bool finish();

  private:
    void showProgress();
    void hideProgress() const;

    /// 0: nobody knows.
    std::size_t _frameCount;
    std::size_t _reported = 0;
    std::atomic<std::size_t> _done = 0;
    std::size_t _failed = 0;
    bool _hasBar;
    bool _hasLines;
    std::chrono::steady_clock::time_point _start = std::chrono::steady_clock::now();
};

} // namespace ztExamples
