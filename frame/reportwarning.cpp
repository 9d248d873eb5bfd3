#include "reportwarning.h"

#include <QMessageBox>
#include <QString>

#include <cstdarg>
#include <cstdio>

namespace {
QuietWarnings *g_quiet = nullptr; // the innermost quiet scope; the GUI thread only
} // namespace

QuietWarnings::QuietWarnings(std::function<void(const QString &)> receiver)
    : m_receiver(std::move(receiver)), m_outer(g_quiet)
{
    g_quiet = this;
}

QuietWarnings::~QuietWarnings()
{
    g_quiet = m_outer;
}

void reportWarning(const char *format, ...)
{
    char buffer[1024];
    va_list args;
    va_start(args, format);
    std::vsnprintf(buffer, sizeof buffer, format, args);
    va_end(args);
    if (g_quiet) {
        g_quiet->m_receiver(QString::fromLocal8Bit(buffer));
        return;
    }
    QMessageBox::warning(nullptr, QString(), QString::fromLocal8Bit(buffer), QMessageBox::Ok);
}
