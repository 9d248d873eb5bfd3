#include "pathmap.h"

#include "cmtd99file.h"
#include "diskfile.h"
#include "linereader.h"
#include "safewrite.h"

#include <cstring>

namespace {

constexpr int kMapLineSize = 2048;
constexpr int kLookupBytes = 511;
const char kSectionName[] = "TRWK_CFG_MAP";

// An entry is kept only with a folder and at least one file to apply.
void keepIfComplete(std::vector<PathMapEntry> &entries, const PathMapEntry &entry)
{
    if (!entry.rootPath.isEmpty() && !(entry.settingsFile.isEmpty() && entry.groupFile.isEmpty()))
        entries.push_back(entry);
}

QByteArray upperCase(const char *text)
{
    QByteArray copy(text);
    ToUpperAscii(copy.data());
    return copy;
}

} // namespace

std::vector<PathMapEntry> &PathMapEntries()
{
    static std::vector<PathMapEntry> entries;
    return entries;
}

int LoadPathMapFrom(const QByteArray &path)
{
    std::vector<PathMapEntry> &entries = PathMapEntries();
    entries.clear();
    CDiskFile file;
    if (!file.OpenRegular(path.constData()))
        return 0;
    char buffer[kMapLineSize];
    int counter = 0;
    char *key = nullptr;
    char *value = nullptr;
    PathMapEntry entry;
    bool inEntry = false;
    for (;;) {
        const int kind = ReadKeyLine(file, counter, buffer, sizeof buffer, key, value);
        if (kind != KeyLineKey) {
            // A section head or the end closes the entry being read.
            if (inEntry)
                keepIfComplete(entries, entry);
            if (kind == KeyLineEnd)
                break;
            inEntry = qstricmp(TrimSpace(key), kSectionName) == 0;
            entry = PathMapEntry();
            continue;
        }
        if (!inEntry)
            continue;
        if (qstricmp(key, "ROOT_PATH") == 0)
            entry.rootPath = upperCase(value);
        else if (qstricmp(key, "TCFG_FILE") == 0)
            entry.settingsFile = value;
        else if (qstricmp(key, "TCGP_FILE") == 0)
            entry.groupFile = value;
    }
    return static_cast<int>(entries.size());
}

int SavePathMapTo(const QByteArray &path, QString *error)
{
    const std::vector<PathMapEntry> &entries = PathMapEntries();
    CTextOutput out;
    for (const PathMapEntry &entry : entries) {
        out.Printf("[%s]\n", kSectionName);
        out.Printf("%s=%s\n", "ROOT_PATH", entry.rootPath.constData());
        out.Printf("%s=%s\n", "TCFG_FILE", entry.settingsFile.constData());
        out.Printf("%s=%s\n", "TCGP_FILE", entry.groupFile.constData());
        out.Printf("\n");
    }
    if (!WriteFileSafely(QString::fromLocal8Bit(path), out.bytes(), error))
        return 0;
    return static_cast<int>(entries.size());
}

const PathMapEntry *findPathMapEntry(const char *path)
{
    if (!path)
        return nullptr;
    const QByteArray copy = upperCase(QByteArray(path).left(kLookupBytes).constData());
    const PathMapEntry *best = nullptr;
    for (const PathMapEntry &entry : PathMapEntries()) {
        // Containment, not a prefix: a root may name a folder anywhere on the way.
        if (std::strstr(copy.constData(), entry.rootPath.constData()) == nullptr)
            continue;
        if (!best || entry.rootPath.size() > best->rootPath.size())
            best = &entry;
    }
    return best;
}

int ApplyPathMapEntry(CCmtd99File &file, const PathMapEntry &entry)
{
    int result = CCmtd99File::ReadDone;
    for (const QByteArray *name : {&entry.settingsFile, &entry.groupFile}) {
        if (!name->isEmpty() && file.LoadInf(name->constData()) == CCmtd99File::ReadNoMemory)
            result = CCmtd99File::ReadNoMemory;
    }
    file.LinkStoresToUnits();
    return result;
}
