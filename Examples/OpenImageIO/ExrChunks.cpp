#include "ExrChunks.h"

#include <QtEndian>

#include <algorithm>
#include <array>
#include <cstring>

namespace ztExamples
{

namespace
{

constexpr int entrySize = sizeof(quint64), numberSize = sizeof(qint32);

/// 0 behind the end.
template <class Number>
Number numberAt(QByteArray const& file, int place)
{
    bool const isThere = place >= 0 && place <= file.size() - int(sizeof(Number));
    return isThere ? qFromLittleEndian<Number>(file.constData() + place) : Number();
}

/// What is behind a text and the zero at its end; the file's end if there is none.
int behindText(QByteArray const& file, int place)
{
    int const end = int(file.indexOf('\0', place));
    return end < 0 ? int(file.size()) : end + 1;
}

/// By the number of the method of compression.
constexpr std::array rowCounts = {1, 1, 1, 16, 32, 16, 32, 32, 32, 256};

/// Goes over attributes, each a name, a type, a size and so many bytes, to behind the zero at their end.
/// \return the method of compression; a negative number if it is no header, or of no known method
int skipHeader(QByteArray const& file, int& place)
{
    int method = -1;
    while (place < file.size() && file[place] != '\0')
    {
        bool const isCompression = std::strcmp(file.constData() + place, "compression") == 0;
        int const size = behindText(file, behindText(file, place)), content = size + numberSize;
        qint32 const count = numberAt<qint32>(file, size);
        if (count < 0 || count > file.size() - content)
            return -1;
        if (isCompression)
            method = numberAt<uchar>(file, content);
        place = content + count;
    }
    ++place;
    return method < int(rowCounts.size()) ? method : -1;
}

} // namespace

std::optional<ExrChunks> ExrChunks::find(QByteArray const& file, std::vector<QRect> const& windows)
{
    ExrChunks found;
    found._file = file;
    bool const isRight = found.findParts() && found._methods.size() == windows.size() && found.findChunks(windows);
    return isRight ? std::optional(std::move(found)) : std::nullopt;
}

bool ExrChunks::findParts()
{
    constexpr qint32 magic = 20000630, version = 2, longNames = 0x400, severalParts = 0x1000;
    qint32 const flags = numberAt<qint32>(_file, numberSize);
    bool const hasParts = flags & severalParts;
    if (numberAt<qint32>(_file, 0) != magic || (flags & ~(longNames | severalParts)) != version)
        return false;
    int place = 2 * numberSize;
    do
        _methods.push_back(skipHeader(_file, place));
    while (hasParts && _methods.back() >= 0 && numberAt<char>(_file, place) != '\0');
    _table = place + (hasParts ? 1 : 0);
    _prefixSize = hasParts ? numberSize : 0;
    return _methods.back() >= 0;
}

bool ExrChunks::findChunks(std::vector<QRect> const& windows)
{
    int entry = _table;
    for (std::size_t part = 0; part < windows.size(); ++part)
        for (int index = 0; index * qint64(rowCount(part)) < windows[part].height(); ++index)
        {
            auto const begin = numberAt<quint64>(_file, entry);
            if (begin < quint64(_table) || begin >= quint64(_file.size()))
                return false;
            _chunks.push_back({part, index, entry, int(begin), int(_file.size())});
            entry += entrySize;
        }
    std::sort(_chunks.begin(), _chunks.end(), [](Chunk const& a, Chunk const& b) { return a.begin < b.begin; });
    for (std::size_t i = 1; i < _chunks.size(); ++i)
        _chunks[i - 1].end = _chunks[i].begin;
    return _chunks.front().begin >= entry && std::all_of(_chunks.begin(), _chunks.end(), [&](Chunk const& chunk) {
               return isRight(chunk, windows[chunk.part]);
           });
}

/// It begins with the number of its part, if there are several, its topmost row and its size.
bool ExrChunks::isRight(Chunk const& chunk, QRect const& window) const
{
    int const place = chunk.begin + _prefixSize;
    qint32 const size = numberAt<qint32>(_file, place + numberSize);
    return (_prefixSize == 0 || numberAt<qint32>(_file, chunk.begin) == qint32(chunk.part)) &&
           numberAt<qint32>(_file, place) == window.y() + chunk.index * rowCount(chunk.part) && size >= 0 &&
           size <= chunk.end - place - 2 * numberSize;
}

int ExrChunks::rowCount(std::size_t part) const
{
    return rowCounts[std::size_t(_methods[part])];
}

ExrChunks::Chunks ExrChunks::chunksOf(std::size_t part) const
{
    Chunks chunks;
    for (Chunk const& chunk : _chunks)
        if (chunk.part == part)
            chunks[chunk.index] = _file.mid(chunk.begin, chunk.end - chunk.begin).mid(_prefixSize);
    return chunks;
}

QByteArray ExrChunks::with(std::size_t part, Chunks const& others) const
{
    QByteArray file = _file.left(_chunks.front().begin);
    for (Chunk const& chunk : _chunks)
    {
        qToLittleEndian(quint64(file.size()), file.data() + chunk.entry);
        auto const other = chunk.part == part ? others.find(chunk.index) : others.end();
        if (other == others.end())
            file.append(_file.constData() + chunk.begin, chunk.end - chunk.begin);
        else
            file.append(_file.constData() + chunk.begin, _prefixSize).append(other->second);
    }
    return file;
}

} // namespace ztExamples
