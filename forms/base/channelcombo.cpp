#include "channelcombo.h"

#include "anaformbase.h"
#include "chnmap.h"
#include "cmtd99file.h"

#include <QComboBox>
#include <QCoreApplication>

QIcon ChannelClassIcon(int chnClass)
{
    switch (chnClass) {
    case ClassACV:
        return QIcon(QStringLiteral(":/images/ChnClassACV.png"));
    case ClassACC:
        return QIcon(QStringLiteral(":/images/ChnClassACC.png"));
    case ClassDCV:
        return QIcon(QStringLiteral(":/images/ChnClassDCV.png"));
    case ClassDCC:
        return QIcon(QStringLiteral(":/images/ChnClassDCC.png"));
    case ClassFreq:
        return QIcon(QStringLiteral(":/images/ChnClassFreq.png"));
    default:
        return QIcon(QStringLiteral(":/images/ChnClassUnk.png"));
    }
}

void FillChannelCombo(QComboBox *combo, const CCmtd99File &file, uint32_t displayFlags,
                      const CChnMapAnalog *chosen, const std::function<bool(const CChnMapAnalog &)> &accept)
{
    combo->clear();
    combo->addItem(ChannelClassIcon(0), QCoreApplication::translate("CAnaFormBase", "[Choose Nothing]"),
                   QVariant::fromValue(quintptr(0)));
    for (const auto &map : file.analogMaps) {
        if (accept && !accept(*map))
            continue;
        combo->addItem(ChannelClassIcon(map->Class()), CAnaFormBase::channelName(*map, displayFlags),
                       QVariant::fromValue(quintptr(map.get())));
        if (map.get() == chosen)
            combo->setCurrentIndex(combo->count() - 1);
    }
}

void FillChannelCombo(QComboBox *combo, const CCmtd99File &file, uint32_t displayFlags,
                      const CChnMapAnalog *chosen, int chnClass)
{
    FillChannelCombo(combo, file, displayFlags, chosen,
                     [chnClass](const CChnMapAnalog &chn) { return chn.Class() == chnClass; });
}

CChnMapAnalog *ComboChannel(const QComboBox *combo)
{
    return reinterpret_cast<CChnMapAnalog *>(combo->currentData().value<quintptr>());
}

bool SelectComboChannel(QComboBox *combo, const CChnMapAnalog *chn)
{
    const int at = chn ? combo->findData(QVariant::fromValue(quintptr(chn))) : -1;
    if (at >= 0)
        combo->setCurrentIndex(at);
    return at >= 0;
}
