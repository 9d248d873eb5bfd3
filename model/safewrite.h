#pragma once

#include <QByteArray>
#include <QString>

#include <memory>
#include <vector>

class QIODevice;
class CSafeFile;

// The one way every writer of the program puts a file on disk: each file is written to a
// temporary of its own in the target folder, every write is checked, and only when all the
// files of the set are complete on disk are they renamed over their final names, in the order
// they were begun. A failure at any point leaves the earlier files as they were and nothing
// under a final name; `ErrorText` then names the file and the system's reason.
//
// A recording's ".cfg"/".dat" pair is one set, begun ".dat" first, so that no reader finds a new
// ".cfg" beside an old ".dat". Sets that name the same files commit one after the other (a lock
// beside the system's temporary files), so two saves to one name leave one whole recording.
// Uncommitted temporaries are removed when the set is aborted or destroyed.
class CSafeWriteSet
{
public:
    CSafeWriteSet();
    CSafeWriteSet(const CSafeWriteSet &) = delete;
    CSafeWriteSet &operator=(const CSafeWriteSet &) = delete;
    ~CSafeWriteSet();

    // Opens the temporary of `path`; null on failure (the set is then aborted). The device
    // belongs to the set and is valid until Commit or Abort.
    QIODevice *Begin(const QString &path);
    // Renames every temporary over its final name once all are complete; false (and nothing
    // renamed) when any write failed. Ends the set either way.
    bool Commit();
    // Drops every temporary; the final names keep what they held.
    void Abort();
    // Marks the set failed with a reason of the caller's. A short write need not be reported:
    // the set finds it again, with the system's reason, when it completes its files.
    void Fail(const QString &text);
    // Marks the set failed because a write to `device` (one of the set's) did not complete; the
    // text names the file and the system's reason.
    void WriteFailed(QIODevice *device);
    bool Failed() const { return !m_error.isEmpty(); }
    // "Could not write <file>: <reason>", empty while nothing failed.
    QString ErrorText() const { return m_error; }

private:
    struct Entry
    {
        QString path;
        std::unique_ptr<CSafeFile> file;
    };
    bool Complete(Entry &entry);
    void FailOn(const QString &path, const QString &reason);
    QString LockPath() const;

    std::vector<Entry> m_files;
    QString m_error;
};

// Writes a small file whole through a set of one; false with `error` filled on failure.
bool WriteFileSafely(const QString &path, const QByteArray &bytes, QString *error);

// Text composed in memory with printf-style pieces, for small files that are then written whole
// with WriteFileSafely (the options file, the wave view status).
class CTextOutput
{
public:
    void Printf(const char *format, ...)
#if defined(__GNUC__)
        __attribute__((format(printf, 2, 3)))
#endif
        ;
    const QByteArray &bytes() const
    {
        return m_bytes;
    }

private:
    QByteArray m_bytes;
};
