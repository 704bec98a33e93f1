#include "Checks.h"

#include "Failure.h"

#include <QFile>
#include <QtEndian>

#include <tiffio.h>

#include <map>
#include <memory>

namespace ztExamples
{

namespace
{

/// Of elements in a profile, and of translations in one of them.
constexpr qint64 maxCount = 1000;

/// 0 behind the end.
template <class Number = quint32>
qint64 numberAt(QByteArray const& bytes, qint64 place)
{
    bool const isThere = place <= bytes.size() - qint64(sizeof(Number));
    return isThere ? qFromBigEndian<Number>(bytes.constData() + place) : 0;
}

/// Whether the translations of a text, each with its size and place, are in their element.
bool areTranslationsInside(QByteArray const& element)
{
    constexpr int start = 16, recordSize = 12;
    qint64 const count = numberAt(element, 8);
    if (element.size() < start || count > maxCount)
        return false;
    for (qint64 i = 0; i < count; ++i)
    {
        qint64 const record = start + i * recordSize;
        if (record + recordSize > element.size() ||
            numberAt(element, record + 4) + numberAt(element, record + 8) > element.size())
            return false;
    }
    return true;
}

/// Whether texts are in their element. One without translations ends with a zero that counts.
bool areTextsInside(QByteArray const& element)
{
    constexpr int start = 12;
    qint64 const size = numberAt(element, 8);
    if (element.startsWith("desc"))
        return size >= 1 && start + size <= element.size();
    return !element.startsWith("mluc") || areTranslationsInside(element);
}

/// Whether the elements that a profile lists are in it.
bool isWhole(QByteArray const& profile)
{
    constexpr int header = 128, start = header + 4, entrySize = 12, leastSize = 8;
    qint64 const count = numberAt(profile, header);
    if (count > maxCount)
        return false;
    for (qint64 i = 0; i < count; ++i)
    {
        qint64 const entry = start + i * entrySize;
        qint64 const offset = numberAt(profile, entry + 4), size = numberAt(profile, entry + 8);
        if (size < leastSize || offset + size > profile.size())
            return false;
        auto const element = QByteArray::fromRawData(profile.constData() + offset, int(size));
        if (!areTextsInside(element))
            return false;
    }
    return true;
}

void requireWhole(QByteArray const& profile)
{
    if (!isWhole(profile))
        fail("Its colour profile is damaged");
}

} // namespace

void checkTiff(QString const& path)
{
    std::unique_ptr<TIFF, decltype(&TIFFClose)> const file(TIFFOpen(QFile::encodeName(path), "rm"), TIFFClose);
    if (!file)
        fail("");
    do
    {
        std::uint16_t bits = 0;
        if (TIFFGetField(file.get(), TIFFTAG_BITSPERSAMPLE, &bits) == 0)
            fail("It doesn't say how many bits a sample has");
        std::uint32_t size = 0;
        char const* profile = nullptr;
        if (TIFFGetField(file.get(), TIFFTAG_ICCPROFILE, &size, &profile) != 0)
            requireWhole(QByteArray::fromRawData(profile, int(size)));
    } while (TIFFReadDirectory(file.get()) != 0);
}

void checkJpeg(QString const& path)
{
    constexpr int contentStart = 18;
    constexpr qint64 first = 0xffc0, firstWithoutSize = 0xffd0, lastWithoutSize = 0xffd9, scan = 0xffda, fill = 0xffff;
    QFile file(path);
    QByteArray const bytes = file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
    std::map<uchar, QByteArray> parts; // of the profile, by their numbers
    for (qint64 place = 2; numberAt<quint16>(bytes, place) != scan;)
    {
        qint64 const marker = numberAt<quint16>(bytes, place), size = numberAt<quint16>(bytes, place + 2);
        bool const hasSize = marker >= first && (marker < firstWithoutSize || marker > lastWithoutSize);
        if (marker != fill && (!hasSize || size < 2 || place + 2 + size > bytes.size()))
            fail("");
        QByteArray const segment = marker == fill ? QByteArray() : bytes.mid(int(place), int(2 + size));
        if (segment.mid(4, 12) == QByteArray("ICC_PROFILE\0", 12) && segment.size() > contentStart)
            parts[uchar(segment[16])] = segment.mid(contentStart);
        place += marker == fill ? 1 : segment.size();
    }
    QByteArray profile;
    for (auto const& [number, part] : parts)
        profile += part;
    requireWhole(profile);
}

} // namespace ztExamples
