#pragma once

#include <QDockWidget>

// The dock of an analysis form on the wave page. It tells the page when the engineer closes it,
// and on its first show as a window of its own it takes a size that fits the desktop.
class CDockWindow : public QDockWidget
{
    Q_OBJECT

public:
    explicit CDockWindow(const QString &title, QWidget *parent = nullptr);

Q_SIGNALS:
    void dockClosed(CDockWindow *dock);

protected:
    void closeEvent(QCloseEvent *event) override;
    void showEvent(QShowEvent *event) override;

private:
    bool m_bFirstShow = true;
};
