#include "anaformchngrpvec.h"

#include "anaformbase.h"
#include "anaformchngrpvecdlgreset.h"
#include "chnmap.h"
#include "chntext.h"
#include "cmtdchildframe.h"
#include "vectorview.h"

#include <QComboBox>
#include <QTableWidget>
#include <QToolButton>

#include <cmath>

CAnaFormChnGrpVec::CAnaFormChnGrpVec(int number, CCmtdChildFrame *frame, CCmtdChildContainerAna *container)
    : CAnaFormVectorBase(number, frame, container), m_cmbMode(new QComboBox(this))
{
    m_strTitle = tr("Vector Analysis");
    m_cmbMode->setObjectName(QStringLiteral("modeCombo"));
    m_cmbMode->addItem(QString(), int(ModeReference));
    m_cmbMode->addItem(QString(), int(ModeRevolving));
    buildLayout(new CAnaFormChnGrpVecView(frame, this), headers(), m_cmbMode);
    connect(m_cmbMode, &QComboBox::currentIndexChanged, this, &CAnaFormChnGrpVec::slot_cmbModeSelChanged);
    retranslateTexts();
}

QStringList CAnaFormChnGrpVec::headers() const
{
    return {QString(), tr("Channel"), tr("R-Part"), tr("X-Part"), tr("Vector"), tr("Effective")};
}

void CAnaFormChnGrpVec::retranslateTexts()
{
    retranslateVectorTexts(headers());
    m_cmbMode->setItemText(0, tr("Reference Vector"));
    m_cmbMode->setItemText(1, tr("Revolving Vector"));
}

bool CAnaFormChnGrpVec::chooseObject()
{
    std::vector<CChnMapAnalog *> current;
    for (CChnMapBase *chn : m_chns)
        current.push_back(static_cast<CChnMapAnalog *>(chn));
    CAnaFormChnGrpVecDlgReset dialog(m_pFrame->recording(), displayFlags(), current, this);
    if (dialog.exec() != QDialog::Accepted)
        return false;
    setChannels(dialog.chosen());
    return true;
}

void CAnaFormChnGrpVec::setChannels(const std::vector<CChnMapAnalog *> &channels)
{
    markRelated(false);
    m_chns.assign(channels.begin(), channels.end());
    m_table->setRowCount(int(channels.size()));
    m_view->items.clear();
    float maxV = 0.0f;
    float maxA = 0.0f;
    for (const CChnMapAnalog *chn : channels) {
        if (chn->Class() == ClassACV)
            maxV = qMax(maxV, chn->absMax);
        else if (chn->Class() == ClassACC)
            maxA = qMax(maxA, chn->absMax);
    }
    maxV *= 1.1f;
    maxA *= 1.1f;
    const uint32_t flags = displayFlags();
    float previous = 100.0f;
    for (size_t i = 0; i < channels.size(); ++i) {
        const CChnMapAnalog *chn = channels[i];
        VectorItem item;
        item.fMax = chn->Class() == ClassACV ? maxV : chn->Class() == ClassACC ? maxA : previous;
        previous = item.fMax;
        item.nColor = chn->colour;
        item.nClass = chn->Class();
        item.strName = QStringLiteral("(%1)").arg(chn->Index());
        const QString name = CAnaFormBase::channelName(*chn, flags);
        item.strLegend = item.strName + QLatin1Char(' ') + QString::fromLocal8Bit(chn->Name());
        m_view->items.push_back(item);
        m_table->setRowHidden(int(i), false);
        setEnableCell(int(i), int(i));
        auto *cell =
            new QTableWidgetItem(QIcon(chn->Class() == ClassACV ? QStringLiteral(":/images/ChnClassACV.png")
                                                                : QStringLiteral(":/images/ChnClassACC.png")),
                                 name);
        cell->setForeground(QColor::fromRgba(chn->colour));
        m_table->setItem(int(i), ColName, cell);
    }
    if (m_btnHide && m_btnHide->isChecked())
        m_pFrame->hideUnrelated(m_chns);
    refresh();
    markRelated(true);
}

void CAnaFormChnGrpVec::refresh()
{
    const bool reference = m_cmbMode->currentIndex() == ModeReference;
    // The turn that brings the first channel to 0 degrees; without a first phasor everything
    // collapses to zero, which the empty first row explains.
    double c = 0.0;
    double s = 0.0;
    for (size_t i = 0; i < m_chns.size() && i < m_view->items.size(); ++i) {
        auto *chn = static_cast<CChnMapAnalog *>(m_chns[i]);
        VectorItem &item = m_view->items[i];
        ComplexD v;
        if (!phasorAtT1(chn, v)) {
            clearPhasor(int(i));
            item.fRe = item.fIm = 0.0f;
            continue;
        }
        if (reference) {
            if (i == 0) {
                const double t = -std::atan2(v.im, v.re);
                c = std::cos(t);
                s = std::sin(t);
            }
            v = ComplexD{c * v.re - s * v.im, s * v.re + c * v.im};
        }
        showPhasor(int(i), *chn, v);
        item.fRe = float(v.re);
        item.fIm = float(v.im);
    }
    CAnaFormBase::refresh();
}

void CAnaFormChnGrpVec::slot_cmbModeSelChanged(int)
{
    refresh();
}
