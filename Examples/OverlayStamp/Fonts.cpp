#include "Fonts.h"

#include "ztOverlayCheck.h"

#include <stdexcept>

namespace ztExamples
{

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
