#pragma once

#include <QByteArray>

#include <cstdint>

// The vocabulary with which the system speaks of channels: signal classes of analog channels,
// phases, status kinds and classes, and unit prefixes. Codes are what the files hold; texts
// are translation keys shown in the dialogs.

// Signal class of an analog channel; the value is the place in the class table.
enum ChnClass : int16_t
{
    ClassOther = 0,
    ClassACV = 1,
    ClassACC = 2,
    ClassDCV = 3,
    ClassDCC = 4,
    ClassHighFreq = 5,
    ClassFreq = 6,
    ClassAngle = 7,
    ClassBreadth = 8,
    ClassPower = 9,
    ClassImpedance = 10,
    ClassConstant = 11
};
constexpr int kChnClassCount = 12;

enum ChnPhase : int16_t
{
    PhaseUnknown = 0,
    PhaseA = 1,
    PhaseB = 2,
    PhaseC = 3,
    PhaseNeutral = 4, // zero sequence or neutral
    PhaseLine = 5,    // line to line
    PhaseSeq0 = 6,
    PhaseSeq1 = 7,
    PhaseSeq2 = 8
};

constexpr int kStatusKindCount = 22;
constexpr int kStatusClassCount = 5;

// A unit split into its prefix and the rest: "kV" is prefix 'k', text "V", factor 1000.
struct ChnUnit
{
    char prefix = 0;
    char text[12] = {};
    float factor = 1.0f;
};

// Splits a unit text: a first letter k/K, M or m of a text of two characters or more is a prefix.
ChnUnit ParseUnit(const QByteArray &unit);
// The class that a unit implies: "V" 1 ("mV" 3), "A" 2 ("mA" 4), "Hz" 6, "Deg" 7,
// "W"/"VA"/"Var" 9, "omh" 10, anything else 0.
int16_t ClassFromUnit(const ChnUnit &unit);
// The place of a type code ("TV", "TA", ...) in the class table, 0 if unknown.
int16_t ClassFromCode(const QByteArray &code);
const char *ClassCode(int chnClass);
// The translation key shown for a class ("ACV", "ACC", ...).
const char *ClassText(int chnClass);
// The unit shown for a class when the channel has none ("V", "A", "Hz", ...).
const char *ClassDefaultUnit(int chnClass);

// Phase from a `ph` text: A, B, C, N/G/0/O, L, S0, S1, S2 without regard to case.
int16_t PhaseFromText(const QByteArray &ph);
// Phase read from an AC channel's name ("UAB" line to line, "IA" phase A, "3I0" neutral...).
int16_t PhaseFromName(const QByteArray &name);

int16_t StatusKindFromCode(const QByteArray &code);
const char *StatusKindCode(int kind);
const char *StatusKindText(int kind);
int16_t StatusClassFromCode(const QByteArray &code);
const char *StatusClassCode(int statusClass);
const char *StatusClassText(int statusClass);

// Ratio of the prefixes (first letters) of two unit texts: k/K 1000, M 1e6, m 1e-3, u 1e-6.
float UnitFactor(const char *from, const char *to);
