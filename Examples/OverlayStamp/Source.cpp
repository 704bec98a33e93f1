#include "Source.h"

#include <stdexcept>
#include <utility>

namespace ztExamples
{

namespace
{

class Files : public Source
{
  public:
    explicit Files(StampOptions const& options) : _options(options) {}

    std::optional<FrameNames> next() override
    {
        std::size_t const count = _options.frames.size();
        while (_index < count && !_options.frames[_index].omission.isEmpty())
            ++_index;
        if (_index == count)
            return std::nullopt;
        FramePaths const& paths = _options.frames[_index++];
        return FrameNames{paths, {paths.input, _index, count, {}, paths.number}};
    }

    std::optional<qint64> open() override
    {
        FramePaths const& paths = _options.frames[_index - 1];
        _file = std::make_shared<FrameFile>(openFrame(paths.input, paths.output, _options.rules));
        return _file->pixelCount;
    }

    std::function<Frame()> take() override
    {
        return [file = std::exchange(_file, nullptr)] { return readFrame(std::move(*file)); };
    }

  private:
    StampOptions const& _options;
    std::size_t _index = 0;
    std::shared_ptr<FrameFile> _file;
};

/// Empty ones.
class Layers : public Files
{
  public:
    explicit Layers(StampOptions const& options) : Files(options), _size(*options.layerSize) {}

    std::optional<qint64> open() override { return qint64(_size.width()) * _size.height(); }

    std::function<Frame()> take() override
    {
        return [size = _size] {
            QImage layer = allocated({size, QImage::Format_RGBA8888});
            layer.fill(0);
            return toFrame(std::move(layer));
        };
    }

  private:
    QSize _size;
};

/// The pictures of the standard input stream, to the end or the first wrong one.
class Pipe : public Source
{
  public:
    explicit Pipe(StampOptions const& options) : _options(options) {}

    std::optional<FrameNames> next() override
    {
        if (_isBroken || (_index > 0 && isAtEnd(stdin)))
            return std::nullopt;
        qint64 const number = qint64(_index++);
        QString const output = _options.outputPattern ? nameOf(*_options.outputPattern, number) : "-";
        return FrameNames{{"-", output}, {"-", _index, 0, {}, number}};
    }

    std::optional<qint64> open() override
    {
        orBreak([this] {
            if (isAtEnd(stdin))
                throw std::runtime_error("There is none");
            _header = readPamHeader(stdin);
            PixelLimit(_options.rules.maxPixels).add(_header.width, _header.height);
        });
        return qint64(_header.width) * _header.height;
    }

    std::function<Frame()> take() override
    {
        auto const picture = std::make_shared<PamPicture>();
        orBreak([&] { *picture = readPamSamples(_header, stdin); });
        return [picture] { return layerOver(std::move(*picture)); };
    }

  private:
    template <class Function>
    void orBreak(Function const& function)
    {
        try
        {
            function();
        }
        catch (std::runtime_error const& error)
        {
            _isBroken = true;
            throw std::runtime_error("can't read picture " + std::to_string(_index) + ": " + error.what());
        }
    }

    StampOptions const& _options;
    std::size_t _index = 0;
    bool _isBroken = false;
    PamHeader _header;
};

} // namespace

std::unique_ptr<Source> createSource(StampOptions const& options)
{
    if (options.readsPipe)
        return std::make_unique<Pipe>(options);
    if (options.layerSize)
        return std::make_unique<Layers>(options);
    return std::make_unique<Files>(options);
}

} // namespace ztExamples
