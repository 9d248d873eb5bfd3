#include "anaformchngrpseqdlgreset.h"
#include "dialogbuttons.h"

#include "channelcombo.h"
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
        FillChannelCombo(combo, m_file, displayFlags, chosen[p], chnClass);
        form->addRow(QStringLiteral("%1%2").arg(QLatin1Char(letter)).arg(QLatin1Char(char('a' + p))), combo);
        combos[p] = combo;
    }
    return box;
}

CAnaFormChnGrpSeqDlgReset::Group CAnaFormChnGrpSeqDlgReset::chosenOf(const Combos &combos)
{
    return {ComboChannel(combos[0]), ComboChannel(combos[1]), ComboChannel(combos[2])};
}

int CAnaFormChnGrpSeqDlgReset::maskOf(const Combos &combos)
{
    int mask = 0;
    for (size_t p = 0; p < 3; ++p) {
        if (ComboChannel(combos[p]))
            mask |= 1 << p;
    }
    return mask;
}

void CAnaFormChnGrpSeqDlgReset::fillFromPhaseA(const Combos &combos)
{
    CChnMapAnalog *first = ComboChannel(combos[0]);
    if (!first)
        return;
    const Group group = ThreePhaseGroup(m_file, first);
    for (size_t p = 1; p < 3; ++p)
        SelectComboChannel(combos[p], group[p]);
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
