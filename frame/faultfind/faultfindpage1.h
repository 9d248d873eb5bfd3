#pragma once

#include <QGroupBox>
#include <QWizardPage>

class CFaultFind2Wizard;
class QSpinBox;
struct FaultEnd;

// An end's voltages (upper band) and currents (lower band) around its data window, which is
// shaded; a click puts the window's start at the sample under the pointer.
class CFaultWindowView : public QWidget
{
    Q_OBJECT

public:
    explicit CFaultWindowView(QWidget *parent = nullptr);
    void setEnd(const FaultEnd *end) { m_end = end; }
    void setStart(int start);
    QSize sizeHint() const override { return QSize(640, 220); }

Q_SIGNALS:
    void startChosen(int start);

protected:
    void paintEvent(QPaintEvent *event) override;
    void mousePressEvent(QMouseEvent *event) override;

private:
    // The samples shown: three cycles before the window to four after, within its segment.
    void span(int &from, int &to) const;

    const FaultEnd *m_end = nullptr;
    int m_start = 0;
};

// One end on the second page: its curves and the start of its data window.
class CFaultFind2EndGroupPage1 : public QGroupBox
{
    Q_OBJECT

public:
    explicit CFaultFind2EndGroupPage1(QWidget *parent = nullptr);
    // Shows `end` with its window placed automatically.
    void showEnd(FaultEnd &end, const QString &title);
    int start() const;
    QSpinBox *startSpin() const { return m_start; }

private:
    CFaultWindowView *m_view;
    QSpinBox *m_start;
    FaultEnd *m_end = nullptr;
};

// The second page: both ends' data windows, placed at the fault and movable; it refuses a
// window that the location cannot use.
class CFaultFind2Page1 : public QWizardPage
{
    Q_OBJECT

public:
    explicit CFaultFind2Page1(CFaultFind2Wizard *wizard);
    void initializePage() override;
    bool validatePage() override;
    CFaultFind2EndGroupPage1 *group(int end) const { return m_groups[end]; }

private:
    CFaultFind2Wizard *m_wizard;
    CFaultFind2EndGroupPage1 *m_groups[2];
};
