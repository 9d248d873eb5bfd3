#pragma once

#include <QByteArray>
#include <QString>

#include <vector>

class CCmtd99File;

// The form of a copy: the data file type and the revision of the standard it follows.
struct ExactCopyFormat
{
    QByteArray fileType; // "ASCII", "BINARY", "BINARY32", "FLOAT32"; empty keeps the recording's
    int revision = 0;    // 1991, 1999 or 2013; 0 keeps the recording's
};

// Writes the loaded recording so that it reads back as the engineer sees it: every sample
// within half a quantisation step of the target form, names, units, ratios, P/S, phases,
// stamps and rates as they are. This is the writer of `veldrix-cli convert` and of the
// frame's "Save Exact Copy" (the plain Save As keeps its own rule, see SaveDat).
//
// Each channel keeps its multiplier and offset where all its values fit the target's raw
// range (16 bits, 32 bits, or -99,999 to 99,999 for ASCII); otherwise it gets a multiplier
// that fits them. A sample that is not a finite number is written as the missing-value marker
// of a 2013 target; a 1991 or 1999 target has no such marker, and the copy is refused naming
// the channel and the sample. `path` ends in ".cfg" (the pair) or ".cff" (the single file);
// the files are written through one write set, so a failure leaves the earlier files as they
// were. The recording itself is not changed.
enum class ExactCopyResult
{
    Written,    // the whole copy is on disk
    Refused,    // the recording cannot be written in that form; nothing was touched
    WriteFailed // the disk refused a write; the earlier files stay as they were
};
ExactCopyResult SaveExactCopy(const CCmtd99File &file, const QString &path, const ExactCopyFormat &format,
                              QString *error);

// A channel whose values the plain Save As would change.
struct ChangedChannel
{
    int position = 0; // in the recording's analog stores
    QString name;
};

// The analog channels whose values, written by the plain Save As rule (multiplier widened to
// the loader's extremes, the stored secondary value without prefix divided by the file's own
// multiplier) in the form `format`, would read back further from the stored values than half a
// quantisation step of an exact copy in that form: a unit prefix, P/S "P", a steadily rising
// channel. The frame asks before such a save; empty for a clean recording.
std::vector<ChangedChannel> FindChannelsChangedBySave(const CCmtd99File &file, const ExactCopyFormat &format);

// True when a file that a save to `outputPath` writes (".cfg" and ".dat", or the ".cff")
// is, after links, one of the files read for the recording opened from `inputPath` (".cfg",
// ".dat", ".inf", ".hdr", ".ext", the numbered data parts, or the ".cff"). Writing over them
// while they are read would change the recording under the reader.
bool OutputTouchesInput(const QString &inputPath, const QString &outputPath);

// True when a name ends in ".cfg" or ".cff" (any case): the names a recording is written under.
bool IsRecordingOutputName(const QString &path);
