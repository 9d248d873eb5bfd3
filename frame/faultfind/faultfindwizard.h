#pragma once

#include "faultend.h"
#include "faultsolver.h"

#include <QList>
#include <QWizard>

class CCmtdChildFrame;

// Two-ended fault location of a line: page 0 chooses each end's recording, line, channels and
// transformer ratings and the line data; page 1 shows each end's currents and voltages with the
// data window, placed at the fault automatically and movable; page 2 locates the fault and
// reports, with each end's single-ended estimates beside it. Any two open recordings may be the
// ends; the wizard borrows them for as long as it runs (it is modal).
class CFaultFind2Wizard : public QWizard
{
    Q_OBJECT

public:
    enum PageId
    {
        PageEnds = 0,
        PageWindows = 1,
        PageReport = 2
    };

    // `recordings` are the open recordings with samples; `current` the one the engineer asked
    // from, proposed for End M.
    CFaultFind2Wizard(const QList<CCmtdChildFrame *> &recordings, CCmtdChildFrame *current,
                      QWidget *parent = nullptr);

    const QList<CCmtdChildFrame *> &recordings() const { return m_recordings; }
    FaultEnd m_ends[2];
    FaultLine m_line;
    FaultSolver m_solver;
    int m_code = -1;

private:
    QList<CCmtdChildFrame *> m_recordings;
};
