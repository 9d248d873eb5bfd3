#pragma once

// The one plain warning box of the program: printf-style text, no title, button Ok.
void reportWarning(const char *format, ...)
#if defined(__GNUC__)
    __attribute__((format(printf, 1, 2)))
#endif
    ;

#include <QString>

#include <functional>

// While one of these lives, warnings go to its receiver instead of a modal box: for files that
// another process handed over, whose errors must not stop the program waiting for a click.
class QuietWarnings
{
public:
    explicit QuietWarnings(std::function<void(const QString &)> receiver);
    ~QuietWarnings();
    QuietWarnings(const QuietWarnings &) = delete;
    QuietWarnings &operator=(const QuietWarnings &) = delete;

private:
    std::function<void(const QString &)> m_receiver;
    QuietWarnings *m_outer;

    friend void reportWarning(const char *format, ...);
};
