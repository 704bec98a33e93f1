#include "Sequence.h"

#include "Frame.h"

#include <QFileInfo>
#include <QThreadPool>

#include <algorithm>
#include <future>
#include <memory>
#include <queue>

namespace ztExamples
{

namespace
{

/// What a function returns or throws once a thread of the pool has run it.
template <class Function>
auto run(QThreadPool& pool, Function function)
{
    auto const task = std::make_shared<std::packaged_task<decltype(function())()>>(std::move(function));
    constexpr int belowQt = -1; // which scales texts in this pool while the sequence waits
    pool.start([task] { (*task)(); }, belowQt);
    return task->get_future();
}

std::future<void> failure(std::exception_ptr const& reason)
{
    std::promise<void> promise;
    promise.set_exception(reason);
    return promise.get_future();
}

template <class T>
T takeFirst(std::queue<T>& queue)
{
    T first = std::move(queue.front());
    queue.pop();
    return first;
}

class Sequence
{
  public:
    Sequence(Options const& options, Scene& scene, Report& report)
        : _frames(options.frames), _scene(scene), _report(report), _window(std::size_t(options.jobs) + 1),
          _pngCompression(options.pngCompression)
    {
        _pool.setMaxThreadCount(options.jobs);
    }

    void stampAll()
    {
        for (std::size_t i = 0; i < _frames.size(); ++i)
        {
            readUpTo(std::min(i + _window, _frames.size()));
            _written.push(stamp(i));
            if (_written.size() > _window)
                reportNext();
        }
        while (!_written.empty())
            reportNext();
    }

  private:
    void readUpTo(std::size_t end)
    {
        for (; _readCount < end; ++_readCount)
            _read.push(run(_pool, [path = _frames[_readCount].input] { return readFrame(path); }));
    }

    std::future<void> stamp(std::size_t i)
    {
        try
        {
            Frame frame = takeFirst(_read).get();
            _scene.setTexts({QFileInfo(_frames[i].input).fileName(), i + 1, _frames.size()});
            ztExamples::stamp(frame.pixels, osg::NullFC);
            return run(_pool,
                       [frame = std::move(frame), path = _frames[i].output, compression = _pngCompression]() mutable {
                           writeFrame(std::move(frame), path, compression);
                       });
        }
        catch (std::exception const&)
        {
            return failure(std::current_exception());
        }
    }

    void reportNext()
    {
        FramePaths const& frame = _frames[_reportedCount++];
        try
        {
            takeFirst(_written).get();
            _report.done(frame);
        }
        catch (std::exception const& reason)
        {
            _report.failed(frame, QString::fromUtf8(reason.what()));
        }
    }

    std::vector<FramePaths> const& _frames;
    Scene& _scene;
    Report& _report;
    /// How many frames at most are read and not stamped, and how many stamped and not written: what bounds
    /// the memory of a long sequence.
    std::size_t _window;
    int _pngCompression;
    std::size_t _readCount = 0;
    std::size_t _reportedCount = 0;
    std::queue<std::future<Frame>> _read;
    std::queue<std::future<void>> _written;
    QThreadPool& _pool = *QThreadPool::globalInstance();
};

} // namespace

void stampSequence(Options const& options, Scene& scene, Report& report)
{
    Sequence(options, scene, report).stampAll();
}

} // namespace ztExamples
