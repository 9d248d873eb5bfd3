#pragma once

#include "pathmap.h"

#include <QDialog>

#include <vector>

class QLineEdit;
class QTreeWidget;

// One entry of the site path map: the folder of a site's recordings, and the settings and
// channel-group files that recordings under it take when they are opened.
class CFileInfPathMapDlgItem : public QDialog
{
    Q_OBJECT

public:
    explicit CFileInfPathMapDlgItem(const PathMapEntry &entry, QWidget *parent = nullptr);
    // The entry as entered; the folder in upper case, as the map compares it.
    PathMapEntry entry() const;
    QLineEdit *folderEdit() const { return m_folder; }
    QLineEdit *settingsEdit() const { return m_tcfg; }
    QLineEdit *groupsEdit() const { return m_tcgp; }
    void accept() override;

    void slot_btnFolder();
    void slot_btnFileTcfg();
    void slot_btnFileTcgp();

private:
    QLineEdit *m_folder;
    QLineEdit *m_tcfg;
    QLineEdit *m_tcgp;
};

// The site path map: its entries listed, added, edited and deleted; OK writes the map beside
// the program.
class CFileInfPathMapDlg : public QDialog
{
    Q_OBJECT

public:
    explicit CFileInfPathMapDlg(QWidget *parent = nullptr);
    const std::vector<PathMapEntry> &entries() const { return m_entries; }
    QTreeWidget *list() const { return m_list; }
    // Adds or replaces (`row` >= 0) an entry, as the item dialog gives it.
    void putEntry(const PathMapEntry &entry, int row = -1);
    bool deleteEntry(int row);
    void accept() override;

private:
    void refill();
    void edit(int row);

    std::vector<PathMapEntry> m_entries;
    QTreeWidget *m_list;
};
