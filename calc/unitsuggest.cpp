#include "unitsuggest.h"

#include "chnmap.h"
#include "chnvocabulary.h"
#include "cmtd99file.h"
#include "cmtdchannel.h"
#include "textcodec.h"

#include <QCoreApplication>
#include <QRegularExpression>
#include <QStringList>

#include <array>
#include <map>

namespace {

QString tr(const char *text)
{
    return QCoreApplication::translate("UnitSuggest", text);
}

enum Quantity
{
    QtyNone,
    QtyVoltage,
    QtyCurrent
};

enum Side
{
    SideNone = -1,
    SideH = 0,
    SideM = 1,
    SideL = 2
};

// How the recorder names the three phases: A/B/C, R/S/T, or Red/Yellow(White)/Blue, where
// "B" is the third phase.
enum class Habit
{
    ABC,
    RST,
    RYB
};

// What a channel's name (and record) says of its role.
struct Role
{
    Quantity qty = QtyNone;
    int phase = PhaseUnknown;
    QString bay; // the name with its phase and quantity words taken out
};

// Phase of one phase letter under a naming habit; 0 when the letter is no phase there.
int phaseOfLetter(QChar letter, Habit habit)
{
    switch (letter.unicode()) {
    case 'A':
        return habit == Habit::ABC ? PhaseA : 0;
    case 'B':
        return habit == Habit::ABC ? PhaseB : habit == Habit::RYB ? PhaseC : 0;
    case 'C':
        return habit == Habit::ABC ? PhaseC : 0;
    case 'R':
        return habit == Habit::ABC ? 0 : PhaseA;
    case 'S':
        return habit == Habit::RST ? PhaseB : 0;
    case 'T':
        return habit == Habit::RST ? PhaseC : 0;
    case 'Y':
    case 'W':
        return habit == Habit::RYB ? PhaseB : 0;
    case 'N':
    case 'G':
        return PhaseNeutral;
    default:
        return 0;
    }
}

Quantity quantityOfLetter(QChar letter)
{
    return letter == QLatin1Char('I') ? QtyCurrent : QtyVoltage;
}

// A token such as "UA", "Ia1", "3I0", "Uo", "VR", "I2" or "UAB" (line to line: phase 5).
// Gives the length of the bay number behind it ("1" of "IA1"), or -1 when it is no such token.
int matchQuantityToken(const QString &token, Habit habit, Role &role)
{
    static const QRegularExpression neutral(QStringLiteral("^3?([UVI])[0O](\\d*)$"));
    static const QRegularExpression lineToLine(QStringLiteral("^([UV])(AB|BC|CA|BA|CB|AC)(\\d*)$"));
    static const QRegularExpression numbered(QStringLiteral("^([UVI])L?([123])()$"));
    static const QRegularExpression lettered(QStringLiteral("^([UVI])([A-Z])(\\d*)$"));
    QRegularExpressionMatch m = neutral.match(token);
    if (m.hasMatch()) {
        role.qty = quantityOfLetter(m.captured(1).at(0));
        role.phase = PhaseNeutral;
        return int(m.capturedLength(2));
    }
    m = lineToLine.match(token);
    if (m.hasMatch()) {
        role.qty = QtyVoltage;
        role.phase = PhaseLine;
        return int(m.capturedLength(3));
    }
    m = numbered.match(token);
    if (m.hasMatch()) {
        role.qty = quantityOfLetter(m.captured(1).at(0));
        role.phase = m.captured(2).toInt();
        return 0;
    }
    m = lettered.match(token);
    if (m.hasMatch()) {
        const int phase = phaseOfLetter(m.captured(2).at(0), habit);
        if (phase == 0)
            return -1;
        role.qty = quantityOfLetter(m.captured(1).at(0));
        role.phase = phase;
        return int(m.capturedLength(3));
    }
    return -1;
}

// A run of Latin letters and digits. `glued` when a letter of another alphabet touches it
// (Cyrillic "Uик"), except Chinese, which recorders write straight against "Ia".
struct Token
{
    int start;
    int length;
    QString text; // upper case
    bool glued;
};

bool isAsciiWordChar(QChar c)
{
    return c.unicode() < 128 && c.isLetterOrNumber();
}

bool gluesTo(const QString &text, int at)
{
    if (at < 0 || at >= text.size())
        return false;
    const QChar c = text.at(at);
    return c.isLetter() && c.unicode() >= 128 && c.script() != QChar::Script_Han;
}

QList<Token> asciiTokens(const QString &upper)
{
    QList<Token> tokens;
    int i = 0;
    while (i < upper.size()) {
        if (!isAsciiWordChar(upper.at(i))) {
            ++i;
            continue;
        }
        int j = i;
        while (j < upper.size() && isAsciiWordChar(upper.at(j)))
            ++j;
        tokens.append(Token{i, j - i, upper.mid(i, j - i), gluesTo(upper, i - 1) || gluesTo(upper, j)});
        i = j;
    }
    return tokens;
}

// Blanks a span of the name but its last `keep` characters (the bay number of "IA1").
void blank(QString &text, const Token &token, int keep = 0)
{
    const int end = token.start + token.length - keep;
    for (int i = token.start; i < end; ++i)
        text[i] = QLatin1Char(' ');
}

// Cyrillic capitals that recorders use for the Latin phase letters ("Iв", "3Iо").
QString foldPhaseLetters(QString upper)
{
    static const struct
    {
        char16_t from;
        char to;
    } folds[] = {{u'\u0410', 'A'}, {u'\u0412', 'B'}, {u'\u0421', 'C'}, {u'\u041E', 'O'}};
    for (QChar &c : upper)
        for (const auto &f : folds)
            if (c.unicode() == f.from)
                c = QLatin1Char(f.to);
    return upper;
}

// A quantity-and-phase token ("Ia", "3U0", or "1Ia" glued to a bay number), last one first;
// the "-g" or "-n" of a phase-to-ground voltage ("Va-g") goes with it.
bool takeQuantityToken(QString &text, const QList<Token> &tokens, Habit habit, Role &role)
{
    static const QRegularExpression leadingDigits(QStringLiteral("^(\\d+)([UVI].*)$"));
    for (qsizetype t = tokens.size() - 1; t >= 0; --t) {
        const Token &token = tokens.at(t);
        if (token.glued && token.length < 2)
            continue;
        int keep = matchQuantityToken(token.text, habit, role);
        Token taken = token;
        if (keep < 0) {
            const QRegularExpressionMatch m = leadingDigits.match(token.text);
            if (!m.hasMatch() || (keep = matchQuantityToken(m.captured(2), habit, role)) < 0)
                continue;
            const int digits = int(m.capturedLength(1));
            taken = Token{token.start + digits, token.length - digits, m.captured(2), token.glued};
        }
        blank(text, taken, keep);
        if (t + 1 < tokens.size() && keep == 0) {
            const Token &next = tokens.at(t + 1);
            if ((next.text == QLatin1String("G") || next.text == QLatin1String("N")) &&
                next.start == token.start + token.length + 1 &&
                text.at(token.start + token.length) == QLatin1Char('-'))
                blank(text, Token{next.start - 1, next.length + 1, next.text, false});
        }
        return true;
    }
    return false;
}

// Separate words: a phase ("A", "Red", "N"), a quantity ("Volts", "Amps", "I"), "Ph".
void takeWords(QString &text, const QList<Token> &tokens, Habit habit, Role &role)
{
    static const std::map<QString, int> phaseWords = {{QStringLiteral("RED"), PhaseA},
                                                      {QStringLiteral("YELLOW"), PhaseB},
                                                      {QStringLiteral("WHITE"), PhaseB},
                                                      {QStringLiteral("BLUE"), PhaseC},
                                                      {QStringLiteral("NEUTRAL"), PhaseNeutral},
                                                      {QStringLiteral("L1"), PhaseA},
                                                      {QStringLiteral("L2"), PhaseB},
                                                      {QStringLiteral("L3"), PhaseC}};
    static const std::map<QString, Quantity> quantityWords = {
        {QStringLiteral("V"), QtyVoltage},       {QStringLiteral("U"), QtyVoltage},
        {QStringLiteral("VOLT"), QtyVoltage},    {QStringLiteral("VOLTS"), QtyVoltage},
        {QStringLiteral("VOLTAGE"), QtyVoltage}, {QStringLiteral("I"), QtyCurrent},
        {QStringLiteral("AMP"), QtyCurrent},     {QStringLiteral("AMPS"), QtyCurrent},
        {QStringLiteral("CURRENT"), QtyCurrent}};
    for (qsizetype t = tokens.size() - 1; t >= 0; --t) {
        const Token &token = tokens.at(t);
        if (token.glued)
            continue;
        if (role.phase == PhaseUnknown) {
            const auto word = phaseWords.find(token.text);
            const int phase = word != phaseWords.end() ? word->second
                              : token.length == 1      ? phaseOfLetter(token.text.at(0), habit)
                                                       : 0;
            if (phase != 0) {
                role.phase = phase;
                blank(text, token);
                continue;
            }
        }
        const auto quantity = quantityWords.find(token.text);
        if (quantity != quantityWords.end() && role.qty == QtyNone) {
            role.qty = quantity->second;
            blank(text, token);
        } else if (token.text == QLatin1String("PH") || token.text == QLatin1String("PHASE")) {
            blank(text, token);
        }
    }
}

// Chinese words of quantity and phase: "电压", "电流", "零序", "相".
void takeChineseWords(QString &text, Role &role)
{
    if (text.contains(QStringLiteral("零序"))) {
        role.phase = role.phase == PhaseUnknown ? PhaseNeutral : role.phase;
        text.replace(QStringLiteral("零序"), QStringLiteral(" "));
    }
    if (text.contains(QStringLiteral("电压"))) {
        role.qty = role.qty == QtyNone ? QtyVoltage : role.qty;
        text.replace(QStringLiteral("电压"), QStringLiteral(" "));
    }
    if (text.contains(QStringLiteral("电流"))) {
        role.qty = role.qty == QtyNone ? QtyCurrent : role.qty;
        text.replace(QStringLiteral("电流"), QStringLiteral(" "));
    }
    text.replace(QStringLiteral("相"), QStringLiteral(" "));
}

QString tidyBay(QString text)
{
    static const QRegularExpression parenthesised(QStringLiteral("\\([^)]*\\)"));
    static const QRegularExpression separators(QStringLiteral("[_\\-:./()\\[\\]#,;]+"));
    text.replace(parenthesised, QStringLiteral(" "));
    text.replace(separators, QStringLiteral(" "));
    return text.simplified();
}

// Where the phase field gave the phase and no token names it, the "IA" inside a longer name
// ("IAW", "SDIA") is still the phase and quantity, and the rest names the bay.
void takePhaseInside(QString &text, const QList<Token> &tokens, int givenPhase, Role &role)
{
    static const char letters[] = {0, 'A', 'B', 'C', 'N'};
    if (givenPhase < PhaseA || givenPhase > PhaseNeutral)
        return;
    for (const Token &token : tokens) {
        for (const char quantity : {'U', 'V', 'I'}) {
            const int at =
                int(token.text.indexOf(QString(QLatin1Char(quantity)) + QLatin1Char(letters[givenPhase])));
            if (at < 0)
                continue;
            role.qty = role.qty == QtyNone ? quantityOfLetter(QLatin1Char(quantity)) : role.qty;
            blank(text, Token{token.start + at, 2, QString(), false});
            return;
        }
    }
}

// `givenPhase`: the phase of the channel's phase field, 0 where it has none.
Role readRole(const QString &name, Habit habit, int givenPhase)
{
    Role role;
    QString text = name;
    const QString upper = name.toUpper();
    if (upper.size() != text.size())
        text = upper; // a case mapping that changes the length: work on the upper-case text
    const QList<Token> tokens = asciiTokens(foldPhaseLetters(upper));
    if (!takeQuantityToken(text, tokens, habit, role)) {
        takeWords(text, tokens, habit, role);
        if (role.phase == PhaseUnknown)
            takePhaseInside(text, tokens, givenPhase, role);
    }
    takeChineseWords(text, role);
    role.bay = tidyBay(text);
    if (givenPhase != PhaseUnknown)
        role.phase = givenPhase;
    return role;
}

// Direct-current channels measured in V or A ("直流", "DC") belong to no line.
bool isDirectCurrent(const QString &name)
{
    static const QRegularExpression dc(QStringLiteral("(直流|\\bDC\\b)"),
                                       QRegularExpression::CaseInsensitiveOption);
    return dc.match(name).hasMatch();
}

// The habit of the whole recording, from the names of its AC channels.
Habit findHabit(const CCmtd99File &file)
{
    static const QRegularExpression rybToken(QStringLiteral("^(3?[UVI][YW]\\d*|RED|YELLOW|WHITE|BLUE|Y|W)$"));
    static const QRegularExpression rstToken(QStringLiteral("^([UVI][ST]\\d*|S|T)$"));
    int ryb = 0, rst = 0;
    for (const auto &channel : file.analogChannels) {
        for (const Token &token : asciiTokens(foldPhaseLetters(file.Text(channel->ch_id).toUpper()))) {
            ryb += rybToken.match(token.text).hasMatch() ? 1 : 0;
            rst += rstToken.match(token.text).hasMatch() ? 1 : 0;
        }
    }
    if (ryb >= 2 && ryb >= rst)
        return Habit::RYB;
    if (rst >= 2)
        return Habit::RST;
    return Habit::ABC;
}

// Winding side named in a bay text ("HV", "高压侧"); the marker is taken out of `text`.
int takeSide(QString &text)
{
    static const struct
    {
        const char *marker;
        int side;
    } markers[] = {{"高压侧", SideH}, {"中压侧", SideM}, {"低压侧", SideL},
                   {"高压", SideH},   {"中压", SideM},   {"低压", SideL}};
    for (const auto &m : markers) {
        const QString marker = QString::fromUtf8(m.marker);
        if (text.contains(marker)) {
            text = tidyBay(text.replace(marker, QStringLiteral(" ")));
            return m.side;
        }
    }
    static const QRegularExpression english(
        QStringLiteral("\\b(HV|MV|LV|HIGH|MEDIUM|MIDDLE|LOW)\\b( SIDE\\b)?"),
        QRegularExpression::CaseInsensitiveOption);
    const QRegularExpressionMatch m = english.match(text);
    if (!m.hasMatch())
        return SideNone;
    const QChar first = m.captured(1).at(0).toUpper();
    text = tidyBay(text.remove(m.capturedStart(), m.capturedLength()));
    return first == QLatin1Char('H') ? SideH : first == QLatin1Char('L') ? SideL : SideM;
}

// The channels of one bay, as phase A, B, C and neutral sets: voltages up to the line's
// eight sets, currents up to its two.
struct Bay
{
    QString key;
    QString name;
    QByteArray ccbm;
    QString trmKey;
    QString trmName;
    int side = SideNone;
    std::vector<ChannelSet> tv;
    std::vector<ChannelSet> ta;
    QStringList labels;
    bool consumed = false;
};

void place(Bay &bay, Quantity qty, int slot, int index, const QString &label)
{
    std::vector<ChannelSet> &sets = qty == QtyVoltage ? bay.tv : bay.ta;
    const size_t cap = qty == QtyVoltage ? size_t(CmtdInfTrwk_UnitLine::kTvSets) : 2;
    for (ChannelSet &set : sets) {
        if (set[size_t(slot)] == 0) {
            set[size_t(slot)] = int16_t(index);
            bay.labels.append(label);
            return;
        }
    }
    if (sets.size() >= cap)
        return;
    sets.push_back(ChannelSet{});
    sets.back()[size_t(slot)] = int16_t(index);
    bay.labels.append(label);
}

bool usedByUnit(const CCmtd99File &file, int index, bool status)
{
    auto uses = [&](const auto &units) {
        for (const auto &unit : units)
            if (status ? unit->UsesStatusChannel(uint16_t(index)) : unit->UsesAnalogChannel(uint16_t(index)))
                return true;
        return false;
    };
    return uses(file.lineUnits) || uses(file.transformerUnits) || uses(file.powerUnits) ||
           uses(file.exciterUnits) || uses(file.groupUnits);
}

// Class and phase as the channel store has them, or as it would build them where no samples
// were read.
void classAndPhase(const CCmtd99File &file, const CmtdChn_Analog &channel, int &chnClass, int &phase)
{
    if (const CChnMapAnalog *map = file.FindAnalogMap(channel.index)) {
        chnClass = map->Class();
        phase = map->Phase();
        return;
    }
    chnClass = (channel.flags & CmtdChn_Analog::TypeCodeGiven) ? ClassFromCode(channel.typeCode)
                                                               : ClassFromUnit(ParseUnit(channel.uu));
    phase = (channel.flags & CmtdChn_Analog::PhaseGiven) ? PhaseFromText(channel.ph) : int(PhaseUnknown);
}

// Where a channel belongs: its monitored component when it has one (split by a winding side
// that its name gives), else its name without the phase and quantity.
Bay describeBay(const QByteArray &ccbm, const QString &ccbmText, const QString &nameBay)
{
    static const QChar separator(0x1f);
    Bay bay;
    bay.ccbm = ccbm;
    QString rest = nameBay;
    bay.side = takeSide(rest);
    if (ccbm.isEmpty()) {
        bay.key = nameBay.toUpper();
        bay.name = nameBay;
        bay.trmKey = rest.toUpper();
        bay.trmName = rest;
        return bay;
    }
    // "1号主变高压侧电流" and "1号主变低压侧电流" are the two sides of "1号主变".
    QString component = ccbmText;
    const int componentSide = takeSide(component);
    component = tidyBay(component.remove(QStringLiteral("电流")).remove(QStringLiteral("电压")));
    if (bay.side == SideNone)
        bay.side = componentSide;
    bay.name = ccbmText;
    bay.key = ccbmText.toUpper() + separator + QString::number(bay.side);
    bay.trmKey = component.toUpper();
    bay.trmName = component;
    return bay;
}

// Groups the AC channels that no unit uses into bays, in the order of their first channels.
std::vector<Bay> collectBays(const CCmtd99File &file)
{
    const Habit habit = findHabit(file);
    std::vector<Bay> bays;
    for (const auto &channel : file.analogChannels) {
        if (file.IsVirtualAnalog(*channel) || channel->index < 1 || usedByUnit(file, channel->index, false))
            continue;
        int chnClass = 0, phase = 0;
        classAndPhase(file, *channel, chnClass, phase);
        const QString label = file.Text(channel->ch_id).trimmed();
        if (isDirectCurrent(label))
            continue;
        const Role role = readRole(
            label, habit, (channel->flags & CmtdChn_Analog::PhaseGiven) ? PhaseFromText(channel->ph) : 0);
        Quantity qty = role.qty;
        if (chnClass == ClassACV)
            qty = QtyVoltage;
        else if (chnClass == ClassACC)
            qty = QtyCurrent;
        else if (chnClass != ClassOther)
            continue;
        if (qty == QtyNone || role.phase < PhaseA || role.phase > PhaseNeutral)
            continue;
        const QByteArray ccbm = channel->ccbm.trimmed();
        const QString ccbmText = file.Text(ccbm);
        Bay found = describeBay(ccbm, ccbmText, role.bay);
        auto it = std::find_if(bays.begin(), bays.end(), [&](const Bay &b) { return b.key == found.key; });
        if (it == bays.end()) {
            bays.push_back(std::move(found));
            it = bays.end() - 1;
        }
        place(*it, qty, role.phase - 1, channel->index, label);
    }
    return bays;
}

QByteArray encode(const CCmtd99File &file, const QString &text)
{
    return EncodeText(text, file.codecName);
}

// Names are unique among the recording's units and the proposals already made.
QByteArray uniqueName(const CCmtd99File &file, QString name, const char *fallback, QStringList &taken)
{
    static const QRegularExpression digitsOnly(QStringLiteral("^\\d+$"));
    if (name.isEmpty() || digitsOnly.match(name).hasMatch())
        name = (tr(fallback) + QLatin1Char(' ') + name).trimmed();
    QString candidate = name;
    for (int n = 2;
         file.FindUnitByName(encode(file, candidate)) || taken.contains(candidate, Qt::CaseInsensitive); ++n)
        candidate = name + QStringLiteral(" (%1)").arg(n);
    taken.append(candidate);
    return encode(file, candidate);
}

// Status channels go to the unit whose monitored component they share, else to the one whose
// bay text their name holds (the longest such text).
struct Owner
{
    QByteArray ccbm;
    QString text;
};

void assignStatusChannels(const CCmtd99File &file, const std::vector<Owner> &owners,
                          std::vector<UnitSuggestion> &out)
{
    static const QRegularExpression digitsOnly(QStringLiteral("^\\d+$"));
    for (const auto &channel : file.statusChannels) {
        if (channel->index < 1 || usedByUnit(file, channel->index, true))
            continue;
        const QByteArray ccbm = channel->ccbm.trimmed();
        const QString name = file.Text(channel->ch_id).toUpper();
        int best = -1;
        qsizetype bestScore = 0;
        for (size_t i = 0; i < owners.size(); ++i) {
            qsizetype score = 0;
            if (!ccbm.isEmpty() && ccbm.compare(owners[i].ccbm, Qt::CaseInsensitive) == 0)
                score = 10000;
            const QString text = owners[i].text.toUpper();
            if (score == 0 && text.size() >= 2 && !digitsOnly.match(text).hasMatch() && name.contains(text))
                score = text.size();
            if (score > bestScore) {
                bestScore = score;
                best = int(i);
            }
        }
        if (best >= 0) {
            CmtdInfTrwk_Unit &unit = *out[size_t(best)].unit;
            unit.statusChannels.push_back(uint16_t(channel->index));
            unit.flags |= unit.kind == CmtdInfTrwk_Unit::KindLine
                              ? uint32_t(CmtdInfTrwk_UnitLine::HasStatusChannels)
                              : uint32_t(CmtdInfTrwk_UnitTrm::HasStatusChannels);
        }
    }
}

QString setText(const CCmtd99File &file, const ChannelSet &set)
{
    static const char *const places[] = {"A", "B", "C", "N"};
    QStringList parts;
    for (size_t slot = 0; slot < set.size(); ++slot) {
        if (set[slot] <= 0)
            continue;
        const CmtdChn_Analog *channel = file.FindAnalogChannel(set[slot]);
        parts.append(QStringLiteral("%1=%2").arg(QLatin1String(places[slot]),
                                                 channel ? file.Text(channel->ch_id).trimmed()
                                                         : QString::number(set[slot])));
    }
    return parts.join(QLatin1Char(' '));
}

QString setsText(const CCmtd99File &file, const std::vector<ChannelSet> &sets)
{
    QStringList parts;
    for (const ChannelSet &set : sets)
        parts.append(setText(file, set));
    return parts.isEmpty() ? tr("none") : parts.join(QStringLiteral("; "));
}

UnitSuggestion makeLine(const CCmtd99File &file, const Bay &bay, const Bay *bus, QStringList &taken)
{
    auto line = std::make_unique<CmtdInfTrwk_UnitLine>();
    line->name = uniqueName(file, bay.name, "Line", taken);
    // The monitored component's own bytes, where the name is that component.
    if (!bay.ccbm.isEmpty() && file.Text(line->name) == file.Text(bay.ccbm))
        line->name = bay.ccbm;
    line->objectType = "LINE";
    line->flags = CmtdInfTrwk_Unit::HasName | CmtdInfTrwk_Unit::HasObjectType;
    const std::vector<ChannelSet> &tv = bus ? bus->tv : bay.tv;
    for (const ChannelSet &set : tv)
        line->tvChns[size_t(line->tvCount++)] = set;
    if (line->tvCount > 0)
        line->flags |= CmtdInfTrwk_UnitLine::HasTvChns;
    if (!bay.ta.empty()) {
        line->taChns = bay.ta[0];
        line->flags |= CmtdInfTrwk_UnitLine::HasTaChns;
    }
    if (bay.ta.size() > 1) {
        line->taChns2 = bay.ta[1];
        line->flags |= CmtdInfTrwk_UnitLine::HasTaChns2;
    }
    QString reason = tr("Line \"%1\" (%2): voltages %3; currents %4")
                         .arg(file.Text(line->name),
                              bay.ccbm.isEmpty() ? tr("by channel names") : tr("by monitored component"),
                              setsText(file, tv), setsText(file, bay.ta));
    if (bus)
        reason += tr("; bus voltages of \"%1\"").arg(bus->name);
    return UnitSuggestion{std::move(line), CmtdInfTrwk_Unit::KindLine, reason};
}

// Bays that share a transformer's name and name two or three winding sides.
std::vector<std::array<const Bay *, 3>> findTransformers(std::vector<Bay> &bays)
{
    std::vector<std::array<const Bay *, 3>> found;
    for (size_t i = 0; i < bays.size(); ++i) {
        if (bays[i].side == SideNone || bays[i].consumed)
            continue;
        std::array<Bay *, 3> sides{};
        for (size_t j = i; j < bays.size(); ++j)
            if (bays[j].side != SideNone && !bays[j].consumed && bays[j].trmKey == bays[i].trmKey &&
                !sides[size_t(bays[j].side)])
                sides[size_t(bays[j].side)] = &bays[j];
        const int count = (sides[0] ? 1 : 0) + (sides[1] ? 1 : 0) + (sides[2] ? 1 : 0);
        if (count < 2)
            continue;
        for (Bay *side : sides)
            if (side)
                side->consumed = true;
        found.push_back({sides[0], sides[1], sides[2]});
    }
    return found;
}

// Each side's first voltage set is its TV set, its first current set its differential
// current set (H, M, L in the first three).
UnitSuggestion makeTransformer(const CCmtd99File &file, const std::array<const Bay *, 3> &sides,
                               QStringList &taken)
{
    auto trm = std::make_unique<CmtdInfTrwk_UnitTrm>();
    const Bay &first = *(sides[0] ? sides[0] : sides[1]);
    trm->name = uniqueName(file, first.trmName, "Transformer", taken);
    trm->objectType = "MAIN";
    trm->flags =
        CmtdInfTrwk_Unit::HasName | CmtdInfTrwk_Unit::HasObjectType | CmtdInfTrwk_UnitTrm::HasWindingNum;
    TrmSide *trmSides[] = {&trm->sideH, &trm->sideM, &trm->sideL};
    ChannelSet *tvs[] = {&trm->hTv, &trm->mTv, &trm->lTv};
    QStringList parts;
    static const char *const sideNames[] = {"H", "M", "L"};
    for (size_t s = 0; s < 3; ++s) {
        if (!sides[s])
            continue;
        ++trm->windingNum;
        if (!sides[s]->tv.empty()) {
            *tvs[s] = sides[s]->tv[0];
            trmSides[s]->flags |= TrmSide::HasTv;
        }
        if (!sides[s]->ta.empty()) {
            trm->taId[s] = sides[s]->ta[0];
            trm->flags |= CmtdInfTrwk_UnitTrm::HasTaId1 << s;
        }
        parts.append(tr("%1 \"%2\": voltages %3; currents %4")
                         .arg(QLatin1String(sideNames[s]), sides[s]->name, setsText(file, sides[s]->tv),
                              setsText(file, sides[s]->ta)));
    }
    const QString reason = tr("Transformer \"%1\" (winding sides in the names): %2")
                               .arg(file.Text(trm->name), parts.join(QStringLiteral(" | ")));
    return UnitSuggestion{std::move(trm), CmtdInfTrwk_Unit::KindTransformer, reason};
}

// A bay of voltages alone is a bus when it is the only one and other bays have currents
// alone: the lines take its voltages.
const Bay *findBus(const std::vector<Bay> &bays)
{
    const Bay *bus = nullptr;
    bool currentsOnly = false;
    for (const Bay &bay : bays) {
        if (bay.consumed)
            continue;
        if (bay.ta.empty()) {
            const ChannelSet &v = bay.tv.front();
            if (v[0] == 0 || v[1] == 0 || v[2] == 0)
                continue; // "Ux" alone, or a neutral voltage: no bus
            if (bus)
                return nullptr;
            bus = &bay;
        } else if (bay.tv.empty()) {
            currentsOnly = true;
        }
    }
    return currentsOnly ? bus : nullptr;
}

} // namespace

std::vector<UnitSuggestion> SuggestUnits(const CCmtd99File &file)
{
    std::vector<UnitSuggestion> out;
    std::vector<Owner> owners;
    QStringList taken;
    std::vector<Bay> bays = collectBays(file);
    for (const auto &sides : findTransformers(bays)) {
        out.push_back(makeTransformer(file, sides, taken));
        const Bay &first = *(sides[0] ? sides[0] : sides[1]);
        owners.push_back(Owner{first.ccbm, first.trmName});
    }
    const Bay *bus = findBus(bays);
    for (const Bay &bay : bays) {
        if (bay.consumed || &bay == bus)
            continue;
        out.push_back(makeLine(file, bay, bus && bay.tv.empty() ? bus : nullptr, taken));
        owners.push_back(Owner{bay.ccbm, bay.name});
    }
    assignStatusChannels(file, owners, out);
    return out;
}
