#include "Guides.h"

#include "ztOpenSGUtils.h"
#include "ztPlatform.h"

#include <QDir>
#include <QPainter>

namespace ztGuides
{

namespace
{

//! [dpi]
void setDpiScale(double scale)
{
    if (ztPlatform::setDpiScale(scale, scale))
        for (osg::NodePtr const& node : ztOverlays::getOverlayPoolRoot()->children)
            osg::markChanged(node->core, osg::Overlay::SizeFieldMask); // raises `dirty`
}
//! [dpi]

QImage createFrame(int width, int height)
{
    QImage frame(width, height, QImage::Format_RGB32);
    frame.fill(QColor(45, 62, 80));
    return frame;
}

void save(QImage const& picture, QString const& folder, QString const& name)
{
    if (!folder.isEmpty())
        expect(picture.save(QDir(folder).filePath(name)), "the guide's pictures are saved");
}

void setPanel(osg::Overlay& overlay)
{
    overlay.font = "DejaVu Sans";
    overlay.backgroundColor = {0.05f, 0.08f, 0.12f};
    overlay.backgroundTransparency = {0.2f, 0.2f, 0.2f};
}

/// A label at each corner, in the middle of each edge and in the centre.
QImage showAnchors()
{
    ztOpenSGUtils::setRoot(createScene());
    QImage frame = createFrame(800, 450);
    for (char const* y : {"0", "0.5", "1"})
        for (char const* x : {"0", "0.5", "1"})
        {
            osg::OverlayPtr const label = overlayOf(addLabel(std::string(" {") + x + ", " + y + "} "));
            setPanel(*label);
            label->size = 0.09f;
            label->anchor = {std::stof(x), std::stof(y)};
            osg::markChanged(label, osg::AllFieldsMask);
        }
    stamp(frame);
    return frame;
}

/// What the guide's table of sizes compares.
struct Samples
{
    osg::OverlayPtr relativeText, absoluteText, relativePicture, absolutePicture;
};

QImage createPicture()
{
    QImage picture(64, 64, QImage::Format_ARGB32_Premultiplied);
    picture.fill(Qt::transparent);
    QPainter painter(&picture);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(Qt::NoPen);
    painter.setBrush(QColor(255, 170, 70));
    painter.drawEllipse(2, 2, 60, 60);
    return picture;
}

Samples createSamples()
{
    Samples samples;
    samples.relativeText = overlayOf(addLabel(" relative, 0.12 "));
    samples.relativeText->size = 0.12f;
    samples.relativeText->anchor = {0, 1};
    samples.absoluteText = overlayOf(addLabel(" absolute, 12 points "));
    samples.absoluteText->sizeMode = osg::Overlay::SizeAbsolute;
    samples.absoluteText->size = 12;
    samples.relativePicture = overlayOf(addPicture(createPicture()));
    samples.relativePicture->sizeMode = osg::Overlay::SizeRelative;
    samples.relativePicture->size = 0.25f;
    samples.relativePicture->anchor = {1, 1};
    samples.absolutePicture = overlayOf(addPicture(createPicture()));
    samples.absolutePicture->size = 32;
    samples.absolutePicture->anchor = {1, 0};
    samples.absolutePicture->offset = {-12, 12};
    for (osg::OverlayPtr const& overlay :
         {samples.relativeText, samples.absoluteText, samples.relativePicture, samples.absolutePicture})
    {
        setPanel(*overlay);
        osg::markChanged(overlay, osg::AllFieldsMask);
    }
    return samples;
}

float heightOf(osg::OverlayPtr const& overlay)
{
    auto const& corners = overlay->foreground->positions;
    return corners[2].y - corners[0].y;
}

void checkSizes(Samples const& samples, int width, int height, double scale)
{
    auto const viewport = createViewport(width, height);
    ztOverlays::updateAllOverlays(viewport);
    expect(heightOf(samples.relativeText) == float(int(float(height) * 0.12f)), "a relative text: size × height, cut");
    expect(heightOf(samples.relativePicture) == float(height) * 0.25f, "a relative picture: size × height");
    expect(heightOf(samples.absolutePicture) == float(32 * scale), "an absolute picture: size × DPI scale");
    osg::Pnt2f const corner = samples.absolutePicture->foreground->positions[1];
    expect(corner.x == float(width) - float(12 * scale) && corner.y == float(12 * scale), "an offset × DPI scale");
}

/// Two resolutions side by side, two DPI scales below each other.
QImage showSizes()
{
    ztOpenSGUtils::setRoot(createScene());
    Samples const samples = createSamples();
    ztOverlays::updateAllOverlays(createViewport(320, 180));
    float const textHeight = heightOf(samples.absoluteText);
    QImage sheet(1000, 790, QImage::Format_RGB32);
    sheet.fill(Qt::white);
    QPainter painter(&sheet);
    for (int scale : {1, 2})
    {
        setDpiScale(scale);
        for (int width : {320, 640})
        {
            QImage frame = createFrame(width, width * 9 / 16);
            checkSizes(samples, frame.width(), frame.height(), scale);
            expect(heightOf(samples.absoluteText) == textHeight, "an absolute text has one size");
            stamp(frame);
            QPoint const place(width == 320 ? 10 : 350, scale == 1 ? 30 : 425);
            painter.drawImage(place, frame);
            painter.drawText(place - QPoint(0, 8),
                             QString("%1 × %2, DPI scale %3").arg(width).arg(frame.height()).arg(scale));
        }
    }
    setDpiScale(1);
    return sheet;
}

void checkFormula()
{
    ztOpenSGUtils::setRoot(createScene());
    //! [formula]
    osg::OverlayPtr const logo = overlayOf(addPicture(createPicture())); // 64 × 64
    logo->size = 64;
    logo->anchor = {1, 0.5f};
    logo->offset = {-16, 10};
    osg::markChanged(logo, osg::AllFieldsMask);
    ztOverlays::updateOverlay(logo, 1280, 720);
    osg::Pnt2f const corner = logo->foreground->positions[0];
    expect(corner.x == 1280 * 1.0f - 1.0f * 64 - 16, "x = width × ax − ax × w + ox");
    expect(corner.y == 720 * 0.5f - 0.5f * 64 + 10, "y = height × ay − ay × h + oy");
    //! [formula]
}

} // namespace

void placement(QString const& folder)
{
    save(showAnchors(), folder, "anchors.png");
    save(showSizes(), folder, "sizes.png");
    checkFormula();
}

} // namespace ztGuides
