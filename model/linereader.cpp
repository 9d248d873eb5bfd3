#include "linereader.h"

#include "diskfile.h"

#include <cstring>

namespace {

inline bool isBlank(char c)
{
    return c == ' ' || c == '\t' || c == '\r' || c == '\n';
}

// A "//" anywhere ends the line: the formats have no way to quote it.
inline void cutComment(char *text)
{
    if (char *comment = std::strstr(text, "//"))
        *comment = 0;
}

} // namespace

char *TrimSpace(char *text)
{
    if (!text)
        return text;
    while (isBlank(*text))
        ++text;
    char *end = text + std::strlen(text);
    while (end > text && isBlank(end[-1]))
        --end;
    *end = 0;
    return text;
}

int SplitFields(char *text, char *fields[], int capacity, char separator)
{
    if (!text || !fields || capacity < 1)
        return 0;
    int count = 0;
    char *p = text;
    for (;;) {
        fields[count++] = p;
        char *next = std::strchr(p, separator);
        if (!next)
            break;
        *next = 0;
        if (count == capacity)
            break;
        p = next + 1;
    }
    return count;
}

int SplitTrimmed(char *text, char *fields[], int capacity, char separator)
{
    const int count = SplitFields(text, fields, capacity, separator);
    for (int i = 0; i < count; ++i)
        fields[i] = TrimSpace(fields[i]);
    return count;
}

void ToUpperAscii(char *text)
{
    if (!text)
        return;
    for (; *text; ++text) {
        if (*text >= 'a' && *text <= 'z')
            *text = static_cast<char>(*text - 'a' + 'A');
    }
}

int ReadDataLine(CDiskFile &file, int &counter, char *buffer, int size, char *&line)
{
    line = buffer;
    for (;;) {
        if (file.Gets(buffer, size) == 0) {
            if (buffer && size > 0)
                buffer[0] = 0;
            line = buffer;
            return 0;
        }
        ++counter;
        cutComment(buffer);
        line = TrimSpace(buffer);
        const int length = static_cast<int>(std::strlen(line));
        if (length > 0)
            return length;
    }
}

int ParseKeyLine(char *line, char *&key, char *&value)
{
    key = nullptr;
    value = nullptr;
    if (!line)
        return 0;
    line = TrimSpace(line);
    if (std::strlen(line) < 3)
        return 0;
    if (line[0] == '[') {
        char *head = line + 1;
        if (char *close = std::strchr(head, ']'))
            *close = 0;
        head = TrimSpace(head);
        if (!*head)
            return 0;
        key = head;
        return 1;
    }
    char *equal = std::strchr(line, '=');
    if (!equal)
        return 0;
    *equal = 0;
    char *k = TrimSpace(line);
    char *v = TrimSpace(equal + 1);
    if (!*k || !*v)
        return 0;
    key = k;
    value = v;
    return 2;
}

int ReadKeyLine(CDiskFile &file, int &counter, char *buffer, int size, char *&key, char *&value)
{
    key = nullptr;
    value = nullptr;
    for (;;) {
        if (buffer && size > 0)
            std::memset(buffer, 0, static_cast<size_t>(size));
        if (file.Gets(buffer, size) == 0)
            return KeyLineEnd;
        ++counter;
        if (std::strlen(buffer) < 3)
            continue;
        cutComment(buffer);
        if (std::strlen(buffer) < 3)
            continue;
        const int kind = ParseKeyLine(buffer, key, value);
        if (kind != 0)
            return kind;
    }
}
