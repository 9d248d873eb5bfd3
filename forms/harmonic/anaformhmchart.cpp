#include "anaformhmchart.h"

#include "channelcombo.h"
#include "chnmap.h"
#include "cmtd99file.h"
#include "cmtdchildframe.h"
#include "cmtddocument.h"
#include "dialogbuttons.h"
#include "phasegroup.h"

#include <QComboBox>
#include <QDialogButtonBox>
#include <QFormLayout>
#include <QGroupBox>
#include <QMessageBox>
#include <QVBoxLayout>

namespace {

bool chooseChannels(CAnaFormHmChartBase *form, CCmtdChildFrame *frame, int count)
{
    CAnaFormHmChartDlgReset dialog(frame->recording(), frame->document()->displayFlags.toInt(), count,
                                   form->chartChannels(), form);
    if (dialog.exec() != QDialog::Accepted)
        return false;
    form->setChartChannels(dialog.chosen());
    return true;
}

} // namespace

CAnaFormChnSngHmChart::CAnaFormChnSngHmChart(int number, CCmtdChildFrame *frame,
                                             CCmtdChildContainerAna *container)
    : CAnaFormHmChartBase(number, frame, container)
{
    m_strTitle = tr("Harmonious Chart");
    m_nDockH = fontMetrics().height() * 20;
    retranslateTexts();
}

void CAnaFormChnSngHmChart::offerChannel(CChnMapBase *channel)
{
    if (channel && channel->chnType == CChnMapBase::TypeAnalog)
        setChartChannels({static_cast<CChnMapAnalog *>(channel)});
}

bool CAnaFormChnSngHmChart::chooseObject()
{
    return chooseChannels(this, m_pFrame, 1);
}

CAnaFormChnGrpHmChart::CAnaFormChnGrpHmChart(int number, CCmtdChildFrame *frame,
                                             CCmtdChildContainerAna *container)
    : CAnaFormHmChartBase(number, frame, container)
{
    m_strTitle = tr("Harmonious Analysis");
    m_nDockH = 200;
    retranslateTexts();
}

bool CAnaFormChnGrpHmChart::chooseObject()
{
    return chooseChannels(this, m_pFrame, 3);
}

CAnaFormHmChartDlgReset::CAnaFormHmChartDlgReset(const CCmtd99File &file, uint32_t displayFlags, int count,
                                                 const std::vector<CChnMapAnalog *> &chosen, QWidget *parent)
    : QDialog(parent), m_file(file), m_count(count)
{
    setWindowTitle(tr("Choose Channels for [Harmonious Analysis]"));
    setWindowIcon(QIcon(QStringLiteral(":/images/WaveAnaHm.png")));
    auto *group =
        new QGroupBox(count == 1 ? tr("Choose Channel") : tr("Choose Ph. A,B and C Channels"), this);
    auto *form = new QFormLayout(group);
    for (int i = 0; i < count; ++i) {
        m_combos[i] = new QComboBox(group);
        FillChannelCombo(m_combos[i], file, displayFlags,
                         i < int(chosen.size()) ? chosen[size_t(i)] : nullptr);
        form->addRow(count == 1 ? tr("Channel") : tr("Ph. %1").arg(QLatin1Char(char('A' + i))), m_combos[i]);
    }
    auto *column = new QVBoxLayout(this);
    column->addWidget(group);
    column->addWidget(OkCancelButtons(this));
    if (count > 1)
        connect(m_combos[0], &QComboBox::currentIndexChanged, this,
                &CAnaFormHmChartDlgReset::slot_cmbFirstSelChanged);
    setMinimumWidth(380);
}

void CAnaFormHmChartDlgReset::slot_cmbFirstSelChanged(int)
{
    CChnMapAnalog *first = ComboChannel(m_combos[0]);
    if (!first)
        return;
    const auto group = ThreePhaseGroup(m_file, first);
    for (size_t p = 1; p < 3; ++p)
        SelectComboChannel(m_combos[p], group[p]);
}

std::vector<CChnMapAnalog *> CAnaFormHmChartDlgReset::chosen() const
{
    std::vector<CChnMapAnalog *> list;
    for (int i = 0; i < m_count; ++i) {
        if (CChnMapAnalog *chn = ComboChannel(m_combos[i]))
            list.push_back(chn);
    }
    return list;
}

void CAnaFormHmChartDlgReset::accept()
{
    if (chosen().empty()) {
        QMessageBox::warning(this, QString(), tr("Please Choose NOT Less Than One Channel!"));
        return;
    }
    QDialog::accept();
}
