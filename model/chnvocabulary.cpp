#include "chnvocabulary.h"

#include <QCoreApplication>

#include <cstring>

namespace {

struct ClassEntry
{
    const char *code;
    const char *text;
    const char *defaultUnit;
};

const ClassEntry kClasses[kChnClassCount] = {
    {"", QT_TRANSLATE_NOOP("ChnVocabulary", "[Other]"), ""},
    {"TV", QT_TRANSLATE_NOOP("ChnVocabulary", "ACV"), "V"},
    {"TA", QT_TRANSLATE_NOOP("ChnVocabulary", "ACC"), "A"},
    {"DV", QT_TRANSLATE_NOOP("ChnVocabulary", "DCV"), "V"},
    {"DA", QT_TRANSLATE_NOOP("ChnVocabulary", "DCC"), "A"},
    {"HF", QT_TRANSLATE_NOOP("ChnVocabulary", "High-Freq."), "V"},
    {"FQ", QT_TRANSLATE_NOOP("ChnVocabulary", "Freq."), "Hz"},
    {"AG", QT_TRANSLATE_NOOP("ChnVocabulary", "Ph.-Angle"), "Ang"},
    {"AMP", QT_TRANSLATE_NOOP("ChnVocabulary", "Breadth"), ""},
    {"PW", QT_TRANSLATE_NOOP("ChnVocabulary", "Power"), "W"},
    {"ZX", QT_TRANSLATE_NOOP("ChnVocabulary", "Impedance"), "omh"},
    {"CONST", QT_TRANSLATE_NOOP("ChnVocabulary", "Constant"), ""},
};

struct CodeText
{
    const char *code;
    const char *text;
};

const CodeText kStatusKinds[kStatusKindCount] = {
    {"", QT_TRANSLATE_NOOP("ChnVocabulary", "[Other]")},
    {"Jump_A", QT_TRANSLATE_NOOP("ChnVocabulary", "Trip A")},
    {"Jump_B", QT_TRANSLATE_NOOP("ChnVocabulary", "Trip B")},
    {"Jump_C", QT_TRANSLATE_NOOP("ChnVocabulary", "Trip C")},
    {"Jump_ABC", QT_TRANSLATE_NOOP("ChnVocabulary", "Trip 3 Ph.")},
    {"Jump_Single_Phase", QT_TRANSLATE_NOOP("ChnVocabulary", "Trip 1 Ph.")},
    {"Close_Break", QT_TRANSLATE_NOOP("ChnVocabulary", "Reclosing")},
    {"Jump_For_Keeps", QT_TRANSLATE_NOOP("ChnVocabulary", "Trip Forever")},
    {"Jump_Between_Phase", QT_TRANSLATE_NOOP("ChnVocabulary", "Trip Inter Ph.")},
    {"Jump_Faster", QT_TRANSLATE_NOOP("ChnVocabulary", "Trip Speed-up")},
    {"Jump_Ground", QT_TRANSLATE_NOOP("ChnVocabulary", "Trip Grounding")},
    {"Jump_A_Close", QT_TRANSLATE_NOOP("ChnVocabulary", "Ph. A Breaker ON")},
    {"Jump_A_Break", QT_TRANSLATE_NOOP("ChnVocabulary", "Ph. A Breaker OFF")},
    {"Jump_B_Close", QT_TRANSLATE_NOOP("ChnVocabulary", "Ph. B Breaker ON")},
    {"Jump_B_Break", QT_TRANSLATE_NOOP("ChnVocabulary", "Ph. B Breaker OFF")},
    {"Jump_C_Close", QT_TRANSLATE_NOOP("ChnVocabulary", "Ph. C Breaker ON")},
    {"Jump_C_Break", QT_TRANSLATE_NOOP("ChnVocabulary", "Ph. C Breaker OFF")},
    {"TA_Break", QT_TRANSLATE_NOOP("ChnVocabulary", "TA Break")},
    {"TV_Break", QT_TRANSLATE_NOOP("ChnVocabulary", "TV Break")},
    {"CHNL_Fault", QT_TRANSLATE_NOOP("ChnVocabulary", "Comm. Fault")},
    {"Send", QT_TRANSLATE_NOOP("ChnVocabulary", "Send")},
    {"Recv", QT_TRANSLATE_NOOP("ChnVocabulary", "Recv.")},
};

const CodeText kStatusClasses[kStatusClassCount] = {
    {"", QT_TRANSLATE_NOOP("ChnVocabulary", "[Other]")},
    {"Relay_Act", QT_TRANSLATE_NOOP("ChnVocabulary", "Relay Trigger")},
    {"Breaker_Pos", QT_TRANSLATE_NOOP("ChnVocabulary", "Breaker Status")},
    {"Switch_Pos", QT_TRANSLATE_NOOP("ChnVocabulary", "Switcher Status")},
    {"Device_Alarm", QT_TRANSLATE_NOOP("ChnVocabulary", "Device Alarm")},
};

// Substrings of a channel name that tell its phase, tried in this order: line-to-line names
// first, since "UAB" also holds "UA".
struct NamePhase
{
    const char *pattern;
    int16_t phase;
};
const NamePhase kNamePhases[] = {
    {"UAB", PhaseLine},    {"IAB", PhaseLine},    {"UBC", PhaseLine},    {"IBC", PhaseLine},
    {"UCA", PhaseLine},    {"ICA", PhaseLine},    {"UBA", PhaseLine},    {"IBA", PhaseLine},
    {"UCB", PhaseLine},    {"ICB", PhaseLine},    {"UAC", PhaseLine},    {"IAC", PhaseLine},
    {"VAB", PhaseLine},    {"VBA", PhaseLine},    {"VBC", PhaseLine},    {"VCB", PhaseLine},
    {"VCA", PhaseLine},    {"VAC", PhaseLine},    {"UA", PhaseA},        {"IA", PhaseA},
    {"VA", PhaseA},        {"UB", PhaseB},        {"IB", PhaseB},        {"VB", PhaseB},
    {"UC", PhaseC},        {"IC", PhaseC},        {"VC", PhaseC},        {"U1", PhaseA},
    {"I1", PhaseA},        {"U2", PhaseB},        {"I2", PhaseB},        {"U3", PhaseC},
    {"I3", PhaseC},        {"UN", PhaseNeutral},  {"IN", PhaseNeutral},  {"U0", PhaseNeutral},
    {"I0", PhaseNeutral},  {"UO", PhaseNeutral},  {"IO", PhaseNeutral},  {"UG", PhaseNeutral},
    {"IG", PhaseNeutral},  {"VN", PhaseNeutral},  {"VG", PhaseNeutral},  {"V0", PhaseNeutral},
    {"VO", PhaseNeutral},  {"3U0", PhaseNeutral}, {"3I0", PhaseNeutral}, {"3UO", PhaseNeutral},
    {"3IO", PhaseNeutral},
};

bool same(const char *a, const char *b)
{
    return qstricmp(a, b) == 0;
}

template <size_t N> int16_t indexOf(const CodeText (&table)[N], const QByteArray &code)
{
    for (size_t i = 1; i < N; ++i) {
        if (same(table[i].code, code.constData()))
            return static_cast<int16_t>(i);
    }
    return 0;
}

float prefixFactor(char letter)
{
    switch (letter) {
    case 'K':
    case 'k':
        return 1000.0f;
    case 'M':
        return 1000000.0f;
    case 'm':
        return 0.001f;
    case 'u':
        return 0.000001f;
    default:
        return 1.0f;
    }
}

} // namespace

ChnUnit ParseUnit(const QByteArray &unit)
{
    ChnUnit result;
    QByteArray rest = unit.trimmed();
    if (rest.size() >= 2) {
        switch (rest[0]) {
        case 'K':
        case 'k':
            result.prefix = 'k';
            result.factor = 1000.0f;
            break;
        case 'M':
            result.prefix = 'M';
            result.factor = 1000000.0f;
            break;
        case 'm':
            result.prefix = 'm';
            result.factor = 0.001f;
            break;
        default:
            break;
        }
        if (result.prefix)
            rest = rest.mid(1).trimmed();
    }
    const qsizetype length = qMin<qsizetype>(rest.size(), 11);
    std::memcpy(result.text, rest.constData(), static_cast<size_t>(length));
    result.text[length] = 0;
    return result;
}

int16_t ClassFromUnit(const ChnUnit &unit)
{
    const char *text = unit.text;
    if (same(text, "V"))
        return unit.prefix == 'm' ? ClassDCV : ClassACV;
    if (same(text, "A"))
        return unit.prefix == 'm' ? ClassDCC : ClassACC;
    if (same(text, "W") || same(text, "VA") || same(text, "Var"))
        return ClassPower;
    if (same(text, "Hz"))
        return ClassFreq;
    // Ohm and degree are written as translatable keys, so a language file may make them symbols.
    if (same(text, QCoreApplication::translate("ChnVocabulary", "omh").toLocal8Bit().constData()))
        return ClassImpedance;
    if (same(text, QCoreApplication::translate("ChnVocabulary", "Deg").toLocal8Bit().constData()))
        return ClassAngle;
    return ClassOther;
}

int16_t ClassFromCode(const QByteArray &code)
{
    for (int i = 1; i < kChnClassCount; ++i) {
        if (same(kClasses[i].code, code.constData()))
            return static_cast<int16_t>(i);
    }
    return ClassOther;
}

const char *ClassCode(int chnClass)
{
    return chnClass >= 0 && chnClass < kChnClassCount ? kClasses[chnClass].code : "";
}

const char *ClassText(int chnClass)
{
    return kClasses[chnClass >= 0 && chnClass < kChnClassCount ? chnClass : 0].text;
}

const char *ClassDefaultUnit(int chnClass)
{
    return chnClass >= 0 && chnClass < kChnClassCount ? kClasses[chnClass].defaultUnit : "";
}

int16_t PhaseFromText(const QByteArray &ph)
{
    const char *text = ph.constData();
    if (same(text, "A"))
        return PhaseA;
    if (same(text, "B"))
        return PhaseB;
    if (same(text, "C"))
        return PhaseC;
    if (same(text, "N") || same(text, "G") || same(text, "0") || same(text, "O"))
        return PhaseNeutral;
    if (same(text, "L"))
        return PhaseLine;
    if (same(text, "S0"))
        return PhaseSeq0;
    if (same(text, "S1"))
        return PhaseSeq1;
    if (same(text, "S2"))
        return PhaseSeq2;
    return PhaseUnknown;
}

int16_t PhaseFromName(const QByteArray &name)
{
    QByteArray upper = name;
    for (char &c : upper) {
        if (c >= 'a' && c <= 'z')
            c = static_cast<char>(c - 'a' + 'A');
    }
    for (const NamePhase &entry : kNamePhases) {
        if (upper.contains(entry.pattern))
            return entry.phase;
    }
    return PhaseUnknown;
}

int16_t StatusKindFromCode(const QByteArray &code)
{
    return indexOf(kStatusKinds, code);
}

const char *StatusKindCode(int kind)
{
    return kind >= 0 && kind < kStatusKindCount ? kStatusKinds[kind].code : "";
}

const char *StatusKindText(int kind)
{
    return kStatusKinds[kind >= 0 && kind < kStatusKindCount ? kind : 0].text;
}

int16_t StatusClassFromCode(const QByteArray &code)
{
    return indexOf(kStatusClasses, code);
}

const char *StatusClassCode(int statusClass)
{
    return statusClass >= 0 && statusClass < kStatusClassCount ? kStatusClasses[statusClass].code : "";
}

const char *StatusClassText(int statusClass)
{
    return kStatusClasses[statusClass >= 0 && statusClass < kStatusClassCount ? statusClass : 0].text;
}

float UnitFactor(const char *from, const char *to)
{
    const float a = prefixFactor(from ? from[0] : 0);
    const float b = prefixFactor(to ? to[0] : 0);
    return a / b;
}
