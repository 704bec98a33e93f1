/// \file
/// What the system gives a process.
#pragma once

namespace ztExamples
{

/// Takes the place of standard streams that are closed, so that no file gets what is meant for them: they fail.
void holdStandardStreams();

/// Requires that some files can be opened: without any, libraries end the process without a word.
/// \throw std::system_error if not
void requireFiles();

/// Lets Qt's pool have so many threads, or as many as the system gives, and files for each to read and write.
/// \throw std::system_error without a single one
void limitThreads(int wanted);

} // namespace ztExamples
