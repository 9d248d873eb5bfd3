// The harmonic charts: the spectrum of a channel with known content in the table and the
// summary, the orders the rate allows, the group chart through its dialog, the bars and the CSV.

#include "anaformhmchart.h"
#include "cmtdchildcontainer.h"
#include "frametestcase.h"
#include "hmchartview.h"

#include <QComboBox>
#include <QLabel>
#include <QTableWidget>
#include <QToolButton>

#include <numbers>

namespace {

// Phase currents at 2 kHz (40 points a cycle) of 10 A peak with a DC part of 0.4 A, a 3rd of
// 5 % and a 5th of 3 %; phases B and C lag by 120° and 240°.
QString writeHarmonicRecording(const QTemporaryDir &dir, const char *name, int points = 400)
{
    const QString base = dir.filePath(QString::fromLatin1(name));
    FILE *cfg = std::fopen((base + QStringLiteral(".cfg")).toLocal8Bit().constData(), "w");
    std::fprintf(cfg, "Harmonic Station,Recorder,1999\n3,3A,0D\n");
    for (int c = 0; c < 3; ++c)
        std::fprintf(cfg, "%d,I%c,%c,,A,0.001,0,0,-32767,32767,1,1,S\n", c + 1, 'a' + c, 'A' + c);
    std::fprintf(cfg, "50\n1\n2000,%d\n01/01/2024,10:00:00.000000\n01/01/2024,10:00:00.100000\nASCII\n1\n",
                 points);
    std::fclose(cfg);
    FILE *dat = std::fopen((base + QStringLiteral(".dat")).toLocal8Bit().constData(), "w");
    for (int n = 0; n < points; ++n) {
        std::fprintf(dat, "%d,%d", n + 1, n * 500);
        for (int c = 0; c < 3; ++c) {
            const double wt = 2 * std::numbers::pi * 50.0 * n / 2000.0 - c * 2 * std::numbers::pi / 3;
            const double x =
                0.4 + 10.0 * std::sin(wt) + 0.5 * std::sin(3 * wt + 0.3) + 0.3 * std::sin(5 * wt);
            std::fprintf(dat, ",%ld", std::lround(x / 0.001));
        }
        std::fputc('\n', dat);
    }
    std::fclose(dat);
    return base + QStringLiteral(".cfg");
}

double cellNumber(const QTableWidget *table, int row, int column)
{
    const QTableWidgetItem *item = table->item(row, column);
    return item ? item->text()
                      .section(QLatin1Char(' '), 0, 0)
                      .remove(QRegularExpression(QStringLiteral("[^0-9.+-]")))
                      .toDouble()
                : -1.0;
}

} // namespace

class HmChartTest : public FrameTestCase
{
    Q_OBJECT

private Q_SLOTS:
    void spectrumOfOneChannelFromTheNameColumn()
    {
        CCmtdChildFrame *frame = open(writeHarmonicRecording(m_dir, "hm"));
        QVERIFY(frame);
        frame->waveView()->setCursorT1(200);
        CChnMapAnalog *ia = frame->recording().analogMaps[0].get();
        frame->anaContainer()->showFormFor(4, ia);
        auto *form = qobject_cast<CAnaFormChnSngHmChart *>(frame->anaContainer()->form(4));
        QVERIFY(form);
        QCOMPARE(frame->anaContainer()->currentFormNumber(), 4);
        // 40 points a cycle tell orders up to 19 apart: DC and 19 orders.
        QTableWidget *table = form->table();
        QCOMPARE(table->rowCount(), 20);
        QCOMPARE(table->columnCount(), 4);
        QCOMPARE(table->item(0, 0)->text(), QStringLiteral("DC"));
        QVERIFY(std::abs(cellNumber(table, 1, 2) - 100.0) < 1e-9);
        QVERIFY(std::abs(cellNumber(table, 3, 2) - 5.0) < 0.01);
        QVERIFY(std::abs(cellNumber(table, 5, 2) - 3.0) < 0.01);
        QVERIFY(cellNumber(table, 2, 2) < 0.01);
        QVERIFY(std::abs(cellNumber(table, 0, 2) - 0.4 / (10.0 / std::sqrt(2.0)) * 100.0) < 0.02);
        // The summary: THD of sqrt(5² + 3²) % and the base frequency.
        const QString summary = form->summary()->text();
        QVERIFY2(summary.contains(QStringLiteral("base 50.000 Hz")), qPrintable(summary));
        const double thd =
            summary.section(QStringLiteral("THD "), 1).section(QLatin1Char(' '), 0, 0).toDouble();
        QVERIFY2(std::abs(thd - std::sqrt(34.0)) < 0.02, qPrintable(summary));
        // The CSV holds the table: a head and one line per order.
        const QList<QByteArray> lines = form->csvText().split('\n');
        QCOMPARE(lines.size(), 22);
        QVERIFY(lines[0].startsWith("\"Order\","));
        QVERIFY(lines[4].startsWith("3,"));
        const QString csv = m_dir.filePath(QStringLiteral("hm.csv"));
        QString message;
        QVERIFY(form->saveCsv(csv, message));
        QCOMPARE(fileBytes(csv), form->csvText());
    }

    void groupChartThroughItsDialogAndItsBars()
    {
        CCmtdChildFrame *frame = open(writeHarmonicRecording(m_dir, "group"));
        QVERIFY(frame);
        frame->waveView()->setCursorT1(200);
        // Phase A chosen brings B and C of its group.
        whenDialogUp<CAnaFormHmChartDlgReset>([](CAnaFormHmChartDlgReset *dialog) {
            dialog->combo(0)->setCurrentIndex(1);
            QCOMPARE(dialog->combo(2)->currentIndex(), 3);
            dialog->accept();
        });
        frame->action(CCmtdChildFrame::ActAnaHm)->trigger();
        auto *form = qobject_cast<CAnaFormChnGrpHmChart *>(frame->anaContainer()->form(9));
        QVERIFY(form);
        QCOMPARE(form->chartChannels().size(), size_t(3));
        QCOMPARE(form->table()->columnCount(), 10);
        // The 5th of phase B is 3 % like phase A's.
        QVERIFY(std::abs(cellNumber(form->table(), 5, 5) - 3.0) < 0.01);

        // In per cent the fundamental fills the scale; without it the largest other part does,
        // here the DC part of 0.4 A against 10 / sqrt(2) A.
        CAnaFormHmChartView *view = form->view();
        view->resize(600, 300);
        view->resetRange();
        QVERIFY(std::abs(view->m_fYMax - 110.0f) < 0.5f);
        form->findChild<QToolButton *>(QStringLiteral("btnOnly"))->setChecked(true);
        QVERIFY(std::abs(view->m_fYMax - 1.1 * 0.4 / (10.0 / std::sqrt(2.0)) * 100.0) < 0.05);
        // The bars stand in the channels' colours.
        QImage image(view->size(), QImage::Format_ARGB32);
        image.fill(Qt::white);
        QPainter painter(&image);
        view->drawContents(painter, view->rect());
        painter.end();
        for (CChnMapAnalog *chn : form->chartChannels()) {
            int count = 0;
            for (int y = 0; y < image.height(); ++y) {
                for (int x = 0; x < image.width(); ++x)
                    count += image.pixel(x, y) == chn->colour;
            }
            QVERIFY(count > 100);
        }
    }

    // The pictures of the user guide.
    void screenshotsForTheGuide()
    {
        GUIDE_PICTURES_OR_SKIP(folder);
        CCmtdChildFrame *frame = open(QStringLiteral(VELDRIX_DEMO_DIR "/demo_line_fault.cfg"));
        QVERIFY(frame);
        frame->showMaximized();
        frame->waveView()->setCursorT1(560); // the fault current with its DC offset
        whenDialogUp<CAnaFormHmChartDlgReset>([](CAnaFormHmChartDlgReset *dialog) {
            dialog->combo(0)->setCurrentIndex(5); // Ia, with Ib and Ic
            dialog->accept();
        });
        frame->action(CCmtdChildFrame::ActAnaHm)->trigger();
        auto *form = qobject_cast<CAnaFormChnGrpHmChart *>(frame->anaContainer()->form(9));
        QVERIFY(form);
        form->findChild<QToolButton *>(QStringLiteral("btnOnly"))->setChecked(true);
        QTest::qWait(300);
        QVERIFY(m_main->grab().save(folder + QStringLiteral("/harmonic-group.png")));
        frame->anaContainer()->showFormFor(4, frame->recording().analogMaps[0].get());
        QTest::qWait(300);
        QVERIFY(m_main->grab().save(folder + QStringLiteral("/harmonic-channel.png")));
    }
};

QTEST_MAIN(HmChartTest)
#include "test_hmchart.moc"
