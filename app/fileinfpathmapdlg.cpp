#include "fileinfpathmapdlg.h"
#include "dialogbuttons.h"

#include "globaloptions.h"

#include <QDialogButtonBox>
#include <QFileDialog>
#include <QGridLayout>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QMessageBox>
#include <QPushButton>
#include <QTreeWidget>
#include <QVBoxLayout>

namespace {

QString local(const QByteArray &bytes)
{
    return QString::fromLocal8Bit(bytes);
}

} // namespace

CFileInfPathMapDlgItem::CFileInfPathMapDlgItem(const PathMapEntry &entry, QWidget *parent)
    : QDialog(parent), m_folder(new QLineEdit(local(entry.rootPath), this)),
      m_tcfg(new QLineEdit(local(entry.settingsFile), this)),
      m_tcgp(new QLineEdit(local(entry.groupFile), this))
{
    setWindowTitle(tr("Auto-ralting Path of TRWK Settings"));
    auto *grid = new QGridLayout;
    const QString labels[3] = {tr("Data File Path"), tr("TRWK Settings File"),
                               tr("Channels Group Settings File")};
    QLineEdit *edits[3] = {m_folder, m_tcfg, m_tcgp};
    void (CFileInfPathMapDlgItem::*slots[3])() = {&CFileInfPathMapDlgItem::slot_btnFolder,
                                                  &CFileInfPathMapDlgItem::slot_btnFileTcfg,
                                                  &CFileInfPathMapDlgItem::slot_btnFileTcgp};
    for (int i = 0; i < 3; ++i) {
        auto *browse = new QPushButton(QStringLiteral("..."), this);
        browse->setToolTip(tr("Browse"));
        grid->addWidget(new QLabel(labels[i], this), i, 0);
        grid->addWidget(edits[i], i, 1);
        grid->addWidget(browse, i, 2);
        connect(browse, &QPushButton::clicked, this, slots[i]);
    }
    m_folder->setMinimumWidth(420);
    m_folder->setToolTip(tr("Recordings whose path holds this folder (in any case) take the files below"));
    auto *column = new QVBoxLayout(this);
    column->addLayout(grid);
    column->addWidget(OkCancelButtons(this));
}

PathMapEntry CFileInfPathMapDlgItem::entry() const
{
    return PathMapEntry{m_folder->text().trimmed().toUpper().toLocal8Bit(),
                        m_tcfg->text().trimmed().toLocal8Bit(), m_tcgp->text().trimmed().toLocal8Bit()};
}

void CFileInfPathMapDlgItem::accept()
{
    if (m_folder->text().trimmed().isEmpty()) {
        QMessageBox::warning(this, QString(), tr("Please specify [Data File Path]!"));
        return;
    }
    if (m_tcfg->text().trimmed().isEmpty() && m_tcgp->text().trimmed().isEmpty()) {
        QMessageBox::warning(this, QString(), tr("Please specify Settings Files!"));
        return;
    }
    QDialog::accept();
}

void CFileInfPathMapDlgItem::slot_btnFolder()
{
    const QString folder = QFileDialog::getExistingDirectory(this, QString(), m_folder->text());
    if (!folder.isEmpty())
        m_folder->setText(folder);
}

void CFileInfPathMapDlgItem::slot_btnFileTcfg()
{
    const QString path =
        QFileDialog::getOpenFileName(this, QString(), m_tcfg->text(), tr("TRWK Settings File(*.tcfg)"));
    if (!path.isEmpty())
        m_tcfg->setText(path);
}

void CFileInfPathMapDlgItem::slot_btnFileTcgp()
{
    const QString path = QFileDialog::getOpenFileName(this, QString(), m_tcgp->text(),
                                                      tr("Channels Group Settings File(*.tcgp)"));
    if (!path.isEmpty())
        m_tcgp->setText(path);
}

CFileInfPathMapDlg::CFileInfPathMapDlg(QWidget *parent)
    : QDialog(parent), m_entries(PathMapEntries()), m_list(new QTreeWidget(this))
{
    setWindowTitle(tr("Auto-ralting Path of TRWK Settings"));
    m_list->setRootIsDecorated(false);
    m_list->setHeaderLabels(
        {tr("Data File Path"), tr("TRWK Settings File"), tr("Channels Group Settings File")});
    m_list->setColumnWidth(0, 260);
    m_list->setColumnWidth(1, 220);
    auto *buttons = new QVBoxLayout;
    auto *add = new QPushButton(tr("Add"), this);
    auto *change = new QPushButton(tr("Edit"), this);
    auto *remove = new QPushButton(tr("Delete"), this);
    for (QPushButton *b : {add, change, remove})
        buttons->addWidget(b);
    buttons->addStretch(1);
    auto *row = new QHBoxLayout;
    row->addWidget(m_list, 1);
    row->addLayout(buttons);
    auto *column = new QVBoxLayout(this);
    column->addLayout(row);
    column->addWidget(OkCancelButtons(this));
    connect(add, &QPushButton::clicked, this, [this] { edit(-1); });
    connect(change, &QPushButton::clicked, this,
            [this] { edit(m_list->indexOfTopLevelItem(m_list->currentItem())); });
    connect(m_list, &QTreeWidget::itemDoubleClicked, this,
            [this](QTreeWidgetItem *item) { edit(m_list->indexOfTopLevelItem(item)); });
    connect(remove, &QPushButton::clicked, this,
            [this] { deleteEntry(m_list->indexOfTopLevelItem(m_list->currentItem())); });
    resize(820, 320);
    refill();
}

void CFileInfPathMapDlg::refill()
{
    m_list->clear();
    for (const PathMapEntry &e : m_entries)
        new QTreeWidgetItem(m_list, {local(e.rootPath), local(e.settingsFile), local(e.groupFile)});
}

void CFileInfPathMapDlg::putEntry(const PathMapEntry &entry, int row)
{
    if (row >= 0 && size_t(row) < m_entries.size())
        m_entries[size_t(row)] = entry;
    else
        m_entries.push_back(entry);
    refill();
}

void CFileInfPathMapDlg::edit(int row)
{
    const bool existing = row >= 0 && size_t(row) < m_entries.size();
    CFileInfPathMapDlgItem item(existing ? m_entries[size_t(row)] : PathMapEntry{}, this);
    if (item.exec() == QDialog::Accepted)
        putEntry(item.entry(), existing ? row : -1);
}

bool CFileInfPathMapDlg::deleteEntry(int row)
{
    if (row < 0 || size_t(row) >= m_entries.size())
        return false;
    const QString folder = local(m_entries[size_t(row)].rootPath);
    if (QMessageBox::question(
            this, QString(),
            tr("Are you sure to delete the item [%s]?").replace(QLatin1String("%s"), folder)) !=
        QMessageBox::Yes)
        return false;
    m_entries.erase(m_entries.begin() + row);
    refill();
    return true;
}

void CFileInfPathMapDlg::accept()
{
    const std::vector<PathMapEntry> before = PathMapEntries();
    PathMapEntries() = m_entries;
    // The map is only worth keeping once it is on disk: a refused write keeps the old one.
    if (!m_entries.empty() && savePathMap() == 0) {
        PathMapEntries() = before;
        QMessageBox::warning(this, QString(), tr("The path map could not be written beside the program."));
        return;
    }
    if (m_entries.empty())
        savePathMap();
    QDialog::accept();
}
