#pragma once

#include <QByteArray>
#include <QString>

// Recorders write station and channel names in the code page of their country: GBK in China,
// windows-1251 in Russia, Latin-1 in Brazil. The recording keeps the bytes; these functions
// find out how to read them and turn them into display text.

// The codec to read a recording's text with, from a sample of its bytes (the whole ".cfg").
// Valid UTF-8 (with or without a byte-order mark) first; then `preferred` (the options' codec)
// when it names one; then GB18030 where the bytes read cleanly as common Chinese characters;
// then windows-1251 where the letters come in runs as Cyrillic words do, or windows-1252 where
// single accented letters stand among Latin ones; the locale's codec last.
QByteArray DetectTextCodec(const QByteArray &sample, const QByteArray &preferred);
// The bytes as text in the named codec; UTF-8 where the codec is unknown.
QString DecodeText(const QByteArray &bytes, const QByteArray &codec);
// The text as bytes in the named codec, to stand beside the recording's own names; UTF-8 where
// the codec is unknown.
QByteArray EncodeText(const QString &text, const QByteArray &codec);
// The codecs offered to the engineer for a recording, the detected one among them.
QList<QByteArray> OfferedTextCodecs();
// The codec that the options file names, for every recording's detection.
void SetPreferredTextCodec(const QByteArray &codec);
const QByteArray &PreferredTextCodec();
