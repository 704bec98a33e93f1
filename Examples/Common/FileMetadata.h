/// \file
/// What PNG, JPEG and HDR files hold besides their pixels, byte for byte: colour profiles, EXIF, texts and the like.
#pragma once

#include <QByteArray>
#include <QString>

namespace ztExamples
{

struct FileMetadata
{
    /// "png", "jpeg", "hdr", or nothing for another format.
    QByteArray format;
    /// Chunks, segments or the header, without what isn't true of the stamped picture.
    QByteArray bytes;
    bool isGray = false;
};

/// Of a regular file. JPEG files are upright afterwards.
FileMetadata readMetadata(QString const& path);

/// A file with other metadata in place of its own if both are of one format, else as it is.
QByteArray withMetadata(QByteArray const& file, FileMetadata const& metadata);

} // namespace ztExamples
