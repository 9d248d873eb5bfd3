#include "faultfindwizard.h"

#include "cmtdchildframe.h"
#include "faultfindpage0.h"
#include "faultfindpage1.h"
#include "singleended.h"

#include <QFontDatabase>
#include <QPlainTextEdit>
#include <QVBoxLayout>

#include <cmath>

namespace {

const char *loopName(FaultLoop loop)
{
    static const char *const names[] = {"-", "A-G", "B-G", "C-G", "A-B", "B-C", "C-A"};
    return names[loop >= LoopNone && loop <= LoopCA ? loop : LoopNone];
}

QString kilometres(double km)
{
    return std::isfinite(km) ? QString::asprintf("%.3fkm", km) : CFaultFind2Wizard::tr("no estimate");
}

// The report page: the two-ended location, then what each end says alone.
class CFaultFind2Page2 : public QWizardPage
{
public:
    explicit CFaultFind2Page2(CFaultFind2Wizard *wizard) : m_wizard(wizard), m_text(new QPlainTextEdit(this))
    {
        setTitle(CFaultFind2Wizard::tr("Result"));
        m_text->setObjectName(QStringLiteral("report"));
        m_text->setReadOnly(true);
        m_text->setFont(QFontDatabase::systemFont(QFontDatabase::FixedFont));
        auto *column = new QVBoxLayout(this);
        column->addWidget(m_text);
    }

    void initializePage() override
    {
        CFaultFind2Wizard &w = *m_wizard;
        for (int e = 0; e < 2; ++e) {
            w.m_ends[e].StartPoint =
                qobject_cast<CFaultFind2Page1 *>(w.page(CFaultFind2Wizard::PageWindows))->group(e)->start();
        }
        w.m_solver = FaultSolver();
        w.m_code = LocateFault(w.m_ends[0], w.m_ends[1], w.m_line, w.m_solver);
        QStringList lines = FaultReport(w.m_code, w.m_ends[0], w.m_ends[1], w.m_solver);
        lines << QString() << CFaultFind2Wizard::tr("Single-ended estimates (each end alone):");
        for (int e = 0; e < 2; ++e) {
            const SingleEndedEstimate estimate = EstimateEnd(w.m_ends[e], w.m_line);
            QString line = CFaultFind2Wizard::tr("\t%1: loop %2, reactance %3, Takagi %4 from %1")
                               .arg(w.m_ends[e].title, QLatin1String(loopName(estimate.loop)),
                                    kilometres(estimate.reactanceKm), kilometres(estimate.takagiKm));
            // End N's distances also as the two-ended result reads them.
            if (e == 1) {
                line += CFaultFind2Wizard::tr(" (%1 and %2 from %3)")
                            .arg(kilometres(w.m_line.length - estimate.reactanceKm),
                                 kilometres(w.m_line.length - estimate.takagiKm), w.m_ends[0].title);
            }
            lines << line;
        }
        lines << CFaultFind2Wizard::tr(
            "\t(from one end alone: remote infeed and fault resistance make them "
            "read too far or too near; the two-ended result does not depend on them)");
        m_text->setPlainText(lines.join(QLatin1Char('\n')));
    }

private:
    CFaultFind2Wizard *m_wizard;
    QPlainTextEdit *m_text;
};

} // namespace

CFaultFind2Wizard::CFaultFind2Wizard(const QList<CCmtdChildFrame *> &recordings, CCmtdChildFrame *current,
                                     QWidget *parent)
    : QWizard(parent), m_recordings(recordings)
{
    // The recording the engineer asked from is End M.
    m_recordings.removeAll(current);
    m_recordings.prepend(current);
    setWindowTitle(tr("Short Circuit Location with Daul-ends"));
    setWindowIcon(QIcon(QStringLiteral(":/images/UntAnaLineDouble.png")));
    setWizardStyle(QWizard::ClassicStyle);
    setOption(QWizard::NoBackButtonOnStartPage);
    setPage(PageEnds, new CFaultFind2Page0(this));
    setPage(PageWindows, new CFaultFind2Page1(this));
    setPage(PageReport, new CFaultFind2Page2(this));
    resize(900, 640);
}
