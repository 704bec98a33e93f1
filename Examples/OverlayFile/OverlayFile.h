/// \file
/// Overlay files: overlays written down in JSON.
///
/// \code
/// {"overlays": [{"text": "Frame {index}", "sizeMode": "relative", "size": 0.05, "anchor": [0.5, 0.98]},
///               {"contentType": "image", "image": "logo.png", "size": 64}]}
/// \endcode
#pragma once

#include "Guides.h"
#include "OSGOverlay.h"
#include "Picture.h"
#include "Placeholders.h"

#include <QString>

#include <optional>
#include <vector>

namespace ztExamples
{

/// The keys of an overlay file, for --help.
extern char const overlayFileHelp[];

/// The `contentType` of a guide: to the library a picture, which is stamped as it is.
constexpr osg::Int32 contentGuide = 2;

/// Of a text, as if it were painted.
struct Shadow
{
    /// In DPI-independent pixels, x right, y up.
    osg::Vec2f offset = {1.0f, -1.0f};
    osg::Color4f color = {0.0f, 0.0f, 0.0f, 1.0f};
};

/// One element of "overlays", checked. What is empty isn't in the file: the library's default holds.
struct OverlayEntry
{
    /// Where it stands, "a.json: overlays[0]" for example.
    QString place;
    std::optional<std::string> name;
    std::optional<bool> visible;
    std::optional<osg::Int32> contentType;
    std::optional<Template> text;
    /// As it stands in the file.
    QString writtenText;
    std::optional<std::string> font;
    std::optional<osg::Color4f> textColor;
    std::optional<osg::Color3f> backgroundColor;
    std::optional<osg::Color3f> backgroundTransparency;
    std::optional<osg::Int32> sizeMode;
    std::optional<float> size;
    std::optional<osg::Vec2f> anchor;
    std::optional<osg::Vec2f> offset;
    /// In the layout of an osg::Image, see toPixels().
    std::optional<QImage> image;
    QString imageFile;
    /// Drawn in place of `image`, at the size that it is shown at.
    std::optional<VectorPicture> vectorPicture;
    /// The path of a picture that differs from frame to frame and isn't read yet, relative to `folder`.
    std::optional<Template> imagePath;
    QString folder;
    Guide guide;
    std::optional<Shadow> shadow;
    /// Of the background around a text, in DPI-independent pixels.
    std::optional<osg::Vec2f> padding;
};

/// More characters in a text take more time and memory than any label is worth.
constexpr int maxTextLength = 100000;

/// The entries of an overlay file, with their pictures, whose paths are relative to the file.
/// \param maxPixels  how many pixels the pictures may have together
/// \param run  values of placeholders
/// \throw std::runtime_error if the file or a picture can't be read or anything in it isn't as it should be;
///     what() is a line that names file, key, value and what was expected
std::vector<OverlayEntry> readOverlayFile(QString const& path, qint64 maxPixels = defaultMaxPixels,
                                          RunValues const& run = {});

/// Reads an entry's picture for a frame, unless it is there already.
/// \param entry  has an `imagePath`
/// \param limit  counts the picture
/// \return whether it is another one
/// \throw std::runtime_error if it can't be read; what() is the reason, and the entry is as it was
bool readPicture(OverlayEntry& entry, Placeholders const& values, PixelLimit& limit);

} // namespace ztExamples
