// The cut form: its refusals, a thinned cut written, read back and opened, the ".csv" table,
// and the date-time name of a new cut.

#include "anaformfilecut.h"
#include "cmtdchildcontainer.h"
#include "frametestcase.h"

#include <QComboBox>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QTreeWidget>

namespace {

// The test recording's analog value: raw (7n + c) mod 2000 - 1000 at 0.1 V a step.
double sourceValue(int n, int c)
{
    return ((n * 7 + c) % 2000 - 1000) * 0.1;
}

} // namespace

class CutFormTest : public FrameTestCase
{
    Q_OBJECT

    // Opens the form on a recording of 400 samples at 1 kHz, three analog and two status
    // channels, the cursors on samples `t1` and `t2`.
    CAnaFormFileCut *openCut(CCmtdChildFrame *&frame, int t1, int t2)
    {
        frame = open(writeRecording(m_dir, "source", 400, 3, 2));
        if (!frame)
            return nullptr;
        frame->waveView()->setCursorT2(t2);
        frame->waveView()->setCursorT1(t1);
        frame->action(CCmtdChildFrame::ActFileCut)->trigger();
        return qobject_cast<CAnaFormFileCut *>(frame->anaContainer()->form(1));
    }

    // Leaves only these rows of the channel list checked (0 .. 2 analog, 3 and 4 status).
    static void check(CAnaFormFileCut *form, std::initializer_list<int> rows)
    {
        form->slot_btnNone();
        for (int row : rows) {
            QTreeWidgetItem *root = form->channelTree()->topLevelItem(row < 3 ? 0 : 1);
            root->child(row < 3 ? row : row - 3)->setCheckState(0, Qt::Checked);
        }
    }

    // Presses Cut and gives the text of the box that comes up, answered with `button`.
    static QString cutSaying(CAnaFormFileCut *form, const QString &button = QStringLiteral("OK"))
    {
        QString said;
        pressWhenUp(&said, button);
        form->findChild<QPushButton *>(QStringLiteral("btnCut"))->click();
        return said;
    }

private Q_SLOTS:
    void refusalsLeaveNothingWritten()
    {
        CCmtdChildFrame *frame = nullptr;
        CAnaFormFileCut *form = openCut(frame, 100, 103);
        QVERIFY(form);
        // The range read-out follows the cursors, numbered as the wave's read-outs.
        const QString range = form->rangeLabel()->text();
        QVERIFY2(range.startsWith(QStringLiteral("From Point 100 (")) &&
                     range.contains(QStringLiteral(") to Point 103 (")) &&
                     range.endsWith(QStringLiteral(": 4 Points")),
                 qPrintable(range));
        form->nameEdit()->setText(m_dir.filePath(QStringLiteral("refused.cfg")));

        form->slot_btnNone();
        QVERIFY(form->channels().empty());
        QCOMPARE(cutSaying(form), QStringLiteral("Please Choose Channels to Cutted File!"));
        form->slot_btnAll();
        QCOMPARE(form->channels().size(), size_t(5));
        // Four samples are one too few; five pass the range test but thinning by 2 leaves two.
        QCOMPARE(cutSaying(form),
                 QStringLiteral("The Points is too Few in Cutted File! Request NOT Less Than 5 Points!"));
        frame->waveView()->setCursorT2(104);
        QVERIFY(form->rangeLabel()->text().endsWith(QStringLiteral(": 5 Points")));
        form->rateCombo()->setCurrentIndex(1);
        QCOMPARE(form->rateCombo()->currentText(), QStringLiteral("500 Hz"));
        QCOMPARE(cutSaying(form),
                 QStringLiteral("The Points is too Few in Cutted File! Request NOT Less Than 5 Points!"));
        // While the worker runs, nothing is cut.
        frame->document()->setBackgroundBit(CCmtdChildFrame::StateBusy, true);
        QCOMPARE(
            cutSaying(form),
            QStringLiteral("A Background Service is Running Now, Please Retry this Operation for a moment!"));
        frame->document()->setBackgroundBit(CCmtdChildFrame::StateBusy, false);
        QVERIFY(!QFile::exists(m_dir.filePath(QStringLiteral("refused.cfg"))));
    }

    void thinnedCutReadsBackAndOpens()
    {
        CCmtdChildFrame *frame = nullptr;
        // T1 after T2: the range is the same from the lower to the higher sample.
        CAnaFormFileCut *form = openCut(frame, 299, 100);
        QVERIFY(form);
        check(form, {0, 2, 4});
        QCOMPARE(form->channels().size(), size_t(3));
        QVERIFY(frame->recording().analogMaps[0]->flags & CChnMapBase::FlagRelated);
        QVERIFY(!(frame->recording().analogMaps[1]->flags & CChnMapBase::FlagRelated));
        form->rateCombo()->setCurrentIndex(1); // 500 Hz: every second sample of the 1 kHz source
        form->formCombo()->setCurrentIndex(CAnaFormFileCut::FormAscii);
        const QString path = m_dir.filePath(QStringLiteral("thinned.cfg"));
        form->nameEdit()->setText(path);
        QCOMPARE(cutSaying(form, QStringLiteral("&Yes")),
                 QStringLiteral("The Cutted File Saved Success, Open it Now?"));
        QVERIFY(QFile::exists(m_dir.filePath(QStringLiteral("thinned.inf"))));
        QVERIFY(fileBytes(m_dir.filePath(QStringLiteral("thinned.cfg"))).contains("ASCII"));

        CCmtd99File cut;
        QVERIFY(cut.LoadFile(path.toLocal8Bit().constData()) &&
                cut.LoadDat(path.toLocal8Bit().constData(), nullptr, nullptr));
        QCOMPARE(cut.loadedPoints, 100);
        QCOMPARE(cut.segments.size(), size_t(1));
        QCOMPARE(cut.segments[0].rate, 500.0f);
        QCOMPARE(cut.FileAnalogStoreCount(), 2);
        QCOMPARE(cut.statusMaps.size(), size_t(1));
        QCOMPARE(cut.analogChannels[0]->ch_id, QByteArray("U1"));
        QCOMPARE(cut.analogChannels[1]->ch_id, QByteArray("U3"));
        QCOMPARE(cut.statusChannels[0]->ch_id, QByteArray("Trip2"));
        for (int j : {0, 1, 50, 99}) {
            const int n = 100 + 2 * j;
            QVERIFY2(std::abs(cut.analogMaps[0]->Value(j) - sourceValue(n, 0)) < 1e-4,
                     qPrintable(QString::number(j)));
            QVERIFY(std::abs(cut.analogMaps[1]->Value(j) - sourceValue(n, 2)) < 1e-4);
            QCOMPARE(cut.statusMaps[0]->Bit(j) != 0, n > 200);
        }
        // The answer Yes opens the new recording beside the source.
        QTRY_COMPARE(m_main->children().size(), 2);
        QVERIFY(m_main->children().at(1)->fileName().endsWith(QStringLiteral("thinned.cfg")));
    }

    void csvTableOfTheRange()
    {
        CCmtdChildFrame *frame = nullptr;
        CAnaFormFileCut *form = openCut(frame, 100, 104);
        QVERIFY(form);
        check(form, {1, 3});
        form->formCombo()->setCurrentIndex(CAnaFormFileCut::FormCsv);
        QVERIFY(form->nameEdit()->text().endsWith(QStringLiteral(".csv")));
        form->nameEdit()->setText(m_dir.filePath(QStringLiteral("table")));
        const QString path = m_dir.filePath(QStringLiteral("table.csv"));
        QCOMPARE(form->outputPath(), path);
        QCOMPARE(cutSaying(form),
                 QStringLiteral("The Cutted File Saved:\n") + QDir::toNativeSeparators(path));
        // Sample 101 lies on the trigger; a millisecond a sample; U2 = (7n + 1) mod 2000 - 1000
        // steps of 0.1 V; Trip1 rises after sample 200 of the file's 400.
        const QList<QByteArray> lines = fileBytes(path).split('\n');
        QCOMPARE(lines.size(), 7);
        QCOMPARE(lines[0], QByteArray("Index,Relating time(microsecond),U2(V),Trip1"));
        QCOMPARE(lines[1], QByteArray("101,0.000,-29.900000,0"));
        QCOMPARE(lines[5], QByteArray("105,4000.000,-27.100000,0"));
        QVERIFY(!QFile::exists(m_dir.filePath(QStringLiteral("table.inf"))));
        // The name for the next cut is new, in the same folder.
        QVERIFY(form->nameEdit()->text() != path);
        QCOMPARE(QFileInfo(form->nameEdit()->text()).absolutePath(), QFileInfo(path).absolutePath());
    }

    void dateTimeNameInTheSourceFolder()
    {
        const QDateTime at(QDate(2024, 3, 5), QTime(7, 8, 9, 10));
        QCOMPARE(CutFileBaseName(QStringLiteral("/data/rec"), at, 42),
                 QStringLiteral("/data/rec/2024-03-05@07-08-09.000042"));
        CCmtdChildFrame *frame = nullptr;
        CAnaFormFileCut *form = openCut(frame, 100, 200);
        QVERIFY(form);
        static const QRegularExpression rule(
            QStringLiteral("^(.*)/\\d{4}-\\d\\d-\\d\\d@\\d\\d-\\d\\d-\\d\\d\\.\\d{6}\\.cfg$"));
        const QRegularExpressionMatch m = rule.match(form->nameEdit()->text());
        QVERIFY2(m.hasMatch(), qPrintable(form->nameEdit()->text()));
        QCOMPARE(m.captured(1), QFileInfo(m_dir.filePath(QStringLiteral("source.cfg"))).canonicalPath());
    }

    void screenshotsForTheGuide()
    {
        GUIDE_PICTURES_OR_SKIP(folder);
        CCmtdChildFrame *frame = open(QStringLiteral(VELDRIX_DEMO_DIR "/demo_line_fault.cfg"));
        QVERIFY(frame);
        frame->showMaximized();
        frame->waveView()->setCursorT1(420);
        frame->waveView()->setCursorT2(900);
        frame->action(CCmtdChildFrame::ActFileCut)->trigger();
        auto *form = qobject_cast<CAnaFormFileCut *>(frame->anaContainer()->form(1));
        QVERIFY(form);
        QTest::qWait(300);
        QVERIFY(m_main->grab().save(folder + QStringLiteral("/cut-form.png")));
    }
};

QTEST_MAIN(CutFormTest)
#include "test_cutform.moc"
