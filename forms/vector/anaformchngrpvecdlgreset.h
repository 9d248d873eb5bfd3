#pragma once

#include <QDialog>

#include <vector>

class CChnMapAnalog;
class CCmtd99File;
class QListWidget;
class QListWidgetItem;

// The channel choice of the vector form: the AC voltages and currents of the recording on the
// left, at most eight chosen ones on the right, moved across by a double click.
class CAnaFormChnGrpVecDlgReset : public QDialog
{
    Q_OBJECT

public:
    static constexpr int kMaxChannels = 8;

    CAnaFormChnGrpVecDlgReset(const CCmtd99File &file, uint32_t displayFlags,
                              const std::vector<CChnMapAnalog *> &chosen, QWidget *parent = nullptr);

    std::vector<CChnMapAnalog *> chosen() const;
    QListWidget *offered() const { return m_left; }
    QListWidget *chosenList() const { return m_right; }

    void accept() override;
    void slot_lstLeftDbClicked(QListWidgetItem *item);
    void slot_lstRightDbClicked(QListWidgetItem *item);
    void slot_btnDelAll();
    void slot_btnGoTop();

private:
    QListWidgetItem *makeItem(CChnMapAnalog *chn, uint32_t displayFlags) const;
    // The offered list in the recording's order, less what is chosen.
    void refillOffered();

    std::vector<CChnMapAnalog *> m_all;
    uint32_t m_displayFlags;
    QListWidget *m_left;
    QListWidget *m_right;
};
