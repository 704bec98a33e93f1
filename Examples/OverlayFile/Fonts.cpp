#include "Fonts.h"

#include "ztOverlayCheck.h"

#include <QFileInfo>
#include <QFontDatabase>
#include <QGuiApplication>

#include <stdexcept>

namespace ztExamples
{

void addFont(QString const& path)
{
    if (!QFileInfo(path).isFile())
        throw std::runtime_error("File not found");
    if (!qobject_cast<QGuiApplication*>(QCoreApplication::instance()) || QFontDatabase::addApplicationFont(path) < 0)
        throw std::runtime_error("It is no font");
}

void requireFonts(std::vector<OverlayEntry> const& entries)
{
    for (OverlayEntry const& entry : entries)
    {
        bool const isText = entry.contentType.value_or(osg::Overlay::ContentText) == osg::Overlay::ContentText;
        std::string const font = entry.font.value_or("");
        auto const missing = isText ? ztOverlayCheck::findMissingFont(font) : std::nullopt;
        if (missing)
            throw std::runtime_error(entry.place.toStdString() +
                                     ".font: expected a family of the system's fonts, got \"" + font +
                                     "\", did you mean \"" + missing->nearest + "\"?");
    }
}

} // namespace ztExamples
