#include "menutext.h"

QString MenuText(const QString &text)
{
    QString shown;
    shown.reserve(text.size() + 2);
    for (qsizetype i = 0; i < text.size(); ++i) {
        const QChar c = text.at(i);
        shown.append(c);
        if (c == QLatin1Char('&') && (i == 0 || text.at(i - 1) != QLatin1Char('(')))
            shown.append(QLatin1Char('&'));
    }
    return shown;
}

QString PathWithExtension(const QString &path, std::initializer_list<const char *> accepted)
{
    for (const char *extension : accepted) {
        if (path.endsWith(QLatin1Char('.') + QLatin1String(extension), Qt::CaseInsensitive))
            return path;
    }
    return path + QLatin1Char('.') + QLatin1String(*accepted.begin());
}
