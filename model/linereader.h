#pragma once

class CDiskFile;

// Line and field functions shared by every text format of the system. They work in place on
// one writable line buffer: they write terminators into it, and the pointers they hand back
// point into it, so a line is never copied.

// Skips leading blanks (space, tab, CR, LF) and cuts trailing ones; returns the start.
char *TrimSpace(char *text);
// Splits at `separator`; empty fields count. Stops after `capacity` fields, dropping the rest.
int SplitFields(char *text, char *fields[], int capacity, char separator);
// SplitFields, then every field trimmed of blanks on both sides.
int SplitTrimmed(char *text, char *fields[], int capacity, char separator);
// Folds 'a'..'z' only, so that double-byte characters pass untouched.
void ToUpperAscii(char *text);

// Reader of positional formats (the ".cfg"): the next line that is not blank once cut at "//".
// Every fetched line counts in `counter`. Returns the length of the line, 0 at the end.
int ReadDataLine(CDiskFile &file, int &counter, char *buffer, int size, char *&line);

enum KeyLineResult
{
    KeyLineSection = 1, // `key` holds the section head
    KeyLineKey = 2,     // `key` and `value` hold a key line
    KeyLineEnd = 3      // end of the file
};
// Reader of sectioned formats (options, language, ".inf"): the next usable key line.
int ReadKeyLine(CDiskFile &file, int &counter, char *buffer, int size, char *&key, char *&value);
// 0 = not a usable line, 1 = section head (value null), 2 = key line.
int ParseKeyLine(char *line, char *&key, char *&value);
