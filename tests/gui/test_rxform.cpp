// The impedance form: the loops of each kind through their dialogs on known phasors, the
// table and its row switches, the trace job on the worker, the boundary setup and the drawing.

#include "anaformchngrprx.h"
#include "anaformchngrprxbounddlg.h"
#include "anaformchngrprxdlgreset.h"
#include "anaformchngrprxview.h"
#include "cmtdchildcontainer.h"
#include "frametestcase.h"

#include <QCheckBox>
#include <QComboBox>
#include <QDockWidget>
#include <QLineEdit>
#include <QMenu>
#include <QRegularExpression>
#include <QTabWidget>
#include <QTableWidget>
#include <QToolButton>

#include <complex>
#include <numbers>

namespace {

using Complex = std::complex<double>;

const PhaseSet kLoads = {{100, 80, 120, 50, 70, 30}, {30, -100, 140, -20, -150, 95}};

Complex phasor(int channel)
{
    return std::polar(kLoads.amplitude[channel], kLoads.degrees[channel] * std::numbers::pi / 180.0);
}

// The modulus and angle a "Mod." cell shows, read back from its text.
bool polarOf(const QTableWidgetItem *item, double &modulus, double &angle)
{
    static const QRegularExpression format(
        QStringLiteral("^(-?[0-9.]+)\\(omh\\)\\(Ang\\)(-?[0-9.]+)\\(Deg\\)$"));
    const QRegularExpressionMatch m = format.match(item ? item->text() : QString());
    modulus = m.captured(1).toDouble();
    angle = m.captured(2).toDouble();
    return m.hasMatch();
}

void expectPolar(const QTableWidgetItem *item, Complex z)
{
    double modulus = 0.0;
    double angle = 0.0;
    QVERIFY2(polarOf(item, modulus, angle), qPrintable(item ? item->text() : QStringLiteral("no item")));
    QVERIFY2(std::abs(modulus - std::abs(z)) < 0.011, qPrintable(item->text()));
    QVERIFY2(std::abs(angle - std::arg(z) * 180.0 / std::numbers::pi) < 0.02, qPrintable(item->text()));
}

// Pixels of about `colour`: the diagram's lines are smoothed, so their edges blend.
int countPixels(const QImage &image, QRgb colour)
{
    int count = 0;
    for (int y = 0; y < image.height(); ++y) {
        for (int x = 0; x < image.width(); ++x) {
            const QRgb p = image.pixel(x, y);
            count += std::abs(qRed(p) - qRed(colour)) + std::abs(qGreen(p) - qGreen(colour)) +
                         std::abs(qBlue(p) - qBlue(colour)) <
                     60;
        }
    }
    return count;
}

} // namespace

class RxFormTest : public FrameTestCase
{
    Q_OBJECT

    // Opens the form and chooses kind `kind` with voltages and currents A to C of the phasor
    // recording; `more` runs on the dialog before OK.
    CAnaFormChnGrpRx *openRx(CCmtdChildFrame *frame, int kind,
                             const std::function<void(CAnaFormChnGrpRxDlgResetObjUxIx *)> &more = {})
    {
        frame->action(CCmtdChildFrame::ActAnaRX)->trigger();
        auto *form = qobject_cast<CAnaFormChnGrpRx *>(frame->anaContainer()->form(10));
        if (!form)
            return nullptr;
        form->objectMenu()->hide();
        whenDialogUp<CAnaFormChnGrpRxDlgResetObjUxIx>([more](CAnaFormChnGrpRxDlgResetObjUxIx *dialog) {
            dialog->voltageCombo(0)->setCurrentIndex(1);
            dialog->currentCombo(0, 0)->setCurrentIndex(1);
            if (more)
                more(dialog);
            dialog->accept();
        });
        form->objectMenu()->actions().at(kind)->trigger();
        return form;
    }

    void renderView(CAnaFormChnGrpRxView *view, QImage &image)
    {
        view->resize(500, 400);
        view->resetView();
        image = QImage(view->size(), QImage::Format_ARGB32);
        image.fill(Qt::white);
        QPainter painter(&image);
        view->drawContents(painter, view->rect());
    }

private Q_SLOTS:
    void loopsOfEachKindOnKnownPhasors()
    {
        CCmtdChildFrame *frame = open(writePhasorRecording(m_dir, "rx", kLoads));
        QVERIFY(frame);
        frame->waveView()->setCursorT1(205);
        // Phase A chosen fills B and C from the recording's group; one kind at a time.
        CAnaFormChnGrpRx *form = openRx(frame, RxObject::KindUxIx);
        QVERIFY(form);
        QCOMPARE(frame->anaContainer()->currentFormNumber(), 10);
        QVERIFY(form->currentObject());
        QCOMPARE(form->dockWidget()->windowTitle(), QStringLiteral("Impedance Analysis - [Ux / Ix]"));
        QCOMPARE(form->channels().size(), size_t(6));
        QTableWidget *table = form->table();
        QCOMPARE(table->item(0, 0)->text(), QStringLiteral("Za"));
        for (int row = 0; row < 3; ++row)
            expectPolar(table->item(row, 1), phasor(row) / phasor(row + 3));
        // The complex cell: R, then the sign of X and its size.
        const Complex za = phasor(0) / phasor(3);
        QCOMPARE(table->item(0, 2)->text(), QString::asprintf("%.2f(omh)+j%.2f(omh)", za.real(), za.imag()));

        // Loops between phases: (Ua - Ub) / (Ia - Ib) and the others, named Zab, Zbc, Zca.
        form = openRx(frame, RxObject::KindUxyIxy);
        QCOMPARE(form->dockWidget()->windowTitle(), QStringLiteral("Impedance Analysis - [Uxy / Ixy]"));
        QCOMPARE(table->item(2, 0)->text(), QStringLiteral("Zca"));
        for (int row = 0; row < 3; ++row) {
            const int next = (row + 1) % 3;
            expectPolar(table->item(row, 1),
                        (phasor(row) - phasor(next)) / (phasor(row + 3) - phasor(next + 3)));
        }

        // Earth loops with k = (Z0 - Z1) / Z1 = 2 on I0 = (Ia + Ib + Ic) / 3; the countercurrent
        // group turns the phase current only.
        form = openRx(frame, RxObject::KindUxIxK, [](CAnaFormChnGrpRxDlgResetObjUxIx *dialog) {
            auto *k = static_cast<CAnaFormChnGrpRxDlgResetObjUxIxK *>(dialog);
            const char *values[4] = {"0.1", "0.4", "0.3", "1.2"};
            for (int i = 0; i < 4; ++i)
                k->lineEdit(i)->setText(QString::fromLatin1(values[i]));
            k->counterBox(0)->setChecked(true);
        });
        QCOMPARE(form->dockWidget()->windowTitle(), QStringLiteral("Impedance Analysis - [Ux / (Ix+kIo)]"));
        QCOMPARE(form->currentObject()->nCoef[0], int16_t(-1));
        const Complex i0 = (phasor(3) + phasor(4) + phasor(5)) / 3.0;
        for (int row = 0; row < 3; ++row)
            expectPolar(table->item(row, 1), phasor(row) / (-phasor(row + 3) + 2.0 * i0));

        // Each kind keeps its choice: [Ux / Ix] comes back with its loops as they were.
        whenDialogUp<CAnaFormChnGrpRxDlgResetObjUxIx>([](CAnaFormChnGrpRxDlgResetObjUxIx *dialog) {
            QCOMPARE(dialog->currentCombo(0, 2)->currentIndex(), 3);
            dialog->accept();
        });
        form->objectMenu()->actions().at(RxObject::KindUxIx)->trigger();
        expectPolar(table->item(1, 1), phasor(1) / phasor(4));
    }

    void dialogsRefuseIncompleteChoices()
    {
        CCmtdChildFrame *frame = open(writePhasorRecording(m_dir, "refuse", kLoads));
        QVERIFY(frame);
        QString said;
        RxObject object;
        object.nKind = RxObject::KindUxIxK;
        {
            CAnaFormChnGrpRxDlgResetObjUxIxK dialog(object, frame->recording(), 0);
            pressWhenUp(&said, QStringLiteral("OK"));
            dialog.accept();
            QCOMPARE(said, QStringLiteral("[R1] must great than 0!"));
            for (int i = 0; i < 4; ++i)
                dialog.lineEdit(i)->setText(QStringLiteral("0.5"));
            pressWhenUp(&said, QStringLiteral("OK"));
            dialog.accept();
            QCOMPARE(said, QStringLiteral("Please Choose Not Less One ACV Channel!"));
            // Voltage of phase A and a current of phase B only: no loop has both.
            dialog.voltageCombo(0)->setCurrentIndex(1);
            dialog.voltageCombo(1)->setCurrentIndex(0);
            dialog.voltageCombo(2)->setCurrentIndex(0);
            dialog.currentCombo(1, 1)->setCurrentIndex(2);
            pressWhenUp(&said, QStringLiteral("OK"));
            dialog.accept();
            QCOMPARE(said, QStringLiteral("Choose Not Less One Relatived ACV & ACC Channels!"));
            QCOMPARE(object.nMask, 0u);
        }
        // No channel holds ohms: the R/X dialog does not open and says how to make one.
        object.nKind = RxObject::KindRxChn;
        pressWhenUp(&said, QStringLiteral("OK"));
        QVERIFY(!MakeRxObjectDialog(object, frame->recording(), 0, nullptr));
        QVERIFY(said.startsWith(QStringLiteral("Can NOT Found R/X Curve,")));
    }

    void traceJobTableSwitchesAndDrawing()
    {
        CCmtdChildFrame *frame = open(writePhasorRecording(m_dir, "trace", kLoads));
        QVERIFY(frame);
        frame->waveView()->setCursorT1(205);
        CAnaFormChnGrpRx *form = openRx(frame, RxObject::KindUxIx);
        QVERIFY(form);
        RxObject *o = form->currentObject();
        auto *trace = form->findChild<QToolButton *>(QStringLiteral("btnTrace"));
        QString said;
        frame->waveView()->setCursorT2(206);
        pressWhenUp(&said, QStringLiteral("OK"));
        trace->click();
        QCOMPARE(said, QStringLiteral("The Points Selected to Plot Curve is Too Few!"));
        QVERIFY(!trace->isChecked());
        // Between the cursors on the worker; every loop stands still at its load impedance.
        frame->waveView()->setCursorT2(100);
        trace->click();
        QTRY_VERIFY(!form->traceJobRunning());
        QCOMPARE(o->nFrom, 100);
        QCOMPARE(o->nTo, 205);
        QVERIFY(form->tracing());
        for (int row = 0; row < 3; ++row) {
            QVERIFY(o->trace[row].size() > 50);
            const Complex z = phasor(row) / phasor(row + 3);
            QVERIFY(std::abs(o->trace[row].back().r - z.real()) < 0.01);
            QVERIFY(std::abs(o->trace[row].back().x - z.imag()) < 0.01);
        }
        // The same range again shows what is there: no job.
        trace->click();
        trace->click();
        QVERIFY(trace->isChecked());
        QVERIFY(!form->traceJobRunning());
        QVERIFY(!frame->isBackgroundBusy());

        // The polygon in its colour, the loops in their voltages' colours.
        CAnaFormChnGrpRxView *view = form->view();
        view->m_bounds.nBounds = RxBoundSet::BoundPoly;
        view->m_bounds.poly.fRset = 3.0f;
        view->m_bounds.poly.fXset = 3.0f;
        view->m_bounds.fRmin = view->m_bounds.fXmin = -5.0f;
        view->m_bounds.fRmax = view->m_bounds.fXmax = 5.0f;
        RxComputeBoundGeometry(view->m_bounds);
        QImage image;
        renderView(view, image);
        QVERIFY(countPixels(image, 0xFFFF00FFu) > 40);
        const QRgb ua = o->chnU[0]->colour;
        const int withA = countPixels(image, ua);
        QVERIFY(withA > 0);
        // A loop switched off in the table loses vector and trace and keeps its values.
        const QString values = form->table()->item(0, 1)->text();
        form->slot_tblValClicked(0, 0);
        QCOMPARE(o->nShown, uint32_t(RxObject::Row1 | RxObject::Row2));
        QCOMPARE(form->table()->item(0, 1)->text(), values);
        renderView(view, image);
        QVERIFY(countPixels(image, ua) < withA);
        form->slot_tblValClicked(0, 0);
        QCOMPARE(o->nShown, uint32_t(RxObject::AllRows));
    }

    void boundarySetupChecksPagesSavesAndLoads()
    {
        const QString path = m_dir.filePath(QStringLiteral("zones.tzb"));
        RxBoundSet set;
        QString said;
        whenDialogUp<CAnaFormChnGrpRxBoundDlg>([&](CAnaFormChnGrpRxBoundDlg *dialog) {
            QCOMPARE(dialog->page(0)->edit(0)->text(), QStringLiteral("20.0000"));
            QCOMPARE(dialog->page(0)->edit(2)->text(), QStringLiteral("0.1250"));
            QCOMPARE(dialog->rangeEdit(0)->text(), QStringLiteral("50.0000"));
            // Leaving a page with a wrong setting keeps it on show.
            dialog->page(0)->edit(0)->setText(QStringLiteral("0.5"));
            pressWhenUp(&said, QStringLiteral("OK"));
            dialog->tabs()->setCurrentIndex(2);
            QCOMPARE(said, QStringLiteral("[Rset] Can NOT Less Than 1.0!"));
            QCOMPARE(dialog->tabs()->currentIndex(), 0);
            dialog->page(0)->edit(0)->setText(QStringLiteral("10"));
            dialog->boundBox(0)->setChecked(true);
            dialog->boundBox(2)->setChecked(true);
            QVERIFY(dialog->saveTo(path));
            // A loaded file replaces what was typed.
            dialog->page(0)->edit(0)->setText(QStringLiteral("30"));
            dialog->boundBox(2)->setChecked(false);
            QVERIFY(dialog->loadFrom(path));
            QCOMPARE(dialog->page(0)->edit(0)->text(), QStringLiteral("10.0000"));
            QVERIFY(dialog->boundBox(2)->isChecked());
            dialog->accept();
        });
        CAnaFormChnGrpRxBoundDlg dialog;
        QVERIFY(dialog.exec(&set));
        QCOMPARE(set.nBounds, uint32_t(RxBoundSet::BoundPoly | RxBoundSet::BoundCircle));
        QCOMPARE(set.poly.fRset, 10.0f);
        // The corners are computed on OK: the lower right one lies Alfa below (Rset, 0).
        QCOMPARE(set.poly.ptRight[0], 10.0f);
        QVERIFY(std::abs(set.poly.ptRight[1] + 10.0 * std::tan(15.0 * std::numbers::pi / 180.0)) < 1e-5);
        QCOMPARE(set.circle.fRadius > 0.0f, true);

        // A value out of range read from a file stays in its edit and blocks OK.
        QVERIFY(replaceInFile(path, "Rset=10.0000", "Rset=0.2000"));
        whenDialogUp<CAnaFormChnGrpRxBoundDlg>([&](CAnaFormChnGrpRxBoundDlg *d) {
            QVERIFY(d->loadFrom(path));
            QCOMPARE(d->page(0)->edit(0)->text(), QStringLiteral("0.2000"));
            pressWhenUp(&said, QStringLiteral("OK"));
            d->accept();
            QCOMPARE(said, QStringLiteral("[Rset] Can NOT Less Than 1.0!"));
            d->reject();
        });
        const RxBoundSet before = set;
        QVERIFY(!dialog.exec(&set));
        QCOMPARE(set.poly.fRset, before.poly.fRset);
    }

    // The pictures of the user guide.
    void screenshotsForTheGuide()
    {
        GUIDE_PICTURES_OR_SKIP(folder);
        CCmtdChildFrame *frame = open(QStringLiteral(VELDRIX_DEMO_DIR "/demo_line_fault.cfg"));
        QVERIFY(frame);
        frame->showMaximized();
        frame->waveView()->setCursorT2(420);
        frame->waveView()->setCursorT1(650);
        frame->action(CCmtdChildFrame::ActAnaRX)->trigger();
        auto *form = qobject_cast<CAnaFormChnGrpRx *>(frame->anaContainer()->form(10));
        QVERIFY(form);
        form->objectMenu()->hide();
        // The earth loops from the demo's line unit, which brings channels and impedances.
        whenDialogUp<CAnaFormChnGrpRxDlgResetObjUxIx>([](CAnaFormChnGrpRxDlgResetObjUxIx *dialog) {
            static_cast<CAnaFormChnGrpRxDlgResetObjUxIxK *>(dialog)->unitCombo()->setCurrentIndex(1);
            dialog->accept();
        });
        form->objectMenu()->actions().at(RxObject::KindUxIxK)->trigger();
        // A quadrilateral zone 2 and a mho circle around the line's 2.2 ohm secondary.
        RxBoundSet &bounds = form->view()->m_bounds;
        bounds.nBounds = RxBoundSet::BoundPoly | RxBoundSet::BoundCircle;
        bounds.fRmin = -10.0f;
        bounds.fRmax = 50.0f;
        bounds.fXmin = -10.0f;
        bounds.fXmax = 20.0f;
        bounds.poly.fRset = 8.0f;
        bounds.poly.fXset = 3.0f;
        bounds.circle.fZsetR = 1.0f;
        bounds.circle.fZsetX = 3.5f;
        bounds.circle.fAlfa = 0.0f;
        RxComputeBoundGeometry(bounds);
        form->view()->resetView();
        form->findChild<QToolButton *>(QStringLiteral("btnTrace"))->click();
        QTRY_VERIFY(!form->traceJobRunning());
        QTest::qWait(300);
        QVERIFY(m_main->grab().save(folder + QStringLiteral("/impedance-form.png")));
        whenDialogUp<CAnaFormChnGrpRxBoundDlg>([folder](CAnaFormChnGrpRxBoundDlg *dialog) {
            QTest::qWait(200);
            dialog->grab().save(folder + QStringLiteral("/impedance-boundaries.png"));
            dialog->reject();
        });
        form->slot_btnBoundSetup();
    }
};

QTEST_MAIN(RxFormTest)
#include "test_rxform.moc"
