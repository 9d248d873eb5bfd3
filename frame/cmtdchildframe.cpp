#include "cmtdchildframe.h"

#include "cmtdchildcontainercfg.h"
#include "cmtdtext.h"
#include "globaloptions.h"

#include <QApplication>
#include <QFileInfo>
#include <QProgressDialog>
#include <QStatusBar>

CCmtdChildFrame::CCmtdChildFrame(CMdiMainFrame *mainFrame) : CMdiChildFrame(mainFrame)
{
    setWindowIcon(QIcon(QStringLiteral(":/images/veldrix.svg")));
    m_cfgContainer = new CCmtdChildContainerCfg(this);
    setCentralWidget(m_cfgContainer);
}

CCmtdChildFrame::~CCmtdChildFrame() = default;

bool CCmtdChildFrame::openFile(const QString &path)
{
    const QFileInfo info(path);
    const QByteArray local = info.absoluteFilePath().toLocal8Bit();
    if (!m_file.LoadFile(local.constData())) {
        // The messages are all that explain a refusal; show the engineer the first few.
        QByteArray reasons;
        int shown = 0;
        for (const LoadMessageList *list : {&m_file.cfgMessages, &m_file.datMessages}) {
            for (const LoadMessage &message : *list) {
                if (shown++ < 8)
                    reasons += message.text + '\n';
            }
        }
        reportWarning("%s\n\n%s", info.fileName().toLocal8Bit().constData(), reasons.constData());
        return false;
    }
    m_fileName = info.canonicalFilePath();
    loadSamples(local);
    m_cfgContainer->showRecording(m_file);
    showSpan();
    setWindowTitle(titleText());
    return true;
}

QString CCmtdChildFrame::titleText() const
{
    const CmtdFileDescription &d = m_file.fileDesc;
    return CmtdText(d.stationName) + QLatin1Char(' ') + CmtdText(d.recDevId) + QStringLiteral(" - ") +
           QFileInfo(m_fileName).fileName();
}

namespace {

// Progress of the sample load in a dialog, until the background worker takes the load over.
struct LoadProgress
{
    QProgressDialog *dialog;
};

int reportLoad(void *context, int code, int total, int current)
{
    auto *progress = static_cast<LoadProgress *>(context);
    switch (code) {
    case 8:
        progress->dialog->setMaximum(total);
        return total > 100 ? total / 100 : 1;
    case 10:
        progress->dialog->setValue(current + 1);
        QApplication::processEvents();
        return 0;
    default:
        return progress->dialog->wasCanceled() ? -1 : 0;
    }
}

} // namespace

void CCmtdChildFrame::loadSamples(const QByteArray &path)
{
    QProgressDialog dialog(tr("Loading %1").arg(QFileInfo(QString::fromLocal8Bit(path)).fileName()),
                           tr("Cancel"), 0, 100, this);
    dialog.setWindowModality(Qt::WindowModal);
    dialog.setMinimumDuration(500);
    LoadProgress progress{&dialog};
    m_file.LoadDat(path.constData(), reportLoad, &progress);
}

void CCmtdChildFrame::showSpan()
{
    const int points = m_file.loadedPoints;
    QString text = tr("%1 samples").arg(points);
    if (points > 0 && m_file.sampleTimes) {
        const double first = double(m_file.sampleTimes[0]) / 1000.0;
        const double last = double(m_file.sampleTimes[points - 1]) / 1000.0;
        text += tr(", %1 ms .. %2 ms from the trigger").arg(first, 0, 'f', 3).arg(last, 0, 'f', 3);
    }
    for (const SampleSegment &segment : m_file.segments)
        text += tr(" | %1 Hz to sample %2").arg(double(segment.rate), 0, 'g', 9).arg(segment.end);
    statusBar()->showMessage(text);
}
