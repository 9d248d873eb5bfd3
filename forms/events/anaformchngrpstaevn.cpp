#include "anaformchngrpstaevn.h"

#include "chnmap.h"
#include "cmtd99file.h"
#include "cmtdchildframe.h"
#include "cmtdviewanawave.h"
#include "globaloptions.h"
#include "safewrite.h"
#include "timetext.h"

#include <QBoxLayout>
#include <QComboBox>
#include <QFileDialog>
#include <QHeaderView>
#include <QLabel>
#include <QLineEdit>
#include <QMessageBox>
#include <QTableWidget>
#include <QToolButton>

namespace {

// The combo's entries in their order, as base points.
constexpr StatusTimeBase kBases[4] = {StatusBaseTripT0, StatusBaseCustomT0, StatusBaseT1, StatusBaseT1Fixed};

} // namespace

CAnaFormChnGrpStaEvn::CAnaFormChnGrpStaEvn(int number, CCmtdChildFrame *frame,
                                           CCmtdChildContainerAna *container)
    : CAnaFormBase(number, frame, container), m_cmbFormat(new QComboBox(this)),
      m_cmbBase(new QComboBox(this)), m_find(new QLineEdit(this)),
      m_table(new QTableWidget(0, ColCount, this))
{
    m_strTitle = tr("Status Event List");
    m_nDockFeatures = DockFeaturesAll;
    m_nDockH = fontMetrics().height() * 16;
    auto *column = new QVBoxLayout(this);
    column->setContentsMargins(2, 2, 2, 2);
    auto *bar = new QHBoxLayout;
    auto *formatLabel = new QLabel(this);
    formatLabel->setObjectName(QStringLiteral("formatLabel"));
    auto *baseLabel = new QLabel(this);
    baseLabel->setObjectName(QStringLiteral("baseLabel"));
    m_cmbFormat->addItems({QString(), QString()});
    m_cmbBase->addItems({QString(), QString(), QString(), QString()});
    auto *save = makeButton("FileSave.png");
    save->setObjectName(QStringLiteral("btnSave"));
    auto *find = makeButton("edit_find.png");
    find->setObjectName(QStringLiteral("btnFind"));
    m_find->setObjectName(QStringLiteral("findText"));
    m_find->setClearButtonEnabled(true);
    for (QWidget *w :
         {static_cast<QWidget *>(formatLabel), static_cast<QWidget *>(m_cmbFormat),
          static_cast<QWidget *>(baseLabel), static_cast<QWidget *>(m_cmbBase), static_cast<QWidget *>(save)})
        bar->addWidget(w);
    bar->addStretch(1);
    bar->addWidget(m_find);
    bar->addWidget(find);
    column->addLayout(bar);
    m_table->setObjectName(QStringLiteral("eventTable"));
    m_table->setEditTriggers(QAbstractItemView::NoEditTriggers);
    m_table->setSelectionBehavior(QAbstractItemView::SelectRows);
    m_table->setSelectionMode(QAbstractItemView::SingleSelection);
    m_table->verticalHeader()->setDefaultSectionSize(fontMetrics().height() + 4);
    m_table->horizontalHeader()->setSectionResizeMode(ColChannel, QHeaderView::Stretch);
    column->addWidget(m_table, 1);

    // The options say how the engineer last read the list.
    m_cmbFormat->setCurrentIndex(globalOptions.statusTimeFormat == StatusTimeMsUs ? 1 : 0);
    const int base =
        int(std::find(std::begin(kBases), std::end(kBases), StatusTimeBase(globalOptions.statusTimeBase)) -
            std::begin(kBases));
    m_cmbBase->setCurrentIndex(base < 4 ? base : 0);
    connect(m_cmbFormat, &QComboBox::currentIndexChanged, this, &CAnaFormChnGrpStaEvn::slot_cmbFormatChanged);
    connect(m_cmbBase, &QComboBox::currentIndexChanged, this, &CAnaFormChnGrpStaEvn::slot_cmbBaseChanged);
    connect(save, &QToolButton::clicked, this, &CAnaFormChnGrpStaEvn::slot_btnSave);
    connect(find, &QToolButton::clicked, this, &CAnaFormChnGrpStaEvn::slot_btnFind);
    connect(m_find, &QLineEdit::returnPressed, this, &CAnaFormChnGrpStaEvn::slot_btnFind);
    connect(m_table, &QTableWidget::cellDoubleClicked, this, &CAnaFormChnGrpStaEvn::slot_tblDoubleClicked);
    retranslateTexts();
}

void CAnaFormChnGrpStaEvn::retranslateTexts()
{
    findChild<QLabel *>(QStringLiteral("formatLabel"))->setText(tr("Delta Time Format"));
    findChild<QLabel *>(QStringLiteral("baseLabel"))->setText(tr("Delta Time Base Point"));
    m_cmbFormat->setItemText(0, tr("mm:ss.us"));
    m_cmbFormat->setItemText(1, tr("ms.us"));
    m_cmbBase->setItemText(0, tr("[Trip Time (T0)]"));
    m_cmbBase->setItemText(1, tr("[Custom Trip Time(T0')]"));
    m_cmbBase->setItemText(2, tr("[Current T1 Cursor(Dynamic)]"));
    m_cmbBase->setItemText(3, tr("[Current T1 Cursor(Static)]"));
    findChild<QToolButton *>(QStringLiteral("btnSave"))->setText(tr("Save [.csv]"));
    findChild<QToolButton *>(QStringLiteral("btnFind"))->setToolTip(tr("Find a channel by part of its name"));
    m_find->setPlaceholderText(tr("Channel name"));
    m_table->setHorizontalHeaderLabels({tr("State"), tr("Delta Time"), tr("Channel"), tr("Sample")});
}

StatusTimeBase CAnaFormChnGrpStaEvn::base() const
{
    return kBases[qBound(0, m_cmbBase->currentIndex(), 3)];
}

StatusTimeFormat CAnaFormChnGrpStaEvn::format() const
{
    return m_cmbFormat->currentIndex() == 1 ? StatusTimeMsUs : StatusTimeMinSecUs;
}

bool CAnaFormChnGrpStaEvn::baseTime(int64_t &timeUs) const
{
    const int sample = base() == StatusBaseT1Fixed ? m_nStaticT1 : cursorT1();
    return StatusBaseTime(m_pFrame->recording(), base(), sample, timeUs);
}

bool CAnaFormChnGrpStaEvn::activate()
{
    // The list is the recording's own: built once, on the first show.
    if (m_events.empty()) {
        m_events = CollectStatusEvents(m_pFrame->recording());
        m_chns.clear();
        for (const StatusEvent &event : m_events) {
            CChnMapBase *chn = m_pFrame->recording().statusMaps[size_t(event.channel)].get();
            if (std::find(m_chns.begin(), m_chns.end(), chn) == m_chns.end())
                m_chns.push_back(chn);
        }
        m_nStaticT1 = cursorT1();
        // A recording without T0' is read against its trigger rather than left blank.
        int64_t unused = 0;
        if (base() == StatusBaseCustomT0 &&
            !StatusBaseTime(m_pFrame->recording(), StatusBaseCustomT0, 0, unused))
            m_cmbBase->setCurrentIndex(0);
        fillTable();
    }
    markRelated(true);
    refresh();
    return true;
}

void CAnaFormChnGrpStaEvn::fillTable()
{
    const CCmtd99File &file = m_pFrame->recording();
    m_table->setRowCount(int(m_events.size()));
    const QIcon rising(QStringLiteral(":/images/ArrowUpRed.png"));
    const QIcon falling(QStringLiteral(":/images/ArrowDownGreen.png"));
    for (int row = 0; row < int(m_events.size()); ++row) {
        const StatusEvent &event = m_events[size_t(row)];
        auto *state = new QTableWidgetItem(event.state ? rising : falling, QString::number(event.state));
        m_table->setItem(row, ColState, state);
        auto *delta = new QTableWidgetItem;
        delta->setTextAlignment(Qt::AlignRight | Qt::AlignVCenter);
        m_table->setItem(row, ColDelta, delta);
        const CChnMapBase *chn = file.statusMaps[size_t(event.channel)].get();
        auto *name = new QTableWidgetItem(channelName(*chn, m_pFrame->document()->displayFlags.toInt()));
        name->setForeground(QColor::fromRgba(chn->colour));
        m_table->setItem(row, ColChannel, name);
        auto *sample = new QTableWidgetItem(QString::number(event.sample));
        sample->setTextAlignment(Qt::AlignRight | Qt::AlignVCenter);
        m_table->setItem(row, ColSample, sample);
    }
    for (int column : {int(ColState), int(ColDelta), int(ColSample)})
        m_table->resizeColumnToContents(column);
}

void CAnaFormChnGrpStaEvn::refresh()
{
    int64_t base = 0;
    const bool known = baseTime(base);
    const StatusTimeFormat form = format();
    for (int row = 0; row < int(m_events.size()) && row < m_table->rowCount(); ++row) {
        // Without the chosen base (no T0' set) the times stay blank rather than mislead.
        const QString text =
            known ? QString::fromLatin1(StatusDeltaText(m_events[size_t(row)].timeUs - base, form))
                  : QString();
        m_table->item(row, ColDelta)->setText(text);
    }
    m_table->setToolTip(known ? QString() : tr("The recording has no custom trip time T0'"));
    CAnaFormBase::refresh();
}

void CAnaFormChnGrpStaEvn::slot_cmbFormatChanged(int)
{
    globalOptions.statusTimeFormat = format();
    refresh();
}

void CAnaFormChnGrpStaEvn::slot_cmbBaseChanged(int)
{
    globalOptions.statusTimeBase = base();
    if (base() == StatusBaseT1Fixed)
        m_nStaticT1 = cursorT1();
    refresh();
}

void CAnaFormChnGrpStaEvn::slot_tblDoubleClicked(int row, int)
{
    if (row < 0 || row >= int(m_events.size()))
        return;
    const int sample = m_events[size_t(row)].sample;
    setCursorT1(sample);
    m_pFrame->waveView()->showPoint(sample);
}

int CAnaFormChnGrpStaEvn::findNext(const QString &text) const
{
    const int count = m_table->rowCount();
    for (int k = 1; k <= count; ++k) {
        const int row = (m_table->currentRow() + k) % count;
        if (m_table->item(row, ColChannel)->text().contains(text, Qt::CaseInsensitive))
            return row;
    }
    return -1;
}

void CAnaFormChnGrpStaEvn::slot_btnFind()
{
    const QString text = m_find->text().trimmed();
    if (text.isEmpty() || m_table->rowCount() == 0)
        return;
    const int row = findNext(text);
    if (row < 0) {
        QMessageBox::information(this, QString(),
                                 tr("Can not Found '%s'.").replace(QLatin1String("%s"), text));
        return;
    }
    m_table->setCurrentCell(row, ColChannel);
    m_table->scrollToItem(m_table->item(row, ColChannel));
}

bool CAnaFormChnGrpStaEvn::saveCsv(const QString &path, QString &message) const
{
    int64_t base = 0;
    const bool known = baseTime(base);
    const CCmtd99File &file = m_pFrame->recording();
    QByteArray text = "Delta Time,Time from First Sample,Channel,Name,State,Sample\r\n";
    for (const StatusEvent &event : m_events) {
        text += (known ? TimeTextFull(event.timeUs - base) : QByteArray()) + ',' +
                TimeTextFull(event.timeUs) + ",D" + QByteArray::number(event.index) + ",\"" +
                file.Text(event.name).toUtf8().replace('"', "\"\"") + "\"," +
                QByteArray::number(event.state) + ',' + QByteArray::number(event.sample) + "\r\n";
    }
    return WriteFileSafely(path, text, &message);
}

void CAnaFormChnGrpStaEvn::slot_btnSave()
{
    static QString lastFolder;
    const QString path = QFileDialog::getSaveFileName(this, tr("Event Status List"), lastFolder,
                                                      tr("csv ASCII Format File(*.csv)"));
    if (path.isEmpty())
        return;
    lastFolder = QFileInfo(path).absolutePath();
    QString message;
    if (!saveCsv(path, message))
        QMessageBox::warning(this, QString(), message);
}
