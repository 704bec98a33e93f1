#include "FileNames.h"

#include <QtGlobal>

#if QT_VERSION_MAJOR == 5
#include <QTextCodec>

#include <algorithm>

namespace ztExamples
{

namespace
{

/// UTF-8 in which any other byte stands as a low surrogate alone, as in Python (PEP 383).
class FileNameCodec : public QTextCodec
{
  public:
    QByteArray name() const override { return "File-Name"; }
    int mibEnum() const override { return unknown; }

  protected:
    QString convertToUnicode(char const* bytes, int size, ConverterState*) const override
    {
        QString text;
        for (int i = 0, length; i < size; i += length)
        {
            length = std::min(lengthAfter(uchar(bytes[i])), size - i);
            QString const character = QString::fromUtf8(bytes + i, length);
            bool const isUtf8 = character.toUtf8() == QByteArray::fromRawData(bytes + i, length);
            length = isUtf8 ? length : 1;
            text += isUtf8 ? character : QString(QChar(lone | uchar(bytes[i])));
        }
        return text;
    }

    QByteArray convertFromUnicode(QChar const* text, int size, ConverterState*) const override
    {
        QByteArray bytes;
        for (int i = 0, length; i < size; i += length)
        {
            length = text[i].isHighSurrogate() && i + 1 < size ? 2 : 1;
            bool const isByte = (text[i].unicode() & 0xff80) == (lone | 0x80);
            bytes += isByte ? QByteArray(1, char(text[i].cell())) : QString(text + i, length).toUtf8();
        }
        return bytes;
    }

  private:
    static constexpr int unknown = 2;
    static constexpr ushort lone = 0xdc00;

    /// Of a character by its first byte.
    static int lengthAfter(uchar first) { return first < 0xc0 ? 1 : first < 0xe0 ? 2 : first < 0xf0 ? 3 : 4; }
};

} // namespace

void keepAnyFileName()
{
    QTextCodec::setCodecForLocale(new FileNameCodec); // Qt's from now on
}

} // namespace ztExamples

#else

void ztExamples::keepAnyFileName()
{
    // Qt 6 takes every file name for UTF-8 and can't be told otherwise.
}

#endif
