#pragma once

#include <QFrame>

class CChnMapBase;
class CCmtdChildContainerAna;
class CCmtdChildFrame;
class QDockWidget;
class QMainWindow;

// What the wave page asks of an analysis form. The forms themselves live in the layer above
// the frame: they derive from this panel and reach the page through the factory that the
// program installs at start-up, so that the frame never includes a form.
class CAnaFormPanel : public QFrame
{
    Q_OBJECT

public:
    using QFrame::QFrame;

    // Docks the form in `page` (creating its dock on first use) and lets it choose its
    // object; whether the dock is on show afterwards.
    virtual bool showDock(QMainWindow *page) = 0;
    virtual void hideDock() = 0;
    // Recomputes at the cursors and repaints.
    virtual void refresh() = 0;
    // The form's dock, null before its first show.
    virtual QDockWidget *dockWidget() const = 0;
    // A channel is leaving the recording: a form that works on it lets go of its object.
    virtual void forgetChannel(const CChnMapBase *channel) = 0;
    // A form opened on one channel (from the name column) takes it as its object.
    virtual void offerChannel(CChnMapBase *channel) { Q_UNUSED(channel); }
};

// Makes form `number` for a document frame, or null where no form of that number exists.
using AnaFormFactory = CAnaFormPanel *(*)(int number, CCmtdChildFrame *frame, CCmtdChildContainerAna *page);
