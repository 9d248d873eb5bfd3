#pragma once

#include "anaformbase.h"
#include "complexd.h"

class CAnaFormChnGrpVecView;
class CChnMapAnalog;
class QComboBox;
class QHBoxLayout;
class QTableWidget;

// What the vector and the sequence form share: a table of phasors at T1 beside a circle
// diagram, the enable icon that hides a vector, and the zoom buttons that act on all voltage
// or all current vectors at once.
class CAnaFormVectorBase : public CAnaFormBase
{
    Q_OBJECT

public:
    // The columns both tables have; the form adds its own after them.
    enum Column
    {
        ColEnable = 0,
        ColName = 1,
        ColRe = 2,
        ColIm = 3,
        ColVector = 4
    };

    CAnaFormVectorBase(int number, CCmtdChildFrame *frame, CCmtdChildContainerAna *container);

    bool activate() override;
    QTableWidget *table() const { return m_table; }
    CAnaFormChnGrpVecView *view() const { return m_view; }

    void slot_cellClicked(int row, int column);
    void slot_btnZoomInV();
    void slot_btnZoomOutV();
    void slot_btnZoomResV();
    void slot_btnZoomInA();
    void slot_btnZoomOutA();
    void slot_btnZoomResA();

protected:
    // Lays out the buttons, the table with `headers` and the view; `extra` stands after the
    // object buttons (the vector form's mode).
    void resetObject() override;
    void buildLayout(CAnaFormChnGrpVecView *view, const QStringList &headers, QWidget *extra = nullptr);
    void retranslateVectorTexts(const QStringList &headers);
    // The phasor of a channel at T1 as the name column holds it; false where there is none.
    bool phasorAtT1(CChnMapAnalog *chn, ComplexD &phasor) const;
    // Writes the real part, the imaginary part, the modulus with its angle and the effective
    // value of `value` into `row`, in the units of `chn` as the name column shows them.
    void showPhasor(int row, const CChnMapAnalog &chn, const ComplexD &value);
    void clearPhasor(int row);
    // The enable icon of a row, its user role the index of the vector.
    void setEnableCell(int row, int item);
    // The value of the largest sample among the channels, with room to spare: the full scale
    // of their vectors.
    static float fullScale(std::initializer_list<const CChnMapAnalog *> channels);
    uint32_t displayFlags() const;
    // A factor of 0 or less resets the gain of the vectors of that class.
    void zoomClass(int chnClass, float factor);
    // The column of the effective value, the last one.
    int effectiveColumn() const;

    QTableWidget *m_table = nullptr;
    CAnaFormChnGrpVecView *m_view = nullptr;
    QToolButton *m_zoomButtons[6] = {};
};
