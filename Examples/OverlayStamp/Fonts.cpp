#include "Fonts.h"

#include "ztOverlayCheck.h"

#include <stdexcept>

namespace ztExamples
{

void requireFonts(QString const& overlayFile, std::vector<OverlayEntry> const& entries)
{
    for (std::size_t i = 0; i < entries.size(); ++i)
    {
        bool const isText = entries[i].contentType.value_or(osg::Overlay::ContentText) == osg::Overlay::ContentText;
        std::string const font = entries[i].font.value_or("");
        auto const missing = isText ? ztOverlayCheck::findMissingFont(font) : std::nullopt;
        if (missing)
            throw std::runtime_error(overlayFile.toStdString() + ": overlays[" + std::to_string(i) +
                                     "].font: expected a family of the system's fonts, got \"" + font +
                                     "\", did you mean \"" + missing->nearest + "\"?");
    }
}

} // namespace ztExamples
