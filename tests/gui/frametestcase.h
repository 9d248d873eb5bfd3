#pragma once

// The setup the widget suites share: a main frame per test function, shown at the suite's size,
// settings kept away from the user's own, and any Qt warning failing the test.

#include "recordingwriter.h"

#include <QObject>
#include <QStandardPaths>
#include <QTemporaryDir>

// The folder of the user guide's pictures in `folder`: a test function that makes them skips
// itself unless VELDRIX_SCREENSHOTS names one (tools/screenshots.sh sets it under xvfb-run).
#define GUIDE_PICTURES_OR_SKIP(folder)                                                                       \
    const QString folder = qEnvironmentVariable("VELDRIX_SCREENSHOTS");                                      \
    if (folder.isEmpty())                                                                                    \
    QSKIP("VELDRIX_SCREENSHOTS is not set")

class FrameTestCase : public QObject
{
    Q_OBJECT

public:
    explicit FrameTestCase(int width = 1200, int height = 800) : m_width(width), m_height(height) {}

protected:
    // Opens a recording and gives its document once the load has ended; null when it did not.
    CCmtdChildFrame *open(const QString &path)
    {
        CCmtdChildFrame *frame = openDocument(m_main, path);
        return frame && waitIdle(frame) ? frame : nullptr;
    }

    CMainFrame *m_main = nullptr;
    QTemporaryDir m_dir;

protected Q_SLOTS:
    void initTestCase()
    {
        QStandardPaths::setTestModeEnabled(true);
        isolateSettings();
    }

    void init()
    {
        failOnQtWarnings();
        m_main = showMainFrame(m_width, m_height);
    }

    void cleanup() { closeMainFrame(m_main); }

private:
    int m_width;
    int m_height;
};
