#include "channeledit.h"

#include "chnmap.h"
#include "chnvocabulary.h"
#include "cmtd99file.h"

#include <QCoreApplication>

#include <cmath>

namespace {

QString tr(const char *text)
{
    return QCoreApplication::translate("ChannelEdit", text);
}

// The page lists the file's channels only: a position never reaches a virtual channel, which
// stands behind them.
CmtdChn_Base *recordAt(const CCmtd99File &file, bool analog, int position)
{
    if (position < 0)
        return nullptr;
    if (analog)
        return position < file.FileAnalogCount() ? file.analogChannels[size_t(position)].get() : nullptr;
    return position < int(file.statusChannels.size()) ? file.statusChannels[size_t(position)].get() : nullptr;
}

CChnMapAnalog *analogStoreAt(const CCmtd99File &file, int position)
{
    return position >= 0 && position < file.FileAnalogStoreCount() ? file.analogMaps[size_t(position)].get()
                                                                   : nullptr;
}

// The store of an analog record rebuilt from it: class, phase, unit and scale follow the record,
// the engineer's display switches stay. Where the scale of the file's values changed (unit
// prefix, P/S, the ratio of a channel recorded in primary values) the stored samples are
// carried over to the new scale: raw = (value - offset) / gain, value' = raw × gain' + offset'.
void refreshStore(CCmtd99File &file, int position)
{
    CChnMapAnalog *store = analogStoreAt(file, position);
    if (!store)
        return;
    CChnMapAnalog &map = *store;
    const CChnMapAnalog fresh(map.config);
    map.chnClass = fresh.chnClass;
    map.kindCode = fresh.kindCode;
    map.phase = fresh.phase;
    map.unit = fresh.unit;
    if (fresh.gain == map.gain && fresh.offset == map.offset)
        return;
    if (map.gain != 0.0 && map.Values()) {
        float *values = map.Values();
        for (int32_t i = 0; i < map.sampleCount; ++i) {
            const double raw = (double(values[i]) - map.offset) / map.gain;
            values[i] = float(raw * fresh.gain + fresh.offset);
        }
    }
    map.gain = fresh.gain;
    map.offset = fresh.offset;
    map.rangeMin = fresh.rangeMin;
    map.rangeMax = fresh.rangeMax;
    map.updateExtent();
}

// The ratio must outlive a save of the ".inf", which carries it as the channel's ratings. For a
// voltage or current transformer the extension-file writer derives the ratings (kV or kA over V
// or A) from a channel line ratio when none are given, so the ratings are let go; for any other
// channel they are the ratio itself, in the channel's unit.
void keepRatioAsRatings(CCmtd99File &file, int position, CmtdChn_Analog &record)
{
    constexpr uint32_t ratingBits = CmtdChn_Analog::PrimaryRatingGiven | CmtdChn_Analog::PrimaryUnitGiven |
                                    CmtdChn_Analog::SecondaryRatingGiven | CmtdChn_Analog::SecondaryUnitGiven;
    const CChnMapAnalog *store = analogStoreAt(file, position);
    const int16_t chnClass = store ? store->Class() : int16_t(ClassOther);
    if (chnClass == ClassACV || chnClass == ClassACC) {
        record.flags &= ~ratingBits;
        return;
    }
    record.primaryRating = record.primary;
    record.secondaryRating = record.secondary;
    record.primaryUnit = record.uu;
    record.secondaryUnit = record.uu;
    record.flags |= ratingBits;
}

// A ratio factor as the engineer types it: a finite number above 0.
bool takeRatioFactor(const QString &value, float *factor, QString *reason)
{
    bool ok = false;
    const double number = value.toDouble(&ok);
    if (!ok || !std::isfinite(number) || number <= 0.0 || number > 1.0e9) {
        if (reason)
            *reason =
                QCoreApplication::translate("ChannelEdit", "A transformer ratio factor is a number above 0");
        return false;
    }
    *factor = float(number);
    return true;
}

bool refuse(QString *reason, const QString &text)
{
    if (reason)
        *reason = text;
    return false;
}

// The ratio shown is the one in force: from the ratings where the extension file gave them,
// in the channel's own unit, else the ".cfg" factors.
QString analogFieldText(const CCmtd99File &file, int position, const CmtdChn_Analog &record,
                        ChannelField field)
{
    const CChnMapAnalog *map = analogStoreAt(file, position);
    switch (field) {
    case ChannelField::Unit:
        return file.Text(record.uu);
    case ChannelField::Primary:
        return QString::number(double(map && record.HasRatings() ? map->PrimaryFactor() : record.primary),
                               'g', 7);
    case ChannelField::Secondary:
        return QString::number(double(map && record.HasRatings() ? map->SecondaryFactor() : record.secondary),
                               'g', 7);
    case ChannelField::PS:
        return QString(QLatin1Char(record.ps));
    default:
        return QString();
    }
}

// Phase and monitored component, which both kinds of channel have.
bool setSharedField(CCmtd99File &file, bool analog, int position, CmtdChn_Base &record, ChannelField field,
                    const QString &value, QString *reason)
{
    const QByteArray bytes = value.toUtf8();
    if (bytes.size() > 64)
        return refuse(reason, tr("A text of the configuration file has at most 64 bytes"));
    if (bytes.contains(','))
        return refuse(reason, tr("A text of the configuration file holds no comma"));
    if (field == ChannelField::Phase) {
        if (!bytes.isEmpty() && PhaseFromText(bytes) == PhaseUnknown)
            return refuse(reason, tr("Unknown phase: %1 (A, B, C, N, L, S0, S1 or S2)").arg(value));
        record.ph = bytes.toUpper();
        const uint32_t given =
            analog ? uint32_t(CmtdChn_Analog::PhaseGiven) : uint32_t(CmtdChn_Status::PhaseGiven);
        record.flags = bytes.isEmpty() ? record.flags & ~given : record.flags | given;
        if (analog)
            refreshStore(file, position);
        else if (position < int(file.statusMaps.size()))
            file.statusMaps[size_t(position)]->phase = uint16_t(PhaseFromText(record.ph));
        return true;
    }
    // The component names the plant unit the channel belongs to: the stores find it again.
    record.ccbm = bytes;
    const uint32_t given = analog ? uint32_t(CmtdChn_Analog::CcbmGiven) : uint32_t(CmtdChn_Status::CcbmGiven);
    record.flags = bytes.isEmpty() ? record.flags & ~given : record.flags | given;
    file.LinkStoresToUnits();
    return true;
}

bool setAnalogField(CCmtd99File &file, int position, CmtdChn_Analog &record, ChannelField field,
                    const QString &value, QString *reason)
{
    switch (field) {
    case ChannelField::Unit: {
        const QByteArray bytes = value.toLatin1();
        if (bytes.isEmpty() || bytes.size() > 11 || value.contains(QLatin1Char(',')) ||
            QString::fromLatin1(bytes) != value)
            return refuse(reason, tr("A unit is 1 to 11 plain letters, such as V, kV, A, kA or Hz"));
        record.uu = bytes;
        record.flags |= CmtdChn_Analog::UnitGiven;
        refreshStore(file, position);
        return true;
    }
    case ChannelField::Primary:
    case ChannelField::Secondary: {
        float factor = 0.0f;
        if (!takeRatioFactor(value, &factor, reason))
            return false;
        (field == ChannelField::Primary ? record.primary : record.secondary) = factor;
        record.flags |=
            CmtdChn_Analog::PrimaryGiven | CmtdChn_Analog::SecondaryGiven | CmtdChn_Analog::PsGiven;
        keepRatioAsRatings(file, position, record);
        refreshStore(file, position);
        return true;
    }
    case ChannelField::PS: {
        const QString upper = value.toUpper();
        if (upper != QLatin1String("P") && upper != QLatin1String("S"))
            return refuse(reason, tr("P/S is P (primary values) or S (secondary values)"));
        record.ps = upper.at(0).toLatin1();
        record.flags |= CmtdChn_Analog::PsGiven;
        refreshStore(file, position);
        return true;
    }
    default:
        return refuse(reason, tr("A analog channel has no such field"));
    }
}

bool setStatusField(CmtdChn_Status &record, ChannelField field, const QString &value, QString *reason)
{
    switch (field) {
    case ChannelField::NormalState:
        if (value != QLatin1String("0") && value != QLatin1String("1"))
            return refuse(reason, tr("The normal state is 0 or 1"));
        record.normalState = value == QLatin1String("1") ? 1 : 0;
        record.flags |= CmtdChn_Status::NormalStateGiven;
        return true;
    case ChannelField::Kind: {
        const QByteArray code = value.toLatin1();
        const int16_t kind = StatusKindFromCode(code);
        if (!code.isEmpty() && kind == 0)
            return refuse(reason, tr("Unknown status kind: %1").arg(value));
        record.typeCode = code.isEmpty() ? QByteArray() : QByteArray(StatusKindCode(kind));
        record.flags = code.isEmpty() ? record.flags & ~CmtdChn_Status::TypeCodeGiven
                                      : record.flags | CmtdChn_Status::TypeCodeGiven;
        return true;
    }
    case ChannelField::StatusClass: {
        const QByteArray code = value.toLatin1();
        const int16_t statusClass = StatusClassFromCode(code);
        if (!code.isEmpty() && statusClass == 0)
            return refuse(reason, tr("Unknown status class: %1").arg(value));
        record.signalClass = code.isEmpty() ? QByteArray() : QByteArray(StatusClassCode(statusClass));
        record.flags = code.isEmpty() ? record.flags & ~CmtdChn_Status::SignalClassGiven
                                      : record.flags | CmtdChn_Status::SignalClassGiven;
        return true;
    }
    default:
        return refuse(reason, tr("A status channel has no such field"));
    }
}

} // namespace

bool ChannelFieldInCfgOnly(ChannelField field)
{
    switch (field) {
    case ChannelField::Phase:
    case ChannelField::Component:
    case ChannelField::Unit:
    case ChannelField::PS:
    case ChannelField::NormalState:
        return true;
    default:
        return false;
    }
}

QString ChannelFieldText(const CCmtd99File &file, bool analog, int position, ChannelField field)
{
    const CmtdChn_Base *record = recordAt(file, analog, position);
    if (!record)
        return QString();
    switch (field) {
    case ChannelField::Name:
        return file.Text(record->alias.isEmpty() ? record->ch_id : record->alias);
    case ChannelField::Class:
        if (const CChnMapAnalog *store = analog ? analogStoreAt(file, position) : nullptr)
            return QString::fromLatin1(ClassCode(store->Class()));
        return QString();
    case ChannelField::RatedFreq:
        return analog
                   ? QString::number(double(static_cast<const CmtdChn_Analog *>(record)->ratedFreq), 'g', 7)
                   : QString();
    case ChannelField::Phase:
        return file.Text(record->ph);
    case ChannelField::Component:
        return file.Text(record->ccbm);
    default:
        break;
    }
    if (analog)
        return analogFieldText(file, position, *static_cast<const CmtdChn_Analog *>(record), field);
    const auto &status = *static_cast<const CmtdChn_Status *>(record);
    switch (field) {
    case ChannelField::NormalState:
        return QString::number(status.normalState);
    case ChannelField::Kind:
        return QString::fromLatin1(status.typeCode);
    case ChannelField::StatusClass:
        return QString::fromLatin1(status.signalClass);
    default:
        return QString();
    }
}

bool SetChannelField(CCmtd99File &file, bool analog, int position, ChannelField field, const QString &text,
                     QString *reason)
{
    CmtdChn_Base *record = recordAt(file, analog, position);
    if (!record)
        return refuse(reason, tr("There is no such channel"));
    const QString value = text.trimmed();
    switch (field) {
    case ChannelField::Name: {
        if (value.isEmpty())
            return refuse(reason, tr("A channel needs a name"));
        const QByteArray bytes = value.toUtf8();
        if (bytes.size() > 64)
            return refuse(reason, tr("A channel name has at most 64 bytes"));
        if (bytes.contains(','))
            return refuse(reason, tr("A channel name holds no comma"));
        // The recorder's own name stays in the ".cfg"; the alias is what the views show.
        record->alias = value == file.Text(record->ch_id) ? QByteArray() : bytes;
        const uint32_t given =
            analog ? uint32_t(CmtdChn_Analog::AliasGiven) : uint32_t(CmtdChn_Status::AliasGiven);
        record->flags = record->alias.isEmpty() ? record->flags & ~given : record->flags | given;
        return true;
    }
    case ChannelField::Class: {
        if (!analog)
            return refuse(reason, tr("A status channel has no signal class"));
        const QByteArray code = value.toLatin1().toUpper();
        const int16_t chnClass = ClassFromCode(code);
        if (chnClass == ClassOther && code != ClassCode(ClassOther))
            return refuse(reason, tr("Unknown signal class: %1").arg(value));
        auto *analogRecord = static_cast<CmtdChn_Analog *>(record);
        analogRecord->typeCode = ClassCode(chnClass);
        analogRecord->flags |= CmtdChn_Analog::TypeCodeGiven;
        refreshStore(file, position);
        return true;
    }
    case ChannelField::RatedFreq: {
        if (!analog)
            return refuse(reason, tr("A status channel has no rated frequency"));
        bool ok = false;
        const double hz = value.toDouble(&ok);
        if (!ok || !std::isfinite(hz) || hz < 1.0 || hz > 1000.0)
            return refuse(reason, tr("A rated frequency is a number from 1 to 1000 Hz"));
        auto *analogRecord = static_cast<CmtdChn_Analog *>(record);
        analogRecord->ratedFreq = float(hz);
        analogRecord->flags |= CmtdChn_Analog::RatedFreqGiven;
        return true;
    }
    case ChannelField::Phase:
    case ChannelField::Component:
        return setSharedField(file, analog, position, *record, field, value, reason);
    default:
        break;
    }
    if (analog)
        return setAnalogField(file, position, *static_cast<CmtdChn_Analog *>(record), field, value, reason);
    return setStatusField(*static_cast<CmtdChn_Status *>(record), field, value, reason);
}
