#include "Dpx.h"

#include "Failure.h"

#include <QFile>
#include <QtEndian>

namespace ztExamples
{

namespace
{

constexpr int headerSize = 2048;

// Places in it.
constexpr int pixels = 4, userSize = 32, bits = 803, packing = 804, encoding = 806, elementPixels = 808,
              rowPadding = 812, elementPadding = 816;

} // namespace

DpxHeader::DpxHeader(QString const& path)
{
    QFile file(path);
    _bytes = file.open(QIODevice::ReadOnly) ? file.read(headerSize) : QByteArray();
    _fileSize = file.size();
    if (_bytes.size() < headerSize)
        fail("");
}

qint64 DpxHeader::numberAt(int place) const
{
    char const* const bytes = _bytes.constData() + place;
    return _bytes.startsWith("SDPX") ? qFromBigEndian<quint32>(bytes) : qFromLittleEndian<quint32>(bytes);
}

bool DpxHeader::hasNumber(int place) const
{
    return numberAt(place) != 0 && numberAt(place) != 0xffffffff;
}

void DpxHeader::requireSizes() const
{
    for (int const place : {userSize, rowPadding, elementPadding})
        if (hasNumber(place) && numberAt(place) > _fileSize)
            fail("");
}

/// In bytes, at least.
qint64 DpxHeader::rowSize(int samples) const
{
    int const bitCount = uchar(_bytes[bits]);
    bool const isPacked = _bytes.mid(packing, 2) == QByteArray(2, '\0');
    if (bitCount == 10 && !isPacked)
        return qint64(samples + 2) / 3 * 4;
    return qint64(samples) * (bitCount == 12 && !isPacked ? 16 : bitCount) / 8;
}

void DpxHeader::requirePixels(int samples, int rows) const
{
    bool const isCompressed = _bytes.mid(encoding, 2) != QByteArray(2, '\0');
    qint64 const size = isCompressed ? 1 : rowSize(samples) * rows;
    for (int const place : {pixels, elementPixels})
        if ((place == pixels || hasNumber(place)) && numberAt(place) + size > _fileSize)
            fail("");
}

} // namespace ztExamples
