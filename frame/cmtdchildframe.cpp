#include "cmtdchildframe.h"

#include "cmtdchildcontainercfg.h"
#include "cmtdtext.h"
#include "globaloptions.h"

#include <QFileInfo>

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
    m_cfgContainer->showRecording(m_file);
    setWindowTitle(titleText());
    return true;
}

QString CCmtdChildFrame::titleText() const
{
    const CmtdFileDescription &d = m_file.fileDesc;
    return CmtdText(d.stationName) + QLatin1Char(' ') + CmtdText(d.recDevId) + QStringLiteral(" - ") +
           QFileInfo(m_fileName).fileName();
}
