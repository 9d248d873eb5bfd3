#pragma once

#include "cmtd99file.h"
#include "mdimainframe.h"

class CCmtdChildContainerCfg;

// The window of one opened recording inside the main frame. It owns the recording and shows
// its pages; the recording lives and dies with the frame.
class CCmtdChildFrame : public CMdiChildFrame
{
    Q_OBJECT

public:
    explicit CCmtdChildFrame(CMdiMainFrame *mainFrame);
    ~CCmtdChildFrame() override;

    bool openFile(const QString &path) override;
    const CCmtd99File &recording() const { return m_file; }
    CCmtdChildContainerCfg *cfgContainer() const { return m_cfgContainer; }
    // The recording's station and device, then " - ", then the file name.
    QString titleText() const;

private:
    void loadSamples(const QByteArray &path);
    void showSpan();

    CCmtdChildContainerCfg *m_cfgContainer = nullptr;
    CCmtd99File m_file;
};
