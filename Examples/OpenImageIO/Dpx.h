/// \file
/// What the library doesn't check of DPX files: https://pub.smpte.org/doc/st268-1/
#pragma once

#include <QByteArray>
#include <QString>

namespace ztExamples
{

/// The beginning of a file.
class DpxHeader
{
  public:
    /// \throw std::runtime_error if there is none; what() is the reason
    explicit DpxHeader(QString const& path);

    /// The library ends the process where sizes are wrong.
    /// \throw std::runtime_error if one is; what() is the reason
    void requireSizes() const;

    /// The library makes up pixels that aren't there.
    /// \param samples  in a row
    /// \throw std::runtime_error if some aren't; what() is the reason
    void requirePixels(int samples, int rows) const;

  private:
    qint64 numberAt(int place) const;
    bool hasNumber(int place) const;
    qint64 rowSize(int samples) const;

    QByteArray _bytes;
    qint64 _fileSize;
};

} // namespace ztExamples
