#include "Outputs.h"

#include "CommandLine.h"

#include <QDir>
#include <QFileInfo>

#include <map>
#include <stdexcept>
#include <sys/stat.h>
#include <tuple>

namespace ztExamples
{

namespace
{

/// Of a file, the same for all its names: device and number. Of one that isn't there those of its folder, and its name,
/// or its whole path if the folder isn't there either.
using Identity = std::tuple<dev_t, ino_t, QString>;

/// As writing does.
QFileInfo followLinks(QFileInfo file)
{
    constexpr int maxLinks = 128;
    for (int i = 0; i < maxLinks && file.isSymLink(); ++i)
        file.setFile(file.symLinkTarget());
    return file;
}

Identity identify(QString const& path)
{
    struct stat status = {};
    if (stat(QFile::encodeName(path), &status) == 0)
        return {status.st_dev, status.st_ino, QString()};
    QFileInfo const file = followLinks(QFileInfo(path));
    if (stat(QFile::encodeName(file.path()), &status) == 0)
        return {status.st_dev, status.st_ino, file.fileName()};
    return {0, 0, QDir::cleanPath(file.absoluteFilePath())};
}

/// As far as they are known before the frames are read.
QStringList findPictures(std::vector<FramePaths> const& frames, OverlayEntry const& entry)
{
    QStringList files;
    for (std::size_t i = 0; i < frames.size(); ++i)
        try
        {
            Placeholders const values{frames[i].input, i + 1, frames.size(), {}, frames[i].number};
            files << QDir(entry.folder).filePath(expand(*entry.imagePath, values));
        }
        catch (std::runtime_error const&)
        {
            continue; // the frame's file says it
        }
    return files;
}

} // namespace

void requireSafeOutputs(StampOptions const& options, std::vector<OverlayEntry> const& entries)
{
    std::map<Identity, QString> uses;
    auto const requireOther = [](bool isOther, QString const& output, QString const& use) {
        require(isOther, "\"" + output + "\" is " + use + ", which only --force replaces");
    };
    auto const keep = [&](QString const& file, QString const& use) {
        uses.emplace(identify(file), use);
        requireOther(!options.outputPattern || !matches(*options.outputPattern, file), file, use);
    };
    for (FramePaths const& frame : options.frames)
        uses.emplace(identify(frame.input), "an input");
    keep(options.overlayFile, "the overlay file");
    for (OverlayEntry const& entry : entries)
        if (!entry.imageFile.isEmpty())
            keep(entry.imageFile, "a picture of the overlay file");
        else if (entry.imagePath)
            for (QString const& file : findPictures(options.frames, entry))
                keep(file, "a picture of the overlay file");
    for (FramePaths const& frame : options.writesPipe ? std::vector<FramePaths>() : options.frames)
    {
        auto const [use, isFree] = uses.emplace(identify(frame.output), "\"" + frame.output + "\" too");
        requireOther(isFree, frame.output, use->second);
    }
}

} // namespace ztExamples
