// What the engineer reads and steers in a recording's window: the tool bar's cursor times,
// the zoom keys, the keys that move T2, the zoom to the T1..T2 span, the time-axis labels and
// the name column's cursor read-outs. Expected texts and scroll positions are worked by hand
// from the recording each test writes (1 kHz, start 100 ms before the trigger at sample 100).

#include "cmtdchildframe.h"
#include "cmtdviewananame.h"
#include "cmtdviewanawave.h"
#include "frametestcase.h"
#include "mainframe.h"
#include "textcapture.h"
#include "tolerance.h"

#include <QKeyEvent>
#include <QLabel>
#include <QScrollBar>
#include <QTest>

class ToolBarTest : public FrameTestCase
{
    Q_OBJECT

private:
    static QString labelStarting(CCmtdChildFrame *frame, const QString &head)
    {
        for (const QLabel *label : frame->findChildren<QLabel *>())
            if (label->text().startsWith(head))
                return label->text();
        return QString();
    }

    static bool press(CCmtdViewAnaWave *view, int key, Qt::KeyboardModifiers modifiers = Qt::NoModifier,
                      const QString &text = QString())
    {
        QKeyEvent event(QEvent::KeyPress, key, modifiers, text);
        return view->onKeyPress(&event);
    }

    // Gives the wave view's scroll area a viewport of exactly `width` pixels.
    static bool fixViewport(CCmtdViewAnaWave *view, int width)
    {
        view->m_pArea->setVerticalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
        view->m_pArea->setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOn);
        const int frameSpace = view->m_pArea->width() - view->m_pArea->viewport()->width();
        view->m_pArea->resize(width + frameSpace, view->m_pArea->height());
        return view->m_pArea->viewport()->width() == width;
    }

private Q_SLOTS:
    void toolBarShowsAbsoluteCursorTimesAndTheirDistance()
    {
        CCmtdChildFrame *frame = open(writeRecording(m_dir, "t", 1000, 1, 0));
        QVERIFY(frame);
        CCmtdViewAnaWave *view = frame->waveView();
        // Sample n lies n ms after the start at 10:00:00.000000.
        view->setCursorT1(357);
        view->setCursorT2(999);
        QCOMPARE(labelStarting(frame, QStringLiteral("T1[")),
                 QStringLiteral("T1[2024-01-01 10:00:00.357000]"));
        QCOMPARE(labelStarting(frame, QStringLiteral("T2[")),
                 QStringLiteral("T2[2024-01-01 10:00:00.999000]"));
        // 999 - 357 = 642 ms.
        QCOMPARE(labelStarting(frame, QStringLiteral("Td[")), QStringLiteral("Td[0:00.642]"));
        // T2 before T1: the distance is the same size, never negative.
        view->setCursorT2(57);
        QCOMPARE(labelStarting(frame, QStringLiteral("T2[")),
                 QStringLiteral("T2[2024-01-01 10:00:00.057000]"));
        QCOMPARE(labelStarting(frame, QStringLiteral("Td[")), QStringLiteral("Td[0:00.3]"));
        view->setCursorT1(0);
        QCOMPARE(labelStarting(frame, QStringLiteral("T1[")),
                 QStringLiteral("T1[2024-01-01 10:00:00.000000]"));
        QCOMPARE(labelStarting(frame, QStringLiteral("Td[")), QStringLiteral("Td[0:00.057]"));
    }

    void keysMoveTheCursorsAndZoom()
    {
        CCmtdChildFrame *frame = open(writeRecording(m_dir, "s", 1000, 1, 0));
        QVERIFY(frame);
        CCmtdViewAnaWave *view = frame->waveView();
        QCOMPARE(view->cursorT1, 100); // the trigger
        QVERIFY(press(view, Qt::Key_Right));
        QCOMPARE(view->cursorT1, 101);
        press(view, Qt::Key_End, Qt::ShiftModifier);
        QCOMPARE(view->cursorT2, 999);
        press(view, Qt::Key_Home);
        press(view, Qt::Key_Left);
        QCOMPARE(view->cursorT1, 0); // held to the first sample
        // Shift moves T2 and leaves T1.
        view->setCursorT1(300);
        view->setCursorT2(500);
        QVERIFY(press(view, Qt::Key_Left, Qt::ShiftModifier));
        QCOMPARE(view->cursorT2, 499);
        QCOMPARE(view->cursorT1, 300);
        QVERIFY(press(view, Qt::Key_Right, Qt::ShiftModifier));
        QVERIFY(press(view, Qt::Key_Right, Qt::ShiftModifier));
        QCOMPARE(view->cursorT2, 501);
        QCOMPARE(view->cursorT1, 300);
        // Without Shift the same keys move T1 only.
        QVERIFY(press(view, Qt::Key_Left));
        QCOMPARE(view->cursorT1, 299);
        QCOMPARE(view->cursorT2, 501);
        // T2 is held to the last sample.
        view->setCursorT2(999);
        QVERIFY(press(view, Qt::Key_Right, Qt::ShiftModifier));
        QCOMPARE(view->cursorT2, 999);
        QCOMPARE(labelStarting(frame, QStringLiteral("T2[")),
                 QStringLiteral("T2[2024-01-01 10:00:00.999000]"));

        // Plus (or the equals key beside it) doubles the scale, minus halves it down to the fit.
        view->setHorzScale(1.0f);
        QVERIFY(press(view, Qt::Key_Plus, Qt::NoModifier, QStringLiteral("+")));
        QCOMPARE(view->hScale, 2.0f);
        QVERIFY(press(view, Qt::Key_Equal, Qt::NoModifier, QStringLiteral("=")));
        QCOMPARE(view->hScale, 4.0f);
        QVERIFY(press(view, Qt::Key_Minus, Qt::NoModifier, QStringLiteral("-")));
        QCOMPARE(view->hScale, 2.0f);
        QVERIFY(press(view, Qt::Key_Minus, Qt::NoModifier, QStringLiteral("-")));
        QCOMPARE(view->hScale, 1.0f);
        for (int i = 0; i < 12; ++i)
            press(view, Qt::Key_Minus, Qt::NoModifier, QStringLiteral("-"));
        QCOMPARE(view->hScale, view->fitScale());
    }

    void zoomToTheCursorSpanScrollsToItsStart()
    {
        // Viewport 1030 pixels, margins 4 + 4 and 22 more: 1000 pixels for T1..T2 = 400..600,
        // which is 202 samples' room: hScale = 1000 / 202 = 4.9505. The scroll bar goes to
        // sample 399: 399 × 4.9505 = 1975.25, rounded 1975.
        CCmtdChildFrame *frame = open(writeRecording(m_dir, "f", 1000, 1, 0));
        QVERIFY(frame);
        CCmtdViewAnaWave *view = frame->waveView();
        QCOMPARE(view->m_nMarginL + view->m_nMarginR, 8);
        QVERIFY(fixViewport(view, 1030));
        view->setCursorT1(600);
        view->setCursorT2(400);
        view->zoomRange(-1, -1);
        QCOMPARE(view->hScale, 1000.0f / 202.0f);
        QCOMPARE(view->m_pArea->horizontalScrollBar()->value(), 1975);

        // F3 does the same from the keyboard, here for 100..300 after a reset of the scale:
        // 99 × 4.9505 = 490.1, rounded 490.
        view->setHorzScale(-1.0f);
        view->setCursorT1(100);
        view->setCursorT2(300);
        QVERIFY(press(view, Qt::Key_F3));
        QCOMPARE(view->hScale, 1000.0f / 202.0f);
        QCOMPARE(view->m_pArea->horizontalScrollBar()->value(), 490);

        // From sample 0 the scroll stays at 0: 0..198 has 200 samples' room, hScale 5.
        view->setCursorT1(0);
        view->setCursorT2(198);
        QVERIFY(press(view, Qt::Key_F3));
        QCOMPARE(view->hScale, 5.0f);
        QCOMPARE(view->m_pArea->horizontalScrollBar()->value(), 0);
    }

    void timeAxisLabelsStandOverTheirSamples()
    {
        // At 1 kHz a label reading "t.0" stands over sample 100 + t, centred on its pixel.
        CCmtdChildFrame *frame = open(writeRecording(m_dir, "a", 1000, 1, 0));
        QVERIFY(frame);
        CCmtdViewAnaWave *view = frame->waveView();
        view->setHorzScale(2.0f);
        view->m_pArea->horizontalScrollBar()->setValue(0);
        TextCaptureDevice device(view->width(), view->height());
        QPainter painter(&device);
        painter.setFont(view->font());
        painter.translate(-view->scrollX(), -view->scrollY());
        view->drawContents(painter, QRect(view->scrollX(), view->scrollY(), view->width(), view->height()));
        painter.end();

        const QFontMetrics metrics = view->fontMetrics();
        int checked = 0;
        bool zeroSeen = false;
        for (const CapturedText &label : device.texts()) {
            if (!label.text.endsWith(QStringLiteral(".0")) || label.origin.y() > view->m_nMarginT)
                continue;
            bool ok = false;
            const int ms = label.text.chopped(2).toInt(&ok);
            if (!ok)
                continue;
            const int sample = 100 + ms;
            // Pixel of sample i: i × hScale + left margin, less the scroll position.
            const double centre = label.origin.x() + metrics.horizontalAdvance(label.text) / 2.0;
            const double expected = sample * 2.0 + view->m_nMarginL - view->scrollX();
            QVERIFY2(std::fabs(centre - expected) <= 1.0,
                     qPrintable(
                         QStringLiteral("%1 at %2, expected %3").arg(label.text).arg(centre).arg(expected)));
            zeroSeen = zeroSeen || ms == 0;
            ++checked;
        }
        QVERIFY2(checked >= 3, qPrintable(QString::number(checked)));
        QVERIFY(zeroSeen);
    }

    void nameColumnReadoutsCarryTheSignOfTheCursorDistance()
    {
        CCmtdChildFrame *frame = open(writeSineRecording(m_dir, "n", 1000));
        QVERIFY(frame);
        CCmtdViewAnaWave *wave = frame->waveView();
        CCmtdViewAnaName *names = frame->nameView();
        auto readouts = [&] {
            TextCaptureDevice device(names->width(), 2000);
            QPainter painter(&device);
            names->drawContents(painter, QRect(0, 0, names->width(), 2000));
            painter.end();
            const CapturedText *t1 = device.find(QStringLiteral("T1["));
            const CapturedText *t2 = device.find(QStringLiteral("T2["));
            return QPair<QString, QString>(t1 ? t1->text : QString(), t2 ? t2->text : QString());
        };
        // dT is T2's time less T1's: T2 after T1 reads positive.
        wave->setCursorT1(200);
        wave->setCursorT2(450);
        QPair<QString, QString> text = readouts();
        // The column may elide the rate at its right edge; the times stand ahead of it.
        QVERIFY2(text.first.startsWith(QStringLiteral("T1[100.000ms]/Point 200, dT=250.000ms,")),
                 qPrintable(text.first));
        QVERIFY2(text.second.startsWith(QStringLiteral("T2[350.000ms]/Point 450, dP=250,")),
                 qPrintable(text.second));
        // T2 before T1: "dT=-".
        wave->setCursorT2(50);
        text = readouts();
        QVERIFY2(text.first.startsWith(QStringLiteral("T1[100.000ms]/Point 200, dT=-150.000ms,")),
                 qPrintable(text.first));
        QVERIFY2(text.second.startsWith(QStringLiteral("T2[-50.000ms]/Point 50, dP=")),
                 qPrintable(text.second));
    }
};

QTEST_MAIN(ToolBarTest)
#include "test_toolbar.moc"
