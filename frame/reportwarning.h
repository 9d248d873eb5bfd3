#pragma once

// The one plain warning box of the program: printf-style text, no title, button Ok.
void reportWarning(const char *format, ...)
#if defined(__GNUC__)
    __attribute__((format(printf, 1, 2)))
#endif
    ;
