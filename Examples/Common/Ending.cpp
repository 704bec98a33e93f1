#include "Ending.h"

#include "Console.h"

#include <chrono>
#include <csignal>
#include <cstdlib>
#include <mutex>
#include <system_error>
#include <thread>
#include <utility>

namespace ztExamples
{

namespace
{

/// Passed by whoever enters the other, so that those who keep it busy don't keep the end out.
std::mutex gate;
std::shared_timed_mutex unbroken;

std::function<QString()> lastWords;

sigset_t wantedSignals()
{
    sigset_t signals;
    sigemptyset(&signals);
    for (int const number : {SIGINT, SIGTERM, SIGHUP})
    {
        struct sigaction action;
        sigaction(number, nullptr, &action);
        if (action.sa_handler != SIG_IGN) // as nohup leaves it
            sigaddset(&signals, number);
    }
    return signals;
}

void waitForUnbroken()
{
    constexpr std::chrono::seconds patience(10);
    static_cast<void>(unbroken.try_lock_for(patience));
}

[[noreturn]] void waitForSignal(sigset_t const& signals)
{
    int number = 0;
    sigwait(&signals, &number);
    std::lock_guard const lock(gate);
    waitForUnbroken(); // and what is done meanwhile counts
    if (lastWords)
        printError(lastWords());
    std::_Exit(128 + number);
}

} // namespace

Unbroken::Unbroken()
{
    std::lock_guard const lock(gate);
    _lock = std::shared_lock(unbroken);
}

void endProcess(int exitCode)
{
    std::lock_guard const lock(gate);
    waitForUnbroken();
    std::_Exit(exitCode);
}

void endOnSignals()
{
    std::signal(SIGPIPE, SIG_IGN);
    std::signal(SIGXFSZ, SIG_IGN);
    sigset_t const signals = wantedSignals();
    pthread_sigmask(SIG_BLOCK, &signals, nullptr);
    try
    {
        std::thread(waitForSignal, signals).detach();
    }
    catch (std::system_error const& error)
    {
        throw std::system_error(error.code(), "can't start a thread");
    }
}

void setLastWords(std::function<QString()> words)
{
    std::lock_guard const lock(gate);
    lastWords = std::move(words);
}

} // namespace ztExamples
