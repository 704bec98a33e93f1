#include "Sequence.h"

#include "Console.h"
#include "Ending.h"
#include "Host.h"
#include "Source.h"

#include <QThreadPool>

#include <condition_variable>
#include <future>
#include <memory>
#include <mutex>
#include <queue>
#include <stdexcept>
#include <thread>
#include <utility>

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

/// The exception that is being handled.
template <class T>
std::future<T> failure()
{
    std::promise<T> promise;
    promise.set_exception(std::current_exception());
    return promise.get_future();
}

/// From one thread to another.
template <class T>
class Channel
{
  public:
    void push(T value)
    {
        std::lock_guard const lock(_mutex);
        _queue.push(std::move(value));
        _filled.notify_one();
    }

    T pop()
    {
        std::unique_lock lock(_mutex);
        _filled.wait(lock, [this] { return !_queue.empty(); });
        T first = std::move(_queue.front());
        _queue.pop();
        return first;
    }

  private:
    std::mutex _mutex;
    std::condition_variable _filled;
    std::queue<T> _queue;
};

/// For frames under way.
class Room
{
  public:
    explicit Room(int maxFrames) : _maxFrames(maxFrames) {}

    /// Waits until there is room. A frame that is too large goes alone, one that doesn't tell its size as well.
    /// \return how many pixels it takes
    qint64 enter(std::optional<qint64> pixelCount)
    {
        constexpr qint64 maxPixels = 1 << 27; // which take up to 16 bytes for each: 2 GiB
        qint64 const pixels = pixelCount.value_or(maxPixels);
        std::unique_lock lock(_mutex);
        _left.wait(lock, [&] { return _frames == 0 || (_frames < _maxFrames && _pixels + pixels <= maxPixels); });
        ++_frames;
        _pixels += pixels;
        return pixels;
    }

    void leave(qint64 pixels)
    {
        std::lock_guard const lock(_mutex);
        --_frames;
        _pixels -= pixels;
        _left.notify_one();
    }

  private:
    std::mutex _mutex;
    std::condition_variable _left;
    int _maxFrames;
    int _frames = 0;
    qint64 _pixels = 0;
};

/// Runs a thread's work, without which the others would wait for ever.
template <class Function>
void runOrEnd(Function const& work)
try
{
    work();
}
catch (std::exception const& error)
{
    printError("overlay-stamp: " + reasonOf(error));
    endProcess(NotAllDone);
}

void writeToPipe(PamPicture const& picture)
try
{
    writePam(picture, stdout);
}
catch (std::runtime_error const& error)
{
    throw std::runtime_error(std::string("can't write to the standard output stream: ") + error.what());
}

struct FrameToStamp
{
    FrameNames names;
    std::optional<qint64> room;
    std::future<Frame> frame;
};

struct FrameToFinish
{
    FramePaths paths;
    std::optional<qint64> room;
    /// Without samples if there is a file of it.
    std::future<PamPicture> picture;
};

/// One thread takes the frames from their source, this one stamps them, a third one gives the pictures to a pipe and
/// reports. What can be done in any order is done by the threads of a pool.
class Sequence
{
  public:
    Sequence(StampOptions const& options, Scene& scene, Report& report)
        : _options(options), _source(createSource(options)), _scene(scene), _report(report),
          _room(2 * (_pool.maxThreadCount() + 1))
    {
    }

    void stampAll()
    {
        std::thread taking, finishing;
        runOrEnd([&] { // and what it throws ends no thread that runs
            taking = std::thread([this] { runOrEnd([this] { takeAll(); }); });
            finishing = std::thread([this] { runOrEnd([this] { finishAll(); }); });
            while (std::optional<FrameToStamp> frame = _taken.pop())
                _stamped.push(stamp(std::move(*frame)));
            _stamped.push(std::nullopt);
        });
        taking.join();
        finishing.join();
    }

  private:
    void takeAll()
    {
        while (std::optional<FrameNames> names = _source->next())
            _taken.push(take(*names));
        _taken.push(std::nullopt);
    }

    FrameToStamp take(FrameNames const& names)
    {
        std::optional<qint64> room;
        try
        {
            room = _room.enter(_source->open());
            return {names, room, run(_pool, _source->take())};
        }
        catch (std::exception const&)
        {
            return {names, room, failure<Frame>()};
        }
    }

    FrameToFinish stamp(FrameToStamp taken)
    {
        FramePaths const paths = taken.names.paths;
        try
        {
            Frame frame = taken.frame.get();
            taken.names.values.info = frame.info;
            _scene.setValues(taken.names.values);
            _scene.stamp(frame.pixels, osg::NullFC);
            return {paths, taken.room, run(_pool, [this, paths, frame = std::move(frame)]() mutable {
                        return encode(std::move(frame), paths.output);
                    })};
        }
        catch (std::exception const&)
        {
            return {paths, taken.room, failure<PamPicture>()};
        }
    }

    /// \return the picture for the pipe if there is one
    PamPicture encode(Frame frame, QString const& path) const
    {
        if (_options.writesPipe)
            return toPam(std::move(frame));
        writeFrame(std::move(frame), path, _options.rules.pngCompression);
        return {};
    }

    void finishAll()
    {
        while (std::optional<FrameToFinish> frame = _stamped.pop())
            finish(std::move(*frame));
    }

    void finish(FrameToFinish frame)
    {
        try
        {
            PamPicture const picture = frame.picture.get();
            if (picture.samples)
                writeToPipe(picture);
            _report.done(frame.paths);
        }
        catch (std::exception const& reason)
        {
            _report.failed(frame.paths, reasonOf(reason));
            if (_options.writesPipe) // where one that is missing would shift the others
                endProcess(NotAllDone);
        }
        if (frame.room)
            _room.leave(*frame.room);
    }

    QThreadPool& _pool = *QThreadPool::globalInstance();
    StampOptions const& _options;
    std::unique_ptr<Source> _source;
    Scene& _scene;
    Report& _report;
    Room _room;
    Channel<std::optional<FrameToStamp>> _taken;
    Channel<std::optional<FrameToFinish>> _stamped;
};

} // namespace

void stampSequence(StampOptions const& options, Scene& scene, Report& report)
{
    Sequence(options, scene, report).stampAll();
}

} // namespace ztExamples
