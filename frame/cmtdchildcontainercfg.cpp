#include "cmtdchildcontainercfg.h"

#include "channeledit.h"

#include "chnvocabulary.h"
#include "choicedelegate.h"
#include "cmtd99file.h"
#include "cmtdtext.h"
#include "textcodec.h"
#include "unitedit.h"

#include <QComboBox>
#include <QCoreApplication>
#include <QEvent>
#include <QHeaderView>
#include <QLabel>
#include <QMenu>
#include <QSignalBlocker>
#include <QStackedWidget>
#include <QTabBar>
#include <QTableWidget>
#include <QToolBar>
#include <QToolButton>
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
    m_devices->setEditTriggers(QAbstractItemView::NoEditTriggers);
    m_messages = makeTable(m_stack);
    m_stack->addWidget(m_analog);
    m_stack->addWidget(m_status);
    m_stack->addWidget(makeDevicesPage(m_stack));
    m_stack->addWidget(m_messages);
    setCentralWidget(page);
    connect(m_tabs, &QTabBar::currentChanged, m_stack, &QStackedWidget::setCurrentIndex);
    // An edit goes to the frame, which takes it or refuses it with the reason.
    connect(m_analog, &QTableWidget::itemChanged, this,
            [this](QTableWidgetItem *item) { reportEdit(true, item); });
    connect(m_status, &QTableWidget::itemChanged, this,
            [this](QTableWidgetItem *item) { reportEdit(false, item); });
    installChoiceEditors();
    retranslate();
}

namespace {

// Columns of the analog table, and the field of each editable one.
enum AnalogColumn
{
    AnalogNo,
    AnalogName,
    AnalogPhase,
    AnalogComponent,
    AnalogUnit,
    AnalogA,
    AnalogB,
    AnalogSkew,
    AnalogMin,
    AnalogMax,
    AnalogPrimary,
    AnalogSecondary,
    AnalogPS,
    AnalogClass,
    AnalogRatedFreq,
    AnalogColumns
};

enum StatusColumn
{
    StatusNo,
    StatusName,
    StatusPhase,
    StatusComponent,
    StatusNormal,
    StatusKindColumn,
    StatusClassColumn,
    StatusColumns
};

std::vector<ChoiceDelegate::Choice> phaseChoices()
{
    return {{QString(), QString()},
            {QStringLiteral("A"), QString()},
            {QStringLiteral("B"), QString()},
            {QStringLiteral("C"), QString()},
            {QStringLiteral("N"), QString()},
            {QStringLiteral("L"), QString()},
            {QStringLiteral("S0"), QString()},
            {QStringLiteral("S1"), QString()},
            {QStringLiteral("S2"), QString()}};
}

} // namespace

bool CCmtdChildContainerCfg::analogColumnField(int column, ChannelField *field)
{
    static const std::pair<int, ChannelField> kEditable[] = {{AnalogName, ChannelField::Name},
                                                             {AnalogPhase, ChannelField::Phase},
                                                             {AnalogComponent, ChannelField::Component},
                                                             {AnalogUnit, ChannelField::Unit},
                                                             {AnalogPrimary, ChannelField::Primary},
                                                             {AnalogSecondary, ChannelField::Secondary},
                                                             {AnalogPS, ChannelField::PS},
                                                             {AnalogClass, ChannelField::Class},
                                                             {AnalogRatedFreq, ChannelField::RatedFreq}};
    for (const auto &[c, f] : kEditable) {
        if (c == column) {
            *field = f;
            return true;
        }
    }
    return false;
}

bool CCmtdChildContainerCfg::statusColumnField(int column, ChannelField *field)
{
    static const std::pair<int, ChannelField> kEditable[] = {
        {StatusName, ChannelField::Name},           {StatusPhase, ChannelField::Phase},
        {StatusComponent, ChannelField::Component}, {StatusNormal, ChannelField::NormalState},
        {StatusKindColumn, ChannelField::Kind},     {StatusClassColumn, ChannelField::StatusClass}};
    for (const auto &[c, f] : kEditable) {
        if (c == column) {
            *field = f;
            return true;
        }
    }
    return false;
}

void CCmtdChildContainerCfg::reportEdit(bool analog, QTableWidgetItem *item)
{
    ChannelField field;
    if (m_filling ||
        !(analog ? analogColumnField(item->column(), &field) : statusColumnField(item->column(), &field)))
        return;
    // A picked code comes as user data, typed text as the cell's text.
    const QVariant picked = item->data(Qt::UserRole);
    Q_EMIT channelFieldEdited(analog, item->row(), field,
                              picked.isValid() ? picked.toString() : item->text());
}

// Fields with a fixed vocabulary are picked from a list, so that only valid codes reach the
// recording.
void CCmtdChildContainerCfg::installChoiceEditors()
{
    std::vector<ChoiceDelegate::Choice> classes, kinds, statusClasses;
    for (int c = 0; c < 12; ++c)
        classes.emplace_back(QString::fromLatin1(ClassCode(c)),
                             QCoreApplication::translate("ChnClass", ClassText(c)));
    for (int k = 0; k < kStatusKindCount; ++k)
        kinds.emplace_back(QString::fromLatin1(StatusKindCode(k)),
                           QCoreApplication::translate("StatusKind", StatusKindText(k)));
    for (int k = 0; k < kStatusClassCount; ++k)
        statusClasses.emplace_back(QString::fromLatin1(StatusClassCode(k)),
                                   QCoreApplication::translate("StatusClass", StatusClassText(k)));
    m_analog->setItemDelegateForColumn(AnalogPhase, new ChoiceDelegate(phaseChoices(), this));
    m_analog->setItemDelegateForColumn(AnalogClass, new ChoiceDelegate(classes, this));
    m_analog->setItemDelegateForColumn(AnalogPS,
                                       new ChoiceDelegate({{QStringLiteral("P"), tr("primary values")},
                                                           {QStringLiteral("S"), tr("secondary values")}},
                                                          this));
    m_status->setItemDelegateForColumn(StatusPhase, new ChoiceDelegate(phaseChoices(), this));
    m_status->setItemDelegateForColumn(
        StatusNormal,
        new ChoiceDelegate({{QStringLiteral("0"), tr("Normal-OFF")}, {QStringLiteral("1"), tr("Normal-ON")}},
                           this));
    m_status->setItemDelegateForColumn(StatusKindColumn, new ChoiceDelegate(kinds, this));
    m_status->setItemDelegateForColumn(StatusClassColumn, new ChoiceDelegate(statusClasses, this));
}

int CCmtdChildContainerCfg::pageCount() const
{
    return m_stack->count();
}

QTableWidget *CCmtdChildContainerCfg::table(int page) const
{
    QTableWidget *const tables[] = {m_analog, m_status, m_devices, m_messages};
    return page >= 0 && page < 4 ? tables[page] : nullptr;
}

QWidget *CCmtdChildContainerCfg::makeDevicesPage(QWidget *parent)
{
    auto *page = new QWidget(parent);
    auto *layout = new QVBoxLayout(page);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(0);
    auto *bar = new QToolBar(page);
    bar->setObjectName(QStringLiteral("DeviceActions"));
    bar->setToolButtonStyle(Qt::ToolButtonTextOnly);
    auto *add = new QMenu(bar);
    static const char *const kAdd[] = {QT_TR_NOOP("Line..."), QT_TR_NOOP("Transformer..."),
                                       QT_TR_NOOP("Generator..."), QT_TR_NOOP("Exciter..."),
                                       QT_TR_NOOP("Channel Group...")};
    for (int kind = 1; kind <= 5; ++kind)
        add->addAction(tr(kAdd[kind - 1]), this, [this, kind] { Q_EMIT unitAddRequested(kind); });
    QAction *addAction = bar->addAction(tr("Add"));
    addAction->setMenu(add);
    if (auto *button = qobject_cast<QToolButton *>(bar->widgetForAction(addAction)))
        button->setPopupMode(QToolButton::InstantPopup);
    bar->addAction(tr("Edit..."), this, [this] {
        if (const CmtdInfTrwk_Unit *unit = currentUnit())
            Q_EMIT unitEditRequested(unit);
    });
    bar->addAction(tr("Copy..."), this, [this] {
        if (const CmtdInfTrwk_Unit *unit = currentUnit())
            Q_EMIT unitCopyRequested(unit);
    });
    bar->addAction(tr("Delete"), this, [this] {
        if (const CmtdInfTrwk_Unit *unit = currentUnit())
            Q_EMIT unitDeleteRequested(unit);
    });
    bar->addSeparator();
    bar->addAction(tr("Suggest Units..."), this, [this] { Q_EMIT suggestUnitsRequested(); });
    layout->addWidget(bar);
    layout->addWidget(m_devices, 1);
    connect(m_devices, &QTableWidget::cellDoubleClicked, this, [this](int, int) {
        if (const CmtdInfTrwk_Unit *unit = currentUnit())
            Q_EMIT unitEditRequested(unit);
    });
    return page;
}

const CmtdInfTrwk_Unit *CCmtdChildContainerCfg::currentUnit() const
{
    const QTableWidgetItem *item = m_devices->item(m_devices->currentRow(), 0);
    return item ? reinterpret_cast<const CmtdInfTrwk_Unit *>(item->data(Qt::UserRole).value<quintptr>())
                : nullptr;
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
    m_analog->setColumnCount(AnalogColumns);
    m_analog->setHorizontalHeaderLabels({tr("No."), tr("Name"), tr("Phase"), tr("Component"), tr("Unit"),
                                         tr("Multiplier a"), tr("Offset b"), tr("Skew (us)"), tr("Min"),
                                         tr("Max"), tr("Primary"), tr("Secondary"), tr("P/S"), tr("Class"),
                                         tr("Rated Freq. (Hz)")});
    m_status->setColumnCount(StatusColumns);
    m_status->setHorizontalHeaderLabels(
        {tr("No."), tr("Name"), tr("Phase"), tr("Component"), tr("Normal State"), tr("Kind"), tr("Class")});
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
    // The file's own channels: derived ones live only in the program.
    const int analogs = file.FileAnalogCount();
    m_analog->setRowCount(analogs);
    for (int row = 0; row < analogs; ++row) {
        const CmtdChn_Analog *c = file.analogChannels[size_t(row)].get();
        for (int column = 0; column < AnalogColumns; ++column) {
            ChannelField field;
            if (analogColumnField(column, &field))
                setEditableCell(m_analog, row, column, ChannelFieldText(file, true, row, field));
        }
        setCell(m_analog, row, AnalogNo, QString::number(c->index), true);
        setCell(m_analog, row, AnalogA, numberText(c->a), true);
        setCell(m_analog, row, AnalogB, numberText(c->b), true);
        setCell(m_analog, row, AnalogSkew, numberText(c->skew), true);
        setCell(m_analog, row, AnalogMin, numberText(c->min), true);
        setCell(m_analog, row, AnalogMax, numberText(c->max), true);
    }
    m_status->setRowCount(static_cast<int>(file.statusChannels.size()));
    int row = 0;
    for (const auto &c : file.statusChannels) {
        for (int column = 0; column < StatusColumns; ++column) {
            ChannelField field;
            if (statusColumnField(column, &field))
                setEditableCell(m_status, row, column, ChannelFieldText(file, false, row, field));
        }
        setCell(m_status, row, StatusNo, QString::number(c->index), true);
        m_status->item(row, StatusNormal)->setText(c->normalState ? tr("Normal-ON") : tr("Normal-OFF"));
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
        const QString cells[] = {QCoreApplication::translate("UnitKind", UnitKindText(unit.kind)),
                                 unit.devId > 0 ? QString::number(unit.devId) : QString(),
                                 file.Text(unit.name),
                                 unitData(unit),
                                 analog.join(QStringLiteral(", ")),
                                 status.join(QStringLiteral(", "))};
        for (int c = 0; c < 6; ++c)
            m_devices->setItem(row, c, new QTableWidgetItem(cells[c]));
        m_devices->item(row, 0)->setData(Qt::UserRole,
                                         QVariant::fromValue(reinterpret_cast<quintptr>(&unit)));
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
