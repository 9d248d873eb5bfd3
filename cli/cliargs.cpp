#include "cliargs.h"

#include <QCoreApplication>

#include <cerrno>
#include <cstdio>
#include <cstdlib>

bool ParseWhole(const char *text, long long &value)
{
    value = 0;
    if (!text)
        return false;
    const char *p = text;
    if (*p == '+' || *p == '-')
        ++p;
    if (*p < '0' || *p > '9')
        return false; // strtoll would skip blanks and take an empty text as 0
    errno = 0;
    char *end = nullptr;
    const long long number = std::strtoll(text, &end, 10);
    if (errno == ERANGE || !end || *end != '\0')
        return false;
    value = number;
    return true;
}

bool ReadWholeOption(const char *verb, const char *option, const char *text, long long &value)
{
    if (ParseWhole(text, value))
        return true;
    const QByteArray message = QCoreApplication::translate("veldrix-cli", "%1 expects a whole number")
                                   .arg(QLatin1String(option))
                                   .toLocal8Bit();
    std::fprintf(stderr, "veldrix-cli %s: %s\n", verb, message.constData());
    return false;
}

bool ParseAnalogChannel(const char *text, long long &index)
{
    index = -1;
    return text && (text[0] & ~0x20) == 'A' && ParseWhole(text + 1, index) && index >= 0;
}
