#include "Failure.h"

#include <QString>

#include <stdexcept>

namespace ztExamples
{

void fail(std::string const& reason)
{
    QString const line = QString::fromStdString(reason).section('\n', 0, 0, QString::SectionSkipEmpty);
    throw std::runtime_error(line.isEmpty() ? "The file is cut off or damaged" : line.simplified().toStdString());
}

} // namespace ztExamples
