#pragma once

#include "xybounds.h"

#include <QDialog>

#include <vector>

class CChnMapAnalog;
class CCmtd99File;
class QComboBox;
class QLineEdit;
class QPushButton;
class QTreeWidget;

// The two channels of the X-Y plane.
class CAnaFormCoordinateXYDlgReset : public QDialog
{
    Q_OBJECT

public:
    CAnaFormCoordinateXYDlgReset(const CCmtd99File &file, uint32_t displayFlags, CChnMapAnalog *x,
                                 CChnMapAnalog *y, QWidget *parent = nullptr);
    CChnMapAnalog *channelX() const;
    CChnMapAnalog *channelY() const;
    QComboBox *comboX() const { return m_x; }
    QComboBox *comboY() const { return m_y; }
    void accept() override;

private:
    QComboBox *m_x;
    QComboBox *m_y;
};

// One boundary's numbers, entered as text; a number that does not parse is named.
class CAnaFormCoordinateXYBoundDlgEntry : public QDialog
{
    Q_OBJECT

public:
    // `labels` and `messages` pair up, one edit per number.
    CAnaFormCoordinateXYBoundDlgEntry(const QString &title, const QStringList &labels,
                                      const QStringList &messages, const std::vector<double> &values,
                                      uint32_t colour, QWidget *parent = nullptr);
    std::vector<double> values() const { return m_values; }
    uint32_t colour() const { return m_colour; }
    QLineEdit *edit(int i) const { return m_edits[size_t(i)]; }
    void accept() override;

private:
    std::vector<QLineEdit *> m_edits;
    QStringList m_messages;
    std::vector<double> m_values;
    uint32_t m_colour;
    QPushButton *m_colourButton;
};

class CAnaFormCoordinateXYBoundDlgLineAB : public CAnaFormCoordinateXYBoundDlgEntry
{
    Q_OBJECT

public:
    CAnaFormCoordinateXYBoundDlgLineAB(const XYBound &bound, QWidget *parent = nullptr);
};

class CAnaFormCoordinateXYBoundDlgLineC : public CAnaFormCoordinateXYBoundDlgEntry
{
    Q_OBJECT

public:
    CAnaFormCoordinateXYBoundDlgLineC(const XYBound &bound, QWidget *parent = nullptr);
};

class CAnaFormCoordinateXYBoundDlgCircle : public CAnaFormCoordinateXYBoundDlgEntry
{
    Q_OBJECT

public:
    CAnaFormCoordinateXYBoundDlgCircle(const XYBound &bound, QWidget *parent = nullptr);
};

// The boundary list: add, edit, delete, and save or load a ".txb" file. Works on a copy that
// OK gives back.
class CAnaFormCoordinateXYBoundDlg : public QDialog
{
    Q_OBJECT

public:
    CAnaFormCoordinateXYBoundDlg(const std::vector<XYBound> &bounds, QWidget *parent = nullptr);
    const std::vector<XYBound> &bounds() const { return m_bounds; }
    QTreeWidget *list() const { return m_list; }
    // Runs the entry dialog of `bound`; true (with `bound` changed) when accepted.
    bool editBound(XYBound &bound);

private:
    void refill();
    void add(int kind);
    void slot_btnEdit();
    void slot_btnDelete();
    void slot_btnSave();
    void slot_btnLoad();

    std::vector<XYBound> m_bounds;
    QTreeWidget *m_list;
};
