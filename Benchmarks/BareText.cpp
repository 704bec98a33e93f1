#include "BareText.h"

#include <QTextLayout>

#include <limits>
#include <memory>

namespace ztBenchmarks
{

namespace
{

struct Layouts
{
    std::vector<std::unique_ptr<QTextLayout>> lines;
    double width = 0.0;
    double height = 0.0;
};

QColor toColor(float red, float green, float blue, float alpha)
{
    QColor color;
    color.setRgb(int(red * 255.0f), int(green * 255.0f), int(blue * 255.0f), int(alpha * 255.0f));
    return color;
}

QColor textColor(osg::Overlay const& overlay)
{
    auto const& [r, g, b, a] = overlay.textColor;
    return toColor(r, g, b, a);
}

QColor background(osg::Overlay const& overlay)
{
    auto const& [r, g, b] = overlay.backgroundColor;
    return toColor(r, g, b, 1.0f - overlay.backgroundTransparency.r);
}

/// 0 for the size in which the text is laid out.
int pixelHeight(osg::Overlay const& overlay, int targetHeight)
{
    return overlay.sizeMode == osg::Overlay::SizeAbsolute ? 0 : int(float(targetHeight) * overlay.size);
}

Layouts layOut(osg::Overlay const& overlay, int targetHeight)
{
    QString const text = QString::fromUtf8(overlay.text.c_str());
    int const height = pixelHeight(overlay, targetHeight);
    int const pointSize = height == 0 ? int(overlay.size) : height / (text.count(u'\n', Qt::CaseSensitive) + 1);
    QFont const font(QString::fromUtf8(overlay.font.c_str()), pointSize, -1, false);
    Layouts layouts;
    for (QString const& line : text.split(QChar(u'\n'), Qt::KeepEmptyParts, Qt::CaseSensitive))
    {
        auto layout = std::make_unique<QTextLayout>(line, font, nullptr);
        layout->beginLayout();
        for (QTextLine part = layout->createLine(); part.isValid(); part = layout->createLine())
        {
            part.setLeadingIncluded(true);
            part.setLineWidth(std::numeric_limits<double>::max());
            part.setPosition(QPointF(0.0, layouts.height));
            layouts.height += part.height();
        }
        layout->endLayout();
        layouts.width = std::max(layouts.width, layout->maximumWidth());
        layouts.lines.push_back(std::move(layout));
    }
    return layouts;
}

void draw(QPainter& painter, Layouts const& layouts, QColor const& color)
{
    painter.setRenderHint(QPainter::Antialiasing, true);
    painter.setRenderHint(QPainter::TextAntialiasing, true);
    painter.setBrush(QBrush(color, Qt::SolidPattern));
    painter.setPen(QPen(color));
    for (auto const& layout : layouts.lines)
        layout->draw(&painter, QPointF(0.0, 0.0), {}, QRectF());
}

} // namespace

QImage renderWithQt(osg::Overlay const& overlay, int targetHeight)
{
    Layouts const layouts = layOut(overlay, targetHeight);
    QImage image(int(layouts.width), int(layouts.height), QImage::Format_ARGB32_Premultiplied);
    image.fill(background(overlay));
    QPainter painter(&image);
    draw(painter, layouts, textColor(overlay));
    painter.end();
    int const height = pixelHeight(overlay, targetHeight);
    return height == 0 ? image : image.scaledToHeight(height, Qt::SmoothTransformation);
}

void paintWithQt(QPainter& painter, osg::Overlay const& overlay, QSize const& target)
{
    Layouts const layouts = layOut(overlay, target.height());
    int const height = pixelHeight(overlay, target.height());
    double const scale = height == 0 ? 1.0 : height / layouts.height;
    painter.save();
    painter.translate(double(overlay.anchor.x) * (target.width() - layouts.width * scale),
                      double(1.0f - overlay.anchor.y) * (target.height() - layouts.height * scale));
    painter.scale(scale, scale);
    painter.fillRect(QRectF(0, 0, layouts.width, layouts.height), background(overlay));
    draw(painter, layouts, textColor(overlay));
    painter.restore();
}

} // namespace ztBenchmarks
