#include "anaformvectorbase.h"

#include "chnmap.h"
#include "chntext.h"
#include "cmtdchildframe.h"
#include "cmtdviewananame.h"
#include "cursorvalue.h"
#include "phasor.h"
#include "vectorview.h"

#include <QBoxLayout>
#include <QHeaderView>
#include <QSplitter>
#include <QTableWidget>
#include <QToolButton>

#include <cmath>
#include <cstdio>
#include <iterator>

namespace {

// An angle that prints as zero is zero: the reference vector's rounding residue must not read "-0.000".
QString printed(const char *format, double value)
{
    if (std::fabs(value) < 0.0005)
        value = 0.0;
    char text[48];
    std::snprintf(text, sizeof text, format, value);
    return QString::fromLatin1(text);
}

} // namespace

CAnaFormVectorBase::CAnaFormVectorBase(int number, CCmtdChildFrame *frame, CCmtdChildContainerAna *container)
    : CAnaFormBase(number, frame, container)
{
    m_nDockFeatures = DockFeaturesAll;
    // Room for the eight rows of the vector table (and the twelve of the sequences, scrolled).
    m_nDockH = fontMetrics().height() * 18;
}

void CAnaFormVectorBase::buildLayout(CAnaFormChnGrpVecView *view, const QStringList &headers, QWidget *extra)
{
    auto *column = new QVBoxLayout(this);
    column->setContentsMargins(2, 2, 2, 2);
    auto *bar = new QHBoxLayout;
    addObjectButtons(bar);
    if (extra)
        bar->addWidget(extra);
    bar->addSpacing(8);
    const char *icons[6] = {"BtnZoomInVol.png", "BtnZoomOutVol.png", "BtnZoomResVol.png",
                            "BtnZoomInCur.png", "BtnZoomOutCur.png", "BtnZoomResCur.png"};
    void (CAnaFormVectorBase::*slots[6])() = {
        &CAnaFormVectorBase::slot_btnZoomInV,  &CAnaFormVectorBase::slot_btnZoomOutV,
        &CAnaFormVectorBase::slot_btnZoomResV, &CAnaFormVectorBase::slot_btnZoomInA,
        &CAnaFormVectorBase::slot_btnZoomOutA, &CAnaFormVectorBase::slot_btnZoomResA};
    for (int i = 0; i < 6; ++i) {
        m_zoomButtons[i] = makeButton(icons[i]);
        m_zoomButtons[i]->setToolButtonStyle(Qt::ToolButtonIconOnly);
        bar->addWidget(m_zoomButtons[i]);
        connect(m_zoomButtons[i], &QToolButton::clicked, this, slots[i]);
    }
    addMouseModeButtons(bar, false);
    bar->addStretch(1);
    addPlayControls(bar);
    column->addLayout(bar);

    auto *split = new QSplitter(Qt::Horizontal, this);
    m_table = new QTableWidget(0, int(headers.size()), split);
    m_table->setObjectName(QStringLiteral("vectorTable"));
    m_table->setEditTriggers(QAbstractItemView::NoEditTriggers);
    m_table->setSelectionMode(QAbstractItemView::NoSelection);
    m_table->verticalHeader()->hide();
    m_table->horizontalHeader()->setStretchLastSection(true);
    m_table->setWordWrap(false);
    const int em = fontMetrics().horizontalAdvance(QLatin1Char('M'));
    const int widths[] = {em * 2, em * 8, em * 7, em * 7, em * 19};
    for (int c = 0; c < int(std::size(widths)) && c < m_table->columnCount(); ++c)
        m_table->setColumnWidth(c, widths[c]);
    connect(m_table, &QTableWidget::cellClicked, this, &CAnaFormVectorBase::slot_cellClicked);
    auto *area = new CScrollAreaEx(split);
    m_view = view;
    area->setView(m_view);
    m_views = {m_view};
    split->addWidget(m_table);
    split->addWidget(area);
    split->setStretchFactor(0, 3);
    split->setStretchFactor(1, 2);
    column->addWidget(split, 1);
    retranslateVectorTexts(headers);
}

void CAnaFormVectorBase::retranslateVectorTexts(const QStringList &headers)
{
    retranslateShared();
    m_table->setHorizontalHeaderLabels(headers);
    m_table->horizontalHeaderItem(ColVector)->setToolTip(tr("Peak value of the phasor and its angle"));
    const char *tips[6] = {QT_TR_NOOP("Zoom In Voltage Vectors"),  QT_TR_NOOP("Zoom Out Voltage Vectors"),
                           QT_TR_NOOP("Reset Voltage Vectors"),    QT_TR_NOOP("Zoom In Current Vectors"),
                           QT_TR_NOOP("Zoom Out Current Vectors"), QT_TR_NOOP("Reset Current Vectors")};
    for (int i = 0; i < 6; ++i)
        m_zoomButtons[i]->setToolTip(tr(tips[i]));
}

void CAnaFormVectorBase::resetObject()
{
    CAnaFormBase::resetObject();
    m_view->items.clear();
    for (int row = 0; row < m_table->rowCount(); ++row)
        m_table->setRowHidden(row, true);
}

bool CAnaFormVectorBase::activate()
{
    // A form shown for the first time asks for its channels; afterwards it shows them as left.
    if (m_chns.empty()) {
        if (refuseWhileBusy() || !chooseObject())
            return false;
    }
    markRelated(true);
    refresh();
    return true;
}

uint32_t CAnaFormVectorBase::displayFlags() const
{
    return m_pFrame->document()->displayFlags.toInt();
}

bool CAnaFormVectorBase::phasorAtT1(CChnMapAnalog *chn, ComplexD &phasor) const
{
    const ChnCursorValue value = m_pFrame->nameView()->channelValueAtCursor(chn).first;
    if (!(value.flags & ChnCursorValue::HasPhasor))
        return false;
    phasor = value.phasor;
    return true;
}

void CAnaFormVectorBase::showPhasor(int row, const CChnMapAnalog &chn, const ComplexD &value)
{
    const uint32_t flags = displayFlags();
    auto text = [&](double v) { return QString::fromLocal8Bit(FormatChannelNumber(chn, v, flags)); };
    const double modulus = std::sqrt(value.re * value.re + value.im * value.im);
    const QString cells[4] = {text(value.re), text(value.im),
                              text(modulus) + tr("(Ang)") +
                                  printed("%.3f", std::atan2(value.im, value.re) * 57.29577957855229) +
                                  tr("(Deg)"),
                              text(Effective(value))};
    const int columns[4] = {ColRe, ColIm, ColVector, effectiveColumn()};
    for (int i = 0; i < 4; ++i) {
        QTableWidgetItem *cell = m_table->item(row, columns[i]);
        if (!cell) {
            cell = new QTableWidgetItem;
            cell->setTextAlignment(Qt::AlignRight | Qt::AlignVCenter);
            m_table->setItem(row, columns[i], cell);
        }
        cell->setText(cells[i]);
    }
}

void CAnaFormVectorBase::clearPhasor(int row)
{
    for (int column : {int(ColRe), int(ColIm), int(ColVector), effectiveColumn()}) {
        if (QTableWidgetItem *cell = m_table->item(row, column))
            cell->setText(QString());
    }
}

int CAnaFormVectorBase::effectiveColumn() const
{
    return m_table->columnCount() - 1;
}

void CAnaFormVectorBase::setEnableCell(int row, int item)
{
    auto *cell = new QTableWidgetItem(QIcon(QStringLiteral(":/images/IconEnabled.png")), QString());
    cell->setData(Qt::UserRole, item);
    cell->setToolTip(tr("Show or hide this vector"));
    m_table->setItem(row, ColEnable, cell);
}

float CAnaFormVectorBase::fullScale(std::initializer_list<const CChnMapAnalog *> channels)
{
    float largest = 0.0f;
    for (const CChnMapAnalog *chn : channels) {
        if (chn && chn->absMax > largest)
            largest = chn->absMax;
    }
    return largest * 1.1f;
}

void CAnaFormVectorBase::slot_cellClicked(int row, int column)
{
    if (column != ColEnable)
        return;
    QTableWidgetItem *cell = m_table->item(row, ColEnable);
    if (!cell)
        return;
    const int index = cell->data(Qt::UserRole).toInt();
    if (index < 0 || size_t(index) >= m_view->items.size())
        return;
    VectorItem &item = m_view->items[size_t(index)];
    item.nFlags ^= VectorItem::Hidden;
    const bool hidden = item.nFlags & VectorItem::Hidden;
    cell->setIcon(QIcon(hidden ? QStringLiteral(":/images/IconDisabled.png")
                               : QStringLiteral(":/images/IconEnabled.png")));
    m_view->update();
}

void CAnaFormVectorBase::zoomClass(int chnClass, float factor)
{
    for (VectorItem &item : m_view->items) {
        if (item.nClass != chnClass)
            continue;
        item.fGain = factor <= 0.0f ? 1.0f : item.fGain * factor;
    }
    CAnaFormBase::refresh();
}

void CAnaFormVectorBase::slot_btnZoomInV()
{
    zoomClass(ClassACV, CAnaViewBase::kZoomStep);
}

void CAnaFormVectorBase::slot_btnZoomOutV()
{
    zoomClass(ClassACV, 1.0f / CAnaViewBase::kZoomStep);
}

void CAnaFormVectorBase::slot_btnZoomResV()
{
    zoomClass(ClassACV, -1.0f);
}

void CAnaFormVectorBase::slot_btnZoomInA()
{
    zoomClass(ClassACC, CAnaViewBase::kZoomStep);
}

void CAnaFormVectorBase::slot_btnZoomOutA()
{
    zoomClass(ClassACC, 1.0f / CAnaViewBase::kZoomStep);
}

void CAnaFormVectorBase::slot_btnZoomResA()
{
    zoomClass(ClassACC, -1.0f);
}
