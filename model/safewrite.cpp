#include "safewrite.h"

#include <cstdarg>
#include <cstdio>

#include <QCoreApplication>
#include <QCryptographicHash>
#include <QDir>
#include <QFileInfo>
#include <QLockFile>
#include <QSaveFile>

#if defined(Q_OS_UNIX)
#include <cerrno>
#include <cstring>
#include <unistd.h>
#endif

namespace {

// How long a commit waits for another save of the same files to finish its renames.
constexpr int kLockWaitMs = 60000;

QString tr(const char *text)
{
    return QCoreApplication::translate("CSafeWriteSet", text);
}

} // namespace

// A temporary that reports the system's reason for a short write. The disk may take part of a
// block before it refuses the rest; the rest is offered again, so that the refusal comes with
// its reason ("No space left on device") instead of a bare short count.
class CSafeFile : public QSaveFile
{
public:
    using QSaveFile::QSaveFile;
    QString reason;

    // Hands over anything still held; the file is opened unbuffered, so this is a check.
    bool flushAll()
    {
        if (flush())
            return true;
        note();
        return false;
    }

protected:
    qint64 writeData(const char *data, qint64 length) override
    {
        qint64 done = 0;
        while (done < length) {
            const qint64 written = QSaveFile::writeData(data + done, length - done);
            if (written <= 0) {
                note();
                return done > 0 ? done : -1;
            }
            done += written;
        }
        return done;
    }

private:
    void note()
    {
        if (error() != QFileDevice::NoError && reason.isEmpty())
            reason = errorString();
    }
};

CSafeWriteSet::CSafeWriteSet() = default;

CSafeWriteSet::~CSafeWriteSet()
{
    Abort();
}

void CSafeWriteSet::FailOn(const QString &path, const QString &reason)
{
    if (m_error.isEmpty())
        m_error = tr("Could not write %1: %2").arg(QDir::toNativeSeparators(path), reason);
}

void CSafeWriteSet::Fail(const QString &text)
{
    if (m_error.isEmpty())
        m_error = text;
}

void CSafeWriteSet::WriteFailed(QIODevice *device)
{
    for (const Entry &entry : m_files) {
        if (entry.file.get() == device) {
            FailOn(entry.path, entry.file->reason.isEmpty() ? tr("the file could not be written whole")
                                                            : entry.file->reason);
            return;
        }
    }
    Fail(tr("Could not write the file"));
}

QIODevice *CSafeWriteSet::Begin(const QString &path)
{
    if (Failed())
        return nullptr;
    // A device, a pipe or a folder under the name is no file to replace, and a file that its
    // owner marked read-only stays as it is, even where the rename would be allowed.
    const QFileInfo existing(path);
    if (existing.exists() && !existing.isFile()) {
        FailOn(path, tr("it is not a regular file"));
        Abort();
        return nullptr;
    }
    constexpr auto anyWrite = QFileDevice::WriteOwner | QFileDevice::WriteGroup | QFileDevice::WriteOther;
    if (existing.exists() && (!existing.isWritable() || !(existing.permissions() & anyWrite))) {
        FailOn(path, tr("the file is read-only"));
        Abort();
        return nullptr;
    }
    auto file = std::make_unique<CSafeFile>(path);
    // Writing in place would leave half a file under the final name on failure; a folder in
    // which no temporary can be made is a failure like any other.
    file->setDirectWriteFallback(false);
    // Unbuffered: each write goes to the disk at once, so a refusal comes with the system's
    // reason (the writers hand over whole blocks).
    if (!file->open(QIODevice::WriteOnly | QIODevice::Unbuffered)) {
        FailOn(path, file->errorString());
        Abort();
        return nullptr;
    }
    m_files.push_back(Entry{path, std::move(file)});
    return m_files.back().file.get();
}

bool CSafeWriteSet::Complete(Entry &entry)
{
    CSafeFile &file = *entry.file;
    if (!file.reason.isEmpty() || file.error() != QFileDevice::NoError || !file.flushAll()) {
        FailOn(entry.path, file.reason.isEmpty() ? tr("the disk took only part of the data") : file.reason);
        return false;
    }
#if defined(Q_OS_UNIX)
    // The data must be on the disk before any file of the set takes its final name: a file
    // system that reports a full disk or a quota only at this point still leaves the old files.
    if (::fsync(file.handle()) != 0 && errno != EINVAL) {
        FailOn(entry.path, QString::fromLocal8Bit(std::strerror(errno)));
        return false;
    }
#endif
    return true;
}

QString CSafeWriteSet::LockPath() const
{
    QCryptographicHash hash(QCryptographicHash::Sha1);
    for (const Entry &entry : m_files) {
        const QFileInfo info(entry.path);
        const QString folder = QFileInfo(info.absolutePath()).canonicalFilePath();
        hash.addData(QFile::encodeName(folder + QLatin1Char('/') + info.fileName()));
        hash.addData(QByteArrayView("\n"));
    }
    return QDir::temp().filePath(
        QStringLiteral("veldrix-save-%1.lock").arg(QString::fromLatin1(hash.result().toHex().left(24))));
}

bool CSafeWriteSet::Commit()
{
    if (Failed() || m_files.empty()) {
        Abort();
        return false;
    }
    for (Entry &entry : m_files) {
        if (!Complete(entry)) {
            Abort();
            return false;
        }
    }
    // Renames of one set happen together: another save of the same names waits here, so the
    // pair on disk always comes from one of them.
    std::unique_ptr<QLockFile> lock;
    if (m_files.size() > 1) {
        lock = std::make_unique<QLockFile>(LockPath());
        if (!lock->tryLock(kLockWaitMs)) {
            FailOn(m_files.front().path, tr("another save of this file did not finish"));
            Abort();
            return false;
        }
    }
    for (Entry &entry : m_files) {
        if (!entry.file->commit()) {
            FailOn(entry.path, entry.file->errorString());
            Abort();
            return false;
        }
        entry.file.reset();
    }
    m_files.clear();
    return true;
}

void CSafeWriteSet::Abort()
{
    for (Entry &entry : m_files) {
        if (entry.file)
            entry.file->cancelWriting();
    }
    // Destroying an uncommitted QSaveFile removes its temporary.
    m_files.clear();
}

bool WriteFileSafely(const QString &path, const QByteArray &bytes, QString *error)
{
    CSafeWriteSet set;
    QIODevice *out = set.Begin(path);
    // A short write is found again, with its reason, when the set completes its files.
    if (out)
        out->write(bytes);
    const bool ok = out && set.Commit();
    if (!ok && error)
        *error = set.ErrorText();
    return ok;
}

void CTextOutput::Printf(const char *format, ...)
{
    va_list args;
    va_start(args, format);
    va_list again;
    va_copy(again, args);
    const int length = std::vsnprintf(nullptr, 0, format, args);
    va_end(args);
    if (length > 0) {
        const qsizetype at = m_bytes.size();
        m_bytes.resize(at + length + 1);
        std::vsnprintf(m_bytes.data() + at, size_t(length) + 1, format, again);
        m_bytes.resize(at + length); // the terminator is not part of the text
    }
    va_end(again);
}
