#include "cmtdchildframe.h"

#include "exactcopy.h"
#include "notices.h"
#include "pathmap.h"
#include "safewrite.h"

#include "cmtdchildcontainer.h"
#include "cmtdchildcontainercfg.h"
#include "cmtdtext.h"
#include "cmtdviewananame.h"
#include "cmtdviewanawave.h"
#include "globaloptions.h"
#include "menutext.h"
#include "reportwarning.h"
#include "timetext.h"

#include <QAction>
#include <QCloseEvent>
#include <QComboBox>
#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QFileDialog>
#include <QFileInfo>
#include <QLabel>
#include <QMessageBox>
#include <QProgressBar>
#include <QPushButton>
#include <QScrollBar>
#include <QSplitter>
#include <QStackedWidget>
#include <QStatusBar>
#include <QTabBar>
#include <QToolBar>
#include <QUndoStack>
#include <QVBoxLayout>

#include <ctime>

CCmtdChildFrame::CCmtdChildFrame(QWidget *parent) : CMdiChildFrame(parent), m_thread(this)
{
    setWindowIcon(QIcon(QStringLiteral(":/images/DocComtrade.png")));
    createActions();
    createToolBar();

    auto *pages = new QStackedWidget(this);
    m_anaContainer = new CCmtdChildContainerAna(this);
    // The name column and the waves side by side, at one vertical position.
    auto *splitter = new QSplitter(Qt::Horizontal, m_anaContainer);
    auto *nameArea = new CScrollAreaEx(splitter);
    auto *waveArea = new CScrollAreaEx(splitter);
    m_waveView = new CCmtdViewAnaWave(&m_document);
    waveArea->setView(m_waveView);
    m_waveView->setEnvelopeMode(m_actions[ActEnvelope]->isChecked());
    m_nameView = new CCmtdViewAnaName(&m_document, m_waveView);
    nameArea->setView(m_nameView);
    nameArea->setVerticalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    nameArea->setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    connect(waveArea->verticalScrollBar(), &QScrollBar::valueChanged, nameArea->verticalScrollBar(),
            &QScrollBar::setValue);
    connect(nameArea->verticalScrollBar(), &QScrollBar::valueChanged, waveArea->verticalScrollBar(),
            &QScrollBar::setValue);
    splitter->addWidget(nameArea);
    splitter->addWidget(waveArea);
    splitter->setStretchFactor(0, 0);
    splitter->setStretchFactor(1, 1);
    splitter->setSizes({fontMetrics().horizontalAdvance(QLatin1Char('x')) * 46, 1000});
    // Notices about the recording (a line frequency the phasor windows do not follow, stamps
    // that run backwards) stand above the waves, where they are read before the numbers.
    auto *wavePage = new QWidget(m_anaContainer);
    auto *waveLayout = new QVBoxLayout(wavePage);
    waveLayout->setContentsMargins(0, 0, 0, 0);
    waveLayout->setSpacing(0);
    m_noticeLabel = new QLabel(wavePage);
    m_noticeLabel->setObjectName(QStringLiteral("noticeLabel"));
    m_noticeLabel->setWordWrap(true);
    m_noticeLabel->setMargin(4);
    m_noticeLabel->setStyleSheet(QStringLiteral("background: #fff4c2; color: #3a3000;"));
    m_noticeLabel->hide();
    waveLayout->addWidget(m_noticeLabel);
    waveLayout->addWidget(splitter, 1);
    m_anaContainer->setWaveWidget(wavePage);
    connect(&m_document, &CCmtdDocument::cursorsChanged, this, &CCmtdChildFrame::updateCursorTexts);
    connect(&m_document, &CCmtdDocument::actionStatesChanged, this, &CCmtdChildFrame::updateActions);
    connect(&m_document, &CCmtdDocument::zoomModeRequested, this, &CCmtdChildFrame::setZoomMode);
    // The name column grows with the load, row by row, like the waves.
    connect(&m_document, &CCmtdDocument::extentChanged, m_nameView, [this] { m_nameView->update(); });
    connect(&m_document, &CCmtdDocument::displayChanged, m_waveView, [this] {
        m_waveView->layoutRows(true);
        m_nameView->update();
        m_anaContainer->refreshCurrentForm();
    });
    connect(m_nameView, &CCmtdViewAnaName::virtualChannelRequested, this,
            &CCmtdChildFrame::deriveVirtualChannel);
    connect(m_nameView, &CCmtdViewAnaName::virtualChannelDeleteRequested, this,
            &CCmtdChildFrame::deleteVirtualChannel);
    connect(m_nameView, &CCmtdViewAnaName::formRequested, this, [this](int number, CChnMapBase *channel) {
        slot_PaneTabViewSwitch(0);
        m_anaContainer->showFormFor(number, channel);
    });
    // The form on show follows T1, after the name column has taken the values at the cursors.
    connect(m_waveView, &CCmtdViewAnaWave::cursorsChanged, m_anaContainer,
            &CCmtdChildContainerAna::refreshCurrentForm);
    m_cfgContainer = new CCmtdChildContainerCfg(this);
    connect(m_cfgContainer, &CCmtdChildContainerCfg::codecChosen, this, [this](const QByteArray &codec) {
        m_file.SetCodecOverride(codec);
        m_cfgContainer->showRecording(m_file);
        setWindowTitle(titleText());
        m_nameView->update();
    });
    connectUnitRequests();
    connect(m_cfgContainer, &CCmtdChildContainerCfg::channelFieldEdited, this,
            &CCmtdChildFrame::editChannelField);
    // Edits are undone with Ctrl+Z until the recording is saved.
    QAction *undo = m_undo.createUndoAction(this, tr("Undo"));
    undo->setShortcut(QKeySequence::Undo);
    undo->setShortcutContext(Qt::WidgetWithChildrenShortcut);
    addAction(undo);
    pages->addWidget(m_anaContainer);
    pages->addWidget(m_cfgContainer);
    setCentralWidget(pages);
    retranslate();
    slot_PaneTabViewSwitch(0);
    m_thread.start();
}

CCmtdChildFrame::~CCmtdChildFrame()
{
    // The recording must outlive any job still running on it: stop and wait first.
    m_document.setBackgroundBit(StateCancel, true);
    if (m_thread.isRunning()) {
        m_thread.requestQuit();
        m_thread.wait();
    }
}

bool CCmtdChildFrame::submitJob(int kind, void *argument)
{
    return m_thread.submit(kind, argument);
}

void CCmtdChildFrame::createToolBar()
{
    m_toolBar = new QToolBar(this);
    m_toolBar->setAllowedAreas(Qt::TopToolBarArea);
    m_toolBar->setMovable(false);
    m_toolBar->setIconSize(QSize(16, 16));
    addToolBar(Qt::TopToolBarArea, m_toolBar);

    paneTabs = new QTabBar(m_toolBar);
    paneTabs->addTab(QIcon(QStringLiteral(":/images/TabViewWaveAna.png")), QString());
    paneTabs->addTab(QIcon(QStringLiteral(":/images/TabViewCmtdCfg.png")), QString());
    paneTabs->setDrawBase(false);
    paneTabs->setExpanding(false);
    connect(paneTabs, &QTabBar::currentChanged, this, &CCmtdChildFrame::slot_PaneTabViewSwitch);
    m_toolBar->addWidget(paneTabs);
    m_toolBar->addSeparator();

    unitSelector = new QComboBox(m_toolBar);
    unitSelector->setMinimumWidth(158);
    connect(unitSelector, &QComboBox::currentIndexChanged, this, &CCmtdChildFrame::slot_CmbWaveUntSelChanged);
    m_toolBar->addWidget(unitSelector);
    m_toolBar->addSeparator();

    labelT1 = new QLabel(m_toolBar);
    labelT2 = new QLabel(m_toolBar);
    labelTd = new QLabel(m_toolBar);
    for (QLabel *label : {labelT1, labelT2, labelTd}) {
        label->setTextInteractionFlags(Qt::TextSelectableByMouse);
        label->setContentsMargins(4, 0, 4, 0);
        m_toolBar->addWidget(label);
        m_toolBar->addSeparator();
    }
    m_progressBar = new QProgressBar(m_toolBar);
    m_progressBar->setAlignment(Qt::AlignCenter);
    m_progressBar->setMaximumWidth(220);
    m_progressBar->setRange(0, 100);
    m_progressBar->setValue(0);
    m_progressAction = m_toolBar->addWidget(m_progressBar);
    // The span of the recording stays in view for as long as it is open; passing messages of
    // the status bar do not cover it.
    m_spanLabel = new QLabel(this);
    m_spanLabel->setObjectName(QStringLiteral("spanLabel"));
    statusBar()->addPermanentWidget(m_spanLabel);
    m_toolBar->addAction(m_actions[ActServerStop]);
}

bool CCmtdChildFrame::openFile(const QString &path)
{
    const QFileInfo info(path);
    const QByteArray local = info.absoluteFilePath().toLocal8Bit();
    if (!m_file.LoadFile(local.constData())) {
        // The readers' messages are all that explain a refusal; show the engineer the first few.
        QByteArray reasons;
        int shown = 0;
        for (const LoadMessageList *list : {&m_file.cfgMessages, &m_file.datMessages}) {
            for (const LoadMessage &message : *list) {
                if (shown++ < 8)
                    reasons += message.text + '\n';
            }
        }
        reportWarning("%s\n\n%s", info.fileName().toLocal8Bit().constData(), reasons.constData());
        return false;
    }
    m_fileName = info.canonicalFilePath();
    m_modified = false;
    setWindowTitle(titleText());
    // A recording under a folder of the site map takes that site's settings and channel groups.
    if (const PathMapEntry *entry = findPathMapEntry(local.constData())) {
        ApplyPathMapEntry(m_file, *entry);
        statusBar()->showMessage(
            tr("Settings of %1 applied").arg(QString::fromLocal8Bit(entry->settingsFile)), 10000);
    }
    m_cfgContainer->showRecording(m_file);
    m_document.setBackgroundBit(StateLoading, true);
    submitJob(CCmtdThread::KindLoad);

    refillUnitSelector();
    updateActions();
    return true;
}

void CCmtdChildFrame::refillUnitSelector()
{
    const quintptr current = unitSelector->currentData().value<quintptr>();
    unitSelector->blockSignals(true);
    unitSelector->clear();
    unitSelector->addItem(tr("[All Device]"), QVariant::fromValue<quintptr>(0));
    auto add = [this](const auto &units) {
        for (const auto &unit : units)
            unitSelector->addItem(m_file.Text(unit->name),
                                  QVariant::fromValue(reinterpret_cast<quintptr>(unit.get())));
    };
    add(m_file.lineUnits);
    add(m_file.transformerUnits);
    add(m_file.powerUnits);
    add(m_file.exciterUnits);
    add(m_file.groupUnits);
    const int again = unitSelector->findData(QVariant::fromValue(current));
    unitSelector->setCurrentIndex(again >= 0 ? again : 0);
    if (again < 0)
        m_currentUnit = nullptr;
    unitSelector->blockSignals(false);
}

QString CCmtdChildFrame::currentFileName() const
{
    return QFileInfo(m_fileName).fileName();
}

QString CCmtdChildFrame::titleText() const
{
    const CmtdFileDescription &d = m_file.fileDesc;
    return m_file.Text(d.stationName) + QLatin1Char(' ') + m_file.Text(d.recDevId) + QStringLiteral(" - ") +
           currentFileName();
}

void CCmtdChildFrame::customEvent(QEvent *event)
{
    if (event->type() == CCmtdEventProgress::kType)
        progressEvent(*static_cast<CCmtdEventProgress *>(event));
}

void CCmtdChildFrame::progressEvent(const CCmtdEventProgress &event)
{
    const bool loading = backgroundState() & StateLoading;
    switch (event.code) {
    case 1:
        m_document.setBackgroundBit(StateBusy, true);
        m_progressAction->setVisible(true);
        updateActions();
        break;
    case 2:
        finishJob(event.a);
        break;
    case 3:
        Q_EMIT m_document.displayChanged();
        break;
    case 9:
        m_progressBar->setRange(0, event.a);
        m_progressBar->setValue(event.b);
        // The stores exist from the first report on: lay the rows out before samples arrive.
        if (loading) {
            m_waveView->buildRows(false);
            m_waveView->setDrawnExtent(0, true);
            Q_EMIT m_document.extentChanged(0);
        }
        break;
    case 10:
        m_progressBar->setValue(event.b);
        // A virtual channel fills under its source while the job runs.
        if (!loading)
            m_waveView->update();
        // The report comes before sample b is read: the samples before it are in the stores,
        // and the waves may show them.
        if (loading) {
            m_waveView->setDrawnExtent(event.b, true);
            Q_EMIT m_document.extentChanged(event.b);
        }
        break;
    case 11:
        m_progressBar->setValue(m_progressBar->value() + event.b);
        break;
    default:
        break;
    }
}

void CCmtdChildFrame::finishJob(int kind)
{
    if (backgroundState() & StateLoading) {
        const int points = m_file.loadedPoints;
        m_document.extendEnvelopes(points);
        if (m_waveView->rows.empty())
            m_waveView->buildRows(false);
        m_waveView->setDrawnExtent(points, false);
        m_waveView->cursorT1 = m_file.triggerIndex >= 0 ? m_file.triggerIndex : 0;
        m_waveView->cursorT2 = m_waveView->cursorT1;
        m_waveView->update();
        m_nameView->rebuildValues();
        m_nameView->update();
        Q_EMIT m_document.extentChanged(points);
        showSpan();
        showNotices();
        refillUnitSelector();
        m_cfgContainer->showRecording(m_file);
        m_document.setBackgroundBit(StateLoading, false);
        if (points < 5) {
            // A configuration without samples is looked at on its configuration page.
            m_toolBar->hide();
            slot_PaneTabViewSwitch(1);
        } else {
            if (globalOptions.stateMask & CGlobalOptions::AutoHideStatus0)
                slot_WaveShowChnHideS0();
            if (globalOptions.stateMask & CGlobalOptions::ChnNameAhead)
                m_document.displayFlags.setFlag(CCmtdDocument::NameAhead);
            // T0' kept in the extension file comes back with its mark.
            if (m_file.customT0 >= 0 && m_file.customT0 < points)
                m_document.displayFlags.setFlag(CCmtdDocument::ShowT0cCursor);
            if (globalOptions.stateMask & CGlobalOptions::AutoSaveWaveViewStatus)
                m_waveView->loadStatus(lastStatusPath().constData());
            // The sequence of events is what many engineers read first.
            if ((globalOptions.stateMask & CGlobalOptions::AutoStatusEvent) && !m_file.statusMaps.empty())
                QMetaObject::invokeMethod(
                    this, [this] { showAnaForm(12); }, Qt::QueuedConnection);
        }
    } else if (kind == CCmtdThread::KindRxTrace) {
        m_anaContainer->refreshCurrentForm();
    } else {
        // A derived channel has its extent; the recording takes its channel ordering (scale
        // groups) and the views their summaries anew, here where the views read them.
        m_file.BuildScaleGroups();
        m_document.rebuildEnvelopes();
        m_nameView->rebuildValues();
        Q_EMIT m_document.displayChanged();
    }
    m_document.setBackgroundBit(StateBusy, false);
    m_progressBar->reset();
    m_progressBar->setRange(0, 100);
    m_progressAction->setVisible(false); // shown only while a job runs
    // The menus follow the recording: with samples come the view and analysis menus.
    Q_EMIT menusChanged(this);
    updateActions();
    updateCursorTexts();
    Q_EMIT jobEnded(kind);
}

void CCmtdChildFrame::showNotices()
{
    const QStringList notices = RecordingNotices(m_file);
    m_noticeLabel->setText(notices.join(QLatin1Char('\n')));
    m_noticeLabel->setVisible(!notices.isEmpty());
}

void CCmtdChildFrame::showSpan()
{
    const int points = m_file.loadedPoints;
    if (points < 1 || !m_file.sampleTimes) {
        m_spanText.clear();
        m_spanLabel->clear();
        statusBar()->showMessage(tr("No samples were loaded"));
        return;
    }
    const int64_t span = m_file.sampleTimes[points - 1] - m_file.sampleTimes[0];
    m_spanText = QStringLiteral("TT[%1](%2Points)").arg(QString::fromLatin1(TimeText(span))).arg(points);
    m_spanLabel->setText(m_spanText);
    QString text;
    for (const SampleSegment &segment : m_file.segments)
        text += (text.isEmpty() ? QString() : QStringLiteral(" | ")) +
                tr("%1 Hz to sample %2").arg(double(segment.rate), 0, 'g', 9).arg(segment.end);
    if (isCancelled())
        text += QLatin1String(" | ") + tr("Cancel this processing by user!");
    statusBar()->showMessage(text);
}

QString CCmtdChildFrame::absoluteTimeText(const char *label, int sample) const
{
    const int points = m_file.loadedPoints;
    if (points < 1 || !m_file.sampleTimes)
        return QString();
    sample = qBound(0, sample, points - 1);
    const RecordTime &start = m_file.fileDesc.startTime;
    const int64_t offset = m_file.sampleTimes[sample] - m_file.sampleTimes[0];
    // The start stamp plus the sample's offset, carried through the calendar.
    std::tm fields{};
    fields.tm_year = start.year - 1900;
    fields.tm_mon = start.month - 1;
    fields.tm_mday = start.day;
    fields.tm_hour = start.hour;
    fields.tm_min = start.minute;
    fields.tm_isdst = 0;
    int64_t micro = int64_t(start.second) * 1000000 + start.microsecond + offset;
    int64_t seconds = micro / 1000000;
    micro %= 1000000;
    if (micro < 0) {
        micro += 1000000;
        seconds -= 1;
    }
    fields.tm_sec = static_cast<int>(seconds);
    NormalizeClockFields(fields);
    char text[96];
    std::snprintf(text, sizeof text, "%s[%04d-%02d-%02d %02d:%02d:%02d.%06d]", label, fields.tm_year + 1900,
                  fields.tm_mon + 1, fields.tm_mday, fields.tm_hour, fields.tm_min, fields.tm_sec,
                  int(micro));
    return QString::fromLatin1(text);
}

void CCmtdChildFrame::updateCursorTexts()
{
    const int points = m_file.loadedPoints;
    if (points < 5 || !m_file.sampleTimes) {
        labelT1->clear();
        labelT2->clear();
        labelTd->clear();
        return;
    }
    const int t1 = qBound(0, m_waveView->cursorT1, points - 1);
    const int t2 = qBound(0, m_waveView->cursorT2, points - 1);
    labelT1->setText(absoluteTimeText("T1", t1));
    labelT2->setText(absoluteTimeText("T2", t2));
    const int64_t difference = m_file.sampleTimes[t2] - m_file.sampleTimes[t1];
    labelTd->setText(QStringLiteral("Td[%1]").arg(
        QString::fromLatin1(TimeText(difference < 0 ? -difference : difference))));
}

void CCmtdChildFrame::closeEvent(QCloseEvent *event)
{
    // The worker is told to end before anything is asked: a running job stops at its next check.
    const bool loaded = !(backgroundState() & StateLoading) && m_file.loadedPoints >= 5;
    m_document.setBackgroundBit(StateClosing, true);
    m_document.setBackgroundBit(StateCancel, true);
    m_thread.requestQuit();
    // A view of a recording still being read is not kept: it would not fit the whole file.
    if (loaded && (globalOptions.stateMask & CGlobalOptions::AutoSaveWaveViewStatus))
        m_waveView->saveStatus(lastStatusPath().constData());
    if (m_modified) {
        const QMessageBox::StandardButton answer = QMessageBox::warning(
            this, QString(), tr("'%1' has Modified.\nSave it Now?").arg(currentFileName()),
            QMessageBox::Yes | QMessageBox::No | QMessageBox::Cancel);
        if (answer == QMessageBox::Cancel) {
            event->ignore();
            return;
        }
        // A save that fails keeps the frame open, with the reason said, rather than lose the work.
        if (answer == QMessageBox::Yes && !saveFile(m_fileName)) {
            event->ignore();
            return;
        }
    }
    CMdiChildFrame::closeEvent(event);
}

void CCmtdChildFrame::changeEvent(QEvent *event)
{
    if (event->type() == QEvent::LanguageChange)
        retranslate();
    CMdiChildFrame::changeEvent(event);
}

void CCmtdChildFrame::slot_PaneTabViewSwitch(int page)
{
    if (page < 0 || page > 1)
        return;
    auto *pages = qobject_cast<QStackedWidget *>(centralWidget());
    paneTabs->blockSignals(true);
    paneTabs->setCurrentIndex(page);
    paneTabs->blockSignals(false);
    if (page == m_currentPage)
        return;
    if (m_currentPage == 0)
        m_anaContainer->setFormsVisible(false);
    m_currentPage = page;
    pages->setCurrentIndex(page);
    if (page == 0)
        m_anaContainer->setFormsVisible(true);
}

void CCmtdChildFrame::slot_CmbWaveUntSelChanged(int index)
{
    // The wave shows the channels of the chosen plant unit only; "[All Device]" shows them all.
    const auto *unit =
        reinterpret_cast<const CmtdInfTrwk_Unit *>(unitSelector->itemData(index).value<quintptr>());
    if (unit && !m_file.HasUnit(unit))
        unit = nullptr;
    if (unit == m_currentUnit)
        return;
    showUnitChannels(unit);
}

void CCmtdChildFrame::showUnitChannels(const CmtdInfTrwk_Unit *unit)
{
    m_currentUnit = unit;
    for (const auto &map : m_file.analogMaps) {
        const bool hide = unit && !unit->UsesAnalogChannel(uint16_t(map->Index()));
        map->flags = hide ? map->flags | CChnMapBase::FlagHidden : map->flags & ~CChnMapBase::FlagHidden;
    }
    const bool hideStill = m_document.displayFlags.testFlag(CCmtdDocument::HideStatus0);
    for (const auto &map : m_file.statusMaps) {
        const bool used = !unit || unit->UsesStatusChannel(uint16_t(map->Index()));
        const bool still = !(map->flags & CChnMapBase::FlagShifts);
        const bool hide = (unit && !used) || (unit && hideStill && still);
        map->flags = hide ? map->flags | CChnMapBase::FlagHidden : map->flags & ~CChnMapBase::FlagHidden;
    }
    m_waveView->layoutRows(true);
    m_nameView->update();
}

bool CCmtdChildFrame::saveAs(const QString &path)
{
    if (m_file.SaveFile(QFile::encodeName(path).constData()))
        return true;
    reportWarning("%s", (m_file.saveError.isEmpty() ? tr("Failed to write %1").arg(path) : m_file.saveError)
                            .toLocal8Bit()
                            .constData());
    return false;
}

bool CCmtdChildFrame::saveRecordingAs(const QString &chosen)
{
    const QString path = PathWithExtension(chosen, {"cfg", "cff"});
    // Writing over the files being read would change the recording under the reader.
    if (OutputTouchesInput(m_fileName, path)) {
        reportWarning("%s", tr("%1 is a file of the open recording; choose another name.")
                                .arg(QDir::toNativeSeparators(path))
                                .toLocal8Bit()
                                .constData());
        return false;
    }
    // The plain Save As writes by its own rule, which changes some channels' values (a unit
    // prefix, primary values, a steadily rising channel): the engineer chooses knowingly.
    const ExactCopyFormat format; // the recording's own data type and revision
    const std::vector<ChangedChannel> changed = FindChannelsChangedBySave(m_file, format);
    if (!changed.empty()) {
        switch (askSaveKind(changed)) {
        case SaveKind::ExactCopy:
            return saveExactCopy(path, format);
        case SaveKind::AsIs:
            break;
        case SaveKind::Cancel:
            return false;
        }
    }
    return saveAs(path);
}

CCmtdChildFrame::SaveKind CCmtdChildFrame::askSaveKind(const std::vector<ChangedChannel> &changed)
{
    QStringList names;
    for (const ChangedChannel &channel : changed)
        names << channel.name;
    QMessageBox box(QMessageBox::Warning, QString(),
                    tr("These channels will not keep their values in the saved file: %1")
                        .arg(names.join(QStringLiteral(", "))),
                    QMessageBox::NoButton, this);
    QPushButton *exact = box.addButton(tr("Save Exact Copy"), QMessageBox::AcceptRole);
    QPushButton *asIs = box.addButton(tr("Save As Is"), QMessageBox::DestructiveRole);
    box.addButton(QMessageBox::Cancel);
    box.setDefaultButton(exact);
    box.exec();
    if (box.clickedButton() == exact)
        return SaveKind::ExactCopy;
    return box.clickedButton() == asIs ? SaveKind::AsIs : SaveKind::Cancel;
}

bool CCmtdChildFrame::saveExactCopy(const QString &path, const ExactCopyFormat &format)
{
    QString error;
    if (SaveExactCopy(m_file, path, format, &error) == ExactCopyResult::Written)
        return true;
    reportWarning("%s", error.toLocal8Bit().constData());
    return false;
}

bool CCmtdChildFrame::saveFile(const QString &path)
{
    if (!confirmCfgOnlyEdits())
        return false;
    // The engineer's work (plant units, events, T0', settings) lives in the extension file; the
    // configuration and data files are not touched by a save.
    const QByteArray base = CmtdBasePath(QFile::encodeName(path).constData());
    const QByteArray inf = CmtdSiblingPath(base, ".inf");
    if (!m_file.SaveInf(inf.constData())) {
        QMessageBox::warning(this, QString(),
                             m_file.saveError.isEmpty() ? tr("Failed to write %1").arg(QFile::decodeName(inf))
                                                        : m_file.saveError);
        return false;
    }
    m_fileName = QFileInfo(path).canonicalFilePath();
    setModified(false);
    m_undo.clear(); // what is saved is not undone
    m_cfgOnlyEdits = 0;
    return true;
}

namespace {

// One edit of a channel field, undone by giving back the text it had.
class ChannelEditCommand : public QUndoCommand
{
public:
    ChannelEditCommand(CCmtdChildFrame *frame, bool analog, int position, ChannelField field, QString before,
                       QString after)
        : m_frame(frame), m_analog(analog), m_position(position), m_field(field), m_before(std::move(before)),
          m_after(std::move(after))
    {
        setText(QCoreApplication::translate("CCmtdChildFrame", "Edit channel %1").arg(position + 1));
    }
    void redo() override
    {
        m_frame->applyChannelField(m_analog, m_position, m_field, m_after);
        m_frame->countCfgOnlyEdit(m_field, +1);
    }
    void undo() override
    {
        m_frame->applyChannelField(m_analog, m_position, m_field, m_before);
        m_frame->countCfgOnlyEdit(m_field, -1);
    }

private:
    CCmtdChildFrame *m_frame;
    bool m_analog;
    int m_position;
    ChannelField m_field;
    QString m_before;
    QString m_after;
};

} // namespace

bool CCmtdChildFrame::editChannelField(bool analog, int position, ChannelField field, const QString &text)
{
    const QString before = ChannelFieldText(m_file, analog, position, field);
    if (text.trimmed() == before)
        return true;
    QString reason;
    if (!SetChannelField(m_file, analog, position, field, text, &reason)) {
        // Refused in the cell: the old value comes back and the status bar says why.
        statusBar()->showMessage(reason, 10000);
        m_cfgContainer->showRecording(m_file);
        return false;
    }
    m_undo.push(new ChannelEditCommand(this, analog, position, field, before, text.trimmed()));
    return true;
}

void CCmtdChildFrame::countCfgOnlyEdit(ChannelField field, int step)
{
    if (ChannelFieldInCfgOnly(field))
        m_cfgOnlyEdits = qMax(0, m_cfgOnlyEdits + step);
}

bool CCmtdChildFrame::confirmCfgOnlyEdits()
{
    // Phase, component, unit, P/S and normal state have no place in the extension file: a save
    // of it alone would let them go at the next opening without the engineer knowing.
    if (m_cfgOnlyEdits == 0)
        return true;
    QMessageBox box(
        QMessageBox::Warning, QString(),
        tr("Phase, component, unit, P/S and normal state are kept in the configuration file (.cfg), "
           "which Save(&S) does not write; they will be lost when the recording is opened again. "
           "Save As(&V) keeps them."),
        QMessageBox::NoButton, this);
    QPushButton *saveAs = box.addButton(tr("Save As..."), QMessageBox::AcceptRole);
    QPushButton *infOnly = box.addButton(tr("Save Extension File Only"), QMessageBox::DestructiveRole);
    box.addButton(QMessageBox::Cancel);
    box.setDefaultButton(saveAs);
    box.exec();
    if (box.clickedButton() == saveAs) {
        slot_FileSaveAs();
        return false;
    }
    return box.clickedButton() == infOnly;
}

void CCmtdChildFrame::applyChannelField(bool analog, int position, ChannelField field, const QString &text)
{
    SetChannelField(m_file, analog, position, field, text, nullptr);
    setModified(true);
    m_cfgContainer->showRecording(m_file);
    m_waveView->layoutRows(true);
    m_nameView->update();
}

void CCmtdChildFrame::slot_FileSave()
{
    if (m_modified)
        saveFile(m_fileName);
}

void CCmtdChildFrame::slot_FileInfExp()
{
    const QString chosen = QFileDialog::getSaveFileName(this, QString(), QFileInfo(m_fileName).absolutePath(),
                                                        tr("TRWK Settings File(*.tcfg)"));
    if (!chosen.isEmpty())
        exportSettings(PathWithExtension(chosen, {"tcfg"}));
}

bool CCmtdChildFrame::exportSettings(const QString &path)
{
    // The private sections that carry settings rather than the recording itself.
    constexpr uint32_t kSettingsMask = InfAnalogChannelsParameter | InfStatusChannelsParameter | InfLine |
                                       InfTransformer | InfPower | InfExcitation | InfExpression |
                                       InfChannelsGroup;
    static_assert(kSettingsMask == 0xaf30u);
    CTextOutput out;
    QString error;
    if (!m_file.WriteInfSections(out, kSettingsMask) || !WriteFileSafely(path, out.bytes(), &error)) {
        QMessageBox::warning(this, QString(), error.isEmpty() ? tr("Failed to write %1").arg(path) : error);
        return false;
    }
    return true;
}

void CCmtdChildFrame::slot_FileInfImp()
{
    const QString chosen = QFileDialog::getOpenFileName(this, QString(), QFileInfo(m_fileName).absolutePath(),
                                                        tr("TRWK Settings File(*.tcfg)"));
    if (!chosen.isEmpty())
        importSettings(chosen);
}

bool CCmtdChildFrame::importSettings(const QString &path)
{
    // A second read into the recording: only what is still open is filled.
    const int result = m_file.LoadInf(QFile::encodeName(path).constData());
    m_file.LinkStoresToUnits();
    m_cfgContainer->showRecording(m_file);
    refillUnitSelector();
    Q_EMIT menusChanged(this);
    m_waveView->layoutRows(true);
    m_nameView->update();
    if (result == 4) {
        reportWarning("%s", tr("Memory is not enough to read %1").arg(path).toLocal8Bit().constData());
        return false;
    }
    setModified(true);
    return true;
}

void CCmtdChildFrame::slot_FileGroupsSave()
{
    const QString chosen = QFileDialog::getSaveFileName(this, QString(), QFileInfo(m_fileName).absolutePath(),
                                                        tr("Channel Groups File(*.tcgp)"));
    if (!chosen.isEmpty())
        saveChannelGroups(PathWithExtension(chosen, {"tcgp"}));
}

bool CCmtdChildFrame::saveChannelGroups(const QString &path)
{
    // The Channels_Group sections alone, in the section format of the extension file.
    CTextOutput out;
    QString error;
    if (!m_file.WriteInfSections(out, InfChannelsGroup) || !WriteFileSafely(path, out.bytes(), &error)) {
        QMessageBox::warning(this, QString(), error.isEmpty() ? tr("Failed to write %1").arg(path) : error);
        return false;
    }
    return true;
}

void CCmtdChildFrame::slot_FileGroupsOpen()
{
    const QString chosen = QFileDialog::getOpenFileName(this, QString(), QFileInfo(m_fileName).absolutePath(),
                                                        tr("Channel Groups File(*.tcgp)"));
    if (!chosen.isEmpty())
        importSettings(chosen);
}

void CCmtdChildFrame::slot_FileSaveAs()
{
    const QString chosen =
        QFileDialog::getSaveFileName(this, QString(), m_fileName, tr("COMTRADE File(*.cfg)"));
    if (!chosen.isEmpty())
        saveRecordingAs(chosen);
}

void CCmtdChildFrame::slot_BtnServerStop()
{
    if (m_thread.pendingKind() != CCmtdThread::KindNone)
        m_document.setBackgroundBit(StateCancel, true);
}

void CCmtdChildFrame::setModified(bool modified)
{
    m_modified = modified;
    setWindowModified(modified);
    updateActions();
}

void CCmtdChildFrame::setZoomMode(int mode)
{
    m_document.zoomMode = mode;
    // The free horizontal zoom keeps the cross and shows its band; the vertical drag shows its
    // own image as the pointer.
    if (mode == ZoomVertDrag)
        m_waveView->setCursor(
            QCursor(QIcon(QStringLiteral(":/images/BtnZoomVertScaleInOut.png")).pixmap(32, 32), 1, 1));
    else
        m_waveView->setCursor(Qt::CrossCursor);
    m_waveView->update();
    updateActions();
}
