#include "Resources.h"

#include <QThreadPool>

#include <algorithm>
#include <cerrno>
#include <fcntl.h>
#include <future>
#include <system_error>
#include <thread>
#include <unistd.h>
#include <vector>

namespace ztExamples
{

namespace
{

/// For the libraries' own: fonts, plugins.
constexpr int spareFiles = 8;

/// How many of so many files can be opened.
int countFiles(int wanted)
{
    std::vector<int> files;
    for (int file = 0; int(files.size()) < wanted && (file = open("/dev/null", O_RDONLY | O_CLOEXEC)) >= 0;)
        files.push_back(file);
    for (int const file : files)
        close(file);
    return int(files.size());
}

/// How many of so many threads can be started.
int countThreads(int wanted)
{
    std::promise<void> end;
    std::shared_future<void> const ended(end.get_future());
    std::vector<std::thread> threads;
    std::error_code shortage;
    try
    {
        while (int(threads.size()) < wanted)
            threads.emplace_back([ended] { ended.wait(); });
    }
    catch (std::system_error const& error)
    {
        shortage = error.code();
    }
    end.set_value();
    for (std::thread& thread : threads)
        thread.join();
    if (threads.empty())
        throw std::system_error(shortage, "can't start a thread");
    return int(threads.size());
}

} // namespace

void holdStandardStreams()
{
    for (int const stream : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO})
        if (fcntl(stream, F_GETFD) < 0) // and so the lowest number that is free
            static_cast<void>(open("/dev/null", stream == STDIN_FILENO ? O_WRONLY : O_RDONLY));
}

void requireFiles()
{
    if (countFiles(spareFiles) < spareFiles)
        throw std::system_error(EMFILE, std::generic_category(), "can't open the files that are needed");
}

void limitThreads(int wanted)
{
    constexpr int filesOfThread = 3;
    int const files = countFiles(spareFiles + wanted * filesOfThread) - spareFiles;
    QThreadPool::globalInstance()->setMaxThreadCount(countThreads(std::clamp(files / filesOfThread, 1, wanted)));
}

} // namespace ztExamples
