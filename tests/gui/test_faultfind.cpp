// The two-ended fault location wizard over two recordings of a fault computed from the long
// line's equations: presets from the line unit, the checks of the first page, the automatic
// windows and the report.

#include "../engine/linefault.h"

#include "faultfindpage0.h"
#include "faultfindpage1.h"
#include "faultfindwizard.h"
#include "frametestcase.h"

#include <QComboBox>
#include <QDoubleSpinBox>
#include <QPlainTextEdit>
#include <QSpinBox>

namespace {

constexpr int kPoints = 2000;
constexpr int kFaultAt = 1000;

// One end as an ASCII recording at 10 kHz (secondary values through 220 kV / 100 V and
// 1250 A / 5 A, steps of 0.001), with an extension file holding line "L1" of its channels.
QString writeEnd(const QTemporaryDir &dir, const char *name, const linefault::End &e,
                 const linefault::Line &line)
{
    const QString base = dir.filePath(QLatin1String(name));
    FILE *cfg = std::fopen((base + QStringLiteral(".cfg")).toLocal8Bit().constData(), "w");
    std::fprintf(cfg, "%s,Relay,1999\n6,6A,0D\n", name);
    const char *ids[6] = {"UA", "UB", "UC", "IA", "IB", "IC"};
    for (int c = 0; c < 6; ++c)
        std::fprintf(cfg, "%d,%s,%c,,%s,0.001,0,0,-2000000,2000000,1,1,S\n", c + 1, ids[c], 'A' + c % 3,
                     c < 3 ? "V" : "A");
    std::fprintf(cfg, "50\n1\n10000,%d\n01/01/2025,10:00:00.000000\n01/01/2025,10:00:00.100000\nASCII\n1\n",
                 kPoints);
    std::fclose(cfg);
    std::vector<float> waves[6];
    for (int p = 0; p < 3; ++p) {
        waves[p] = linefault::Wave(e.preU[p], e.u[p], 2200, 10000.0, kPoints, kFaultAt);
        waves[3 + p] = linefault::Wave(e.preI[p], e.i[p], 250, 10000.0, kPoints, kFaultAt);
    }
    FILE *dat = std::fopen((base + QStringLiteral(".dat")).toLocal8Bit().constData(), "w");
    for (int k = 0; k < kPoints; ++k) {
        std::fprintf(dat, "%d,%d", k + 1, k * 100);
        for (const std::vector<float> &w : waves)
            std::fprintf(dat, ",%ld", std::lround(double(w[size_t(k)]) / 0.001));
        std::fputc('\n', dat);
    }
    std::fclose(dat);
    FILE *inf = std::fopen((base + QStringLiteral(".inf")).toLocal8Bit().constData(), "w");
    std::fprintf(
        inf,
        "[Public Record_Information]\nSource=x,TRWKINF_V2.00\n[TRWK Line_#1]\nDEV_ID=1,L1\n"
        "LENGTH=%.3f(km)\nRX=%.6f,%.6f,%.6f,%.6f\nCG=%.6f,0,%.6f,0\nTA_CHNS=4,5,6,0,1\nTV_CHNS=1,2,3,0\n",
        double(line.length), double(line.r1), double(line.x1), double(line.r0), double(line.x0),
        double(line.c1), double(line.c0));
    std::fclose(inf);
    return base + QStringLiteral(".cfg");
}

} // namespace

class FaultFindTest : public FrameTestCase
{
    Q_OBJECT

    // Both ends of a B-C-ground fault through 3 ohm, 64.2 km from End M on a 100 km line.
    bool openEnds(CCmtdChildFrame *&endM, CCmtdChildFrame *&endN)
    {
        linefault::Case c;
        c.x = 64.2L;
        c.kind = linefault::Kind::BCG;
        c.rf = 3;
        linefault::End m, n;
        linefault::Solve(c, m, n);
        endN = open(writeEnd(m_dir, "n", n, c.line));
        endM = open(writeEnd(m_dir, "m", m, c.line));
        return endM && endN;
    }

private Q_SLOTS:
    // The pictures of the user guide (tools/screenshots.sh); skipped without VELDRIX_SCREENSHOTS.
    void screenshotsForTheGuide()
    {
        GUIDE_PICTURES_OR_SKIP(folder);
        CCmtdChildFrame *endM = nullptr;
        CCmtdChildFrame *endN = nullptr;
        QVERIFY(openEnds(endM, endN));
        CFaultFind2Wizard wizard({endN, endM}, endM);
        wizard.show();
        QTest::qWait(200);
        QVERIFY(wizard.grab().save(folder + QStringLiteral("/faultfind-ends.png")));
        wizard.next();
        QTest::qWait(200);
        QVERIFY(wizard.grab().save(folder + QStringLiteral("/faultfind-windows.png")));
        wizard.next();
        QTest::qWait(200);
        QVERIFY(wizard.grab().save(folder + QStringLiteral("/faultfind-report.png")));
    }

    void locatesAFaultFromTwoRecordings()
    {
        CCmtdChildFrame *endM = nullptr;
        CCmtdChildFrame *endN = nullptr;
        QVERIFY(openEnds(endM, endN));
        QVERIFY(endM->action(CCmtdChildFrame::ActLineDouble)->isEnabled());

        CFaultFind2Wizard wizard({endN, endM}, endM);
        auto *page0 = qobject_cast<CFaultFind2Page0 *>(wizard.page(CFaultFind2Wizard::PageEnds));
        QVERIFY(page0);
        // End M is the recording the wizard was asked from; its line presets channels and data.
        CFaultFind2EndGroupPage0 *groupM = page0->group(0);
        QCOMPARE(groupM->recording(), endM);
        QCOMPARE(groupM->lineCombo()->currentText(), QStringLiteral("L1"));
        QCOMPARE(groupM->voltageCombo(1)->currentText(), QStringLiteral("2:UB"));
        QCOMPARE(groupM->currentCombo(0, 2)->currentText(), QStringLiteral("6:IC"));
        QCOMPARE(page0->lineField(0)->value(), 100.0);
        QCOMPARE(page0->group(1)->recording(), endN);

        // The first check that fails keeps the wizard on its page, with its message.
        QString said;
        groupM->voltageCombo(2)->setCurrentIndex(0);
        pressWhenUp(&said, QStringLiteral("OK"));
        QVERIFY(!page0->validatePage());
        QCOMPARE(said, QStringLiteral("End M: ACV Channels Not Completed!"));
        groupM->voltageCombo(2)->setCurrentIndex(3);
        const double length = page0->lineField(0)->value();
        page0->lineField(0)->setValue(0.0);
        pressWhenUp(&said, QStringLiteral("OK"));
        QVERIFY(!page0->validatePage());
        QCOMPARE(said, QStringLiteral("[Line Length = 0.000] Invalid!"));
        page0->lineField(0)->setValue(length);

        wizard.show();
        wizard.next();
        QCOMPARE(wizard.currentId(), int(CFaultFind2Wizard::PageWindows));
        // The automatic windows stand at the fault's inception (a fault that settles at once, as
        // this computed one does, has its window from the current edge).
        auto *page1 = qobject_cast<CFaultFind2Page1 *>(wizard.currentPage());
        for (int e = 0; e < 2; ++e) {
            const int start = page1->group(e)->start();
            QVERIFY2(start >= kFaultAt - 5 && start < kFaultAt + 200, qPrintable(QString::number(start)));
        }
        wizard.next();
        QCOMPARE(wizard.currentId(), int(CFaultFind2Wizard::PageReport));
        QCOMPARE(wizard.m_code, 0);
        QVERIFY(std::abs(wizard.m_solver.position - 64.2) < 1.0);
        const QString report = wizard.findChild<QPlainTextEdit *>(QStringLiteral("report"))->toPlainText();
        QVERIFY(report.contains(QStringLiteral("Position(from End M) = ")));
        QVERIFY(report.contains(QStringLiteral("Single-ended estimates")));
        QVERIFY(report.contains(QStringLiteral("loop B-C")));
    }
};

QTEST_MAIN(FaultFindTest)
#include "test_faultfind.moc"
