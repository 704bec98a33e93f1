#include "CommandLine.h"

#include <QFileInfo>
#include <QImageWriter>

#include <stdexcept>

namespace ztExamples
{

void failUsage(QString const& message)
{
    QString const line = QCoreApplication::applicationName() + ": " + message + " (see --help)";
    throw std::runtime_error(line.toStdString());
}

void require(bool condition, QString const& message)
{
    if (!condition)
        failUsage(message);
}

QString parse(QCommandLineParser& parser, QStringList const& arguments, QString const& details)
{
    parser.addOptions({{"help", "Show this."}, {"version", "Show the version."}});
    if (!parser.parse(arguments))
        failUsage(parser.errorText().chopped(1));
    if (parser.isSet("help"))
        return parser.helpText() + details;
    if (parser.isSet("version"))
        return QCoreApplication::applicationName() + " " ZT_VERSION "\n";
    return QString();
}

QString valueOf(QCommandLineParser const& parser, QString const& option)
{
    QStringList const values = parser.values(option);
    require(values.size() < 2, "--" + option + " is given twice");
    require(!values.contains(QString()), "--" + option + " is empty");
    return parser.value(option);
}

void requireFormat(QString const& option, QString const& path)
{
    QByteArray const suffix = QFileInfo(path).suffix().toLower().toUtf8();
    QByteArrayList const formats = QImageWriter::supportedImageFormats();
    require(formats.contains(suffix), "--" + option + ": can't write the format of \"" + path + "\", only " +
                                          QString::fromUtf8(formats.join(", ")));
}

} // namespace ztExamples
