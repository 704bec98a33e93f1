#include "Placeholders.h"

namespace ztExamples
{

namespace
{

std::optional<QString> valueOf(QString const& placeholder, Placeholders const& values)
{
    if (placeholder == "{file}")
        return values.file;
    if (placeholder == "{index}")
        return QString::number(values.index);
    if (placeholder == "{count}")
        return QString::number(values.count);
    return std::nullopt;
}

} // namespace

std::optional<QString> expand(QString const& text, Placeholders const& values)
{
    QString result;
    for (int i = 0; i < text.size(); ++i)
    {
        QChar const c = text[i];
        if (c != '{' && c != '}')
        {
            result += c;
        }
        else if (i + 1 < text.size() && text[i + 1] == c)
        {
            result += c;
            ++i;
        }
        else
        {
            int const end = int(text.indexOf('}', i));
            std::optional<QString> const value = valueOf(text.mid(i, end - i + 1), values);
            if (!value)
                return std::nullopt;
            result += *value;
            i = end;
        }
    }
    return result;
}

} // namespace ztExamples
