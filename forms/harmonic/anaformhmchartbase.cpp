#include "anaformhmchartbase.h"

#include "chnmap.h"
#include "chntext.h"
#include "cmtd99file.h"
#include "cmtdchildframe.h"
#include "cmtddocument.h"
#include "hmchartview.h"
#include "safewrite.h"

#include <QBoxLayout>
#include <QFileDialog>
#include <QFileInfo>
#include <QHeaderView>
#include <QLabel>
#include <QMessageBox>
#include <QSplitter>
#include <QTableWidget>
#include <QToolButton>

#include <algorithm>

namespace {

// Per channel three columns after the order: effective value, share of the fundamental, angle.
constexpr int kColumnsPerChannel = 3;

QString numberText(double value, const char *format)
{
    return std::isfinite(value) ? QString::asprintf(format, value) : QStringLiteral("-");
}

} // namespace

CAnaFormHmChartBase::CAnaFormHmChartBase(int number, CCmtdChildFrame *frame,
                                         CCmtdChildContainerAna *container)
    : CAnaFormBase(number, frame, container), m_view(new CAnaFormHmChartView(frame, this)),
      m_table(new QTableWidget(this)), m_summary(new QLabel(this))
{
    m_nDockFeatures = DockFeaturesAll;
    auto *column = new QVBoxLayout(this);
    column->setContentsMargins(2, 2, 2, 2);
    auto *bar = new QHBoxLayout;
    addObjectButtons(bar);
    m_btnPercent = makeButton("WaveAnaHm.png", true);
    m_btnPercent->setObjectName(QStringLiteral("btnPercent"));
    m_btnPercent->setChecked(true);
    m_btnOnly = makeButton("BtnZoomInVol.png", true);
    m_btnOnly->setObjectName(QStringLiteral("btnOnly"));
    m_btnSave = makeButton("FileSave.png");
    m_btnSave->setObjectName(QStringLiteral("btnSave"));
    for (QToolButton *b : {m_btnPercent, m_btnOnly, m_btnSave})
        bar->addWidget(b);
    addMouseModeButtons(bar, false);
    bar->addStretch(1);
    addPlayControls(bar);
    column->addLayout(bar);
    auto *split = new QSplitter(Qt::Horizontal, this);
    auto *left = new QWidget(split);
    auto *leftColumn = new QVBoxLayout(left);
    leftColumn->setContentsMargins(0, 0, 0, 0);
    m_table->setObjectName(QStringLiteral("tblHarmonics"));
    m_table->setEditTriggers(QAbstractItemView::NoEditTriggers);
    m_table->verticalHeader()->hide();
    leftColumn->addWidget(m_table, 1);
    m_summary->setObjectName(QStringLiteral("summary"));
    m_summary->setTextInteractionFlags(Qt::TextSelectableByMouse);
    leftColumn->addWidget(m_summary);
    split->addWidget(left);
    auto *area = new CScrollAreaEx(split);
    area->setView(m_view);
    split->addWidget(area);
    split->setStretchFactor(0, 2);
    split->setStretchFactor(1, 3);
    column->addWidget(split, 1);
    m_views = {m_view};
    connect(m_btnPercent, &QToolButton::toggled, this, &CAnaFormHmChartBase::slot_btnMode);
    connect(m_btnOnly, &QToolButton::toggled, this, &CAnaFormHmChartBase::slot_btnMode);
    connect(m_btnSave, &QToolButton::clicked, this, &CAnaFormHmChartBase::slot_btnSave);
}

void CAnaFormHmChartBase::retranslateTexts()
{
    retranslateShared();
    m_btnPercent->setText(tr("% of Base"));
    m_btnPercent->setToolTip(tr("Bars in per cent of the fundamental, or in the channel's unit"));
    m_btnOnly->setText(tr("Harmonics Only"));
    m_btnOnly->setToolTip(tr("Scale the chart to the harmonics, leaving the fundamental out"));
    m_btnSave->setText(tr("Save [.csv]"));
    fillTable();
}

bool CAnaFormHmChartBase::percent() const
{
    return m_btnPercent->isChecked();
}

bool CAnaFormHmChartBase::harmonicsOnly() const
{
    return m_btnOnly->isChecked();
}

int CAnaFormHmChartBase::highestOrder() const
{
    int top = 0;
    for (const HarmonicSpectrum &s : m_spectra)
        top = std::max(top, int(s.orders.size()) - 1);
    return top;
}

bool CAnaFormHmChartBase::activate()
{
    if (m_channels.empty() && (refuseWhileBusy() || !chooseObject()))
        return false;
    markRelated(true);
    refresh();
    return true;
}

void CAnaFormHmChartBase::setChartChannels(const std::vector<CChnMapAnalog *> &channels)
{
    markRelated(false);
    m_channels = channels;
    m_chns.assign(channels.begin(), channels.end());
    m_spectra.clear();
    if (m_btnHide && m_btnHide->isChecked())
        m_pFrame->hideUnrelated(m_chns);
    QString names;
    for (CChnMapAnalog *chn : m_channels)
        names += (names.isEmpty() ? QString() : QStringLiteral(", ")) + channelName(*chn, 0);
    setSubTitle(&names);
    markRelated(true);
    refresh();
}

void CAnaFormHmChartBase::resetObject()
{
    CAnaFormBase::resetObject();
    m_channels.clear();
    m_spectra.clear();
    fillTable();
    fillSummary();
}

void CAnaFormHmChartBase::forgetChannel(const CChnMapBase *channel)
{
    CAnaFormBase::forgetChannel(channel);
}

void CAnaFormHmChartBase::refresh()
{
    const CCmtd99File &file = m_pFrame->recording();
    const int t1 = cursorT1();
    m_spectra.resize(m_channels.size());
    for (size_t c = 0; c < m_channels.size(); ++c)
        m_spectra[c] = HarmonicSpectrumAt(file, *m_channels[c], t1);
    fillTable();
    fillSummary();
    if (!m_channels.empty())
        m_view->resetRange();
    CAnaFormBase::refresh();
}

void CAnaFormHmChartBase::fillTable()
{
    const uint32_t flags = m_pFrame->document()->displayFlags.toInt();
    const int rows = m_channels.empty() ? 0 : highestOrder() + 1;
    const int columns = 1 + kColumnsPerChannel * int(m_channels.size());
    m_table->setColumnCount(columns);
    m_table->setRowCount(rows);
    QStringList headers{tr("Order")};
    for (CChnMapAnalog *chn : m_channels) {
        const QString name = channelName(*chn, 0);
        headers << name + tr(" Eff.") << name + tr(" %") << name + tr(" Ang.(Deg)");
    }
    m_table->setHorizontalHeaderLabels(headers);
    for (int k = 0; k < rows; ++k) {
        auto cell = [this, k](int column, const QString &text, QColor colour) {
            QTableWidgetItem *item = m_table->item(k, column);
            if (!item) {
                item = new QTableWidgetItem;
                item->setTextAlignment(Qt::AlignRight | Qt::AlignVCenter);
                m_table->setItem(k, column, item);
            }
            item->setText(text);
            item->setForeground(colour);
        };
        cell(0, k == 0 ? tr("DC") : QString::number(k), palette().color(QPalette::Text));
        for (size_t c = 0; c < m_channels.size(); ++c) {
            const CChnMapAnalog &chn = *m_channels[c];
            const HarmonicSpectrum &s = m_spectra[c];
            const QColor colour = QColor::fromRgba(chn.colour);
            const int at = 1 + kColumnsPerChannel * int(c);
            if (!s.valid || k >= int(s.orders.size())) {
                for (int i = 0; i < kColumnsPerChannel; ++i)
                    cell(at + i, QStringLiteral("-"), colour);
                continue;
            }
            const HarmonicOrder &o = s.orders[size_t(k)];
            cell(at, QString::fromLatin1(FormatChannelNumber(chn, o.effective, flags)), colour);
            cell(at + 1, numberText(o.percent, "%.3f"), colour);
            cell(at + 2, k == 0 ? QString() : numberText(o.angleDeg, "%.2f"), colour);
        }
    }
}

void CAnaFormHmChartBase::fillSummary()
{
    QStringList lines;
    for (size_t c = 0; c < m_channels.size() && c < m_spectra.size(); ++c) {
        const HarmonicSpectrum &s = m_spectra[c];
        const QString name = channelName(*m_channels[c], 0);
        lines << (s.valid ? tr("%1: base %2 Hz, THD %3 %, DC %4 %")
                                .arg(name, numberText(s.fundamentalHz, "%.3f"),
                                     numberText(s.thdPercent, "%.3f"), numberText(s.dcPercent, "%.3f"))
                          : tr("%1: no whole cycle at T1").arg(name));
    }
    m_summary->setText(lines.join(QLatin1Char('\n')));
}

QByteArray CAnaFormHmChartBase::csvText() const
{
    QByteArray text;
    for (int c = 0; c < m_table->columnCount(); ++c) {
        const QString head =
            m_table->horizontalHeaderItem(c) ? m_table->horizontalHeaderItem(c)->text() : QString();
        text += (c ? "," : "") + ('"' + head.toUtf8().replace('"', "\"\"") + '"');
    }
    text += "\r\n";
    for (int r = 0; r < m_table->rowCount(); ++r) {
        for (int c = 0; c < m_table->columnCount(); ++c) {
            const QTableWidgetItem *item = m_table->item(r, c);
            text += (c ? "," : "") + (item ? item->text().toUtf8() : QByteArray());
        }
        text += "\r\n";
    }
    return text;
}

bool CAnaFormHmChartBase::saveCsv(const QString &path, QString &message) const
{
    return WriteFileSafely(path, csvText(), &message);
}

void CAnaFormHmChartBase::slot_btnSave()
{
    if (m_channels.empty())
        return;
    static QString lastFolder;
    const QString path =
        QFileDialog::getSaveFileName(this, tr("Harmonics"), lastFolder, tr("csv ASCII Format File(*.csv)"));
    if (path.isEmpty())
        return;
    lastFolder = QFileInfo(path).absolutePath();
    QString message;
    if (!saveCsv(path, message))
        QMessageBox::warning(this, QString(), message);
}

void CAnaFormHmChartBase::slot_btnMode()
{
    if (!m_channels.empty())
        m_view->resetRange();
    m_view->update();
}
