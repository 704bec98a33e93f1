#include "TextRaster.h"

#include "ImageSlot.h"
#include "Placement.h"
#include "ztNumeric.h"
#include "ztPixels.h"
#include "ztPlatform.h"

#include <QGuiApplication>
#include <QImage>
#include <QPainter>
#include <QTextLayout>

#include <algorithm>
#include <limits>
#include <memory>

namespace ztOverlays
{

namespace
{

using ztNumeric::truncate;

/// The laid-out lines of a text, all in one coordinate system, y down from the top of the first.
struct LaidOutText
{
    std::vector<std::unique_ptr<QTextLayout>> layouts;
    double width = 0.0;
    double height = 0.0;
};

int channel(float component)
{
    return truncate(component * 255.0f);
}

QColor toColor(osg::Color4f const& color)
{
    QColor result;
    result.setRgb(channel(color.r), channel(color.g), channel(color.b), channel(color.a));
    return result;
}

/// \param transparency  a colour whose luminance counts, by the weights of Rec. ITU-R BT.709
QColor toColor(osg::Color3f const& color, osg::Color3f const& transparency)
{
    float const luminance = 0.2126f * transparency.r + 0.7152f * transparency.g + 0.0722f * transparency.b;
    return toColor(osg::Color4f{color.r, color.g, color.b, 1.0f - luminance});
}

LaidOutText layOut(QString const& text, QFont const& font)
{
    LaidOutText result;
    for (QString const& line : text.split(QChar(u'\n'), Qt::KeepEmptyParts, Qt::CaseSensitive))
    {
        auto layout = std::make_unique<QTextLayout>(line, font, nullptr);
        layout->beginLayout();
        for (QTextLine part = layout->createLine(); part.isValid(); part = layout->createLine())
        {
            part.setLeadingIncluded(true);
            part.setLineWidth(std::numeric_limits<double>::max());
            part.setPosition(QPointF(0.0, result.height));
            result.height += part.height();
        }
        layout->endLayout();
        result.width = std::max(result.width, layout->maximumWidth());
        result.layouts.push_back(std::move(layout));
    }
    return result;
}

/// Qt's scaler computes with 32-bit offsets: beyond 2 GiB it isn't to be trusted with an image.
bool isPossible(double width, double height)
{
    return width * height * 4.0 <= double(std::int64_t(1) << 31);
}

/// A null image where one of the sizes is below one pixel, or it takes more than 2 GiB, or Qt can't allocate it.
QImage paint(LaidOutText const& text, QColor const& color, QColor const& background)
{
    if (!isPossible(text.width, text.height))
        return {};
    QImage image(truncate(text.width), truncate(text.height), QImage::Format_ARGB32_Premultiplied);
    if (image.isNull())
        return image;
    image.fill(background);
    QPainter painter(&image);
    painter.setRenderHint(QPainter::Antialiasing, true);
    painter.setRenderHint(QPainter::TextAntialiasing, true);
    painter.setBrush(QBrush(color, Qt::SolidPattern));
    painter.setPen(QPen(color));
    for (auto const& layout : text.layouts)
        layout->draw(&painter, QPointF(0.0, 0.0), {}, QRectF());
    painter.end();
    return image;
}

/// A null image where that of the new height takes more than 2 GiB.
QImage scaledToHeight(QImage const& image, int height)
{
    if (image.isNull() || !isPossible(double(image.width()) * height / image.height(), height))
        return {};
    return image.scaledToHeight(height, Qt::SmoothTransformation);
}

void transfer(QImage const& source, osg::ImagePtr const& image)
{
    int const width = source.width();
    int const height = source.height();
    allocate(*image, width, height);
    osg::UInt8* destination = image->pixelBuffer();
    for (int row = height - 1; row >= 0; --row, destination += std::size_t(width) * 4)
        ztPixels::fromWords(reinterpret_cast<QRgb const*>(source.constScanLine(row)), destination, std::size_t(width));
    osg::markChanged(image, osg::AllFieldsMask);
}

bool canDraw()
{
    return qobject_cast<QGuiApplication*>(QCoreApplication::instance());
}

} // namespace

bool renderText(osg::Overlay const& overlay, int viewportHeight, osg::ImagePtr const& image)
{
    QString const text = QString::fromUtf8(overlay.text.c_str());
    QString const family = QString::fromUtf8(overlay.font.c_str());
    QColor const background = toColor(overlay.backgroundColor, overlay.backgroundTransparency);
    QColor const color = toColor(overlay.textColor);

    int pictureHeight = 0;
    int pointSize = truncate(overlay.size);
    if (overlay.sizeMode != osg::Overlay::SizeAbsolute)
    {
        auto const lineCount = text.count(QChar(u'\n'), Qt::CaseSensitive) + 1;
        pictureHeight = relativePixelHeight(viewportHeight, overlay.size);
        pointSize = truncate(double(pictureHeight) / ztPlatform::getDpiScaleY() / double(lineCount));
    }
    if (pointSize <= 0 || text.isEmpty() || !canDraw())
        return false;

    QImage picture = paint(layOut(text, QFont(family, pointSize, -1, false)), color, background);
    if (pictureHeight != 0)
        picture = scaledToHeight(picture, pictureHeight);
    transfer(picture, image);
    return true;
}

} // namespace ztOverlays
