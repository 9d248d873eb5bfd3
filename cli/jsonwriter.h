#pragma once

#include <QByteArray>
#include <QString>

#include <string>
#include <vector>

// A small streaming JSON writer: the tool prints numbers with printf formats of its own
// (a 32-bit float must read back exactly), which a document model would reformat.
class JsonWriter
{
public:
    void beginObject();
    void endObject();
    void beginArray();
    void endArray();
    void key(const char *name);

    void value(const QString &text);
    void value(const char *text);
    void value(bool flag);
    void value(long long number);
    void value(int number) { value(static_cast<long long>(number)); }
    void value(unsigned number) { value(static_cast<long long>(number)); }
    // A float printed with "%.9g", enough for a 32-bit float to read back exactly.
    void valueFloat(float number);
    // A double printed with "%.17g".
    void valueDouble(double number);
    void null();

    // A member of the open object: its key, then its value as above.
    template <typename T> void field(const char *name, const T &v)
    {
        key(name);
        value(v);
    }
    void fieldFloat(const char *name, float number)
    {
        key(name);
        valueFloat(number);
    }
    void fieldDouble(const char *name, double number)
    {
        key(name);
        valueDouble(number);
    }

    const std::string &text() const { return m_out; }

private:
    void separate();
    void raw(const char *text);

    std::string m_out;
    std::vector<bool> m_first; // per open container: nothing written yet
    bool m_afterKey = false;
};
