#pragma once

#include "anaformbase.h"
#include "cmtdthread.h"
#include "rxobject.h"

class CAnaFormChnGrpRxView;
class QAction;
class QMenu;
class QTableWidget;

// Impedance analysis (form 10): the apparent impedance a distance relay measures, per phase
// loop at T1, in a table and as vectors on the R-X plane against the relay characteristics,
// and on request its trace between the cursors, computed on the worker. Each of the four kinds
// of loop keeps its own last choice.
class CAnaFormChnGrpRx : public CAnaFormBase
{
    Q_OBJECT

public:
    CAnaFormChnGrpRx(int number, CCmtdChildFrame *frame, CCmtdChildContainerAna *container);
    ~CAnaFormChnGrpRx() override;

    void retranslateTexts() override;
    bool activate() override;
    void refresh() override;

    // The object shown, null until the first choice.
    RxObject *currentObject() const;
    RxObject &object(int kind) { return m_objects[kind]; }
    CAnaFormChnGrpRxView *view() const { return m_view; }
    QTableWidget *table() const { return m_tblVal; }
    // Traces are drawn: "Plot Curve" is on, a range is computed and no job is writing it.
    bool tracing() const;
    bool traceJobRunning() const { return m_bJobRunning; }
    QMenu *objectMenu() const { return m_menu; }
    void forgetChannel(const CChnMapBase *channel) override;
    // Display factor of the table and the labels: primary over secondary ohm when the wave
    // shows primary values, else 1.
    double impedanceFactor() const;
    // Runs the dialog of `kind` on its object; makes it the current one when accepted.
    bool runObjectDialog(int kind);

    void slot_resetObjectUxIxK();
    void slot_resetObjectUxIx();
    void slot_resetObjectUxyIxy();
    void slot_resteObjectRXChn();
    void slot_btnSel();
    void slot_btnBoundSetup();
    void slot_btnShowTrace(bool on);
    void slot_tblValClicked(int row, int column);
    void slot_btnZoomOut();
    void slot_btnZoomIn();
    void slot_btnZoomComeback();
    void slot_jobEnded(int kind);

protected:
    bool chooseObject() override;
    void resetObject() override;

private:
    void applyObject();
    void updateTable();
    void setRowIcon(int row);
    void rebuildChannels();

    RxObject m_objects[4];
    CAnaFormChnGrpRxView *m_view;
    QTableWidget *m_tblVal;
    QTreeWidget *m_tblChns;
    QToolButton *m_btnBound = nullptr;
    QToolButton *m_btnTrace = nullptr;
    QMenu *m_menu;
    QAction *m_menuKinds[4] = {};
    // The trace job in hand; the worker writes the object until `slot_jobEnded`.
    RxTraceJob m_job;
    bool m_bJobRunning = false;
};
