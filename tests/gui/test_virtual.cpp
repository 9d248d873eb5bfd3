// Virtual channels derived from one channel: the setup dialogs, the new channel under its source
// while the worker fills it, one job at a time, and the removal from view, forms and recording.

#include "anaformcoordinatexy.h"
#include "anaformcoordinatexydlg.h"
#include "cmtdchildcontainer.h"
#include "cmtdviewananame.h"
#include "frametestcase.h"
#include "virchndlg.h"

#include <QCheckBox>
#include <QComboBox>
#include <QLineEdit>
#include <QSpinBox>

namespace {

// The row of the wave view that holds `channel`, or -1.
int rowOf(CCmtdChildFrame *frame, const CChnMapBase *channel)
{
    const auto &rows = frame->waveView()->rows;
    for (size_t i = 0; i < rows.size(); ++i) {
        if (rows[i].channels.contains(const_cast<CChnMapBase *>(channel)))
            return int(i);
    }
    return -1;
}

} // namespace

class VirtualChannelTest : public FrameTestCase
{
    Q_OBJECT

private Q_SLOTS:
    // The pictures of the user guide (tools/screenshots.sh); skipped without VELDRIX_SCREENSHOTS.
    void screenshotsForTheGuide()
    {
        GUIDE_PICTURES_OR_SKIP(folder);
        CCmtdChildFrame *frame = open(QStringLiteral(VELDRIX_DEMO_DIR "/demo_line_fault.cfg"));
        QVERIFY(frame);
        frame->showMaximized();
        CChnMapAnalog *ia = frame->recordingForJob().analogMaps[4].get();
        {
            CVirChnDlgHm dialog(frame->recordingForJob(), *ia);
            dialog.orderSpin()->setValue(2);
            dialog.show();
            QTest::qWait(200);
            QVERIFY(dialog.grab().save(folder + QStringLiteral("/virtual-channel-dialog.png")));
        }
        whenDialogUp<CVirChnDlgAvg>([](CVirChnDlgAvg *dialog) { dialog->accept(); });
        frame->deriveVirtualChannel(SeriesJobAverage, ia, rowOf(frame, ia));
        QVERIFY(waitIdle(frame));
        QTest::qWait(300);
        QVERIFY(m_main->grab().save(folder + QStringLiteral("/virtual-channel.png")));
    }

    void dialogsNameTheChannelFromTheirOptions()
    {
        CCmtdChildFrame *frame = open(writeSineRecording(m_dir, "names", 400));
        QVERIFY(frame);
        CCmtd99File &file = frame->recordingForJob();
        CChnMapAnalog &ua = *file.analogMaps[0];
        CVirChnDlgHm harmonic(file, ua);
        QCOMPARE(harmonic.windowTitle(), QStringLiteral("[Harmonious Part] Setup"));
        QVERIFY(harmonic.nameEdit()->isReadOnly());
        harmonic.orderSpin()->setValue(3);
        QVERIFY(harmonic.nameEdit()->text().startsWith(QStringLiteral("UA harm-3 ")));
        harmonic.dcBox()->setChecked(true); // the DC part is order 0
        QCOMPARE(harmonic.nameEdit()->text(), QStringLiteral("UA DC-Part"));
        QCOMPARE(harmonic.params().order, 0);
        // Renamed by hand, the name stops following the options; an empty one is refused.
        harmonic.renameBox()->setChecked(true);
        QVERIFY(!harmonic.nameEdit()->isReadOnly());
        harmonic.nameEdit()->clear();
        QString said;
        pressWhenUp(&said, QStringLiteral("OK"));
        harmonic.accept();
        QCOMPARE(said, QStringLiteral("Please specify the name of the new virtual channel!"));
        QVERIFY(!harmonic.channel());
        CVirChnDlgDelta delta(file, ua);
        delta.methodCombo()->setCurrentIndex(1);
        QCOMPARE(delta.nameEdit()->text(), QStringLiteral("UA Delta (0N)"));
    }

    void derivedChannelFillsUnderItsSourceAndIsDeleted()
    {
        CCmtdChildFrame *frame = open(writeSineRecording(m_dir, "derive", 400));
        QVERIFY(frame);
        const CCmtd99File &file = frame->recording();
        CChnMapAnalog *ub = file.analogMaps[1].get();
        whenDialogUp<CVirChnDlgAvg>([](CVirChnDlgAvg *dialog) { dialog->accept(); });
        frame->deriveVirtualChannel(SeriesJobAverage, ub, rowOf(frame, ub));
        QVERIFY(waitIdle(frame));
        QCOMPARE(file.analogMaps.size(), size_t(4));
        CChnMapAnalog *average = file.analogMaps[3].get();
        QVERIFY(average->isVirtual);
        QCOMPARE(QString::fromUtf8(average->Name()), QStringLiteral("UB DC-Part"));
        QCOMPARE(rowOf(frame, average), rowOf(frame, ub) + 1);
        // The one-cycle mean of a pure sine is nil once a cycle is in; the job's marks are gone.
        QVERIFY(std::abs(average->Value(200)) < 0.05f);
        QCOMPARE(average->flags & CChnMapBase::FlagJobMask, 0u);
        // The configuration page keeps to the file's channels.
        QCOMPARE(file.FileAnalogCount(), 3);

        // A form that works on the channel lets go of it when it is deleted; a "No" keeps it.
        whenDialogUp<CAnaFormCoordinateXYDlgReset>([](CAnaFormCoordinateXYDlgReset *dialog) {
            dialog->comboX()->setCurrentIndex(dialog->comboX()->count() - 1); // the new channel
            dialog->comboY()->setCurrentIndex(1);
            dialog->accept();
        });
        frame->action(CCmtdChildFrame::ActCoordinateXY)->trigger();
        auto *form = qobject_cast<CAnaFormCoordinateXY *>(frame->anaContainer()->form(13));
        QVERIFY(form);
        QCOMPARE(form->channelX(), average);
        QString said;
        pressWhenUp(&said, QStringLiteral("&No"));
        QVERIFY(!frame->deleteVirtualChannel(average));
        QCOMPARE(file.analogMaps.size(), size_t(4));
        pressWhenUp(&said, QStringLiteral("&Yes"));
        QVERIFY(frame->deleteVirtualChannel(average));
        QVERIFY(said.contains(QStringLiteral("UB DC-Part")));
        QVERIFY(form->channels().empty());
        QVERIFY(!form->channelX());
        QCOMPARE(file.analogMaps.size(), size_t(3));
        QCOMPARE(rowOf(frame, average), -1);
        // A file's channel cannot be deleted this way.
        QVERIFY(!frame->deleteVirtualChannel(ub));
    }

    void oneJobAtATime()
    {
        // A long channel, so that the first job is still running when the second is asked for.
        CCmtdChildFrame *frame = openInMemory(m_main, 1000000, 10000.0f, [](int n) {
            return float(100.0 * std::sin(2 * M_PI * 50.6 * n / 10000.0));
        });
        QVERIFY(frame);
        const CCmtd99File &file = frame->recording();
        CChnMapAnalog *u = file.analogMaps[0].get();
        whenDialogUp<CVirChnDlgFreqDft>([](CVirChnDlgFreqDft *dialog) { dialog->accept(); });
        frame->deriveVirtualChannel(SeriesJobFreqDft, u, 0);
        QVERIFY(frame->worker().pendingKind() != CCmtdThread::KindNone);
        // While it runs a delete is refused, and a further channel stands with zeros.
        QString said;
        pressWhenUp(&said, QStringLiteral("OK"));
        QVERIFY(!frame->deleteVirtualChannel(file.analogMaps[1].get()));
        QVERIFY(said.startsWith(QStringLiteral("A Background Service is Running Now")));
        whenDialogUp<CVirChnDlgAvg>([](CVirChnDlgAvg *dialog) { dialog->accept(); });
        frame->deriveVirtualChannel(SeriesJobAverage, u, 0);
        QVERIFY(waitIdle(frame, 60000));
        QCOMPARE(file.analogMaps.size(), size_t(3));
        // The DFT-insert estimate reads a deviation from 50 Hz mirrored: 50.6 Hz as about 49.4 Hz
        // (the two-cycle quotient takes the phase step with the opposite sign); the dialog says so.
        QVERIFY(std::abs(file.analogMaps[1]->Value(500000) - 49.4f) < 0.05f);
        QCOMPARE(file.analogMaps[2]->absMax, 0.0f);
    }
};

QTEST_MAIN(VirtualChannelTest)
#include "test_virtual.moc"
