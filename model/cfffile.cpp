#include "cfffile.h"

#include "safewrite.h"

#include <QCoreApplication>
#include <QFile>
#include <QFileInfo>

#include <algorithm>
#include <cstring>

namespace {

struct Part
{
    QByteArray type;     // CFG, INF, HDR, DAT
    QByteArray form;     // for DAT: ASCII, BINARY, BINARY32, FLOAT32
    QByteArray encoding; // a word behind the form that is no byte count
    qsizetype begin = 0;
    qsizetype end = 0;
};

// A section head as recorders write it: dashes, "file type", the type, for data its form and
// byte count, dashes again. Some leave out the colon or a dash; those are taken too.
bool parseHead(const QByteArray &line, Part &part, qsizetype &count)
{
    const QByteArray trimmed = line.trimmed();
    if (!trimmed.startsWith("--"))
        return false;
    const qsizetype at = trimmed.toLower().indexOf("file type");
    if (at < 0)
        return false;
    QByteArray rest = trimmed.mid(at + 9);
    while (rest.endsWith('-'))
        rest.chop(1);
    rest.replace(':', ' ');
    const QList<QByteArray> words = rest.simplified().split(' ');
    if (words.isEmpty() || words[0].isEmpty())
        return false;
    part.type = words[0].toUpper();
    part.form = words.size() >= 2 ? words[1].toUpper() : QByteArray();
    count = -1;
    part.encoding.clear();
    if (words.size() >= 3) {
        bool ok = false;
        const qsizetype n = words[2].toLongLong(&ok);
        if (ok && n >= 0)
            count = n;
        else
            part.encoding = words[2]; // e.g. "base64": data written as text of another kind
    }
    return true;
}

} // namespace

bool IsCffPath(const QByteArray &path)
{
    return path.toLower().endsWith(".cff");
}

namespace {

constexpr int kHeadLine = 4096; // a section head is short; longer lines are read in pieces

// What a ".cff" data section says about itself, checked once its head has been read.
bool acceptDataHead(const Part &head, qsizetype count, int64_t next, int64_t size, CffSection &dat,
                    QStringList &messages, int64_t &skipTo)
{
    skipTo = -1;
    dat.present = true;
    dat.form = head.form;
    dat.encoding = head.encoding.toLower();
    dat.begin = next;
    dat.end = size;
    if (!head.encoding.isEmpty() && dat.encoding != "base64") {
        messages << QStringLiteral("The data section is written as \"%1\", which is not read here")
                        .arg(QString::fromLatin1(head.encoding));
        dat.present = false;
        return false;
    }
    if (!dat.encoding.isEmpty() || head.form == "ASCII" || head.form.isEmpty())
        return true; // text: it ends at the next head
    // Binary data is not made of lines: take its byte count as it stands.
    if (count < 0) {
        messages << QStringLiteral(
            "The binary data section gives no byte count; the rest of the file is taken");
        return false;
    }
    const int64_t held = size - next;
    // Compared without adding: a byte count near the largest number would overflow.
    if (count > held) {
        messages << QStringLiteral("The binary data section is shorter than its byte count: %1 bytes, not %2")
                        .arg(held)
                        .arg(qint64(count));
        count = held;
    }
    dat.end = next + count;
    skipTo = dat.end;
    return true;
}

CffSection *sectionOf(CffLayout &layout, const QByteArray &type)
{
    if (type == "CFG")
        return &layout.cfg;
    if (type == "INF")
        return &layout.inf;
    if (type == "HDR")
        return &layout.hdr;
    return nullptr;
}

} // namespace

bool ReadCffLayout(const QByteArray &cffPath, CffLayout &layout, QStringList &messages)
{
    layout = CffLayout();
    CDiskFile file;
    bool notFile = false;
    if (!file.OpenRegular(cffPath.constData(), &notFile)) {
        if (notFile)
            messages << QStringLiteral("%1 is not a regular file").arg(QString::fromLocal8Bit(cffPath));
        return false;
    }
    const int64_t size = file.GetLength();
    if (size < 0)
        return false;
    char line[kHeadLine];
    int64_t pos = 0;
    // A byte-order mark belongs to the file, not to its first section head.
    if (file.Read(line, 3) && std::memcmp(line, "\xEF\xBB\xBF", 3) == 0)
        pos = 3;
    file.Seek(pos, SEEK_SET);
    CffSection *open = nullptr;
    bool atLineStart = true;
    bool dataSeen = false;
    while (pos < size) {
        const int length = file.Gets(line, sizeof line);
        if (length <= 0) {
            // A zero byte at a line start: step over it.
            if (file.Seek(pos + 1, SEEK_SET) < 0)
                break;
            ++pos;
            atLineStart = false;
            continue;
        }
        const int64_t next = file.Tell();
        const bool wasStart = atLineStart;
        atLineStart = line[length - 1] == '\n';
        Part head;
        qsizetype count = -1;
        if (!wasStart || !parseHead(QByteArray(line, length), head, count)) {
            pos = next;
            continue;
        }
        if (open)
            open->end = pos;
        open = nullptr;
        pos = next;
        if (head.type == "DAT") {
            if (dataSeen)
                continue; // the first data section is the recording's
            dataSeen = true;
            int64_t skipTo = -1;
            const bool taken = acceptDataHead(head, count, next, size, layout.dat, messages, skipTo);
            if (!taken)
                break;
            if (skipTo >= 0) {
                pos = skipTo;
                atLineStart = true;
                if (file.Seek(pos, SEEK_SET) < 0)
                    break;
            } else {
                open = &layout.dat;
            }
            continue;
        }
        CffSection *section = sectionOf(layout, head.type);
        if (!section || section->present)
            continue;
        section->present = true;
        section->begin = next;
        section->end = size;
        open = section;
    }
    if (open)
        open->end = std::max(open->begin, std::min(open->end, size));

    CffSection &dat = layout.dat;
    if (dat.present && !dat.form.isEmpty() && dat.form != "ASCII" && dat.form != "BINARY" &&
        dat.form != "BINARY32" && dat.form != "FLOAT32") {
        messages << QStringLiteral(
                        "The data section's form \"%1\" is not one of ASCII, BINARY, BINARY32, FLOAT32")
                        .arg(QString::fromLatin1(dat.form));
        dat.present = false;
    }
    if (!layout.cfg.present)
        messages << QStringLiteral("No configuration section (\"--- file type: CFG ---\") in the file");
    return layout.cfg.present;
}

namespace {

// The value of a base64 character, -1 for one outside the alphabet, -2 for the padding.
int base64Value(unsigned char c)
{
    if (c >= 'A' && c <= 'Z')
        return c - 'A';
    if (c >= 'a' && c <= 'z')
        return c - 'a' + 26;
    if (c >= '0' && c <= '9')
        return c - '0' + 52;
    if (c == '+' || c == '-')
        return 62;
    if (c == '/' || c == '_')
        return 63;
    return c == '=' ? -2 : -1;
}

} // namespace

void CBase64Section::flushGroup()
{
    // A group cut short (by padding or by the end of the text) still gives its whole bytes.
    if (m_quadCount >= 2) {
        const uint32_t bits = m_quad << (6 * (4 - m_quadCount));
        for (int k = 0; k < m_quadCount - 1; ++k)
            m_spill.push_back(static_cast<unsigned char>(bits >> (16 - 8 * k)));
    }
    m_quad = 0;
    m_quadCount = 0;
}

int CBase64Section::ReadSome(void *buffer, int size)
{
    if (!IsOpen())
        return -1;
    auto *out = static_cast<unsigned char *>(buffer);
    int done = 0;
    unsigned char text[4096];
    while (done < size) {
        if (m_spillAt < m_spill.size()) {
            const size_t take = std::min(m_spill.size() - m_spillAt, static_cast<size_t>(size - done));
            std::memcpy(out + done, m_spill.data() + m_spillAt, take);
            m_spillAt += take;
            done += static_cast<int>(take);
            continue;
        }
        m_spill.clear();
        m_spillAt = 0;
        if (m_ended)
            break;
        const int got = CDiskSection::ReadSome(text, sizeof text);
        if (got <= 0) {
            m_ended = true;
            flushGroup();
            continue;
        }
        for (int i = 0; i < got; ++i) {
            const int v = base64Value(text[i]);
            if (v == -1)
                continue;
            if (v == -2) {
                flushGroup();
                continue;
            }
            m_quad = (m_quad << 6) | static_cast<uint32_t>(v);
            if (++m_quadCount == 4) {
                m_spill.push_back(static_cast<unsigned char>(m_quad >> 16));
                m_spill.push_back(static_cast<unsigned char>(m_quad >> 8));
                m_spill.push_back(static_cast<unsigned char>(m_quad));
                m_quad = 0;
                m_quadCount = 0;
            }
        }
    }
    return done;
}

QByteArray CffSectionHead(const char *type)
{
    return QByteArray("--- file type: ") + type + " ---\n";
}

QByteArray CffDataHead(const QByteArray &fileType, qint64 byteCount)
{
    const QByteArray form = fileType.toUpper();
    if (form == "ASCII")
        return "--- file type: DAT ASCII ---\n";
    return "--- file type: DAT " + form + ": " + QByteArray::number(byteCount) + " ---\n";
}

bool JoinCff(const QByteArray &base, const QByteArray &fileType, const QByteArray &cffPath, QString *error)
{
    auto read = [](const QByteArray &path) {
        QFile file(QString::fromLocal8Bit(path));
        return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
    };
    const QByteArray cfg = read(base + ".cfg");
    const QByteArray dat = read(base + ".dat");
    if (cfg.isEmpty()) {
        if (error)
            *error = QCoreApplication::translate("CCmtd99File", "No configuration to join: %1")
                         .arg(QString::fromLocal8Bit(base + ".cfg"));
        return false;
    }
    QByteArray out = CffSectionHead("CFG") + cfg;
    out += CffSectionHead("INF") + read(base + ".inf");
    out += CffSectionHead("HDR") + read(base + ".hdr");
    out += CffDataHead(fileType, dat.size()) + dat;
    // The whole ".cff" or the earlier one: never half a file under its name.
    return WriteFileSafely(QString::fromLocal8Bit(cffPath), out, error);
}
