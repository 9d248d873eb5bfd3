#include "anaformchngrpseqdlgreset.h"
#include "dialogbuttons.h"

#include "anaformbase.h"
#include "chnmap.h"
#include "chntext.h"
#include "cmtd99file.h"
#include "phasegroup.h"

#include <QComboBox>
#include <QDialogButtonBox>
#include <QFormLayout>
#include <QGroupBox>
#include <QMessageBox>
#include <QVBoxLayout>

namespace {

CChnMapAnalog *channelAt(const QComboBox *combo)
{
    return reinterpret_cast<CChnMapAnalog *>(combo->currentData().value<quintptr>());
}

} // namespace

CAnaFormChnGrpSeqDlgReset::CAnaFormChnGrpSeqDlgReset(const CCmtd99File &file, uint32_t displayFlags,
                                                     const Group &voltages, const Group &currents,
                                                     QWidget *parent)
    : QDialog(parent), m_file(file)
{
    setWindowTitle(tr("Choose Channels for [Sequence Analysis]"));
    setWindowIcon(QIcon(QStringLiteral(":/images/WaveAnaSeq.png")));
    auto *column = new QVBoxLayout(this);
    column->addWidget(
        makeGroup(tr("Choose Ph. A,B and C ACV Channels"), 'U', ClassACV, m_cmbU, voltages, displayFlags));
    column->addWidget(
        makeGroup(tr("Choose Ph. A,B and C ACC Channels"), 'I', ClassACC, m_cmbI, currents, displayFlags));
    QDialogButtonBox *buttons = OkCancelButtons(this);
    column->addWidget(buttons);
    connect(m_cmbU[0], &QComboBox::currentIndexChanged, this,
            &CAnaFormChnGrpSeqDlgReset::slot_cmbUaSelChanged);
    connect(m_cmbI[0], &QComboBox::currentIndexChanged, this,
            &CAnaFormChnGrpSeqDlgReset::slot_cmbIaSelChanged);
    setMinimumWidth(420);
}

QWidget *CAnaFormChnGrpSeqDlgReset::makeGroup(const QString &title, char letter, int chnClass, Combos &combos,
                                              const Group &chosen, uint32_t displayFlags)
{
    auto *box = new QGroupBox(title, this);
    auto *form = new QFormLayout(box);
    for (size_t p = 0; p < 3; ++p) {
        auto *combo = new QComboBox(box);
        combo->addItem(tr("[Choose Nothing]"), QVariant::fromValue(quintptr(0)));
        for (const auto &map : m_file.analogMaps) {
            if (map->Class() != chnClass)
                continue;
            combo->addItem(CAnaFormBase::channelName(*map, displayFlags),
                           QVariant::fromValue(quintptr(map.get())));
            if (map.get() == chosen[p])
                combo->setCurrentIndex(combo->count() - 1);
        }
        form->addRow(QStringLiteral("%1%2").arg(QLatin1Char(letter)).arg(QLatin1Char(char('a' + p))), combo);
        combos[p] = combo;
    }
    return box;
}

CAnaFormChnGrpSeqDlgReset::Group CAnaFormChnGrpSeqDlgReset::chosenOf(const Combos &combos)
{
    return {channelAt(combos[0]), channelAt(combos[1]), channelAt(combos[2])};
}

int CAnaFormChnGrpSeqDlgReset::maskOf(const Combos &combos)
{
    int mask = 0;
    for (size_t p = 0; p < 3; ++p) {
        if (channelAt(combos[p]))
            mask |= 1 << p;
    }
    return mask;
}

void CAnaFormChnGrpSeqDlgReset::fillFromPhaseA(const Combos &combos)
{
    CChnMapAnalog *first = channelAt(combos[0]);
    if (!first)
        return;
    const Group group = ThreePhaseGroup(m_file, first);
    for (size_t p = 1; p < 3; ++p) {
        if (!group[p])
            continue;
        const int at = combos[p]->findData(QVariant::fromValue(quintptr(group[p])));
        if (at >= 0)
            combos[p]->setCurrentIndex(at);
    }
}

void CAnaFormChnGrpSeqDlgReset::slot_cmbUaSelChanged(int)
{
    fillFromPhaseA(m_cmbU);
}

void CAnaFormChnGrpSeqDlgReset::slot_cmbIaSelChanged(int)
{
    fillFromPhaseA(m_cmbI);
}

void CAnaFormChnGrpSeqDlgReset::accept()
{
    if (maskOf(m_cmbU) != 7 && maskOf(m_cmbI) != 7) {
        QMessageBox::warning(this, QString(), tr("Please Choose Three Ph. ACV and/or ACC Channels!"));
        return;
    }
    QDialog::accept();
}
