// The combination dialog: the base range from the cursors, an other recording taken in at the
// T1 of both windows, the refusals, and the combined recording read back.

#include "exactcopy.h"
#include "filecombindlg.h"
#include "frametestcase.h"

#include <QComboBox>
#include <QLabel>
#include <QLineEdit>
#include <QListWidget>
#include <QSpinBox>

class CombinTest : public FrameTestCase
{
    Q_OBJECT

private Q_SLOTS:
    void combineTwoRecordingsAtTheirCursors()
    {
        CCmtdChildFrame *base = open(writeSineRecording(m_dir, "base", 400));
        CCmtdChildFrame *other = open(writeSineRecording(m_dir, "other", 300));
        QVERIFY(base && other);
        base->waveView()->setCursorT1(50);
        base->waveView()->setCursorT2(349);
        other->waveView()->setCursorT1(20);
        CFileCombinDlg dialog({base, other});
        QCOMPARE(dialog.fromBox()->value(), 50);
        QCOMPARE(dialog.toBox()->value(), 349);
        // The other recording is taken in when chosen; its T1 lies on the base's.
        dialog.otherList()->setCurrentRow(1);
        QCOMPARE(dialog.otherList()->item(1)->checkState(), Qt::Checked);
        dialog.slot_alignFromCursors();
        QCOMPARE(dialog.alignBox()->value(), 20);
        QCOMPARE(dialog.baseAlignBox()->value(), 50);
        // Half a sample of 1 ms at each end: 1 ms of 20 ms is 18°.
        QVERIFY(dialog.alignNote()->text().contains(QStringLiteral("±18.00°")));
        // Only its first channel.
        for (int i = 1; i < dialog.channelList()->count(); ++i)
            dialog.channelList()->item(i)->setCheckState(Qt::Unchecked);
        const QString out = m_dir.filePath(QStringLiteral("both.cfg"));
        dialog.outputEdit()->setText(out);
        QString said;
        dialog.toBox()->setValue(52);
        pressWhenUp(&said, QStringLiteral("OK"));
        QVERIFY(!dialog.combine());
        QCOMPARE(said, QStringLiteral("The [Cutted-Sampling] is too few! need 5 Points at least!"));
        dialog.toBox()->setValue(349);
        QVERIFY(dialog.combine());
        QCOMPARE(dialog.resultPath(), out);

        // The base's three voltages and status, then the other's UA: its sample 20 on base
        // sample 50, which is the combined recording's first.
        CCmtd99File back;
        const QByteArray path = QFile::encodeName(out);
        QVERIFY(back.LoadFile(path.constData()));
        QVERIFY(back.LoadDat(path.constData(), nullptr, nullptr));
        QCOMPARE(back.loadedPoints, 300);
        QCOMPARE(int(back.analogMaps.size()), 4);
        const CChnMapAnalog &ua = *other->recording().analogMaps[0];
        for (int r = 0; r < 280; r += 13)
            QVERIFY(std::abs(back.analogMaps[3]->Value(r) - ua.Value(20 + r)) < 0.051f);
        QCOMPARE(back.analogMaps[3]->Value(285), 0.0f); // behind the other's end
    }

    // The picture of the user guide.
    void screenshotsForTheGuide()
    {
        GUIDE_PICTURES_OR_SKIP(folder);
        CCmtdChildFrame *base = open(QStringLiteral(VELDRIX_DEMO_DIR "/demo_line_fault.cfg"));
        QVERIFY(base);
        // A second recorder's view of the fault: the demo's currents from 60 ms before it.
        const CCmtd99File &demo = base->recording();
        CCmtd99File cut;
        QString error;
        QVERIFY(cut.CutFrom(demo, 200, 2499,
                            {demo.analogMaps[4].get(), demo.analogMaps[5].get(), demo.analogMaps[6].get()},
                            {}, "other", 0.0f, error));
        const QString otherPath = m_dir.filePath(QStringLiteral("second_recorder.cfg"));
        ExactCopyFormat format;
        QCOMPARE(SaveExactCopy(cut, otherPath, format, &error), ExactCopyResult::Written);
        CCmtdChildFrame *other = open(otherPath);
        QVERIFY(other);
        base->waveView()->setCursorT1(300);
        base->waveView()->setCursorT2(1500);
        CFileCombinDlg dialog({base, other});
        dialog.show();
        dialog.otherList()->setCurrentRow(1);
        dialog.slot_alignAtInception();
        QTest::qWait(300);
        QVERIFY(dialog.grab().save(folder + QStringLiteral("/combine-dialog.png")));
    }
};

QTEST_MAIN(CombinTest)
#include "test_combin.moc"
