// The curves of plant units: the setups' refusals of bad input, a power job on known phasors
// giving channels in kW, kvar and kVA under their inputs, and the setups prefilled from a
// generator and a transformer unit.

#include "cmtdviewananame.h"
#include "frametestcase.h"
#include "plantcurvedlg.h"
#include "units.h"

#include <QCheckBox>
#include <QComboBox>
#include <QDoubleSpinBox>
#include <QGroupBox>
#include <QLineEdit>
#include <QRadioButton>

#include <cmath>

namespace {

int rowOf(CCmtdChildFrame *frame, const CChnMapBase *channel)
{
    const auto &rows = frame->waveView()->rows;
    for (size_t i = 0; i < rows.size(); ++i) {
        if (rows[i].channels.contains(const_cast<CChnMapBase *>(channel)))
            return int(i);
    }
    return -1;
}

// Ua, Ub, Uc of 100 V peak and Ia, Ib, Ic of 5 A peak lagging them by 30 degrees.
const PhaseSet kLagging30{{100, 100, 100, 5, 5, 5}, {0, -120, 120, -30, -150, 90}};

// Chooses entry `text` of a channel combo.
void choose(QComboBox *combo, const char *text)
{
    const int at = combo->findText(QString::fromLatin1(text), Qt::MatchEndsWith);
    QVERIFY2(at > 0, text);
    combo->setCurrentIndex(at);
}

CChnMapAnalog *channelNamed(const CCmtd99File &file, const char *name)
{
    for (const auto &map : file.analogMaps) {
        if (qstrcmp(map->Name(), name) == 0)
            return map.get();
    }
    return nullptr;
}

} // namespace

class PlantCurveTest : public FrameTestCase
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
        frame->unitChooser()->setCurrentIndex(1); // the demo's line
        const CmtdInfTrwk_Unit *line = frame->recording().lineUnits.front().get();
        {
            CPowerCurveDlg dialog(frame->recordingForJob(), line);
            dialog.show();
            QTest::qWait(200);
            QVERIFY(dialog.grab().save(folder + QStringLiteral("/power-curve-dialog.png")));
        }
        whenDialogUp<CPowerCurveDlg>([](CPowerCurveDlg *dialog) {
            for (uint32_t place : {PowerPhaseA, PowerPhaseB, PowerPhaseC})
                dialog->curveBox(place)->setChecked(false);
            dialog->accept();
        });
        frame->action(CCmtdChildFrame::ActAnaPqs)->trigger();
        QVERIFY(waitIdle(frame));
        QTest::qWait(300);
        QVERIFY(m_main->grab().save(folder + QStringLiteral("/power-curves.png")));
    }

    void setupsRefuseBadInput()
    {
        CCmtdChildFrame *frame = open(writePhasorRecording(m_dir, "refuse", kLagging30));
        QVERIFY(frame);
        CCmtd99File &file = frame->recordingForJob();
        QString said;

        CPowerCurveDlg power(file, nullptr);
        QVERIFY(power.prefixEdit()->text().isEmpty());
        pressWhenUp(&said, QStringLiteral("OK"));
        power.accept();
        QCOMPARE(said, QStringLiteral("Please choose the voltage and the current of at least one phase!"));
        choose(power.voltageCombo(1), "Ub");
        choose(power.currentCombo(1), "Ib");
        for (uint32_t kind : {PowerActive, PowerReactive, PowerApparent})
            power.curveBox(kind)->setChecked(false);
        pressWhenUp(&said, QStringLiteral("OK"));
        power.accept();
        QVERIFY(said.startsWith(QStringLiteral("Please tick at least one of P, Q and S")));
        power.curveBox(PowerActive)->setChecked(true);
        for (uint32_t place : {PowerPhaseB, PowerTotal})
            power.curveBox(place)->setChecked(false);
        pressWhenUp(&said, QStringLiteral("OK"));
        power.accept(); // phases A and C ticked, but only B has channels
        QCOMPARE(said, QStringLiteral("None of the ticked phases has both a voltage and a current channel!"));

        CUfCurveDlg uf(file, nullptr);
        choose(uf.voltageCombo(), "Ua");
        pressWhenUp(&said, QStringLiteral("OK"));
        uf.accept();
        QVERIFY(said.startsWith(QStringLiteral("Please give the winding's rated voltage")));

        CLoadAngleDlg angle(file, nullptr);
        choose(angle.voltageCombo(0), "Ua");
        choose(angle.currentCombo(0), "Ia");
        angle.ratedKvSpin()->setValue(15.75);
        angle.ratedMvaSpin()->setValue(200.0);
        pressWhenUp(&said, QStringLiteral("OK"));
        angle.accept();
        QVERIFY(said.startsWith(QStringLiteral("Xq must be above 0 p.u.")));
        // Nothing was made by the refused setups.
        QVERIFY(power.made().empty() && uf.made().empty() && angle.made().empty());
        QCOMPARE(file.analogMaps.size(), size_t(6));
    }

    void powerOfKnownPhasorsInKilowatts()
    {
        CCmtdChildFrame *frame = open(writePhasorRecording(m_dir, "power", kLagging30));
        QVERIFY(frame);
        const CCmtd99File &file = frame->recording();
        whenDialogUp<CPowerCurveDlg>([](CPowerCurveDlg *dialog) {
            const char *names[] = {"Ua", "Ub", "Uc", "Ia", "Ib", "Ic"};
            for (int p = 0; p < 3; ++p) {
                choose(dialog->voltageCombo(p), names[p]);
                choose(dialog->currentCombo(p), names[p + 3]);
            }
            for (uint32_t place : {PowerPhaseB, PowerPhaseC})
                dialog->curveBox(place)->setChecked(false);
            dialog->accept();
        });
        frame->action(CCmtdChildFrame::ActAnaPqs)->trigger();
        QVERIFY(waitIdle(frame));
        // P, Q, S of phase A and of the total: six channels.
        QCOMPARE(file.analogMaps.size(), size_t(12));
        // Per phase ½·100·5·cos 30° = 216.506 W and ½·100·5·sin 30° = 125 var; three phases
        // 649.519 W, 375 var, 750 VA. Peaks of 750 VA in all stay below a megawatt: kW. The samples'
        // steps of 0.01 (a fifth of a percent of the current) allow a tenth of a percent.
        const struct
        {
            const char *name;
            const char *unit;
            double value;
        } expected[] = {{"P A", "kW", 0.2165064}, {"Q A", "kvar", 0.125}, {"S A", "kVA", 0.25},
                        {"P", "kW", 0.6495191},   {"Q", "kvar", 0.375},   {"S", "kVA", 0.75}};
        const int below = rowOf(frame, file.analogMaps[5].get());
        for (const auto &e : expected) {
            const CChnMapAnalog *chn = channelNamed(file, e.name);
            QVERIFY2(chn, e.name);
            QVERIFY(chn->isVirtual);
            QCOMPARE(chn->config->uu, QByteArray(e.unit));
            QCOMPARE(QByteArray(chn->unit.text), QByteArray(e.unit));
            QVERIFY2(std::abs(chn->Value(200) - e.value) < 1e-3 * e.value,
                     qPrintable(QString::number(chn->Value(200))));
            QCOMPARE(chn->flags & CChnMapBase::FlagJobMask, 0u);
            QVERIFY(rowOf(frame, chn) > below); // under the last input, Ic
        }
        QCOMPARE(rowOf(frame, channelNamed(file, "P A")), below + 1);
    }

    void setupsPrefilledFromTheUnit()
    {
        const QString cfg = writePhasorRecording(m_dir, "units", kLagging30);
        QFile inf(QString(cfg).replace(QStringLiteral(".cfg"), QStringLiteral(".inf")));
        QVERIFY(inf.open(QIODevice::WriteOnly));
        inf.write("[TRWK Transformer_#1]\nDEV_ID=1,T1\nCAPACITY=240\nWINDING_NUM=2\nH_PARAM=Yn, 220, 1\n"
                  "L_PARAM=D11, 15.75, 1\nTA_Id_#1=4,5,6\nH_TV_CHNS=1,2,3\n"
                  "[TRWK Power_#1]\nDEV_ID=2,G1\nCAPACITY=200\nFREQ=50\nV1=15.75\nX=1.8,1.7,0.3,0.2\n"
                  "IGT_DIR=0\nTA_CHNS=4,5,6\nTV_CHNS=1,2,3\n");
        inf.close();
        CCmtdChildFrame *frame = open(cfg);
        QVERIFY(frame);
        CCmtd99File &file = frame->recordingForJob();
        QCOMPARE(file.transformerUnits.size(), size_t(1));
        const CmtdInfTrwk_Unit *trm = file.transformerUnits.front().get();

        // The transformer's high winding, then its low one, which has no voltage channels.
        CUfCurveDlg uf(file, trm);
        QCOMPARE(uf.prefixEdit()->text(), QStringLiteral("T1"));
        QVERIFY(uf.voltageCombo()->currentText().endsWith(QStringLiteral("Ua")));
        QCOMPARE(uf.ratedKvSpin()->value(), 220.0);
        QCOMPARE(uf.sideCombo()->count(), 2);
        uf.sideCombo()->setCurrentIndex(1);
        QCOMPARE(uf.voltageCombo()->currentIndex(), 0);
        QCOMPARE(uf.ratedKvSpin()->value(), 15.75);
        CPowerCurveDlg power(file, trm);
        QVERIFY(power.currentCombo(2)->currentText().endsWith(QStringLiteral("Ic")));
        QVERIFY(power.primaryButton()->isChecked());
        QVERIFY(!power.secondBranch()->isChecked());

        // The generator chosen in the selector fills the load angle's setup, and its job runs:
        // Eq = U + j·Xq·I with Xq = 1.7 · 15.75² / 200 ohm, U = 100∠0°, I = 5∠-30° (peaks).
        frame->unitChooser()->setCurrentIndex(2);
        bool prefilled = false;
        whenDialogUp<CLoadAngleDlg>([&prefilled](CLoadAngleDlg *dialog) {
            prefilled = dialog->prefixEdit()->text() == QStringLiteral("G1") &&
                        dialog->currentCombo(1)->currentText().endsWith(QStringLiteral("Ib")) &&
                        dialog->xqSpin()->value() == 1.7 && dialog->ratedMvaSpin()->value() == 200.0;
            dialog->accept();
        });
        frame->action(CCmtdChildFrame::ActPwrAng)->trigger();
        QVERIFY(waitIdle(frame));
        QVERIFY(prefilled);
        const CChnMapAnalog *delta = channelNamed(file, "G1 Delta");
        QVERIFY(delta);
        const long double pi = 3.141592653589793238L;
        const long double xq = 1.7L * 15.75L * 15.75L / 200.0L;
        const long double re = 100.0L + xq * 5.0L * std::sin(-30.0L * pi / 180.0L) * -1.0L;
        const long double im = xq * 5.0L * std::cos(-30.0L * pi / 180.0L);
        const double degrees = double(std::atan2(im, re) * 180.0L / pi);
        QVERIFY2(std::abs(delta->Value(200) - degrees) < 0.01,
                 qPrintable(QString::number(delta->Value(200))));
    }
};

QTEST_MAIN(PlantCurveTest)
#include "test_plantcurves.moc"
