// What the hosts load.

#include "Checks.h"
#include "Colors.h"
#include "Convert.h"
#include "Dpx.h"
#include "ExrChunks.h"
#include "Failure.h"
#include "Merge.h"
#include "NativeFrame.h"
#include "Parts.h"

#include <OpenImageIO/filesystem.h>
#include <OpenImageIO/strutil.h>

#include <QFile>

#include <algorithm>
#include <stdexcept>
#include <unistd.h>

namespace ztExamples
{

namespace
{

template <class File>
void require(bool isDone, File const& file)
{
    std::string const reason = file.geterror();
    if (!isDone)
        fail(reason);
}

/// Some readers fill up what is missing, and only have an error then; some have one for each row, of which a million
/// would end the process.
void readRows(OIIO::ImageInput& input, int part, Part const& rows)
{
    constexpr int mostAtOnce = 256; // of which some files make a chunk
    OIIO::ImageSpec const& spec = rows.spec;
    for (int done = 0; done < spec.height; done += mostAtOnce)
    {
        int const y = spec.y + done, end = std::min(y + mostAtOnce, spec.y + spec.height);
        bool const isRead =
            input.read_scanlines(part, 0, y, end, 0, 0, spec.nchannels, OIIO::TypeUnknown, rows.at(spec.x, y, 0));
        require(isRead && !input.has_error(), input);
    }
}

Part readPart(OIIO::ImageInput& input, int index)
{
    input.seek_subimage(index, 0);
    Part part{input.spec(), nullptr};
    part.pixels = allocatePixels(part.spec);
    if (part.spec.tile_width == 0)
    {
        readRows(input, index, part);
        return part;
    }
    bool const isRead = input.read_image(index, 0, 0, part.spec.nchannels, OIIO::TypeUnknown, part.pixels.get());
    require(isRead && !input.has_error(), input);
    return part;
}

/// A file that is open for both reading and writing, for some formats are read while they are written.
class OpenFile : public OIIO::Filesystem::IOProxy
{
  public:
    explicit OpenFile(int handle) : IOProxy("", Write), _handle(handle) {}

    char const* proxytype() const override { return "handle"; }
    bool seek(std::int64_t offset) override { return m_pos = offset, true; }
    std::size_t size() const override { return std::size_t(lseek(_handle, 0, SEEK_END)); }

    std::size_t read(void* bytes, std::size_t count) override { return advance(::pread(_handle, bytes, count, m_pos)); }

    std::size_t write(void const* bytes, std::size_t count) override
    {
        std::size_t done = 0;
        for (std::size_t last = 1; done < count && last > 0; done += last)
            last = advance(::pwrite(_handle, static_cast<char const*>(bytes) + done, count - done, m_pos));
        return done;
    }

    /// 0 if all went well.
    int errorNumber() const { return _errorNumber; }

  private:
    std::size_t advance(ssize_t count)
    {
        if (count < 0)
            _errorNumber = errno;
        m_pos += std::max(count, ssize_t(0));
        return std::size_t(std::max(count, ssize_t(0)));
    }

    int _handle;
    int _errorNumber = 0;
};

/// The layer as a file has the pixels that is turned when it is shown; both bottom row first.
QImage turned(QImage const& layer, int orientation)
{
    QTransform const right = QTransform().rotate(90);
    switch (orientation)
    {
    case 2:
        return layer.mirrored(true, false);
    case 3:
        return layer.mirrored(true, true);
    case 4:
        return layer.mirrored(false, true);
    case 5:
        return layer.transformed(right).mirrored(false, true);
    case 6:
        return layer.transformed(right);
    case 7:
        return layer.transformed(right).mirrored(true, false);
    case 8:
        return layer.transformed(QTransform().rotate(-90));
    default:
        return layer;
    }
}

int orientationOf(OIIO::ImageSpec const& spec)
{
    return spec.get_int_attribute("Orientation", 1);
}

/// Windows that are far off reach beyond what coordinates can be. Inks and Lab don't come back as they were.
void requireKind(OIIO::ImageSpec const& spec)
{
    constexpr int most = 1 << 29;
    auto const isFar = [](int place, int size) { return place < -most || place > most || size < 1 || size > most; };
    if (isFar(spec.x, spec.width) || isFar(spec.y, spec.height) || isFar(spec.full_x, spec.full_width) ||
        isFar(spec.full_y, spec.full_height))
        fail("Its windows are wrong");
    if (spec.depth > 1)
        fail("Volumes aren't stamped");
    if (spec.deep)
        fail("Deep pictures aren't stamped");
    std::string const colors = spec.get_string_attribute("tiff:ColorSpace");
    if (colors == "CMYK" || colors == "CIELAB" || colors == "ICCLAB" || colors == "ITULAB")
        fail("Pictures in " + colors + " aren't stamped");
}

bool isLossless(QString const& webp)
{
    constexpr qint64 metadataSize = 1 << 16;
    QFile file(webp);
    return file.open(QIODevice::ReadOnly) && file.peek(metadataSize).contains("VP8L");
}

/// A color profile of what the pixels no longer are, or never were, which some writers refuse.
void dropOtherProfile(OIIO::ImageSpec& spec)
{
    constexpr std::size_t placeOfSpace = 16;
    OIIO::ParamValue const* const profile = spec.find_attribute("ICCProfile");
    if (!profile || std::size_t(profile->datasize()) < placeOfSpace + 4)
        return;
    std::string const space(static_cast<char const*>(profile->data()) + placeOfSpace, 4);
    if (space != (spec.nchannels < 3 ? "GRAY" : "RGB "))
        spec.erase_attribute("ICCProfile");
}

/// What writers make up or change otherwise.
void keepAsIs(OIIO::ImageSpec& spec, std::string const& format)
{
    bool const isDated = format == "openexr" || format == "tiff";
    if (isDated && !spec.find_attribute("DateTime"))
        spec.attribute("DateTime", 0); // is no date, so that none is written
    spec.attribute("tiff:half", 1);
    spec.attribute("dpx:EndOfLinePadding", 0); // it would take from behind the pixels
    spec.attribute("dpx:EndOfImagePadding", 0);
    dropOtherProfile(spec);
}

/// Of deflating, where the format does.
void setLevel(OIIO::ImageSpec& spec, int level)
{
    spec.attribute("png:compressionLevel", level);
    std::string const method = spec.get_string_attribute("compression");
    if ((method == "zip" || method == "zips") && level > 0)
        spec.attribute("compression", method + ":" + std::to_string(level));
}

QByteArray bytesOf(OIIO::Filesystem::IOVecOutput const& file)
{
    return {reinterpret_cast<char const*>(file.buffer().data()), int(file.buffer().size())};
}

void writeAll(int handle, QByteArray const& bytes)
{
    OpenFile target(handle);
    if (target.write(bytes.constData(), std::size_t(bytes.size())) != std::size_t(bytes.size()))
        fail(qt_error_string(target.errorNumber()).toStdString());
}

class File : public NativeFrame
{
  public:
    File(QString const& path, std::string const& format, std::string space, bool isConverted)
        : _path(path), _space(std::move(space)), _input(OIIO::ImageInput::create(format)),
          _mayCopy(format == "openexr" && !isConverted)
    {
        if (!_input)
            fail(OIIO::geterror());
        if (format == "dpx")
            DpxHeader(path).requireSizes();
        if (format == "tiff")
            checkTiff(path);
        if (format == "jpeg")
            checkJpeg(path);
        OIIO::ImageSpec first, wishes;
        wishes.attribute("oiio:UnassociatedAlpha", 1); // multiplying by alpha and dividing again rounds
        require(_input->open(QFile::encodeName(path).toStdString(), first, wishes), *_input);
        bool const hasParts = format == "openexr" || format == "tiff";
        for (int i = 0; (i == 0 || hasParts) && _input->seek_subimage(i, 0); ++i)
        {
            addPart(_input->spec());
            if (hasParts && _input->seek_subimage(i, 1))
                fail("Pictures with levels of detail aren't stamped");
        }
        static_cast<void>(_input->geterror()); // behind the last one
        if (format == "dpx")
            DpxHeader(path).requirePixels(_parts[0].spec.width * _parts[0].spec.nchannels, _parts[0].spec.height);
        if (format == "webp")
            _parts[0].spec.attribute("compression", isLossless(path) ? "lossless" : "webp:95");
        if (_stamped == none)
            fail("It has no channels R, G and B, or Y");
    }

    QSize size() const override
    {
        QSize const size = displayWindow(stamped().spec).size();
        return orientationOf(stamped().spec) > 4 ? size.transposed() : size;
    }

    std::vector<QSize> pictureSizes() const override
    {
        std::vector<QSize> sizes;
        for (Part const& part : _parts)
            sizes.push_back(dataWindow(part.spec).size());
        sizes.push_back(wholeWindow().size());
        return sizes;
    }

    qint64 byteCount() const override
    {
        qint64 count = 0;
        for (Part const& part : _parts)
            count += qint64(part.spec.image_bytes(true));
        QSize const all = wholeWindow().size();
        bool const mayGrow = all != dataWindow(stamped().spec).size();
        return count + (mayGrow ? qint64(all.width()) * all.height() * qint64(stamped().spec.pixel_bytes(true)) : 0);
    }

    FrameInfo info() const override
    {
        FrameInfo info{size(), {}};
        for (OIIO::ParamValue const& attribute : stamped().spec.extra_attribs)
            info.metadata[QString::fromStdString(attribute.name().string())] =
                QString::fromStdString(attribute.get_string());
        return info;
    }

    void read() override
    {
        if (_mayCopy)
            _chunks = readChunks();
        if (!_chunks)
            readParts();
    }

    void merge(QImage const& layer) override
    {
        QImage const stored = turned(layer, orientationOf(stamped().spec));
        std::vector<Span> const spans = coveredSpans(stored, displayWindow(stamped().spec).topLeft());
        LayerColors const colors(space());
        if (_chunks && hasRoom(stamped().spec, _channels, spans))
            return mergeBands(spans, colors);
        if (std::exchange(_chunks, std::nullopt))
            readParts();
        _channels = makeRoom(stamped(), _channels, spans);
        ztExamples::merge(stamped(), _channels, spans, colors);
    }

    void write(QFileDevice& file, QByteArray const& format, int compression) override
    {
        if (_chunks)
            return writeAll(file.handle(), withBands(compression));
        if (_parts.size() > 1 || format.startsWith("tif"))
            return writeByPath("/proc/self/fd/" + std::to_string(file.handle()), format, compression);
        OpenFile target(file.handle());
        try
        {
            write("", &target, format, compression);
        }
        catch (std::runtime_error const&)
        {
            if (target.errorNumber() == 0)
                throw;
        }
        if (target.errorNumber() != 0)
            fail(qt_error_string(target.errorNumber()).toStdString());
    }

    QByteArray encode(QByteArray const& format, int compression) override
    {
        OIIO::Filesystem::IOVecOutput target;
        write("", &target, format, compression);
        return bytesOf(target);
    }

  private:
    static constexpr std::size_t none = std::size_t(-1);

    void addPart(OIIO::ImageSpec const& spec)
    {
        requireKind(spec);
        auto const channels = findChannels(spec, std::string(_input->format_name()) == "openexr");
        if (_stamped == none && channels)
        {
            _stamped = _parts.size();
            _channels = *channels;
        }
        _parts.push_back({spec, nullptr});
    }

    /// Nothing if there is no room for the file beside what else the frame takes.
    std::optional<ExrChunks> readChunks() const
    {
        std::vector<QRect> windows;
        for (Part const& part : _parts)
            windows.push_back(dataWindow(part.spec));
        QFile file(_path);
        bool const isSmall = file.open(QIODevice::ReadOnly) && file.size() <= byteCount() &&
                             file.size() <= std::numeric_limits<int>::max();
        return isSmall ? ExrChunks::find(file.readAll(), windows) : std::nullopt;
    }

    void readParts()
    {
        for (std::size_t i = 0; i < _parts.size(); ++i)
            _parts[i].pixels = readPart(*_input, int(i)).pixels;
        _input->close();
    }

    /// Reads the chunks that spans are in, neighbours together, and merges.
    void mergeBands(std::vector<Span> const& spans, LayerColors const& colors)
    {
        QRect const window = dataWindow(stamped().spec);
        int const rowCount = _chunks->rowCount(_stamped);
        auto const chunkOf = [&](Span const& span) { return (span.place.y() - window.y()) / rowCount; };
        for (auto next = spans.begin(); next != spans.end();)
        {
            auto const first = next;
            while (++next != spans.end() && chunkOf(*next) <= chunkOf(next[-1]) + 1)
                ;
            int const top = chunkOf(*first) * rowCount, end = (chunkOf(next[-1]) + 1) * rowCount;
            Part band = readBand(window.y() + top, std::min(end, window.height()) - top);
            ztExamples::merge(band, _channels, {first, next}, colors);
            _bands.push_back(std::move(band));
        }
    }

    Part readBand(int y, int height)
    {
        Part band{stamped().spec, nullptr};
        band.spec.y = y;
        band.spec.height = height;
        band.pixels = allocatePixels(band.spec);
        readRows(*_input, int(_stamped), band);
        return band;
    }

    /// The file with the bands in place of what it had there.
    QByteArray withBands(int compression)
    {
        ExrChunks::Chunks chunks;
        for (Part& band : _bands)
        {
            QRect const window = dataWindow(band.spec);
            int const first = (window.y() - stamped().spec.y) / _chunks->rowCount(_stamped);
            auto const file = ExrChunks::find(encoded(std::move(band), compression), {window});
            if (!file || file->method(0) != _chunks->method(_stamped))
                fail("It can't be compressed as it was");
            for (auto const& [index, chunk] : file->chunksOf(0))
                chunks[first + index] = chunk;
        }
        return _chunks->with(_stamped, chunks);
    }

    Part const& stamped() const { return _parts[_stamped]; }
    Part& stamped() { return _parts[_stamped]; }

    /// What the data window may grow to.
    QRect wholeWindow() const { return dataWindow(stamped().spec) | displayWindow(stamped().spec); }

    std::string space() const { return _space.empty() ? spaceOf(stamped().spec) : _space; }

    /// Several parts, and EXIF entries of TIFF files, can't be written into a file that is open. What is lost when it
    /// is closed, nobody tells.
    void writeByPath(std::string const& path, QByteArray const& format, int compression)
    {
        int const last = write(path, nullptr, format, compression) - 1;
        auto const written = OIIO::ImageInput::create(format.toStdString());
        OIIO::ImageSpec spec;
        require(written->open(path, spec) && written->seek_subimage(last, 0), *written);
        if (last > 0)
            readPart(*written, last);
    }

    /// \param path  empty if there is a target
    /// \return how many parts are written
    int write(std::string const& path, OIIO::Filesystem::IOProxy* target, QByteArray const& format, int compression)
    {
        auto const output = OIIO::ImageOutput::create(format.toStdString(), target);
        if (!output)
            fail(OIIO::geterror());
        bool const isSame = std::string(output->format_name()) == _input->format_name();
        std::vector<Part> parts;
        if (isSame)
            parts = std::move(_parts);
        else
            parts.push_back(converted(stamped(), _channels, *output, space()));
        if (!output->supports("multiimage"))
            parts.resize(1);
        writeParts(*output, path, parts, compression);
        return int(parts.size());
    }

    static QByteArray encoded(Part band, int compression)
    {
        OIIO::Filesystem::IOVecOutput target;
        auto const output = OIIO::ImageOutput::create("openexr", &target);
        std::vector<Part> parts;
        parts.push_back(std::move(band));
        writeParts(*output, "", parts, compression);
        return bytesOf(target);
    }

    static void writeParts(OIIO::ImageOutput& output, std::string const& path, std::vector<Part>& parts,
                           int compression)
    {
        std::vector<OIIO::ImageSpec> specs;
        for (Part const& part : parts)
        {
            setLevel(specs.emplace_back(part.spec), compression);
            keepAsIs(specs.back(), output.format_name());
        }
        int const count = int(specs.size());
        require(count > 1 ? output.open(path, count, specs.data()) : output.open(path, specs[0]), output);
        for (std::size_t i = 0; i < specs.size(); ++i)
        {
            require(i == 0 || output.open(path, specs[i], OIIO::ImageOutput::AppendSubimage), output);
            require(output.write_image(OIIO::TypeUnknown, parts[i].pixels.get()), output);
            parts[i].pixels = nullptr;
        }
        require(output.close(), output);
    }

    QString _path;
    std::string _space;
    std::unique_ptr<OIIO::ImageInput> _input;
    /// Whether the file's chunks may stay where no overlay covers them.
    bool _mayCopy;
    std::vector<Part> _parts;
    /// The part that is stamped.
    std::size_t _stamped = none;
    Channels _channels;
    /// Of the file, if they are copied. Then no part is read but bands of the one that is stamped.
    std::optional<ExrChunks> _chunks;
    std::vector<Part> _bands;
};

class Library : public NativeFrames
{
  public:
    std::unique_ptr<NativeFrame> open(QString const& path, QByteArray const& format, QString const& space,
                                      bool isConverted) override
    {
        return std::make_unique<File>(path, format.toStdString(), space.toStdString(), isConverted);
    }

    void requireSpace(QString const& space) override { ztExamples::requireSpace(space.toStdString()); }

    void setThreads(int count) override
    {
        OIIO::attribute("debug", 0); // says what isn't wrong
        OIIO::attribute("threads", count);
        OIIO::attribute("exr_threads", count > 1 ? count : -1); // none besides the one that calls
    }
};

} // namespace

} // namespace ztExamples

extern "C" Q_DECL_EXPORT ztExamples::NativeFrames* ztNativeFrames()
{
    static ztExamples::Library library;
    return &library;
}
