#include "cmtdchildcontainercfg.h"

#include "channeledit.h"

#include "cmtd99file.h"
#include "cmtdtext.h"
#include "textcodec.h"

#include <QComboBox>
#include <QCoreApplication>
#include <QEvent>
#include <QHeaderView>
#include <QLabel>
#include <QSignalBlocker>
#include <QStackedWidget>
#include <QTabBar>
#include <QTableWidget>
#include <QToolBar>
#include <QVBoxLayout>

namespace {

QTableWidget *makeTable(QWidget *parent)
{
    auto *table = new QTableWidget(parent);
    table->setEditTriggers(QAbstractItemView::DoubleClicked | QAbstractItemView::EditKeyPressed |
                           QAbstractItemView::AnyKeyPressed);
    table->setSelectionBehavior(QAbstractItemView::SelectRows);
    table->setAlternatingRowColors(true);
    table->verticalHeader()->setVisible(false);
    table->verticalHeader()->setDefaultSectionSize(table->fontMetrics().height() + 6);
    table->horizontalHeader()->setStretchLastSection(true);
    return table;
}

void setCell(QTableWidget *table, int row, int column, const QString &text, bool number = false)
{
    auto *item = new QTableWidgetItem(text);
    item->setFlags(item->flags() & ~Qt::ItemIsEditable);
    if (number)
        item->setTextAlignment(Qt::AlignRight | Qt::AlignVCenter);
    table->setItem(row, column, item);
}

// A cell the engineer may edit: double click, F2 or typing starts it.
void setEditableCell(QTableWidget *table, int row, int column, const QString &text)
{
    auto *item = new QTableWidgetItem(text);
    item->setFlags(item->flags() | Qt::ItemIsEditable);
    item->setToolTip(QCoreApplication::translate("CCmtdChildContainerCfg", "Double click or F2 to edit"));
    table->setItem(row, column, item);
}

QString numberText(float value)
{
    return QString::number(double(value), 'g', 7); // the digits a 32-bit float holds
}

void addMessages(const CCmtd99File &file, QTableWidget *table, const QString &source,
                 const LoadMessageList &messages)
{
    for (const LoadMessage &message : messages) {
        const int row = table->rowCount();
        table->insertRow(row);
        setCell(table, row, 0, source);
        setCell(table, row, 1, QString::number(message.line), true);
        setCell(table, row, 2, file.Text(message.text));
    }
}

} // namespace

CCmtdChildContainerCfg::CCmtdChildContainerCfg(CCmtdChildFrame *frame) : CCmtdChildContainer(frame)
{
    m_toolBar = new QToolBar(this);
    m_toolBar->setObjectName(QStringLiteral("CfgViewTabs"));
    m_toolBar->setMovable(false);
    m_toolBar->setIconSize(QSize(16, 16));
    m_tabs = new QTabBar(m_toolBar);
    m_tabs->setDrawBase(false);
    m_tabs->setExpanding(false);
    const char *icons[] = {":/images/ParamSetAC.png", ":/images/ParamSetSC.png", ":/images/ParamSetUnt.png",
                           ":/images/ParamSetInf.png"};
    for (const char *icon : icons)
        m_tabs->addTab(QIcon(QString::fromLatin1(icon)), QString());
    m_toolBar->addWidget(m_tabs);
    m_toolBar->addSeparator();
    m_codecLabel = new QLabel(m_toolBar);
    m_codecLabel->setContentsMargins(8, 0, 4, 0);
    m_toolBar->addWidget(m_codecLabel);
    m_codec = new QComboBox(m_toolBar);
    m_codec->setEditable(false);
    m_toolBar->addWidget(m_codec);
    connect(m_codec, &QComboBox::activated, this, [this](int index) {
        // The engineer knows better than the guess: the texts are read again at once.
        Q_EMIT codecChosen(m_codec->itemText(index).toLatin1());
    });
    addToolBar(Qt::TopToolBarArea, m_toolBar);

    // What the configuration says of the recording as a whole, above the tables.
    auto *page = new QWidget(this);
    auto *layout = new QVBoxLayout(page);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(0);
    m_summary = new QLabel(page);
    m_summary->setTextInteractionFlags(Qt::TextSelectableByMouse);
    m_summary->setContentsMargins(6, 4, 6, 4);
    m_summary->setWordWrap(true);
    layout->addWidget(m_summary);
    m_stack = new QStackedWidget(page);
    layout->addWidget(m_stack, 1);
    m_analog = makeTable(m_stack);
    m_status = makeTable(m_stack);
    m_devices = makeTable(m_stack);
    m_messages = makeTable(m_stack);
    for (QTableWidget *table : {m_analog, m_status, m_devices, m_messages})
        m_stack->addWidget(table);
    setCentralWidget(page);
    connect(m_tabs, &QTabBar::currentChanged, m_stack, &QStackedWidget::setCurrentIndex);
    // An edit goes to the frame, which takes it or refuses it with the reason.
    connect(m_analog, &QTableWidget::itemChanged, this, [this](QTableWidgetItem *item) {
        if (!m_filling && item->column() == kAnalogName)
            Q_EMIT channelFieldEdited(true, item->row(), ChannelField::Name, item->text());
        else if (!m_filling && item->column() == kAnalogClass)
            Q_EMIT channelFieldEdited(true, item->row(), ChannelField::Class, item->text());
        else if (!m_filling && item->column() == kAnalogRatedFreq)
            Q_EMIT channelFieldEdited(true, item->row(), ChannelField::RatedFreq, item->text());
    });
    connect(m_status, &QTableWidget::itemChanged, this, [this](QTableWidgetItem *item) {
        if (!m_filling && item->column() == kStatusName)
            Q_EMIT channelFieldEdited(false, item->row(), ChannelField::Name, item->text());
    });
    retranslate();
}

int CCmtdChildContainerCfg::pageCount() const
{
    return m_stack->count();
}

QTableWidget *CCmtdChildContainerCfg::table(int page) const
{
    return qobject_cast<QTableWidget *>(m_stack->widget(page));
}

void CCmtdChildContainerCfg::changeEvent(QEvent *event)
{
    if (event->type() == QEvent::LanguageChange) {
        retranslate();
        if (m_file)
            showRecording(*m_file);
    }
    CCmtdChildContainer::changeEvent(event);
}

void CCmtdChildContainerCfg::retranslate()
{
    m_tabs->setTabText(0, tr("Analog Channels"));
    m_tabs->setTabText(1, tr("Status Channels"));
    m_tabs->setTabText(2, tr("Primary Devices"));
    m_tabs->setTabText(3, tr("Inf File Content"));
    m_codecLabel->setText(tr("Text encoding:"));
    m_analog->setColumnCount(15);
    m_analog->setHorizontalHeaderLabels({tr("No."), tr("Name"), tr("Phase"), tr("Component"), tr("Unit"),
                                         tr("Multiplier a"), tr("Offset b"), tr("Skew (us)"), tr("Min"),
                                         tr("Max"), tr("Primary"), tr("Secondary"), tr("P/S"), tr("Class"),
                                         tr("Rated Freq. (Hz)")});
    m_status->setColumnCount(5);
    m_status->setHorizontalHeaderLabels(
        {tr("No."), tr("Name"), tr("Phase"), tr("Component"), tr("Normal State")});
    m_devices->setColumnCount(6);
    m_devices->setHorizontalHeaderLabels(
        {tr("Kind"), tr("Device No."), tr("Name"), tr("Data"), tr("Analog Channels"), tr("Status Channels")});
    m_messages->setColumnCount(3);
    m_messages->setHorizontalHeaderLabels({tr("File"), tr("Line"), tr("Message")});
}

void CCmtdChildContainerCfg::showRecording(const CCmtd99File &file)
{
    const QSignalBlocker analogQuiet(m_analog);
    const QSignalBlocker statusQuiet(m_status);
    m_filling = true;
    fillRecording(file);
    m_filling = false;
}

void CCmtdChildContainerCfg::fillRecording(const CCmtd99File &file)
{
    m_file = &file;
    m_codec->blockSignals(true);
    m_codec->clear();
    QList<QByteArray> codecs = OfferedTextCodecs();
    if (!codecs.contains(file.codecName))
        codecs.prepend(file.codecName);
    for (const QByteArray &codec : codecs)
        m_codec->addItem(QString::fromLatin1(codec));
    m_codec->setCurrentText(QString::fromLatin1(file.codecName));
    m_codec->blockSignals(false);
    m_analog->setRowCount(static_cast<int>(file.analogChannels.size()));
    int row = 0;
    for (const auto &c : file.analogChannels) {
        setCell(m_analog, row, 0, QString::number(c->index), true);
        setEditableCell(m_analog, row, kAnalogName, ChannelFieldText(file, true, row, ChannelField::Name));
        setCell(m_analog, row, 2, file.Text(c->ph));
        setCell(m_analog, row, 3, file.Text(c->ccbm));
        setCell(m_analog, row, 4, file.Text(c->uu));
        setCell(m_analog, row, 5, numberText(c->a), true);
        setCell(m_analog, row, 6, numberText(c->b), true);
        setCell(m_analog, row, 7, numberText(c->skew), true);
        setCell(m_analog, row, 8, numberText(c->min), true);
        setCell(m_analog, row, 9, numberText(c->max), true);
        setCell(m_analog, row, 10, numberText(c->primary), true);
        setCell(m_analog, row, 11, numberText(c->secondary), true);
        setCell(m_analog, row, 12, QString(QLatin1Char(c->ps)));
        setEditableCell(m_analog, row, kAnalogClass, ChannelFieldText(file, true, row, ChannelField::Class));
        setEditableCell(m_analog, row, kAnalogRatedFreq,
                        ChannelFieldText(file, true, row, ChannelField::RatedFreq));
        ++row;
    }
    m_status->setRowCount(static_cast<int>(file.statusChannels.size()));
    row = 0;
    for (const auto &c : file.statusChannels) {
        setCell(m_status, row, 0, QString::number(c->index), true);
        setEditableCell(m_status, row, kStatusName, ChannelFieldText(file, false, row, ChannelField::Name));
        setCell(m_status, row, 2, file.Text(c->ph));
        setCell(m_status, row, 3, file.Text(c->ccbm));
        setCell(m_status, row, 4, c->normalState ? tr("Normal-ON") : tr("Normal-OFF"));
        ++row;
    }
    const CmtdFileDescription &d = file.fileDesc;
    auto stamp = [](const RecordTime &t) {
        return QString::asprintf("%04d-%02d-%02d %02d:%02d:%02d.%06d", t.year, t.month, t.day, t.hour,
                                 t.minute, t.second, t.microsecond);
    };
    QString summary = tr("Station: %1   Device: %2   Revision: %3   Line frequency: %4 Hz   Data: %5, time "
                         "multiplier %6")
                          .arg(file.Text(d.stationName), file.Text(d.recDevId), file.Text(d.revYear))
                          .arg(double(d.lineFreq))
                          .arg(file.Text(d.fileType))
                          .arg(double(d.timeMult));
    summary += QLatin1Char('\n') + tr("Start: %1   Trigger: %2   Samples: %3 of %4")
                                       .arg(stamp(d.startTime), stamp(d.triggerTime))
                                       .arg(file.loadedPoints)
                                       .arg(file.pointCount);
    if (d.is2013()) {
        summary +=
            QLatin1Char('\n') + tr("Time code: %1   Local code: %2   Time quality: %3   Leap second: %4")
                                    .arg(file.Text(d.timeCode), file.Text(d.localCode),
                                         file.Text(d.timeQuality), file.Text(d.leapSecond));
    }
    m_summary->setText(summary);
    showDevices(file);
    m_messages->setRowCount(0);
    addMessages(file, m_messages, QStringLiteral(".cfg"), file.cfgMessages);
    addMessages(file, m_messages, QStringLiteral(".inf"), file.infMessages);
    addMessages(file, m_messages, QStringLiteral(".ext"), file.extMessages);
    addMessages(file, m_messages, QStringLiteral(".dat"), file.datMessages);
    for (QTableWidget *table : {m_analog, m_status, m_devices, m_messages})
        table->resizeColumnsToContents();
}

namespace {

// The plant data an engineer checks first, per kind.
QString unitData(const CmtdInfTrwk_Unit &unit)
{
    switch (unit.kind) {
    case CmtdInfTrwk_Unit::KindLine: {
        const auto &line = static_cast<const CmtdInfTrwk_UnitLine &>(unit);
        return QCoreApplication::translate("CCmtdChildContainerCfg",
                                           "%1 km, Z1 = %2 + j%3 Ω/km, Z0 = %4 + j%5 Ω/km")
            .arg(double(line.length))
            .arg(double(line.r1))
            .arg(double(line.x1))
            .arg(double(line.r0))
            .arg(double(line.x0));
    }
    case CmtdInfTrwk_Unit::KindTransformer: {
        const auto &t = static_cast<const CmtdInfTrwk_UnitTrm &>(unit);
        return QCoreApplication::translate("CCmtdChildContainerCfg",
                                           "%1 MVA, %2 windings, %3 kV %4 / %5 kV %6")
            .arg(double(t.capacity))
            .arg(t.windingNum)
            .arg(double(t.sideH.ratedKv))
            .arg(QString::fromLatin1(t.sideH.windingText))
            .arg(double(t.sideL.ratedKv))
            .arg(QString::fromLatin1(t.sideL.windingText));
    }
    case CmtdInfTrwk_Unit::KindPower: {
        const auto &g = static_cast<const CmtdInfTrwk_UnitPwr &>(unit);
        return QCoreApplication::translate("CCmtdChildContainerCfg", "%1 MVA, %2 Hz, %3 kV")
            .arg(double(g.capacity))
            .arg(double(g.freq))
            .arg(double(g.v1));
    }
    default:
        return QString();
    }
}

} // namespace

void CCmtdChildContainerCfg::showDevices(const CCmtd99File &file)
{
    static const char *const kKinds[] = {"",
                                         QT_TR_NOOP("Line"),
                                         QT_TR_NOOP("Transformer"),
                                         QT_TR_NOOP("Generator"),
                                         QT_TR_NOOP("Exciter"),
                                         QT_TR_NOOP("Channel Group")};
    m_devices->setRowCount(0);
    auto add = [&](const CmtdInfTrwk_Unit &unit) {
        QStringList analog, status;
        for (const auto &map : file.analogMaps) {
            if (unit.UsesAnalogChannel(uint16_t(map->Index())))
                analog << QString::number(map->Index());
        }
        for (const auto &map : file.statusMaps) {
            if (unit.UsesStatusChannel(uint16_t(map->Index())))
                status << QString::number(map->Index());
        }
        const int row = m_devices->rowCount();
        m_devices->insertRow(row);
        const QString cells[] = {tr(kKinds[qBound(0, int(unit.kind), 5)]),
                                 unit.devId > 0 ? QString::number(unit.devId) : QString(),
                                 file.Text(unit.name),
                                 unitData(unit),
                                 analog.join(QStringLiteral(", ")),
                                 status.join(QStringLiteral(", "))};
        for (int c = 0; c < 6; ++c)
            m_devices->setItem(row, c, new QTableWidgetItem(cells[c]));
    };
    for (const auto &unit : file.lineUnits)
        add(*unit);
    for (const auto &unit : file.transformerUnits)
        add(*unit);
    for (const auto &unit : file.powerUnits)
        add(*unit);
    for (const auto &unit : file.exciterUnits)
        add(*unit);
    for (const auto &unit : file.groupUnits)
        add(*unit);
}
