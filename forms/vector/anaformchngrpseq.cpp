#include "anaformchngrpseq.h"

#include "anaformbase.h"
#include "anaformchngrpseqdlgreset.h"
#include "chnmap.h"
#include "chntext.h"
#include "cmtdchildframe.h"
#include "phasor.h"
#include "vectorview.h"

#include <QTableWidget>
#include <QToolButton>

namespace {

uint16_t maskOf(const CAnaFormChnGrpSeq::Group &group)
{
    uint16_t mask = 0;
    for (size_t p = 0; p < 3; ++p) {
        if (group[p])
            mask |= uint16_t(1u << p);
    }
    return mask;
}

// The sequence vectors in colours of their own, the phases in their channels' colours.
constexpr uint32_t kSequenceColours[3] = {0xFFC0392Bu, 0xFF2E6FD8u, 0xFF2E9E44u};

} // namespace

CAnaFormChnGrpSeq::CAnaFormChnGrpSeq(int number, CCmtdChildFrame *frame, CCmtdChildContainerAna *container)
    : CAnaFormVectorBase(number, frame, container)
{
    m_strTitle = tr("Sequence Analysis");
    buildLayout(new CAnaFormChnGrpSeqView(frame, this), headers());
    m_table->setRowCount(RowCount);
    for (int row = 0; row < RowCount; ++row)
        m_table->setRowHidden(row, true);
    retranslateTexts();
}

QStringList CAnaFormChnGrpSeq::headers() const
{
    return {QString(),    tr("Sequence"), tr("R-Part"),   tr("X-Part"),
            tr("Vector"), tr("Channels"), tr("Effective")};
}

void CAnaFormChnGrpSeq::retranslateTexts()
{
    retranslateVectorTexts(headers());
}

CAnaFormChnGrpSeq::Group CAnaFormChnGrpSeq::group(int first) const
{
    // Before the first choice the form has no channels at all.
    if (m_chns.size() < 6)
        return {};
    return {static_cast<CChnMapAnalog *>(m_chns[size_t(first)]),
            static_cast<CChnMapAnalog *>(m_chns[size_t(first + 1)]),
            static_cast<CChnMapAnalog *>(m_chns[size_t(first + 2)])};
}

bool CAnaFormChnGrpSeq::chooseObject()
{
    CAnaFormChnGrpSeqDlgReset dialog(m_pFrame->recording(), displayFlags(), group(0), group(3), this);
    if (dialog.exec() != QDialog::Accepted)
        return false;
    setGroups(dialog.voltages(), dialog.currents());
    return true;
}

void CAnaFormChnGrpSeq::setGroups(const Group &voltages, const Group &currents)
{
    markRelated(false);
    m_nMaskU = maskOf(voltages);
    m_nMaskI = maskOf(currents);
    m_chns.assign(6, nullptr);
    m_view->items.assign(RowCount, VectorItem{});
    if (m_nMaskU == AllPhases) {
        std::copy(voltages.begin(), voltages.end(), m_chns.begin());
        setupGroupRows(voltages, RowU1, RowUa, 'U');
    }
    if (m_nMaskI == AllPhases) {
        std::copy(currents.begin(), currents.end(), m_chns.begin() + 3);
        setupGroupRows(currents, RowI1, RowIa, 'I');
    }
    for (int row = 0; row < RowCount; ++row) {
        const bool voltage = row < RowI1 || (row >= RowUa && row < RowIa);
        m_table->setRowHidden(row, (voltage ? m_nMaskU : m_nMaskI) != AllPhases);
    }
    if (m_btnHide && m_btnHide->isChecked())
        m_pFrame->hideUnrelated(m_chns);
    refresh();
    markRelated(true);
}

void CAnaFormChnGrpSeq::setupGroupRows(const Group &group, int sequenceRow, int phaseRow, char letter)
{
    const float full = fullScale({group[0], group[1], group[2]});
    const uint32_t flags = displayFlags();
    static const char *const kParts[3] = {QT_TR_NOOP("Positive Sequence"), QT_TR_NOOP("Negative Sequence"),
                                          QT_TR_NOOP("Zero Sequence")};
    for (int i = 0; i < 3; ++i) {
        // Rows 0, 1, 2 of a group are the sequences 1, 2, 0.
        const QString seqName = QStringLiteral("%1%2").arg(QLatin1Char(letter)).arg((i + 1) % 3);
        const QString phaseName =
            QStringLiteral("%1%2").arg(QLatin1Char(letter)).arg(QLatin1Char(char('a' + i)));
        const CChnMapAnalog *chn = group[size_t(i)];
        VectorItem &sequence = m_view->items[size_t(sequenceRow + i)];
        sequence.fMax = full;
        sequence.nClass = group[0]->Class();
        sequence.nColor = kSequenceColours[i];
        sequence.strName = seqName;
        sequence.strLegend = seqName + QLatin1Char(' ') + tr(kParts[i]);
        VectorItem &phase = m_view->items[size_t(phaseRow + i)];
        phase.fMax = full;
        phase.nClass = chn->Class();
        phase.nColor = chn->colour;
        phase.strName = phaseName;
        phase.strLegend = CAnaFormBase::channelName(*chn, flags);
        for (int row : {sequenceRow + i, phaseRow + i}) {
            setEnableCell(row, row);
            auto *name = new QTableWidgetItem(row == sequenceRow + i ? seqName : phaseName);
            name->setForeground(QColor::fromRgba(m_view->items[size_t(row)].nColor));
            m_table->setItem(row, ColName, name);
        }
        auto *channel = new QTableWidgetItem(CAnaFormBase::channelName(*chn, flags));
        channel->setForeground(QColor::fromRgba(chn->colour));
        m_table->setItem(phaseRow + i, ColChannels, channel);
    }
}

void CAnaFormChnGrpSeq::refreshGroup(int first, int sequenceRow, int phaseRow)
{
    const Group chns = group(first);
    ComplexD phases[3];
    for (int i = 0; i < 3; ++i) {
        VectorItem &item = m_view->items[size_t(phaseRow + i)];
        // A phase without a phasor counts as zero in the sequence parts.
        if (!phasorAtT1(chns[size_t(i)], phases[i])) {
            phases[i] = ComplexD{};
            clearPhasor(phaseRow + i);
        } else {
            showPhasor(phaseRow + i, *chns[size_t(i)], phases[i]);
        }
        item.fRe = float(phases[i].re);
        item.fIm = float(phases[i].im);
    }
    ComplexD parts[3]; // positive, negative, zero: the order of the rows
    SymmetricalParts(phases[0], phases[1], phases[2], parts[2], parts[0], parts[1]);
    for (int i = 0; i < 3; ++i) {
        showPhasor(sequenceRow + i, *chns[0], parts[i]);
        VectorItem &item = m_view->items[size_t(sequenceRow + i)];
        item.fRe = float(parts[i].re);
        item.fIm = float(parts[i].im);
    }
}

void CAnaFormChnGrpSeq::refresh()
{
    if (m_view->items.size() == RowCount) {
        if (m_nMaskU == AllPhases)
            refreshGroup(0, RowU1, RowUa);
        if (m_nMaskI == AllPhases)
            refreshGroup(3, RowI1, RowIa);
    }
    CAnaFormBase::refresh();
}
