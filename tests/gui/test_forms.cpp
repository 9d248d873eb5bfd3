// The analysis forms on the wave page: the shared play, zoom and tick rules, and the vector and
// sequence forms on recordings of known phasors.

#include "anaformchngrpseq.h"
#include "anaformchngrpseqdlgreset.h"
#include "anaformchngrpstaevn.h"
#include "anaformchngrpvec.h"
#include "anaformchngrpvecdlgreset.h"
#include "anaformcoordinatexy.h"
#include "anaformcoordinatexydlg.h"
#include "cmtdchildcontainer.h"
#include "frametestcase.h"
#include "vectorview.h"

#include <QComboBox>
#include <QLineEdit>
#include <QListWidget>
#include <QSpinBox>
#include <QTableWidget>
#include <QToolButton>

#include <complex>
#include <numbers>

namespace {

double degreesOf(const VectorItem &item)
{
    return std::atan2(double(item.fIm), double(item.fRe)) * 180.0 / std::numbers::pi;
}

std::complex<double> phasorOf(const VectorItem &item)
{
    return {double(item.fRe), double(item.fIm)};
}

const PhaseSet kUnbalanced = {{100, 80, 120, 50, 70, 30}, {30, -100, 140, -20, -150, 95}};

} // namespace

class FormsTest : public FrameTestCase
{
    Q_OBJECT

    CAnaFormChnGrpVec *openVectorForm(CCmtdChildFrame *frame, std::initializer_list<int> rows)
    {
        whenDialogUp<CAnaFormChnGrpVecDlgReset>([rows](CAnaFormChnGrpVecDlgReset *dialog) {
            const QList<QListWidgetItem *> all =
                dialog->offered()->findItems(QStringLiteral("*"), Qt::MatchWildcard);
            for (int row : rows)
                dialog->slot_lstLeftDbClicked(all.value(row));
            dialog->accept();
        });
        frame->action(CCmtdChildFrame::ActAnaVec)->trigger();
        return qobject_cast<CAnaFormChnGrpVec *>(frame->anaContainer()->form(7));
    }

private Q_SLOTS:
    void tickLadder_data()
    {
        QTest::addColumn<float>("raw");
        QTest::addColumn<float>("step");
        QTest::addColumn<QString>("format");
        QTest::newRow("below the ladder") << 0.00001f << 0.0001f << "%.4f";
        QTest::newRow("thousandths") << 0.0011f << 0.002f << "%.3f";
        QTest::newRow("one and a half hundredths") << 0.012f << 0.015f << "%.3f";
        QTest::newRow("hundredths") << 0.016f << 0.02f << "%.2f";
        QTest::newRow("one and a half tenths") << 0.11f << 0.15f << "%.2f";
        QTest::newRow("tenths") << 0.26f << 0.3f << "%.1f";
        QTest::newRow("a ladder value itself") << 0.5f << 0.5f << "%.1f";
        QTest::newRow("one and a half") << 1.2f << 1.5f << "%.1f";
        QTest::newRow("two and a half") << 2.1f << 2.5f << "%.1f";
        QTest::newRow("whole") << 2.6f << 3.0f << "%.0f";
        QTest::newRow("hundreds") << 120.0f << 150.0f << "%.0f";
        QTest::newRow("beyond the ladder") << 12000.0f << 10000.0f << "%.0f";
    }

    void tickLadder()
    {
        QFETCH(float, raw);
        QFETCH(float, step);
        QFETCH(QString, format);
        QString chosen;
        QCOMPARE(CAnaViewBase::niceStep(raw, chosen), step);
        QCOMPARE(chosen, format);
    }

    void zoomStaysWithinItsLimits()
    {
        CAnaViewBase view(nullptr, nullptr);
        view.zoomBy(1.0e6f);
        view.zoomBy(1.0e6f);
        QCOMPARE(view.m_fZoom, 10000.0f);
        view.zoomBy(-1.0f);
        QCOMPARE(view.m_fZoom, 1.0f);
        for (int i = 0; i < 200; ++i)
            view.zoomBy(1.0f / 1.1f);
        QCOMPARE(view.m_fZoom, 0.0001f);
        // The world range and scale give the content size at the zoom.
        view.m_fScaleX = view.m_fScaleY = 2.0f;
        view.zoomBy(-1.0f);
        QCOMPARE(view.m_nDocW, 200);
        QCOMPARE(view.m_nDocH, 200);
    }

    void diagramOriginAndAxes()
    {
        // A world of -10..10 by -5..5 at 20 pixels per unit, margins left and bottom.
        CAnaViewBase view(nullptr, nullptr);
        view.m_fXMin = -10.0f;
        view.m_fXMax = 10.0f;
        view.m_fYMin = -5.0f;
        view.m_fYMax = 5.0f;
        view.m_fScaleX = view.m_fScaleY = 20.0f;
        view.m_nMarginL = 40;
        view.m_nMarginB = 30;
        view.resize(440, 330);
        view.updateContentSize();
        QCOMPARE(view.m_nDocW, 400);
        QCOMPARE(view.m_nDocH, 200);
        // Width 400 from the viewport and the content alike; height 300 from the viewport.
        const QPoint origin = view.diagramOrigin(view.size());
        QCOMPARE(origin, QPoint(240, 150));
        QImage image(view.size(), QImage::Format_ARGB32);
        QPainter painter(&image);
        view.drawContents(painter, view.rect());
        painter.end();
        // The horizontal axis runs through the origin in the axis colour; the left margin
        // strip has the background colour.
        QCOMPARE(image.pixel(origin.x() + 100, origin.y()), view.colour(2));
        QCOMPARE(image.pixel(5, 5), view.colour(1));
    }

    void vectorFormTurnsToTheFirstAndHidesVectors()
    {
        CCmtdChildFrame *frame = open(writePhasorRecording(m_dir, "vec", kUnbalanced));
        QVERIFY(frame);
        frame->waveView()->setCursorT1(200); // a whole number of cycles: the phasors stand at φ
        CAnaFormChnGrpVec *form = openVectorForm(frame, {1, 0, 3});
        QVERIFY(form);
        QCOMPARE(frame->anaContainer()->currentFormNumber(), 7);
        QVERIFY(frame->action(CCmtdChildFrame::ActAnaVec)->isChecked());
        const auto &items = form->view()->items;
        QCOMPARE(items.size(), size_t(3));
        // The rows in the chosen order, Ub first: reference mode turns it to 0°.
        QCOMPARE(form->table()->item(0, CAnaFormVectorBase::ColName)->text(), QStringLiteral("2:Ub"));
        QVERIFY(std::abs(degreesOf(items[0])) < 1e-3);
        QVERIFY(std::abs(degreesOf(items[1]) - (30.0 + 100.0)) < 0.05);
        QVERIFY(std::abs(degreesOf(items[2]) - (-20.0 + 100.0)) < 0.05);
        QVERIFY(form->table()
                    ->item(0, CAnaFormVectorBase::ColVector)
                    ->text()
                    .contains(QStringLiteral("(Ang)0.000(Deg)")));
        // The full scale of a class is 1.1 times the largest sample of its channels: Ua at 30°
        // sampled every 18° peaks at 84°; Ia at -20° at 88°.
        const double deg = std::numbers::pi / 180;
        QVERIFY(std::abs(items[0].fMax - 1.1 * 100.0 * std::sin(84 * deg)) < 1e-2);
        QVERIFY(std::abs(items[2].fMax - 1.1 * 50.0 * std::sin(88 * deg)) < 1e-2);
        // Revolving: the true angles.
        form->modeCombo()->setCurrentIndex(CAnaFormChnGrpVec::ModeRevolving);
        QVERIFY(std::abs(degreesOf(items[0]) + 100.0) < 0.05);
        // The current zoom leaves the voltages alone; a reset brings the gain back to 1.
        form->slot_btnZoomInA();
        form->slot_btnZoomInA();
        QCOMPARE(items[0].fGain, 1.0f);
        QCOMPARE(items[2].fGain, 1.1f * 1.1f);
        form->slot_btnZoomResA();
        QCOMPARE(items[2].fGain, 1.0f);
        // A click on the enable icon hides the vector; a click elsewhere does nothing.
        form->slot_cellClicked(1, CAnaFormVectorBase::ColName);
        QCOMPARE(items[1].nFlags, 0u);
        form->slot_cellClicked(1, CAnaFormVectorBase::ColEnable);
        QCOMPARE(items[1].nFlags, uint32_t(VectorItem::Hidden));
        // The form follows T1: a quarter cycle on, each vector turns by 90°.
        frame->waveView()->setCursorT1(205);
        QVERIFY(std::abs(degreesOf(items[0]) + 10.0) < 0.05);
        // The channels are marked related while the form is on show, and no longer after.
        QVERIFY(frame->recording().analogMaps[1]->flags & CChnMapBase::FlagRelated);
        // The sequence form asks for its groups; a cancel leaves the page without a form.
        whenDialogUp<CAnaFormChnGrpSeqDlgReset>([](CAnaFormChnGrpSeqDlgReset *dialog) { dialog->reject(); });
        frame->action(CCmtdChildFrame::ActAnaSeq)->trigger();
        QCOMPARE(frame->anaContainer()->currentFormNumber(), -1);
        QVERIFY(!(frame->recording().analogMaps[1]->flags & CChnMapBase::FlagRelated));
        QVERIFY(!frame->action(CCmtdChildFrame::ActAnaVec)->isChecked());
        // Shown again, the form keeps its channels without asking.
        frame->action(CCmtdChildFrame::ActAnaVec)->trigger();
        QCOMPARE(frame->anaContainer()->currentFormNumber(), 7);
        QCOMPARE(form->channels().size(), size_t(3));
    }

    void sequencePartsOfAnUnbalancedSet()
    {
        CCmtdChildFrame *frame = open(writePhasorRecording(m_dir, "seq", kUnbalanced));
        QVERIFY(frame);
        frame->waveView()->setCursorT1(300);
        whenDialogUp<CAnaFormChnGrpSeqDlgReset>([](CAnaFormChnGrpSeqDlgReset *dialog) {
            // Choosing Ua fills Ub and Uc from the phases that follow it; the currents stay out.
            dialog->voltageCombo(0)->setCurrentIndex(1);
            dialog->accept();
        });
        frame->action(CCmtdChildFrame::ActAnaSeq)->trigger();
        auto *form = qobject_cast<CAnaFormChnGrpSeq *>(frame->anaContainer()->form(8));
        QVERIFY(form);
        QCOMPARE(form->voltageMask(), uint16_t(7));
        QCOMPARE(form->currentMask(), uint16_t(0));
        QVERIFY(!form->table()->isRowHidden(CAnaFormChnGrpSeq::RowU1));
        QVERIFY(form->table()->isRowHidden(CAnaFormChnGrpSeq::RowI1));
        QVERIFY(form->table()->isRowHidden(CAnaFormChnGrpSeq::RowIa + 2));
        QCOMPARE(form->table()->item(CAnaFormChnGrpSeq::RowU1 + 2, CAnaFormVectorBase::ColName)->text(),
                 QStringLiteral("U0"));
        QCOMPARE(form->table()->item(CAnaFormChnGrpSeq::RowUa + 1, CAnaFormChnGrpSeq::ColChannels)->text(),
                 QStringLiteral("2:Ub"));

        // The sequence rows against the phase rows the form shows, combined independently.
        const auto &items = form->view()->items;
        const std::complex<double> a = std::polar(1.0, 2 * std::numbers::pi / 3);
        const std::complex<double> A = phasorOf(items[6]), B = phasorOf(items[7]), C = phasorOf(items[8]);
        const std::complex<double> expected[3] = {(A + a * B + a * a * C) / 3.0,
                                                  (A + a * a * B + a * C) / 3.0, (A + B + C) / 3.0};
        for (int i = 0; i < 3; ++i) {
            const std::complex<double> shown = phasorOf(items[size_t(i)]);
            QVERIFY2(std::abs(shown - expected[i]) <= 1e-6 * std::abs(expected[i]) + 1e-5,
                     qPrintable(QStringLiteral("row %1").arg(i)));
        }
        // And against the set as designed, to the precision of the samples.
        const std::complex<double> designed[3] = {std::polar(100.0, 30 * std::numbers::pi / 180),
                                                  std::polar(80.0, -100 * std::numbers::pi / 180),
                                                  std::polar(120.0, 140 * std::numbers::pi / 180)};
        const std::complex<double> positive = (designed[0] + a * designed[1] + a * a * designed[2]) / 3.0;
        QVERIFY(std::abs(phasorOf(items[0]) - positive) < 1e-2);
    }

    void playWalksT1ThroughTheRange()
    {
        CCmtdChildFrame *frame = open(writePhasorRecording(m_dir, "play", kUnbalanced));
        QVERIFY(frame);
        CAnaFormChnGrpVec *form = openVectorForm(frame, {0});
        QVERIFY(form);
        auto *play = form->findChild<QToolButton *>(QStringLiteral("btnPlay"));
        auto *rate = form->findChild<QSpinBox *>(QStringLiteral("spinRate"));
        auto *distance = form->findChild<QSpinBox *>(QStringLiteral("spinDistance"));
        rate->setValue(1);
        distance->setValue(4);
        // T1 after T2: the play runs from the lower to the higher sample.
        frame->waveView()->setCursorT1(160);
        frame->waveView()->setCursorT2(100);
        play->click();
        QCOMPARE(form->playFrom(), 100);
        QCOMPARE(frame->waveView()->cursorT2, 160);
        QVERIFY(play->isChecked());
        QVERIFY(QTest::qWaitFor([play] { return !play->isChecked(); }, 5000));
        QCOMPARE(frame->waveView()->cursorT1, 160);
        // Play again at the end of the range: too short now, so the stored range is replayed.
        play->click();
        QVERIFY(play->isChecked());
        QVERIFY(frame->waveView()->cursorT1 <= 105);
        QVERIFY(QTest::qWaitFor([play] { return !play->isChecked(); }, 5000));
        QCOMPARE(form->playFrom(), 100);
        // Too short on a form that never played: the engineer is told, and the cursors stay.
        frame->waveView()->setCursorT1(150);
        frame->waveView()->setCursorT2(151);
        QString said;
        CAnaFormChnGrpVec fresh(7, frame, frame->anaContainer());
        fresh.setChannels({frame->recording().analogMaps[0].get()});
        auto *freshPlay = fresh.findChild<QToolButton *>(QStringLiteral("btnPlay"));
        pressWhenUp(&said, QStringLiteral("OK"));
        freshPlay->click();
        QCOMPARE(said, QStringLiteral(
                           "The Range to Play Is Too Short! Please Choose Not Less Then 5 Sampling Points!"));
        QVERIFY(!freshPlay->isChecked());
        QCOMPARE(frame->waveView()->cursorT1, 150);
    }

    void choiceLimitsAndTheBusyRefusal()
    {
        CCmtdChildFrame *frame = open(writeRecording(m_dir, "nine", 200, 9, 0));
        QVERIFY(frame);
        QString said;
        {
            CAnaFormChnGrpVecDlgReset dialog(frame->recording(), 0, {}, nullptr);
            QCOMPARE(dialog.offered()->count(), 9);
            pressWhenUp(&said, QStringLiteral("OK"));
            dialog.accept();
            QCOMPARE(said, QStringLiteral("Please Choose NOT Less Than One Channel!"));
            while (dialog.offered()->count() > 0)
                dialog.slot_lstLeftDbClicked(dialog.offered()->item(0));
            pressWhenUp(&said, QStringLiteral("OK"));
            dialog.accept();
            QCOMPARE(said, QStringLiteral("Can NOT Choose More Than 8 Channels!"));
            QCOMPARE(dialog.result(), int(QDialog::Rejected));
            // "Re-choose all" gives every channel back, in the recording's order.
            dialog.slot_btnDelAll();
            QCOMPARE(dialog.chosenList()->count(), 0);
            QCOMPARE(dialog.offered()->item(0)->text(), QStringLiteral("1:U1"));
        }
        // While a job runs, a form does not ask for its object and does not show.
        frame->document()->setBackgroundBit(CCmtdDocument::StateBusy, true);
        pressWhenUp(&said, QStringLiteral("OK"));
        frame->action(CCmtdChildFrame::ActAnaVec)->trigger();
        frame->document()->setBackgroundBit(CCmtdDocument::StateBusy, false);
        QCOMPARE(said, QStringLiteral(
                           "A Background Service is Running Now, Please Retry this Operation for a moment!"));
        QCOMPARE(frame->anaContainer()->currentFormNumber(), -1);
    }

    // The pictures of the user guide.
    void screenshotsForTheGuide()
    {
        GUIDE_PICTURES_OR_SKIP(folder);
        CCmtdChildFrame *frame = open(QStringLiteral(VELDRIX_DEMO_DIR "/demo_line_fault.cfg"));
        QVERIFY(frame);
        frame->showMaximized();
        frame->waveView()->setCursorT2(400);
        frame->waveView()->setCursorT1(620); // inside the phase-A fault
        openVectorForm(frame, {0, 1, 2, 4, 5, 6});
        QTest::qWait(300);
        QVERIFY(m_main->grab().save(folder + QStringLiteral("/vector-form.png")));
        whenDialogUp<CAnaFormChnGrpSeqDlgReset>([](CAnaFormChnGrpSeqDlgReset *dialog) {
            dialog->voltageCombo(0)->setCurrentIndex(1);
            dialog->currentCombo(0)->setCurrentIndex(1);
            dialog->accept();
        });
        frame->action(CCmtdChildFrame::ActAnaSeq)->trigger();
        QTest::qWait(300);
        QVERIFY(m_main->grab().save(folder + QStringLiteral("/sequence-form.png")));
        frame->action(CCmtdChildFrame::ActAnaStaEvn)->trigger();
        QTest::qWait(300);
        QVERIFY(m_main->grab().save(folder + QStringLiteral("/event-list.png")));
        // Phase-A voltage against current over the fault, with a circle and a line boundary.
        whenDialogUp<CAnaFormCoordinateXYDlgReset>([](CAnaFormCoordinateXYDlgReset *dialog) {
            dialog->comboX()->setCurrentIndex(5); // Ia
            dialog->comboY()->setCurrentIndex(1); // Ua
            dialog->accept();
        });
        frame->action(CCmtdChildFrame::ActCoordinateXY)->trigger();
        auto *xy = qobject_cast<CAnaFormCoordinateXY *>(frame->anaContainer()->form(13));
        QVERIFY(xy);
        XYBound circle;
        circle.kind = XYBound::KindCircle;
        circle.colour = 0xFFC00000u;
        circle.r = 40.0;
        XYBound line;
        line.a = 2.0;
        line.b = 10.0;
        line.colour = 0xFF2E6FD8u;
        xy->bounds = {circle, line};
        frame->waveView()->setCursorT2(480);
        xy->findChild<QToolButton *>(QStringLiteral("btnTrace"))->click();
        QTest::qWait(300);
        QVERIFY(m_main->grab().save(folder + QStringLiteral("/xy-plane.png")));
    }

    void eventListTimesAgainstItsBasePoints()
    {
        // 1 kHz, the trigger at 100 ms (sample 100); the status channel rises at sample 150.
        CCmtdChildFrame *frame = open(writeSineRecording(m_dir, "events", 400));
        QVERIFY(frame);
        frame->action(CCmtdChildFrame::ActAnaStaEvn)->trigger();
        auto *form = qobject_cast<CAnaFormChnGrpStaEvn *>(frame->anaContainer()->form(12));
        QVERIFY(form);
        QCOMPARE(frame->anaContainer()->currentFormNumber(), 12);
        QCOMPARE(form->table()->rowCount(), 1);
        QCOMPARE(form->table()->item(0, CAnaFormChnGrpStaEvn::ColChannel)->text(), QStringLiteral("1:Trip"));
        QCOMPARE(form->table()->item(0, CAnaFormChnGrpStaEvn::ColSample)->text(), QStringLiteral("150"));
        auto delta = [form] { return form->table()->item(0, CAnaFormChnGrpStaEvn::ColDelta)->text(); };
        form->formatCombo()->setCurrentIndex(0); // mm:ss.us
        form->baseCombo()->setCurrentIndex(0);   // T0
        QCOMPARE(delta(), QStringLiteral("0:00.05"));
        form->formatCombo()->setCurrentIndex(1);
        QCOMPARE(delta(), QStringLiteral("50.000ms"));
        // T1 followed as it moves, or fixed where it stood when chosen.
        frame->waveView()->setCursorT1(200);
        form->baseCombo()->setCurrentIndex(2);
        QCOMPARE(delta(), QStringLiteral("-50.000ms"));
        form->baseCombo()->setCurrentIndex(3);
        frame->waveView()->setCursorT1(140);
        QCOMPARE(delta(), QStringLiteral("-50.000ms"));
        form->baseCombo()->setCurrentIndex(2);
        QCOMPARE(delta(), QStringLiteral("10.000ms"));
        // Without T0' the times stay blank.
        form->baseCombo()->setCurrentIndex(1);
        QVERIFY(delta().isEmpty());
        // A double click moves T1 to the event.
        form->slot_tblDoubleClicked(0, CAnaFormChnGrpStaEvn::ColChannel);
        QCOMPARE(frame->waveView()->cursorT1, 150);
        // Find and the CSV with the full times.
        QCOMPARE(form->findNext(QStringLiteral("trI")), 0);
        QCOMPARE(form->findNext(QStringLiteral("Breaker")), -1);
        form->baseCombo()->setCurrentIndex(0);
        QString message;
        const QString csv = m_dir.filePath(QStringLiteral("events.csv"));
        QVERIFY(form->saveCsv(csv, message));
        QCOMPARE(fileBytes(csv).split('\n').value(1).trimmed(),
                 QByteArray("0:00.050000,0:00.150000,D1,\"Trip\",1,150"));
    }

    void xyPlaneOfTwoChannels()
    {
        CCmtdChildFrame *frame = open(writePhasorRecording(m_dir, "xy", kUnbalanced));
        QVERIFY(frame);
        frame->waveView()->setCursorT1(205);
        QString said;
        {
            // Both axes need a channel; a boundary's numbers must parse.
            CAnaFormCoordinateXYDlgReset dialog(frame->recording(), 0, nullptr, nullptr);
            pressWhenUp(&said, QStringLiteral("OK"));
            dialog.accept();
            QCOMPARE(said, QStringLiteral("Please Choose X Axis Channels!"));
            dialog.comboX()->setCurrentIndex(1);
            pressWhenUp(&said, QStringLiteral("OK"));
            dialog.accept();
            QCOMPARE(said, QStringLiteral("Please Choose Y Axis Channels!"));
            XYBound circle;
            circle.kind = XYBound::KindCircle;
            CAnaFormCoordinateXYBoundDlgCircle entry(circle);
            entry.edit(2)->setText(QStringLiteral("1,5"));
            pressWhenUp(&said, QStringLiteral("OK"));
            entry.accept();
            QCOMPARE(said, QStringLiteral("[Radius of the Circle] Error!"));
        }
        whenDialogUp<CAnaFormCoordinateXYDlgReset>([](CAnaFormCoordinateXYDlgReset *dialog) {
            dialog->comboX()->setCurrentIndex(1); // Ua
            dialog->comboY()->setCurrentIndex(4); // Ia
            dialog->accept();
        });
        frame->action(CCmtdChildFrame::ActCoordinateXY)->trigger();
        auto *form = qobject_cast<CAnaFormCoordinateXY *>(frame->anaContainer()->form(13));
        QVERIFY(form);
        QCOMPARE(frame->anaContainer()->currentFormNumber(), 13);
        const CChnMapAnalog *ua = frame->recording().analogMaps[0].get();
        const CChnMapAnalog *ia = frame->recording().analogMaps[3].get();
        QCOMPARE(form->table()->item(0, 1)->text(), QString::asprintf("%.6f", double(ua->Value(205))));
        QCOMPARE(form->table()->item(1, 1)->text(), QString::asprintf("%.6f", double(ia->Value(205))));
        // The point at T1 stands where the origin and the scales put it.
        CAnaFormCoordinateXYView *view = form->view();
        view->resize(600, 400);
        view->resetRange();
        QImage image(view->size(), QImage::Format_ARGB32);
        QPainter painter(&image);
        view->drawContents(painter, view->rect());
        painter.end();
        const QPoint origin = view->diagramOrigin(view->size());
        const QPoint at =
            origin + QPoint(CAnaViewBase::roundPixel(ua->Value(205) * double(view->m_fScaleX)),
                            -CAnaViewBase::roundPixel(ia->Value(205) * double(view->m_fScaleY)));
        QCOMPARE(image.pixel(at), view->colour(6));
        // "Plot Curve" needs two samples between the cursors.
        auto *trace = form->findChild<QToolButton *>(QStringLiteral("btnTrace"));
        frame->waveView()->setCursorT2(206);
        pressWhenUp(&said, QStringLiteral("OK"));
        trace->click();
        QCOMPARE(said, QStringLiteral("The Points Selected to Plot Curve is Too Few!"));
        QVERIFY(!trace->isChecked());
        frame->waveView()->setCursorT2(100);
        trace->click();
        QVERIFY(form->tracing());
        QCOMPARE(form->plotFrom(), 100);
        QCOMPARE(form->plotTo(), 205);
    }

    void hideUnrelatedKeepsOnlyTheFormsChannels()
    {
        CCmtdChildFrame *frame = open(writePhasorRecording(m_dir, "hide", kUnbalanced));
        QVERIFY(frame);
        frame->recording().analogMaps[4]->flags |= CChnMapBase::FlagHidden; // hidden by the engineer
        CAnaFormChnGrpVec *form = openVectorForm(frame, {0, 1});
        auto *hide = form->findChild<QToolButton *>(QStringLiteral("btnHide"));
        hide->click();
        const auto &maps = frame->recording().analogMaps;
        QVERIFY(!(maps[0]->flags & CChnMapBase::FlagHidden));
        QVERIFY(maps[2]->flags & CChnMapBase::FlagHidden);
        hide->click();
        QVERIFY(!(maps[2]->flags & CChnMapBase::FlagHidden));
        QVERIFY(maps[4]->flags & CChnMapBase::FlagHidden);
    }
};

QTEST_MAIN(FormsTest)
#include "test_forms.moc"
