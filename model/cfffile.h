#pragma once

#include "diskfile.h"

#include <QByteArray>
#include <QString>
#include <QStringList>

#include <cstdint>
#include <vector>

// The single-file form of a 2013 recording (".cff"): the configuration, extension, header and
// data files one after another, each behind a line "--- file type: CFG ---" (the data with its
// form, and for binary data its byte count: "--- file type: DAT BINARY: 40020 ---").

// Where one section lies in the file: its bytes [begin, end), and for the data its form and
// the text encoding it was written in (e.g. "base64"), if any.
struct CffSection
{
    bool present = false;
    QByteArray form;
    QByteArray encoding;
    int64_t begin = 0;
    int64_t end = 0;
    int64_t length() const { return end - begin; }
};

struct CffLayout
{
    CffSection cfg;
    CffSection inf;
    CffSection hdr;
    CffSection dat;
};

// Finds the sections of a ".cff" in place, reading it as a stream; nothing is copied out.
// `messages` receives what was odd but could be read past; false when the file cannot be read
// (only ordinary files are opened) or holds no configuration.
bool ReadCffLayout(const QByteArray &cffPath, CffLayout &layout, QStringList &messages);

// A binary data section written as base64 text, decoded as it is read. Characters outside the
// alphabet (line ends, quotes, blanks) are passed over; the length is what the text can hold
// at most.
class CBase64Section : public CDiskSection
{
public:
    int ReadSome(void *buffer, int size) override;
    int64_t GetLength() override { return CDiskSection::GetLength() / 4 * 3; }
    int Gets(char *, int) override { return 0; }

private:
    void flushGroup();

    std::vector<unsigned char> m_spill; // decoded, not yet handed out
    size_t m_spillAt = 0;
    uint32_t m_quad = 0;
    int m_quadCount = 0;
    bool m_ended = false;
};

// Joins the files of base into one ".cff"; the data part is ASCII or binary as `fileType` says.
// The file is written safely: on failure the earlier ".cff" stays and `error` says why.
bool JoinCff(const QByteArray &base, const QByteArray &fileType, const QByteArray &cffPath,
             QString *error = nullptr);
// The head line of a section ("CFG", "INF", "HDR"), and of the data section with its form and,
// for binary forms, its byte count.
QByteArray CffSectionHead(const char *type);
QByteArray CffDataHead(const QByteArray &fileType, qint64 byteCount);
// True when a path names a ".cff" (in any case).
bool IsCffPath(const QByteArray &path);
