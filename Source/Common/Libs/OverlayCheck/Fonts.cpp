#include "Fonts.h"

#include "ztOverlayCheck.h"

#include <QFontDatabase>
#include <QFontInfo>
#include <QGuiApplication>

#include <algorithm>
#include <memory>

namespace ztOverlayCheck
{

namespace
{

QStringList families()
{
    return std::make_unique<QFontDatabase>()->families(); // static with Qt 6, which warns of an object
}

/// \param font  one name or several with commas between them
bool isThere(QString const& font)
{
    QStringList const names = font.split(',');
    return std::any_of(names.begin(), names.end(), [known = families()](QString const& name) {
        return known.contains(name.trimmed(), Qt::CaseInsensitive);
    });
}

} // namespace

bool hasApplication()
{
    return qobject_cast<QGuiApplication*>(QCoreApplication::instance());
}

std::optional<MissingFont> findMissingFont(std::string const& font)
{
    QString const family = QString::fromUtf8(font.c_str());
    if (family.isEmpty() || !hasApplication() || isThere(family))
        return std::nullopt;
    std::vector<std::string> known;
    for (QString const& name : families())
        known.push_back(name.toStdString());
    return MissingFont{QFontInfo(QFont(family)).family().toStdString(), nearestName(family.toStdString(), known)};
}

} // namespace ztOverlayCheck
