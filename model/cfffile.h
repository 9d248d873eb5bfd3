#pragma once

#include <QByteArray>
#include <QStringList>

// The single-file form of a 2013 recording (".cff"): the configuration, extension, header and
// data files one after another, each behind a line "--- file type: CFG ---" (the data with its
// form, and for binary data its byte count: "--- file type: DAT BINARY: 40020 ---").

// Splits a ".cff" into base + ".cfg", ".inf", ".hdr", ".dat" (only the parts it holds).
// `messages` receives what was odd but could be read past; false when the file cannot be read
// or holds no configuration.
bool SplitCff(const QByteArray &cffPath, const QByteArray &targetBase, QStringList &messages);
// Joins the files of base into one ".cff"; the data part is ASCII or binary as `fileType` says.
bool JoinCff(const QByteArray &base, const QByteArray &fileType, const QByteArray &cffPath);
// True when a path names a ".cff" (in any case).
bool IsCffPath(const QByteArray &path);
