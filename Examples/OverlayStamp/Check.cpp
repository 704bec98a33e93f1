#include "Check.h"

#include "Json.h"

namespace ztExamples
{

namespace
{

/// As the JSON file has them.
QString listed(osg::Vec2f const& vector)
{
    return QString("[%1, %2]").arg(double(vector.x)).arg(double(vector.y));
}

QString describeContent(OverlayEntry const& entry)
{
    if (entry.contentType == contentGuide)
        return "guide " + shown(guideNames()[*entry.guide.kind]);
    if (entry.contentType.value_or(osg::Overlay::ContentText) == osg::Overlay::ContentText)
        return "text " + shown(entry.writtenText) +
               (entry.font ? " in " + shown(QString::fromStdString(*entry.font)) : "");
    if (entry.imagePath)
        return "image whose path has placeholders";
    QSize const size = entry.vectorPicture ? entry.vectorPicture->size() : entry.image.value_or(QImage()).size();
    return QString("image %1 of %2 by %3 pixels").arg(shown(entry.imageFile)).arg(size.width()).arg(size.height());
}

QString describePlace(OverlayEntry const& entry)
{
    bool const isText = entry.contentType.value_or(osg::Overlay::ContentText) == osg::Overlay::ContentText;
    bool const isRelative = entry.sizeMode == osg::Overlay::SizeRelative;
    QString const unit = isRelative ? "of the frame's height" : isText ? "points" : "pixels high";
    return QString(", %1 %2, anchor ").arg(double(entry.size.value_or(12.0f))).arg(unit) +
           listed(entry.anchor.value_or(osg::Vec2f{0.0f, 0.0f})) +
           (entry.offset ? ", offset " + listed(*entry.offset) : "") +
           (entry.padding ? ", padding " + listed(*entry.padding) : "") + (entry.shadow ? ", a shadow" : "");
}

} // namespace

QString describe(OverlayEntry const& entry)
{
    QString const name = entry.name ? " " + shown(QString::fromStdString(*entry.name)) : "";
    return entry.place + name + ": " + describeContent(entry) +
           (entry.contentType == contentGuide ? "" : describePlace(entry)) +
           (entry.visible.value_or(true) ? "" : ", hidden");
}

} // namespace ztExamples
