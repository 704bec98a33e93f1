// Overlay files of any bytes: entries as they should be, or one line that names the file.
#include "FuzzSupport.h"
#include "OSGBase.h"
#include "OverlayNodes.h"
#include "Placeholders.h"

#include <QFile>
#include <QTemporaryDir>

#include <cmath>
#include <stdexcept>

using namespace ztFuzz;

namespace
{

ztExamples::RunValues const run = {{}, {{"A", "{}"}}, {{"B", "2"}}, ztExamples::FrameRate{30, 2}, 0};

bool savePicture(QString const& path)
{
    QImage picture(3, 2, QImage::Format_ARGB32);
    picture.fill(0x80ff4020);
    return picture.save(path);
}

void checkText(ztExamples::Template const& text)
try
{
    QString const expanded = expand(text, {"a/b.17.png", 1, 2, {{640, 480}, {{"Camera", "north"}}}, {}});
    require(!expanded.contains(QChar(0)), "texts have no zeros");
}
catch (std::runtime_error const& error)
{
    require(std::string(error.what()).find('\n') == std::string::npos, "a frame's message is one line");
}

void check(ztExamples::OverlayEntry const& entry)
{
    bool const isText = entry.contentType.value_or(0) == osg::Overlay::ContentText;
    bool const isGuide = entry.contentType == ztExamples::contentGuide;
    require(isText ? bool(entry.text) : isGuide || entry.image || entry.vectorPicture || entry.imagePath,
            "there is something to show");
    require(isText || (!entry.shadow && !entry.padding), "only texts have something beneath");
    for (QRect const& part : isGuide ? layOut(entry.guide, {70, 40}, {1.5, 1.5}) : std::vector<QRect>())
        require(part.isEmpty() || QRect(0, 0, 70, 40).contains(part), "guides stay in the frame");
    if (entry.text)
        checkText(*entry.text);
    require(!entry.image || !entry.image->isNull(), "pictures have pixels");
    require(entry.size.value_or(1.0f) > 0.0f && std::isfinite(entry.size.value_or(1.0f)), "a size is above 0");
    osg::subRef(ztExamples::createOverlayNode(osg::NullFC, entry));
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(osg::UInt8 const* data, std::size_t size)
{
    static QTemporaryDir const folder;
    static bool const hasPicture = savePicture(folder.filePath("logo.png"));
    QFile file(folder.filePath("overlays.json"));
    require(hasPicture && file.open(QIODevice::WriteOnly), "the files are there");
    file.write(reinterpret_cast<char const*>(data), qint64(size));
    file.close();
    try
    {
        for (ztExamples::OverlayEntry const& entry :
             ztExamples::readOverlayFile(file.fileName(), ztExamples::defaultMaxPixels, run))
            check(entry);
    }
    catch (std::runtime_error const& error)
    {
        std::string const what = error.what();
        require(what.rfind(file.fileName().toStdString() + ": ", 0) == 0, "the message begins with the file");
        require(what.find('\n') == std::string::npos, "the message is one line");
    }
    requireNoContainers();
    return 0;
}
