/// \file
/// The end of a process before its work is done.
#pragma once

#include <QString>

#include <functional>
#include <shared_mutex>

namespace ztExamples
{

/// The process doesn't end early while one lives: for what mustn't be left half done.
class Unbroken
{
  public:
    Unbroken();

  private:
    std::shared_lock<std::shared_timed_mutex> _lock;
};

/// Ends the process without further ado.
[[noreturn]] void endProcess(int exitCode);

/// INT, TERM and HUP end the process, with the exit code that shells give it: 128 more than the signal's number. To be
/// called before there are other threads. A file or a pipe that takes no more is an error of the writer's, no signal.
/// \throw std::system_error without a thread for it
void endOnSignals();

/// What to say then: nothing as long as the function is empty. It is called in another thread.
void setLastWords(std::function<QString()> words);

} // namespace ztExamples
