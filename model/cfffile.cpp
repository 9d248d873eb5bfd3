#include "cfffile.h"

#include <QFile>
#include <QFileInfo>

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

bool writeFile(const QByteArray &path, const QByteArray &bytes)
{
    QFile file(QString::fromLocal8Bit(path));
    return file.open(QIODevice::WriteOnly) && file.write(bytes) == bytes.size();
}

} // namespace

bool IsCffPath(const QByteArray &path)
{
    return path.toLower().endsWith(".cff");
}

bool SplitCff(const QByteArray &cffPath, const QByteArray &targetBase, QStringList &messages)
{
    QFile file(QString::fromLocal8Bit(cffPath));
    if (!file.open(QIODevice::ReadOnly))
        return false;
    QByteArray bytes = file.readAll();
    // A byte-order mark belongs to the file, not to its first section head.
    if (bytes.startsWith("\xEF\xBB\xBF"))
        bytes.remove(0, 3);

    QList<Part> parts;
    qsizetype pos = 0;
    Part *open = nullptr;
    while (pos < bytes.size()) {
        qsizetype lineEnd = bytes.indexOf('\n', pos);
        const qsizetype next = lineEnd < 0 ? bytes.size() : lineEnd + 1;
        if (lineEnd < 0)
            lineEnd = bytes.size();
        Part head;
        qsizetype count = -1;
        if (parseHead(bytes.mid(pos, lineEnd - pos), head, count)) {
            if (open)
                open->end = pos;
            head.begin = next;
            head.end = bytes.size();
            parts.append(head);
            open = &parts.last();
            if (head.type == "DAT" && !head.encoding.isEmpty()) {
                messages << QStringLiteral("The data section is written as \"%1\", which is not read here")
                                .arg(QString::fromLatin1(head.encoding));
                parts.removeLast();
                open = nullptr;
                break;
            }
            if (head.type == "DAT" && head.form != "ASCII" && !head.form.isEmpty()) {
                // Binary data is not made of lines: take its byte count as it stands.
                if (count < 0) {
                    messages << QStringLiteral(
                        "The binary data section gives no byte count; the rest of the file is taken");
                    break;
                }
                // Compared without adding: a byte count near the largest number would overflow.
                if (count > bytes.size() - next) {
                    messages << QStringLiteral("The binary data section is shorter than its byte count");
                    count = bytes.size() - next;
                }
                open->end = next + count;
                open = nullptr;
                pos = next + count;
                continue;
            }
        }
        pos = next;
    }

    bool haveConfig = false;
    for (const Part &part : std::as_const(parts)) {
        const QByteArray body = bytes.mid(part.begin, part.end - part.begin);
        if (part.type == "CFG") {
            haveConfig = writeFile(targetBase + ".cfg", body);
        } else if (part.type == "INF" && !body.trimmed().isEmpty()) {
            writeFile(targetBase + ".inf", body);
        } else if (part.type == "HDR" && !body.trimmed().isEmpty()) {
            writeFile(targetBase + ".hdr", body);
        } else if (part.type == "DAT") {
            if (!part.form.isEmpty() && part.form != "ASCII" && part.form != "BINARY" &&
                part.form != "BINARY32" && part.form != "FLOAT32") {
                messages
                    << QStringLiteral(
                           "The data section's form \"%1\" is not one of ASCII, BINARY, BINARY32, FLOAT32")
                           .arg(QString::fromLatin1(part.form));
                continue;
            }
            writeFile(targetBase + ".dat", body);
        }
    }
    if (!haveConfig)
        messages << QStringLiteral("No configuration section (\"--- file type: CFG ---\") in the file");
    return haveConfig;
}

bool JoinCff(const QByteArray &base, const QByteArray &fileType, const QByteArray &cffPath)
{
    auto read = [](const QByteArray &path) {
        QFile file(QString::fromLocal8Bit(path));
        return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
    };
    const QByteArray cfg = read(base + ".cfg");
    const QByteArray dat = read(base + ".dat");
    if (cfg.isEmpty())
        return false;
    QByteArray out = "--- file type: CFG ---\n" + cfg;
    out += "--- file type: INF ---\n" + read(base + ".inf");
    out += "--- file type: HDR ---\n" + read(base + ".hdr");
    const QByteArray form = fileType.toUpper();
    if (form == "ASCII")
        out += "--- file type: DAT ASCII ---\n" + dat;
    else
        out += "--- file type: DAT " + form + ": " + QByteArray::number(dat.size()) + " ---\n" + dat;
    return writeFile(cffPath, out);
}
