#include "jsonwriter.h"

#include <cmath>
#include <cstdio>

void JsonWriter::separate()
{
    if (m_afterKey) {
        m_afterKey = false;
        return;
    }
    if (!m_first.empty()) {
        if (!m_first.back())
            m_out += ',';
        m_first.back() = false;
    }
}

void JsonWriter::raw(const char *text)
{
    separate();
    m_out += text;
}

void JsonWriter::beginObject()
{
    raw("{");
    m_first.push_back(true);
}

void JsonWriter::endObject()
{
    m_first.pop_back();
    m_out += '}';
}

void JsonWriter::beginArray()
{
    raw("[");
    m_first.push_back(true);
}

void JsonWriter::endArray()
{
    m_first.pop_back();
    m_out += ']';
}

void JsonWriter::key(const char *name)
{
    value(name);
    m_out += ':';
    m_afterKey = true;
}

void JsonWriter::value(const QString &text)
{
    separate();
    m_out += '"';
    const QByteArray utf8 = text.toUtf8();
    for (const char c : utf8) {
        const auto u = static_cast<unsigned char>(c);
        switch (c) {
        case '"':
            m_out += "\\\"";
            break;
        case '\\':
            m_out += "\\\\";
            break;
        case '\n':
            m_out += "\\n";
            break;
        case '\r':
            m_out += "\\r";
            break;
        case '\t':
            m_out += "\\t";
            break;
        default:
            if (u < 0x20) {
                char escaped[8];
                std::snprintf(escaped, sizeof escaped, "\\u%04x", u);
                m_out += escaped;
            } else {
                m_out += c;
            }
        }
    }
    m_out += '"';
}

void JsonWriter::value(const char *text)
{
    value(QString::fromUtf8(text));
}

void JsonWriter::value(bool flag)
{
    raw(flag ? "true" : "false");
}

void JsonWriter::value(long long number)
{
    char buffer[32];
    std::snprintf(buffer, sizeof buffer, "%lld", number);
    raw(buffer);
}

void JsonWriter::valueFloat(float number)
{
    if (!std::isfinite(number)) {
        null();
        return;
    }
    char buffer[40];
    std::snprintf(buffer, sizeof buffer, "%.9g", static_cast<double>(number));
    raw(buffer);
}

void JsonWriter::valueDouble(double number)
{
    if (!std::isfinite(number)) {
        null();
        return;
    }
    char buffer[40];
    std::snprintf(buffer, sizeof buffer, "%.17g", number);
    raw(buffer);
}

void JsonWriter::null()
{
    raw("null");
}
