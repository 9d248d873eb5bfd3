#include "unitsuggestdialog.h"
#include "dialogbuttons.h"

#include "cmtd99file.h"
#include "unitedit.h"
#include "unitsetupdialog.h"

#include <QCoreApplication>
#include <QDialogButtonBox>
#include <QHeaderView>
#include <QLabel>
#include <QPushButton>
#include <QTableWidget>
#include <QVBoxLayout>

CUnitSuggestDialog::CUnitSuggestDialog(const CCmtd99File &file, std::vector<UnitSuggestion> suggestions,
                                       QWidget *parent)
    : QDialog(parent), m_file(file), m_suggestions(std::move(suggestions))
{
    setWindowTitle(tr("Suggest Units"));
    auto *layout = new QVBoxLayout(this);
    auto *intro =
        new QLabel(tr("Proposed from the channels' names, phases, units and components. Check the units to "
                      "take; edit a proposal before taking it with Edit or a double click."),
                   this);
    intro->setWordWrap(true);
    layout->addWidget(intro);
    m_table = new QTableWidget(int(m_suggestions.size()), 4, this);
    m_table->setHorizontalHeaderLabels({tr("Take"), tr("Kind"), tr("Name"), tr("Channels")});
    m_table->horizontalHeader()->setStretchLastSection(true);
    m_table->setSelectionBehavior(QAbstractItemView::SelectRows);
    m_table->setSelectionMode(QAbstractItemView::SingleSelection);
    m_table->setEditTriggers(QAbstractItemView::NoEditTriggers);
    m_table->verticalHeader()->setVisible(false);
    for (int row = 0; row < m_table->rowCount(); ++row)
        fillRow(row);
    m_table->resizeColumnsToContents();
    layout->addWidget(m_table);
    QDialogButtonBox *buttons = OkCancelButtons(this);
    QPushButton *edit = buttons->addButton(tr("Edit..."), QDialogButtonBox::ActionRole);
    connect(edit, &QPushButton::clicked, this, [this] { editRow(m_table->currentRow()); });
    connect(m_table, &QTableWidget::cellDoubleClicked, this, [this](int row, int) { editRow(row); });
    layout->addWidget(buttons);
    resize(760, 420);
}

void CUnitSuggestDialog::fillRow(int row)
{
    const UnitSuggestion &s = m_suggestions[size_t(row)];
    auto *take = new QTableWidgetItem;
    take->setFlags(Qt::ItemIsUserCheckable | Qt::ItemIsEnabled | Qt::ItemIsSelectable);
    take->setCheckState(m_table->item(row, 0) ? m_table->item(row, 0)->checkState() : Qt::Checked);
    m_table->setItem(row, 0, take);
    m_table->setItem(
        row, 1, new QTableWidgetItem(QCoreApplication::translate("UnitKind", UnitKindText(s.unit->kind))));
    m_table->setItem(row, 2, new QTableWidgetItem(m_file.Text(s.unit->name)));
    m_table->setItem(row, 3, new QTableWidgetItem(s.reason));
}

bool CUnitSuggestDialog::editRow(int row)
{
    if (row < 0 || row >= int(m_suggestions.size()))
        return false;
    UnitSuggestion &s = m_suggestions[size_t(row)];
    CUnitSetupDialog dialog(m_file, CloneUnit(*s.unit), nullptr, this);
    if (dialog.exec() != QDialog::Accepted)
        return false;
    s.unit = dialog.takeUnit();
    fillRow(row);
    m_table->item(row, 0)->setCheckState(Qt::Checked);
    return true;
}

std::vector<std::unique_ptr<CmtdInfTrwk_Unit>> CUnitSuggestDialog::takeAccepted()
{
    std::vector<std::unique_ptr<CmtdInfTrwk_Unit>> accepted;
    for (int row = 0; row < int(m_suggestions.size()); ++row) {
        if (m_table->item(row, 0)->checkState() == Qt::Checked && m_suggestions[size_t(row)].unit)
            accepted.push_back(std::move(m_suggestions[size_t(row)].unit));
    }
    return accepted;
}
