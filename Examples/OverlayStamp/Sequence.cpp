#include "Sequence.h"

#include "Console.h"
#include "Frame.h"

#include <QFileInfo>
#include <QThreadPool>

#include <algorithm>
#include <future>
#include <memory>
#include <queue>
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

template <class T>
T takeFirst(std::queue<T>& queue)
{
    T first = std::move(queue.front());
    queue.pop();
    return first;
}

/// Of frames under way, which take up to 16 bytes for each: 2 GiB.
constexpr qint64 maxPixelsUnderWay = 1 << 27;

class Sequence
{
  public:
    Sequence(Options const& options, Scene& scene, Report& report)
        : _frames(options.frames), _scene(scene), _report(report), _window(std::size_t(_pool.maxThreadCount()) + 1),
          _maxPixels(options.maxPixels), _pngCompression(options.pngCompression)
    {
    }

    void stampAll()
    {
        for (std::size_t i = 0; i < _frames.size(); ++i)
        {
            while (readAhead(i), _readCount <= i)
                reportNext();
            _written.push(stamp(i));
            if (_written.size() > _window)
                reportNext();
        }
        while (!_written.empty())
            reportNext();
    }

  private:
    /// Starts to read the frames behind one, those that there is room for.
    void readAhead(std::size_t i)
    {
        while (_readCount < std::min(i + _window, _frames.size()) && readNext())
            ++_readCount;
    }

    /// \return false without room
    bool readNext()
    try
    {
        if (!_next)
            _next = std::make_shared<PictureFile>(openFrame(_frames[_readCount].input, _maxPixels));
        qint64 const pixelCount = _next->size().isEmpty() ? maxPixelsUnderWay : _next->pixelCount();
        if (_pixelsUnderWay > 0 && _pixelsUnderWay + pixelCount > maxPixelsUnderWay)
            return false;
        _read.push(run(_pool, [file = std::exchange(_next, nullptr)] { return readFrame(*file); }));
        _pixelsUnderWay += pixelCount;
        _pixelCounts.push(pixelCount);
        return true;
    }
    catch (std::exception const&)
    {
        _read.push(failure<Frame>());
        _pixelCounts.push(0);
        return true;
    }

    std::future<void> stamp(std::size_t i)
    {
        try
        {
            Frame frame = takeFirst(_read).get();
            _scene.setTexts({QFileInfo(_frames[i].input).fileName(), i + 1, _frames.size(), frame.info});
            _scene.stamp(frame.pixels, osg::NullFC);
            return run(_pool,
                       [frame = std::move(frame), path = _frames[i].output, compression = _pngCompression]() mutable {
                           writeFrame(std::move(frame), path, compression);
                       });
        }
        catch (std::exception const&)
        {
            return failure<void>();
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
            _report.failed(frame, reasonOf(reason));
        }
        _pixelsUnderWay -= takeFirst(_pixelCounts);
    }

    QThreadPool& _pool = *QThreadPool::globalInstance();
    std::vector<FramePaths> const& _frames;
    Scene& _scene;
    Report& _report;
    /// How many frames at most are read and not stamped, and how many stamped and not written.
    std::size_t _window;
    qint64 _maxPixels;
    int _pngCompression;
    std::size_t _readCount = 0;
    std::size_t _reportedCount = 0;
    std::queue<std::future<Frame>> _read;
    std::queue<std::future<void>> _written;
    /// The next frame to read, if it is open.
    std::shared_ptr<PictureFile> _next;
    /// Of the frames that are read and not reported.
    std::queue<qint64> _pixelCounts;
    qint64 _pixelsUnderWay = 0;
};

} // namespace

void stampSequence(Options const& options, Scene& scene, Report& report)
{
    Sequence(options, scene, report).stampAll();
}

} // namespace ztExamples
