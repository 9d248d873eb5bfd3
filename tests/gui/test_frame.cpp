// The document frame and its worker: job slot, progress, cancel and close, the menus and
// action states that follow the recording, and the time texts of the read-outs.

#include "chnmap.h"
#include "cmtd99file.h"
#include "cmtdchildcontainer.h"
#include "cmtdchildcontainercfg.h"
#include "cmtdchildframe.h"
#include "frametestcase.h"
#include "mainframe.h"
#include "menutext.h"
#include "pathmap.h"
#include "timetext.h"
#include "unitsetupdialog.h"
#include "unitsuggestdialog.h"

#include <QAction>
#include <QApplication>
#include <QComboBox>
#include <QElapsedTimer>
#include <QFile>
#include <QFileInfo>
#include <QLabel>
#include <QLineEdit>
#include <QMenuBar>
#include <QPointer>
#include <QStatusBar>
#include <QTableWidget>
#include <QTemporaryDir>
#include <QTest>
#include <QTimer>
#include <QToolBar>
#include <memory>

namespace {

QStringList menuTitles(QMenuBar *bar)
{
    QStringList titles;
    const QList<QAction *> actions = bar->actions();
    for (QAction *action : actions)
        titles << action->text();
    return titles;
}

} // namespace

class FrameTest : public FrameTestCase
{
    Q_OBJECT

private Q_SLOTS:
    void timeTextsSavedNamesAndReportSteps()
    {
        QCOMPARE(TimeText(1500000), QByteArray("0:01.5"));
        QCOMPARE(TimeText(1250000), QByteArray("0:01.25"));
        QCOMPARE(TimeText(61000001), QByteArray("1:01.000001"));
        QCOMPARE(TimeText(-20000), QByteArray("-0:00.02"));
        QCOMPARE(TimeText(0), QByteArray("0:00.0"));
        QCOMPARE(TimeText(3723456700), QByteArray("62:03.4567"));
        QCOMPARE(PathWithExtension(QStringLiteral("/t/fault2"), {"cfg", "cff"}),
                 QStringLiteral("/t/fault2.cfg"));
        QCOMPARE(PathWithExtension(QStringLiteral("/t/FAULT2.CFG"), {"cfg", "cff"}),
                 QStringLiteral("/t/FAULT2.CFG"));
        QCOMPARE(PathWithExtension(QStringLiteral("/t/one.cff"), {"cfg", "cff"}),
                 QStringLiteral("/t/one.cff"));
        QCOMPARE(PathWithExtension(QStringLiteral("/t/v1.2"), {"wvs"}), QStringLiteral("/t/v1.2.wvs"));
        QCOMPARE(MenuText(QStringLiteral("&Open")), QStringLiteral("&&Open"));
        // Progress every hundredth of the points, at least every point.
        QCOMPARE(CmtdReportStep(1000000, 0), 10000);
        QCOMPARE(CmtdReportStep(99, 0), 1);
        QCOMPARE(CmtdReportStep(150, 0), 2); // 1.5 + 0.5 truncated
        QCOMPARE(CmtdReportStep(0, 0), 1);
    }

    void everyActionShowsItsIconAndItsWords()
    {
        QTemporaryDir dir;
        CCmtdChildFrame *frame = open(writeRecording(dir, "icons", 300, 1, 0));
        QVERIFY(frame);
        for (int i = 0; i < CCmtdChildFrame::ActionCount; ++i) {
            const QAction *action = frame->action(CCmtdChildFrame::Action(i));
            QVERIFY2(!action->icon().pixmap(16, 16).isNull(), qPrintable(action->text()));
        }
        // A literal "&" is doubled for Qt; the access key in parentheses stays single.
        QCOMPARE(frame->action(CCmtdChildFrame::ActToolMark)->text(),
                 QStringLiteral("Add && Manage Marks(&M)"));
        QCOMPARE(frame->action(CCmtdChildFrame::ActPTGDiff)->text(),
                 QStringLiteral("Complete Longitudinal Diff-cur. of G&&T(&T)"));
        QCOMPARE(frame->action(CCmtdChildFrame::ActValPri)->text(), QStringLiteral("Primary Value(&P)"));
    }

    void saveAsAsksBeforeChangingValues()
    {
        QString boxText; // what the message box said, empty when none was up
        QTemporaryDir dir;
        // A clean recording saves without a question.
        CCmtdChildFrame *clean = open(writeRecording(dir, "clean", 300, 2, 1));
        QVERIFY(clean);
        pressWhenUp(&boxText, QString(), 50);
        QVERIFY(clean->saveRecordingAs(dir.filePath(QStringLiteral("clean-copy"))));
        QTest::qWait(80);
        QVERIFY2(boxText.isEmpty(), qPrintable(boxText));
        QVERIFY(QFileInfo::exists(dir.filePath(QStringLiteral("clean-copy.cfg"))));

        // A channel in kV comes out of the plain save scaled: the engineer is asked.
        const QString path = writeRecording(dir, "kilo", 300, 2, 0);
        QVERIFY(replaceInFile(path, "2,U2,A,,V,", "2,U2,A,,kV,"));
        CCmtdChildFrame *kilo = open(path);
        QVERIFY(kilo);
        pressWhenUp(&boxText, QString(), 50);
        QVERIFY(!kilo->saveRecordingAs(dir.filePath(QStringLiteral("cancelled.cfg"))));
        QCOMPARE(boxText, QStringLiteral("These channels will not keep their values in the saved file: U2"));
        QVERIFY(!QFileInfo::exists(dir.filePath(QStringLiteral("cancelled.cfg"))));
        // "Save Exact Copy" writes values that read back within half a step of the 16-bit form.
        boxText.clear();
        pressWhenUp(&boxText, QStringLiteral("Save Exact Copy"), 50);
        QVERIFY(kilo->saveRecordingAs(dir.filePath(QStringLiteral("exact.cfg"))));
        QVERIFY(!boxText.isEmpty());
        CCmtd99File copy;
        const QByteArray exact = QFile::encodeName(dir.filePath(QStringLiteral("exact.cfg")));
        QVERIFY(copy.LoadFile(exact.constData()) && copy.LoadDat(exact.constData(), nullptr, nullptr));
        const CChnMapAnalog &shown = *kilo->recording().analogMaps[1];
        const CChnMapAnalog &saved = *copy.analogMaps[1];
        const double step = std::fabs(double(copy.analogChannels[1]->a));
        for (int n = 0; n < 300; n += 7)
            QVERIFY2(
                std::fabs(double(saved.Value(n)) - double(shown.Value(n))) <= step / 2 + 1e-9,
                qPrintable(
                    QStringLiteral("sample %1: %2 vs %3").arg(n).arg(saved.Value(n)).arg(shown.Value(n))));

        // Writing over the recording's own files is refused, and they stay as they were.
        const QByteArray before = fileBytes(path);
        pressWhenUp(&boxText, QStringLiteral("OK"), 50);
        QVERIFY(!kilo->saveRecordingAs(path));
        QCOMPARE(fileBytes(path), before);
    }

    void plantUnitsFilterTheWavesAndFillTheirPage()
    {
        QTemporaryDir dir;
        CCmtdChildFrame *frame = open(writeRecording(dir, "units", 300, 3, 2));
        QVERIFY(frame);
        CCmtd99File &file = frame->recordingForJob();
        auto line = std::make_unique<CmtdInfTrwk_UnitLine>();
        line->devId = 1;
        line->name = "Line 1";
        line->length = 42.0f;
        line->taChns = {2, 0, 0, 0};
        line->statusChannels = {2};
        file.lineUnits.push_back(std::move(line));
        frame->refillUnitSelector();
        QComboBox *chooser = frame->unitChooser();
        QCOMPARE(chooser->count(), 2);
        QCOMPARE(chooser->itemText(1), QStringLiteral("Line 1"));
        // The line uses analog channel 2 and status channel 2: the others are hidden.
        chooser->setCurrentIndex(1);
        QCOMPARE(bool(file.analogMaps[0]->flags & CChnMapBase::FlagHidden), true);
        QCOMPARE(bool(file.analogMaps[1]->flags & CChnMapBase::FlagHidden), false);
        QCOMPARE(bool(file.analogMaps[2]->flags & CChnMapBase::FlagHidden), true);
        QCOMPARE(bool(file.statusMaps[0]->flags & CChnMapBase::FlagHidden), true);
        QCOMPARE(bool(file.statusMaps[1]->flags & CChnMapBase::FlagHidden), false);
        chooser->setCurrentIndex(0);
        for (const auto &map : file.analogMaps)
            QVERIFY(!(map->flags & CChnMapBase::FlagHidden));
        // The configuration page lists the unit with its channels; the line menu appears.
        frame->cfgContainer()->showRecording(file);
        QTableWidget *devices = nullptr;
        for (QTableWidget *table : frame->cfgContainer()->findChildren<QTableWidget *>()) {
            if (table->columnCount() == 6)
                devices = table;
        }
        QVERIFY(devices);
        QCOMPARE(devices->rowCount(), 1);
        QCOMPARE(devices->item(0, 2)->text(), QStringLiteral("Line 1"));
        QCOMPARE(devices->item(0, 4)->text(), QStringLiteral("2"));
        QCOMPARE(devices->item(0, 5)->text(), QStringLiteral("2"));
        m_main->updateMenus();
        QVERIFY(menuTitles(m_main->menuBar()).contains(QStringLiteral("Line Analysis(&L)")));
        QVERIFY(!menuTitles(m_main->menuBar()).contains(QStringLiteral("Trans. Analysis(&T)")));
    }

    void saveWritesTheExtensionFileAndSettingsTravel()
    {
        QTemporaryDir dir;
        const QString path = writeRecording(dir, "kept", 300, 3, 1);
        CCmtdChildFrame *frame = open(path);
        QVERIFY(frame);
        // T0' at sample 120 marks the recording modified; Save writes the extension file only.
        frame->waveView()->setCursorT1(120);
        frame->action(CCmtdChildFrame::ActT0cSet)->trigger();
        QVERIFY(frame->action(CCmtdChildFrame::ActFileSave)->isEnabled());
        const QByteArray cfgText = fileBytes(path);
        frame->action(CCmtdChildFrame::ActFileSave)->trigger();
        QVERIFY(!frame->action(CCmtdChildFrame::ActFileSave)->isEnabled());
        const QString inf = dir.filePath(QStringLiteral("kept.inf"));
        QVERIFY(QFileInfo::exists(inf));
        QCOMPARE(fileBytes(path), cfgText);
        CCmtd99File again;
        QVERIFY(again.LoadFile(QFile::encodeName(path).constData()));
        QCOMPARE(again.customT0, 120);

        // A line unit exported as settings and imported into another recording.
        auto line = std::make_unique<CmtdInfTrwk_UnitLine>();
        line->devId = 3;
        line->name = "Feeder 3";
        line->length = 12.0f;
        line->taChns = {1, 2, 3, 0};
        frame->recordingForJob().lineUnits.push_back(std::move(line));
        const QString settings = dir.filePath(QStringLiteral("plant.tcfg"));
        QVERIFY(frame->exportSettings(settings));
        CCmtdChildFrame *other = open(writeRecording(dir, "other", 300, 3, 0));
        QVERIFY(other);
        QVERIFY(other->importSettings(settings));
        QCOMPARE(int(other->recording().lineUnits.size()), 1);
        QCOMPARE(other->recording().lineUnits[0]->length, 12.0f);
        QCOMPARE(other->unitChooser()->count(), 2);

        // A save the disk refuses (a folder that is not there) says why and leaves the
        // recording modified.
        QString said;
        pressWhenUp(&said, QStringLiteral("OK"), 50);
        QVERIFY(!other->saveFile(dir.filePath(QStringLiteral("gone/other.cfg"))));
        QVERIFY2(said.contains(QStringLiteral("other.inf")), qPrintable(said));
        QVERIFY(other->isModified());
        other->setModified(false); // nothing to ask when the test's window closes
    }

    void channelEditsAreTakenRefusedAndUndone()
    {
        QTemporaryDir dir;
        CCmtdChildFrame *frame = open(writeRecording(dir, "edit", 300, 2, 1));
        QVERIFY(frame);
        QTableWidget *analog = frame->cfgContainer()->table(0);
        // A new name in the cell: the channel shows it at once and the recording is modified.
        analog->item(0, 1)->setText(QStringLiteral("Feeder Ua"));
        QCOMPARE(QString::fromUtf8(frame->recording().analogMaps[0]->Name()), QStringLiteral("Feeder Ua"));
        QVERIFY(frame->isModified());
        QVERIFY(frame->action(CCmtdChildFrame::ActFileSave)->isEnabled());
        // A class that does not exist is refused in the cell, with the reason in the status bar.
        analog->item(1, 13)->setText(QStringLiteral("bad"));
        QCOMPARE(frame->statusBar()->currentMessage(), QStringLiteral("Unknown signal class: bad"));
        QCOMPARE(frame->cfgContainer()->table(0)->item(1, 13)->text(), QStringLiteral("TV"));
        // Ctrl+Z gives the old name back.
        QCOMPARE(frame->undoStack().count(), 1);
        frame->undoStack().undo();
        QCOMPARE(QString::fromUtf8(frame->recording().analogMaps[0]->Name()), QStringLiteral("U1"));
        QCOMPARE(frame->cfgContainer()->table(0)->item(0, 1)->text(), QStringLiteral("U1"));
        frame->undoStack().redo();
        // A phase picked from the list comes as one change; only the ".cfg" keeps it, so the
        // save of the extension file asks first.
        analog->item(1, 2)->setData(Qt::UserRole, QStringLiteral("B"));
        QCOMPARE(frame->recording().analogMaps[1]->Phase(), int16_t(PhaseB));
        QCOMPARE(frame->cfgOnlyEdits(), 1);
        QString asked;
        pressWhenUp(&asked, QStringLiteral("Save Extension File Only"));
        // Saved, the edit stays in the extension file and is no longer undone.
        QVERIFY(frame->saveFile(frame->fileName()));
        QVERIFY2(asked.contains(QStringLiteral("Save As(&V) keeps them")), qPrintable(asked));
        QCOMPARE(frame->cfgOnlyEdits(), 0);
        QCOMPARE(frame->undoStack().count(), 0);
        CCmtd99File again;
        QVERIFY(again.LoadFile(QFile::encodeName(frame->fileName()).constData()));
        QCOMPARE(again.analogChannels[0]->alias, QByteArray("Feeder Ua"));
    }

    void unitsAreSetUpByHandCheckedAndUndone()
    {
        QTemporaryDir dir;
        CCmtdChildFrame *frame = open(writeRecording(dir, "units", 300, 3, 1, true, "ABC"));
        QVERIFY(frame);
        const CCmtd99File &file = frame->recording();
        // A line named, measured and given its voltage channels in the setup. (Checks inside the
        // dialog are gathered and asserted once it is closed, so that a failure cannot hang.)
        QList<int> offeredPerPlace;
        QTimer::singleShot(0, frame, [&offeredPerPlace] {
            auto *dialog = qobject_cast<CUnitSetupDialog *>(QApplication::activeModalWidget());
            if (!dialog)
                return;
            dialog->nameEdit()->setText(QStringLiteral("Feeder 3"));
            dialog->numberEdit("Length")->setText(QStringLiteral("12.5"));
            QTableWidget *roles = dialog->rolesTable();
            for (int phase = 0; phase < 3; ++phase) {
                auto *combo = qobject_cast<QComboBox *>(roles->cellWidget(2, phase)); // TV #1
                offeredPerPlace << combo->count();
                combo->setCurrentIndex(combo->findData(phase + 1));
            }
            offeredPerPlace << qobject_cast<QComboBox *>(roles->cellWidget(0, 0))->count(); // TA, A
            dialog->accept();
            if (dialog->isVisible())
                dialog->reject();
        });
        const CmtdInfTrwk_Unit *made = frame->addUnit(CmtdInfTrwk_Unit::KindLine);
        QVERIFY(made);
        // Only the voltage of the fitting phase is offered beside "none", and no current at all.
        QCOMPARE(offeredPerPlace, QList<int>({2, 2, 2, 1}));
        QCOMPARE(file.lineUnits.size(), size_t(1));
        QCOMPARE(file.lineUnits[0]->name, QByteArray("Feeder 3"));
        QCOMPARE(file.lineUnits[0]->length, 12.5f);
        QCOMPARE(file.lineUnits[0]->tvChns[0], (ChannelSet{1, 2, 3, 0}));
        QCOMPARE(frame->unitChooser()->count(), 2);
        QVERIFY(frame->isModified());

        // A second unit of the same name is refused in the dialog, which stays open.
        QString said;
        bool stayedOpen = false;
        QTimer::singleShot(0, frame, [&] {
            auto *dialog = qobject_cast<CUnitSetupDialog *>(QApplication::activeModalWidget());
            if (!dialog)
                return;
            dialog->nameEdit()->setText(QStringLiteral("feeder 3"));
            pressWhenUp(&said, QStringLiteral("OK"));
            dialog->accept();
            stayedOpen = dialog->isVisible();
            dialog->reject();
        });
        QVERIFY(!frame->addUnit(CmtdInfTrwk_Unit::KindLine));
        QVERIFY2(said.contains(QStringLiteral("Another unit is named feeder 3")), qPrintable(said));
        QVERIFY(stayedOpen);
        QCOMPARE(file.lineUnits.size(), size_t(1));

        // Undone and redone as one step; deleted after a question.
        frame->undoStack().undo();
        QVERIFY(file.lineUnits.empty());
        QCOMPARE(frame->unitChooser()->count(), 1);
        frame->undoStack().redo();
        QCOMPARE(file.lineUnits.size(), size_t(1));
        QTimer::singleShot(0, frame, [] { answerMessageBox(QMessageBox::Yes); });
        QVERIFY(frame->deleteUnit(file.lineUnits[0].get()));
        QVERIFY(file.lineUnits.empty());

        // The proposals for the bare recording, all taken.
        int offered = 0;
        QTimer::singleShot(0, frame, [&offered] {
            auto *dialog = qobject_cast<CUnitSuggestDialog *>(QApplication::activeModalWidget());
            if (!dialog)
                return;
            offered = dialog->table()->rowCount();
            dialog->accept();
        });
        const int taken = frame->suggestUnits();
        frame->setModified(false); // nothing to ask when the test's window closes
        QVERIFY(offered >= 1);
        QCOMPARE(taken, offered);
        QCOMPARE(frame->unitChooser()->count(), 1 + offered);
    }

    void channelGroupFilesTravelBetweenRecordings()
    {
        QTemporaryDir dir;
        CCmtdChildFrame *frame = open(writeRecording(dir, "groups", 300, 3, 2));
        QVERIFY(frame);
        auto group = std::make_unique<CmtdInfTrwk_Unit>();
        group->name = "Spare set";
        group->otherAnalog = {1, 3};
        group->statusChannels = {2};
        frame->recordingForJob().groupUnits.push_back(std::move(group));
        auto line = std::make_unique<CmtdInfTrwk_UnitLine>();
        line->name = "Not a group";
        frame->recordingForJob().lineUnits.push_back(std::move(line));
        const QString path = dir.filePath(QStringLiteral("set.tcgp"));
        QVERIFY(frame->saveChannelGroups(path));
        const QByteArray text = fileBytes(path);
        QVERIFY(text.contains("[TRWK Channels_Group_#1]"));
        QVERIFY(!text.contains("Line_#")); // the groups alone
        CCmtdChildFrame *other = open(writeRecording(dir, "receiver", 300, 3, 2));
        QVERIFY(other);
        QVERIFY(other->importSettings(path));
        QCOMPARE(int(other->recording().groupUnits.size()), 1);
        QCOMPARE(other->recording().groupUnits[0]->otherAnalog, (std::vector<uint16_t>{1, 3}));
        QCOMPARE(other->recording().groupUnits[0]->statusChannels, (std::vector<uint16_t>{2}));
        QVERIFY(other->recording().lineUnits.empty());
        other->setModified(false);
    }

    void encodingPickerReadsTheNamesAgain()
    {
        QTemporaryDir dir;
        CCmtdChildFrame *frame = open(writeRecording(dir, "codec", 300, 1, 0));
        QVERIFY(frame);
        Q_EMIT frame->cfgContainer()->codecChosen(QByteArray("windows-1251"));
        QCOMPARE(frame->recording().codecName, QByteArray("windows-1251"));
        QCOMPARE(frame->recording().codecOverride, QByteArray("windows-1251"));
    }

    void jobSlotDropsASecondRequest()
    {
        QTemporaryDir dir;
        CCmtdChildFrame *frame = open(writeRecording(dir, "small", 300, 2, 1));
        QVERIFY(frame);
        // The worker is idle: hold it on a job whose kind runs no work, then ask again.
        CCmtdThread &worker = frame->worker();
        worker.kind.store(17);
        QVERIFY(!frame->submitJob(3));
        worker.kind.store(0);
        QVERIFY(frame->submitJob(30)); // an unknown kind still starts and ends
        QVERIFY(waitIdle(frame));
    }

    void noticeStandsAboveTheWaves()
    {
        // A 60 Hz recording without an extension file: the phasor windows stay on 50 Hz, and
        // the wave page says so above the waves; a 50 Hz recording shows no notice.
        QTemporaryDir dir;
        CCmtdChildFrame *fifty = open(writeRecording(dir, "fifty", 300, 3, 0));
        QVERIFY(fifty);
        auto *notice = fifty->findChild<QLabel *>(QStringLiteral("noticeLabel"));
        QVERIFY(notice);
        QVERIFY(!notice->isVisibleTo(fifty));
        const QString path = writeRecording(dir, "sixty", 300, 3, 0);
        QVERIFY(replaceInFile(path, "\n50\n1\n", "\n60\n1\n"));
        CCmtdChildFrame *sixty = open(path);
        QVERIFY(sixty);
        notice = sixty->findChild<QLabel *>(QStringLiteral("noticeLabel"));
        QVERIFY(notice->isVisibleTo(sixty));
        QCOMPARE(notice->text(),
                 QStringLiteral("Phasors use 50 Hz windows; the recording's line frequency is 60 Hz"));
    }

    void loadShowsSpanAndStates()
    {
        QTemporaryDir dir;
        CCmtdChildFrame *frame = open(writeRecording(dir, "rec", 300, 3, 2));
        QVERIFY(frame);
        QCOMPARE(frame->recording().loadedPoints, 300);
        QCOMPARE(frame->spanText(), QStringLiteral("TT[0:00.299](300Points)"));
        // Shown beside the wave, and still there after a passing message has come and gone.
        auto *span = frame->findChild<QLabel *>(QStringLiteral("spanLabel"));
        QVERIFY(span);
        frame->statusBar()->showMessage(QStringLiteral("something else"), 1);
        QTest::qWait(20);
        QCOMPARE(span->text(), QStringLiteral("TT[0:00.299](300Points)"));
        QVERIFY(span->isVisibleTo(frame));
        QCOMPARE(frame->currentPage(), 0);
        QVERIFY(frame->frameToolBar()->isVisibleTo(frame));
        const QStringList titles = menuTitles(m_main->menuBar());
        QVERIFY(titles.contains(QStringLiteral("View(&V)")));
        QVERIFY(titles.contains(QStringLiteral("Multi-Channels Analysis(&A)")));
        QVERIFY(frame->action(CCmtdChildFrame::ActAnaStaEvn)->associatedObjects().size() > 1);
        // No plant units: no line, transformer or generator menus.
        QVERIFY(!titles.contains(QStringLiteral("Line Analysis(&L)")));
        QVERIFY(frame->action(CCmtdChildFrame::ActFileSaveAs)->isEnabled());
        QVERIFY(!frame->action(CCmtdChildFrame::ActServerStop)->isEnabled());
        // Features still to come are shown but cannot be chosen.
        QVERIFY(!frame->action(CCmtdChildFrame::ActAnaBusDiff)->isEnabled());
        QVERIFY(frame->action(CCmtdChildFrame::ActAnaRX)->isEnabled());
    }

    void siteMapAppliesItsSettingsOnOpening()
    {
        // A recording under a mapped folder takes the site's channel groups; the folder matches
        // in any case.
        const QString groups = m_dir.filePath(QStringLiteral("site.tcgp"));
        QFile file(groups);
        QVERIFY(file.open(QIODevice::WriteOnly));
        file.write("[TRWK Channels_Group_#1]\nDEV_ID=1,Busbar Voltages\nOTH_ACHNS=1\n");
        file.close();
        PathMapEntries() = {{m_dir.path().toUpper().toLocal8Bit(), QByteArray(), groups.toLocal8Bit()}};
        CCmtdChildFrame *frame = open(writeRecording(m_dir, "mapped", 200, 2, 0));
        PathMapEntries().clear();
        QVERIFY(frame);
        QVERIFY(frame->recording().FindUnitByName("Busbar Voltages"));
    }

    void recordingWithoutStatusOrSamples()
    {
        QTemporaryDir dir;
        CCmtdChildFrame *noStatus = open(writeRecording(dir, "nostatus", 300, 2, 0));
        QVERIFY(noStatus);
        QMenu *analysis = nullptr;
        const QList<QAction *> menus = m_main->menuBar()->actions();
        for (QAction *menu : menus) {
            if (menu->text() == QStringLiteral("Multi-Channels Analysis(&A)"))
                analysis = menu->menu();
        }
        QVERIFY(analysis);
        QVERIFY(!analysis->actions().contains(noStatus->action(CCmtdChildFrame::ActAnaStaEvn)));

        CCmtdChildFrame *empty = open(writeRecording(dir, "empty", 300, 2, 1, false));
        QVERIFY(empty);
        QCOMPARE(empty->currentPage(), 1);
        QVERIFY(!empty->frameToolBar()->isVisibleTo(empty));
        QVERIFY(!menuTitles(m_main->menuBar()).contains(QStringLiteral("View(&V)")));
    }

    void valueModesExcludeEachOther()
    {
        QTemporaryDir dir;
        CCmtdChildFrame *frame = open(writeRecording(dir, "modes", 300, 1, 0));
        QVERIFY(frame);
        using D = CCmtdDocument;
        const D::DisplayFlags &flags = frame->document()->displayFlags;
        const D::DisplayFlags values = D::ValueFundamental | D::ValueTrueRms;
        QCOMPARE(flags & values, D::ValueFundamental);
        frame->action(CCmtdChildFrame::ActValRms)->trigger();
        QCOMPARE(flags & values, D::ValueTrueRms);
        QVERIFY(!frame->action(CCmtdChildFrame::ActValHm1)->isChecked());
        frame->action(CCmtdChildFrame::ActValHm1)->trigger();
        QCOMPARE(flags & values, D::ValueFundamental);
        QVERIFY(!frame->action(CCmtdChildFrame::ActValRms)->isChecked());
        frame->action(CCmtdChildFrame::ActValAng)->trigger();
        QVERIFY(flags.testFlag(D::ValueAngle));
        QVERIFY(flags.testFlag(D::ValueFundamental));
    }

    void cancelKeepsWhatWasRead()
    {
        QTemporaryDir dir;
        // Long enough that the load is still running when the cancel arrives, even on a busy
        // machine.
        const QString path = writeRecording(dir, "long", 400000, 8, 2);
        CCmtdChildFrame *frame = openDocument(m_main, path);
        QVERIFY(frame);
        // Cancel at the first progress of the load.
        QMetaObject::Connection once;
        once = connect(frame->document(), &CCmtdDocument::extentChanged, frame, [&](int points) {
            if (points > 0) {
                frame->action(CCmtdChildFrame::ActServerStop)->trigger();
                disconnect(once);
            }
        });
        QVERIFY(waitIdle(frame));
        const int loaded = frame->recording().loadedPoints;
        QVERIFY2(loaded > 0 && loaded < 400000, qPrintable(QString::number(loaded)));
        QCOMPARE(frame->recording().datMessages.last().text, QByteArray("Cancel this processing by user!"));
        // The cancel stays for the frame's life.
        QVERIFY(frame->isCancelled());
        QVERIFY(frame->submitJob(3));
        QVERIFY(waitIdle(frame));
        QVERIFY(frame->isCancelled());
    }

    void closingDuringALoadReturnsPromptly()
    {
        QTemporaryDir dir;
        const QString path = writeRecording(dir, "close", 200000, 16, 0);
        QPointer<CCmtdChildFrame> frame = openDocument(m_main, path);
        QVERIFY(frame);
        QVERIFY(QTest::qWaitFor([&] { return frame->recording().loadedPoints > 0; }, 20000));
        QElapsedTimer timer;
        timer.start();
        frame->parentWidget()->close();
        QVERIFY(QTest::qWaitFor([&] { return frame.isNull(); }, 10000));
        QVERIFY2(timer.elapsed() < 5000, qPrintable(QString::number(timer.elapsed())));
    }
};

QTEST_MAIN(FrameTest)
#include "test_frame.moc"
