#include "reportwarning.h"

#include <QMessageBox>
#include <QString>

#include <cstdarg>
#include <cstdio>

void reportWarning(const char *format, ...)
{
    char buffer[1024];
    va_list args;
    va_start(args, format);
    std::vsnprintf(buffer, sizeof buffer, format, args);
    va_end(args);
    QMessageBox::warning(nullptr, QString(), QString::fromLocal8Bit(buffer), QMessageBox::Ok);
}
