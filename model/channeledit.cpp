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

CmtdChn_Base *recordAt(const CCmtd99File &file, bool analog, int position)
{
    if (position < 0)
        return nullptr;
    if (analog)
        return position < int(file.analogChannels.size()) ? file.analogChannels[size_t(position)].get()
                                                          : nullptr;
    return position < int(file.statusChannels.size()) ? file.statusChannels[size_t(position)].get() : nullptr;
}

// The store of an analog record rebuilt from it: class, phase and colour follow the record,
// the samples and the engineer's display switches stay.
void refreshStore(CCmtd99File &file, int position)
{
    if (position >= int(file.analogMaps.size()))
        return;
    CChnMapAnalog &map = *file.analogMaps[size_t(position)];
    const CChnMapAnalog fresh(map.config);
    map.chnClass = fresh.chnClass;
    map.kindCode = fresh.kindCode;
    map.phase = fresh.phase;
}

bool refuse(QString *reason, const QString &text)
{
    if (reason)
        *reason = text;
    return false;
}

} // namespace

QString ChannelFieldText(const CCmtd99File &file, bool analog, int position, ChannelField field)
{
    const CmtdChn_Base *record = recordAt(file, analog, position);
    if (!record)
        return QString();
    switch (field) {
    case ChannelField::Name:
        return file.Text(record->alias.isEmpty() ? record->ch_id : record->alias);
    case ChannelField::Class:
        if (analog && position < int(file.analogMaps.size()))
            return QString::fromLatin1(ClassCode(file.analogMaps[size_t(position)]->Class()));
        return QString();
    case ChannelField::RatedFreq:
        return analog
                   ? QString::number(double(static_cast<const CmtdChn_Analog *>(record)->ratedFreq), 'g', 7)
                   : QString();
    }
    return QString();
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
    }
    return refuse(reason, tr("This field cannot be edited"));
}
