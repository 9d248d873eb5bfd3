#pragma once

// Reading of option values shared by the verbs. A number that is no number must stop the tool,
// never quietly read as 0 and run on the wrong samples.

// `text` as a whole number in decimal: an optional sign and digits, nothing else, within 64
// bits. Otherwise prints "veldrix-cli <verb>: <option> expects a whole number" on standard
// error and returns false; the caller exits with status 2.
bool ReadWholeOption(const char *verb, const char *option, const char *text, long long &value);

// The same without the message: true when `text` is a whole number.
bool ParseWhole(const char *text, long long &value);

// An analog channel named as "A<n>" (any case), n a whole number from 0: true with `index`.
bool ParseAnalogChannel(const char *text, long long &index);
